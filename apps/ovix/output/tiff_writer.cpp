#include <fmt/format.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <exception>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/output/output_file.h"

namespace ovix::app {
namespace {

constexpr u64 kBigBytes = u64{2} << 30;
constexpr u32 kStripBytes = 256 * 1024;

/// The file as libtiff sees it. An exception must not pass through C: it waits here until libtiff has returned.
struct STiffStream {
    COutputFile file;
    u64 position = 0;
    std::exception_ptr failure;

    template <class Move>
    tmsize_t Guard(tmsize_t size, Move move) {
        try {
            const u64 moved = move();
            position += moved;
            return static_cast<tmsize_t>(moved);
        } catch (...) {
            failure = std::current_exception();
            return size == 0 ? 0 : -1;
        }
    }

    static STiffStream& Of(thandle_t handle) { return *static_cast<STiffStream*>(handle); }
    static tmsize_t Read(thandle_t handle, void* data, tmsize_t size) {
        STiffStream& self = Of(handle);
        return self.Guard(size, [&] { return self.file.ReadAt(self.position, data, static_cast<u64>(size)); });
    }
    static tmsize_t Write(thandle_t handle, void* data, tmsize_t size) {
        STiffStream& self = Of(handle);
        return self.Guard(size, [&] {
            self.file.WriteAt(self.position, data, static_cast<u64>(size));
            return static_cast<u64>(size);
        });
    }
    static toff_t Seek(thandle_t handle, toff_t offset, int whence) {
        STiffStream& self = Of(handle);
        const u64 base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? self.position : self.file.Size();
        return self.position = base + offset;
    }
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return Of(handle).file.Size(); }
};

// Tags of GDAL, which libtiff does not know.
constexpr u32 kGdalMetadata = 42112;
constexpr u32 kGdalNoData = 42113;

void AddGdalTags(TIFF* tiff) {
    static char metadata[] = "GDALMetadata", noData[] = "GDALNoDataValue";
    static const TIFFFieldInfo kFields[] = {{kGdalMetadata, -1, -1, TIFF_ASCII, FIELD_CUSTOM, 1, 0, metadata},
                                            {kGdalNoData, -1, -1, TIFF_ASCII, FIELD_CUSTOM, 1, 0, noData}};
    TIFFMergeFieldInfo(tiff, kFields, static_cast<u32>(std::size(kFields)));
}

/// What GDAL reads of a band: unit, and how numbers become values.
std::string GdalMetadata(const SSeries& series, const std::optional<SSteps>& steps) {
    const auto item = [](const char* name, const char* role, const std::string& value) {
        return fmt::format("<Item name=\"{}\" sample=\"0\" role=\"{}\">{}</Item>", name, role, value);
    };
    std::string text = "<GDALMetadata>" + item("UNITTYPE", "unittype", series.unit.symbol);
    if (steps)
        text += item("SCALE", "scale", fmt::format("{}", steps->step)) +
                item("OFFSET", "offset", fmt::format("{}", steps->offset));
    return text + "</GDALMetadata>";
}

/// "2026-11-21T08:15:00.250000Z" as the tag has it, which knows no fraction of a second.
std::string TimeStamp(std::string time) {
    constexpr std::size_t kWithSeconds = 19;
    time.resize(kWithSeconds);
    time[4] = time[7] = ':';
    time[10] = ' ';
    return time;
}

template <class T>
class TTiffFile {
  public:
    static constexpr bool kDescribesFrames = true;

    TTiffFile(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : stream_{COutputFile(target, options.overwrite), 0, nullptr}, series_(series), options_(options) {
        TIFFSetErrorHandler(nullptr);
        TIFFSetWarningHandler(nullptr);
        const u64 bytes = series.frames * series.width * series.height * sizeof(T);
        tiff_ = TIFFClientOpen(target.c_str(), bytes > kBigBytes ? "w8" : "w", &stream_, STiffStream::Read,
                               STiffStream::Write, STiffStream::Seek, STiffStream::Close, STiffStream::Size, nullptr,
                               nullptr);
        Require(tiff_ != nullptr);
        AddGdalTags(tiff_);
    }
    ~TTiffFile() {
        if (tiff_) TIFFClose(tiff_);
    }
    TTiffFile(const TTiffFile&) = delete;
    TTiffFile& operator=(const TTiffFile&) = delete;

    /// The strips as they stand in the file; none where they stand there as in memory.
    static SEncodedFrame::Pieces Encode(const SSeries& series, const SWriteOptions& options, u64,
                                        std::span<const T> plane) {
        SEncodedFrame::Pieces strips;
        if (options.compression == 0 || options.zstd) return strips;
        for (u32 y = 0; y < series.height; y += RowsOfStrip(series)) {
            const std::span<const T> strip = StripAt(series, plane, y);
            strips.push_back(
                Deflated({reinterpret_cast<const u8*>(strip.data()), strip.size_bytes()}, options.compression));
        }
        return strips;
    }
    void Append(std::span<const T> plane, const SEncodedFrame::Pieces& strips, const Json& description) {
        DescribePage(description);
        const u32 rows = RowsOfStrip(series_);
        for (u32 y = 0, strip = 0; y < series_.height; y += rows, ++strip) {
            const std::span<const T> part = StripAt(series_, plane, y);
            if (!strips.empty())
                Write(TIFFWriteRawStrip, strip, strips[strip].data(), strips[strip].size());
            else if (Compression() == COMPRESSION_NONE)
                Write(TIFFWriteRawStrip, strip, part.data(), part.size_bytes());
            else
                Write(TIFFWriteEncodedStrip, strip, part.data(), part.size_bytes());
        }
        Require(TIFFWriteDirectory(tiff_) == 1);
        first_ = false;
    }
    void Complete() {
        TIFFClose(tiff_);
        tiff_ = nullptr;
        Require(true);
    }
    void Commit() { stream_.file.Commit(); }

  private:
    static u32 RowsOfStrip(const SSeries& series) {
        return std::clamp<u32>(kStripBytes / static_cast<u32>(series.width * sizeof(T)), 1, series.height);
    }
    static std::span<const T> StripAt(const SSeries& series, std::span<const T> plane, u32 row) {
        const u32 rows = std::min(RowsOfStrip(series), series.height - row);
        return plane.subspan(std::size_t{row} * series.width, std::size_t{rows} * series.width);
    }
    /// libtiff takes its data unqualified, and leaves it alone.
    void Write(decltype(TIFFWriteRawStrip) how, u32 strip, const void* data, std::size_t size) {
        Require(how(tiff_, strip, const_cast<void*>(data), static_cast<tmsize_t>(size)) >= 0);
    }
    void DescribePage(const Json& description) {
        TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, u32{series_.width});
        TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, u32{series_.height});
        TIFFSetField(tiff_, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff_, TIFFTAG_BITSPERSAMPLE, static_cast<int>(8 * sizeof(T)));
        TIFFSetField(tiff_, TIFFTAG_SAMPLEFORMAT,
                     std::is_floating_point_v<T> ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
        TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff_, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff_, TIFFTAG_COMPRESSION, Compression());
        if (Compression() == COMPRESSION_ZSTD) TIFFSetField(tiff_, TIFFTAG_ZSTD_LEVEL, options_.compression);
        TIFFSetField(tiff_, TIFFTAG_ROWSPERSTRIP, RowsOfStrip(series_));
        if (series_.frames > 1) TIFFSetField(tiff_, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
        Json text = first_ ? DescribeSeries(series_, options_) : Json::object();
        if (first_ && series_.knowsFrames) {
            text["shape"] = {series_.frames, series_.height, series_.width};
            text["axes"] = "TYX";
        }
        text.update(description);
        TIFFSetField(tiff_, TIFFTAG_IMAGEDESCRIPTION, JsonText(text, -1, true).c_str());
        if (first_) TIFFSetField(tiff_, TIFFTAG_SOFTWARE, "ovix " OVIX_VERSION);
        NamePage(description);
    }
    void NamePage(const Json& description) {
        const std::string time = description.value("time", "");
        const std::string name = fmt::format("frame {}", description["frame"].dump());
        TIFFSetField(tiff_, TIFFTAG_PAGENAME, (time.empty() ? name : name + ", " + time).c_str());
        if (!time.empty()) TIFFSetField(tiff_, TIFFTAG_DATETIME, TimeStamp(time).c_str());
        TIFFSetField(tiff_, kGdalMetadata, GdalMetadata(series_, options_.steps).c_str());
        if (options_.mask) TIFFSetField(tiff_, kGdalNoData, "nan");
        if (options_.steps && options_.steps->noData) TIFFSetField(tiff_, kGdalNoData, "0");
    }
    int Compression() const {
        if (options_.compression == 0) return COMPRESSION_NONE;
        return options_.zstd ? COMPRESSION_ZSTD : COMPRESSION_ADOBE_DEFLATE;
    }
    void Require(bool done) {
        if (stream_.failure) std::rethrow_exception(std::exchange(stream_.failure, nullptr));
        if (!done) throw CAppError(ExitFile, stream_.file.Target().string() + ": cannot write it as TIFF");
    }

    STiffStream stream_;
    SSeries series_;
    SWriteOptions options_;
    TIFF* tiff_ = nullptr;
    bool first_ = true;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakeTiffWriter(const std::filesystem::path& target, const SSeries& series,
                                             const SWriteOptions& options) {
    if (options.zstd && !TIFFIsCODECConfigured(COMPRESSION_ZSTD))
        throw UsageFault("--compression: this machine's libtiff knows no zstd");
    if (options.steps) return std::make_unique<TDataWriter<TTiffFile, u16>>(target, series, options);
    return std::make_unique<TDataWriter<TTiffFile>>(target, series, options);
}

}  // namespace ovix::app
