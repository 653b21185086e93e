#include <blosc.h>
#include <fmt/format.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <optional>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/cf_attributes.h"
#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/output/spool.h"

namespace ovix::app {
namespace {

namespace fs = std::filesystem;

constexpr u64 kTraceFrames = 64;  ///< of a chunk that holds traces
constexpr u64 kTraceSide = 64;    ///< pixels
constexpr u64 kColumnChunk = 1024;

[[noreturn]] void Fail(const fs::path& path, const std::string& problem) {
    throw CFault({.exit = ExitFile, .file = path.string(), .problem = problem});
}

/// A file of a store is there whole or not at all.
void WriteWhole(const fs::path& path, const void* data, std::size_t size) {
    const fs::path part = path.string() + ".part";
    std::ofstream file(part, std::ios::binary);
    file.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    file.close();
    std::error_code error(file ? 0 : errno, std::generic_category());
    if (file) fs::rename(part, path, error);
    if (!file || error) throw SystemFault(ExitFile, path.string(), "cannot write", error.value());
}
void WriteWhole(const fs::path& path, const Json& json) {
    const std::string text = JsonText(json, 1, true);  // readers of Zarr 2 take ASCII alone
    WriteWhole(path, text.data(), text.size());
}

std::vector<u8> Packed(const void* data, std::size_t size, std::size_t width, int level) {
    std::vector<u8> packed(size + BLOSC_MAX_OVERHEAD);
    const int bytes = blosc_compress_ctx(std::min(level, 9), BLOSC_BITSHUFFLE, width, size, data, packed.data(),
                                         packed.size(), "zstd", 0, 1);
    if (bytes <= 0) throw CAppError(ExitBadData, "a chunk cannot be compressed");
    packed.resize(static_cast<std::size_t>(bytes));
    return packed;
}

/// One array of a Zarr group of format 2, as long as what was written to it: the length is put down behind the chunk.
class CZarrArray {
  public:
    CZarrArray(const fs::path& group, const char* name, Json chunks, const char* type, Json fill, Json compressor)
        : folder_(group / name), chunks_(std::move(chunks)) {
        fs::create_directory(folder_);
        head_ = {{"shape", Json::array()}, {"chunks", chunks_},  {"dtype", type}, {"compressor", std::move(compressor)},
                 {"filters", nullptr},     {"fill_value", fill}, {"order", "C"},  {"zarr_format", 2}};
    }
    void Describe(const Json& attributes) { WriteWhole(folder_ / ".zattrs", attributes); }
    void WriteChunk(const std::string& key, std::span<const u8> bytes) {
        WriteWhole(folder_ / key, bytes.data(), bytes.size());
    }
    void SetShape(const Json& shape) {
        head_["shape"] = shape;
        WriteWhole(folder_ / ".zarray", head_);
    }
    void AddTo(Json& metadata, const std::string& name) const {
        metadata[name + "/.zarray"] = head_;
        std::ifstream attributes(folder_ / ".zattrs");
        metadata[name + "/.zattrs"] = Json::parse(attributes);
    }

  private:
    fs::path folder_;
    Json chunks_;
    Json head_;
};

/// A number for each frame.
class CColumn {
  public:
    CColumn(const fs::path& group, const char* name)
        : array_(group, name, Json::array({kColumnChunk}), "<i8", nullptr, nullptr) {}
    void Append(i64 value) {
        values_.push_back(value);
        const u64 chunk = count_++ / kColumnChunk;
        std::vector<i64> padded = values_;
        padded.resize(kColumnChunk, kNone);
        array_.WriteChunk(fmt::format("{}", chunk),
                          std::span(reinterpret_cast<const u8*>(padded.data()), kColumnChunk * 8));
        if (values_.size() == kColumnChunk) values_.clear();
        array_.SetShape(Json::array({count_}));
    }
    CZarrArray& Array() { return array_; }

    static constexpr i64 kNone = std::numeric_limits<i64>::min();

  private:
    CZarrArray array_;
    std::vector<i64> values_;
    u64 count_ = 0;
};

/// Pixels of one kind: a frame a chunk, or chunks of 64 frames and 64 by 64 pixels for who reads traces.
class CPlanes {
  public:
    CPlanes(const fs::path& group, const char* name, const SSeries& series, const SWriteOptions& options,
            const char* type, std::size_t width, Json fill)
        : array_(group, name, ChunksOf(series, options), type, std::move(fill),
                 {{"id", "blosc"},
                  {"cname", "zstd"},
                  {"clevel", std::min(options.compression, 9)},
                  {"shuffle", 2},
                  {"blocksize", 0}}),
          series_(series),
          options_(options),
          width_(width) {}

    /// Of one frame, by any thread: what `Append` writes.
    std::vector<u8> Encode(const void* plane) const {
        const std::size_t size = width_ * series_.width * series_.height;
        if (!options_.byTrace) return Packed(plane, size, width_, options_.compression);
        const u8* bytes = static_cast<const u8*>(plane);
        return {bytes, bytes + size};
    }
    void Append(const std::vector<u8>& encoded) {
        if (options_.byTrace) {
            std::copy(encoded.begin(), encoded.end(), std::back_inserter(waiting_));
            if (++count_ % kTraceFrames == 0) Flush();
        } else {
            array_.WriteChunk(fmt::format("{}.0.0", count_++), encoded);
            SetShape();
        }
    }
    void Complete() {
        if (!waiting_.empty()) Flush();
    }
    CZarrArray& Array() { return array_; }

  private:
    static Json ChunksOf(const SSeries& series, const SWriteOptions& options) {
        if (!options.byTrace) return Json::array({1, series.height, series.width});
        return Json::array(
            {kTraceFrames, std::min<u64>(kTraceSide, series.height), std::min<u64>(kTraceSide, series.width)});
    }
    void SetShape() { array_.SetShape(Json::array({count_, series_.height, series_.width})); }

    void Flush() {
        const u64 high = std::min<u64>(kTraceSide, series_.height), wide = std::min<u64>(kTraceSide, series_.width);
        for (u64 y = 0; y < series_.height; y += high)
            for (u64 x = 0; x < series_.width; x += wide) WriteTraces(x, y, wide, high);
        waiting_.clear();
        SetShape();
    }
    /// What lies beyond the image, and behind the last frame, is zeros that no reader sees.
    void WriteTraces(u64 x, u64 y, u64 wide, u64 high) {
        const u64 line = width_ * series_.width, plane = line * series_.height, frames = waiting_.size() / plane;
        const u64 columns = std::min<u64>(wide, series_.width - x), rows = std::min<u64>(high, series_.height - y);
        std::vector<u8> chunk(kTraceFrames * high * wide * width_);
        for (u64 frame = 0; frame < frames; ++frame)
            for (u64 row = 0; row < rows; ++row)
                std::memcpy(chunk.data() + (frame * high + row) * wide * width_,
                            waiting_.data() + frame * plane + (y + row) * line + x * width_, columns * width_);
        const u64 first = (count_ - frames) / kTraceFrames;
        array_.WriteChunk(fmt::format("{}.{}.{}", first, y / high, x / wide),
                          Packed(chunk.data(), chunk.size(), width_, options_.compression));
    }

    CZarrArray array_;
    SSeries series_;
    SWriteOptions options_;
    std::size_t width_;
    std::vector<u8> waiting_;
    u64 count_ = 0;
};

/// A group that is written beside its place, and can be read as far as it is written.
class CZarrWriter final : public IFrameWriter {
  public:
    CZarrWriter(const fs::path& target, const SSeries& series, const SWriteOptions& options)
        : target_(Free(target, options)), store_(target, options.overwrite), series_(series), options_(options) {
        WriteWhole(part_ / ".zgroup", Json{{"zarr_format", 2}});
        WriteWhole(part_ / ".zattrs", GroupAttributes(series));
        const bool steps = options.step > 0;
        values_.emplace(part_, VariableName(series.unit).c_str(), series, options, steps ? "<i4" : "<f4", 4,
                        steps ? Json(kNoStep) : Json("NaN"));
        values_->Array().Describe(ValueAttributes(series, options.step));
        status_.emplace(part_, "status", series, options, "|u1", 1, nullptr);
        status_->Array().Describe(StatusAttributes());
        frame_.emplace(part_, "frame");
        frame_->Array().Describe(ColumnAttributes("number of the frame in its source"));
    }

    SEncodedFrame Encode(const SPicture& picture) const override {
        SEncodedFrame encoded;
        encoded.values.push_back(options_.step > 0 ? values_->Encode(Steps(picture).data())
                                                   : values_->Encode(picture.values.data()));
        if (!picture.status.empty()) encoded.status.push_back(status_->Encode(picture.status.data()));
        return encoded;
    }
    void Append(const SPicture& picture, const SEncodedFrame& encoded) override {
        if (!time_) {
            timed_ = picture.time.has_value();
            time_.emplace(part_, "time");
            time_->Array().Describe(TimeAttributes(timed_));
        }
        values_->Append(encoded.values.front());
        for (const auto& status : encoded.status) status_->Append(status);
        frame_->Append(static_cast<i64>(picture.frame));
        time_->Append(!timed_        ? static_cast<i64>(picture.frame)
                      : picture.time ? NanosecondsOf(*picture.time)
                                     : CColumn::kNone);
        // Where arrays differ in length by a frame that is being written, readers go by this, which is replaced as one.
        if (!options_.byTrace || ++appended_ % kTraceFrames == 0) WriteMetadata();
    }
    void Finish() override {
        if (!time_) throw CAppError(ExitBadData, target_.string() + ": no frame to write");
        values_->Complete();
        status_->Complete();
        WriteMetadata();
        store_.Put();
    }

  private:
    static constexpr i32 kNoStep = std::numeric_limits<i32>::min();

    /// Nobody's file or folder is in the way but a store that may be replaced.
    static const fs::path& Free(const fs::path& target, const SWriteOptions& options) {
        if (!fs::exists(target)) return target;
        if (!options.overwrite) Fail(target, "exists (--overwrite replaces it)");
        if (!fs::exists(target / ".zgroup")) Fail(target, "is no Zarr store, and is not replaced");
        return target;
    }
    std::vector<i32> Steps(const SPicture& picture) const {
        std::vector<i32> steps;
        steps.reserve(picture.values.size());
        constexpr double kMost = std::numeric_limits<i32>::max();
        for (const float value : picture.values) {
            const double step = std::nearbyint(static_cast<double>(value) / options_.step);
            if (!(std::abs(step) <= kMost) && !std::isnan(value))
                throw CFault({.frame = picture.frame,
                              .expected = fmt::format("values that 32 bits hold in steps of {}", options_.step),
                              .found = fmt::format("{}", value),
                              .advice = "a larger --step holds it"});
            steps.push_back(std::isnan(value) ? kNoStep : static_cast<i32>(step));
        }
        return steps;
    }
    /// All of it in one file, for readers that would look for each.
    void WriteMetadata() {
        Json metadata = {{".zgroup", {{"zarr_format", 2}}}, {".zattrs", GroupAttributes(series_)}};
        values_->Array().AddTo(metadata, VariableName(series_.unit));
        status_->Array().AddTo(metadata, "status");
        frame_->Array().AddTo(metadata, "frame");
        time_->Array().AddTo(metadata, "time");
        WriteWhole(part_ / ".zmetadata", Json{{"zarr_consolidated_format", 1}, {"metadata", std::move(metadata)}});
    }

    fs::path target_;
    CStorePart store_;
    const fs::path& part_ = store_.Path();
    SSeries series_;
    SWriteOptions options_;
    std::optional<CPlanes> values_, status_;
    std::optional<CColumn> frame_, time_;
    u64 appended_ = 0;
    bool timed_ = false;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakeZarrWriter(const fs::path& target, const SSeries& series,
                                             const SWriteOptions& options) {
    return std::make_unique<CZarrWriter>(target, series, options);
}

}  // namespace ovix::app
