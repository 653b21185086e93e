#include <fmt/format.h>

#include <bit>
#include <cstring>

#include "apps/ovix/output/description_file.h"

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

}  // namespace

std::unique_ptr<IFrameWriter> MakeNpyWriter(const std::filesystem::path& target, const SSeries& series,
                                            const SWriteOptions& options) {
    const auto description = std::filesystem::path(target).replace_extension(".json");
    if (options.steps) return std::make_unique<TDescribedWriter<TNpyFile, u16>>(target, description, series, options);
    return std::make_unique<TDescribedWriter<TNpyFile>>(target, description, series, options);
}

}  // namespace ovix::app
