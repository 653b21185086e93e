#include <fmt/format.h>

#include <bit>
#include <charconv>
#include <cstring>

#include "apps/ovix/output/description_file.h"

namespace ovix::app {
namespace {

/// Of a value, with a comma ahead: ",-1.1754944e-38" and ",255".
template <class T>
constexpr std::size_t kLongestText = std::is_same_v<T, float> ? 15 : 4;

/// The texts of values, each behind a comma. A frame has few different values, as many at most as its camera has
/// counts: so a text that was made is kept and copied.
template <class T>
class TTexts {
  public:
    TTexts() : kept_(kPlaces) {}

    /// Room for `kLongestText` bytes has to be at `next`; answers where the text ends.
    char* Put(char* next, T value) {
        const u32 bits =
            std::is_same_v<T, float> ? std::bit_cast<u32>(static_cast<float>(value)) : static_cast<u32>(value);
        SText& text = kept_[bits * 0x9E3779B1u >> (32 - kPlaceBits)];
        if (text.size == 0 || text.bits != bits) {
            text.bytes[0] = ',';
            const char* end = std::to_chars(text.bytes + 1, text.bytes + sizeof text.bytes, value).ptr;
            text.size = static_cast<u8>(end - text.bytes);
            text.bits = bits;
        }
        std::memcpy(next, text.bytes, sizeof text.bytes);
        return next + text.size;
    }

  private:
    static constexpr int kPlaceBits = std::is_same_v<T, float> ? 14 : 8;
    static constexpr std::size_t kPlaces = std::size_t{1} << kPlaceBits;
    struct SText {
        u32 bits = 0;
        char bytes[kLongestText<T>] = {};
        u8 size = 0;
    };
    std::vector<SText> kept_;
};

template <class T>
class TCsvFile {
  public:
    static constexpr bool kDescribesFrames = true;

    TCsvFile(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : file_(target, options.overwrite) {
        std::string head = "frame,row";
        for (unsigned x = 0; x < series.width; ++x) head += fmt::format(",x{} [{}]", x, series.unit.symbol);
        head += '\n';
        file_.Write(head.data(), head.size());
    }

    static SEncodedFrame::Pieces Encode(const SSeries& series, const SWriteOptions&, u64 frame,
                                        std::span<const T> plane) {
        constexpr std::size_t kLongestStart = 40;
        const std::string start = fmt::format("{},", frame);
        TTexts<T> texts;
        std::vector<char> line(kLongestStart + series.width * kLongestText<T>);
        std::vector<u8> bytes;
        for (unsigned y = 0; y < series.height; ++y) {
            char* next = std::copy(start.begin(), start.end(), line.data());
            next = std::to_chars(next, next + kLongestStart, y).ptr;
            for (const T value : plane.subspan(std::size_t{y} * series.width, series.width))
                next = texts.Put(next, value);
            *next++ = '\n';
            const auto size = static_cast<std::size_t>(next - line.data());
            if (y == 0) bytes.reserve(size * (series.height + series.height / 8U));
            bytes.insert(bytes.end(), line.data(), next);
        }
        return {std::move(bytes)};
    }
    void Append(std::span<const T>, const SEncodedFrame::Pieces& pieces, const Json&) {
        for (const auto& piece : pieces) file_.Write(piece.data(), piece.size());
    }
    void Complete() {}
    void Commit() { file_.Commit(); }

  private:
    COutputFile file_;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakeCsvWriter(const std::filesystem::path& target, const SSeries& series,
                                            const SWriteOptions& options) {
    return std::make_unique<TDescribedWriter<TCsvFile>>(target, target.string() + ".json", series, options);
}

}  // namespace ovix::app
