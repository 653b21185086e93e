#include <fmt/format.h>

#include <bit>
#include <cstring>

#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/output/output_file.h"

namespace ovix::app {
namespace {

static_assert(std::endian::native == std::endian::little, "planes are written as they lie in memory");

template <class T>
constexpr const char* kDescr = nullptr;
template <>
constexpr const char* kDescr<float> = "<f4";
template <>
constexpr const char* kDescr<u16> = "<u2";
template <>
constexpr const char* kDescr<u8> = "|u1";

/// The header has a fixed size, so that the number of frames can be put in at the end.
constexpr std::size_t kHeaderSize = 128;

std::string Header(const char* descr, const std::string& shape) {
    std::string header("\x93NUMPY\x01\x00\x00\x00", 10);
    StoreLittle(reinterpret_cast<u8*>(header.data() + 8), static_cast<u16>(kHeaderSize - header.size()));
    header += fmt::format("{{'descr': '{}', 'fortran_order': False, 'shape': ({}), }}", descr, shape);
    header.resize(kHeaderSize - 1, ' ');
    return header + '\n';
}

template <class T>
class TNpyFile {
  public:
    static constexpr bool kDescribesFrames = true;

    TNpyFile(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : file_(target, options.overwrite),
          plane_(fmt::format("{}, {}", series.height, series.width)),
          flat_(options.squeeze && series.frames <= 1) {
        WriteHeader();
    }
    /// The plane is written as it lies in memory.
    static SEncodedFrame::Pieces Encode(const SSeries&, const SWriteOptions&, u64, std::span<const T>) { return {}; }
    void Append(std::span<const T> plane, const SEncodedFrame::Pieces&, const Json&) {
        file_.Write(plane.data(), plane.size_bytes());
        ++frames_;
    }
    void Complete() { WriteHeader(); }
    void Commit() { file_.Commit(); }

  private:
    void WriteHeader() {
        const std::string header = Header(kDescr<T>, flat_ ? plane_ : fmt::format("{}, {}", frames_, plane_));
        file_.WriteAt(0, header.data(), header.size());
    }

    COutputFile file_;
    std::string plane_;
    bool flat_;
    u64 frames_ = 0;
};

/// A JSON object whose last member, the list of frames, grows as they come.
class CDescription {
  public:
    CDescription(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : file_(target, options.overwrite) {
        std::string head = JsonText(DescribeSeries(series, options), 2);
        head.erase(head.rfind("\n}"));
        Write(head + ",\n  \"frames\": [");
    }
    void Append(const Json& frame) {
        Write((first_ ? "\n    " : ",\n    ") + JsonText(frame));
        first_ = false;
    }
    void Complete() { Write("\n  ]\n}\n"); }
    void Commit() { file_.Commit(); }

  private:
    void Write(const std::string& text) { file_.Write(text.data(), text.size()); }

    COutputFile file_;
    bool first_ = true;
};

template <class Value>
class TNpyWriter : public TDataWriter<TNpyFile, Value> {
    using Data = TDataWriter<TNpyFile, Value>;

  public:
    TNpyWriter(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : Data(target, series, options) {
        if (target != "-")
            description_.emplace(std::filesystem::path(target).replace_extension(".json"), series, options);
    }
    void Append(const SPicture& picture, const SEncodedFrame& encoded) override {
        Data::Append(picture, encoded);
        if (description_) description_->Append(encoded.description);
    }
    void Finish() override {
        if (description_) description_->Complete();
        Data::Finish();
        if (description_) description_->Commit();
    }

  private:
    std::optional<CDescription> description_;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakeNpyWriter(const std::filesystem::path& target, const SSeries& series,
                                            const SWriteOptions& options) {
    if (options.steps) return std::make_unique<TNpyWriter<u16>>(target, series, options);
    return std::make_unique<TNpyWriter<float>>(target, series, options);
}

}  // namespace ovix::app
