#include <png.h>

#include <cstdio>
#include <new>
#include <string_view>

#include "measure/sources/array_file.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

/// A PNG that libpng reads out of our bytes. libpng leaves by `longjmp`, so the functions that call it have nothing to
/// be destroyed, and answer false.
class CPng {
  public:
    explicit CPng(const IBytes& bytes) : bytes_(bytes) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, KeepProblem, [](png_structp, png_const_charp) {});
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        if (info_) return;
        png_destroy_read_struct(&png_, nullptr, nullptr);
        throw std::bad_alloc();
    }
    ~CPng() { png_destroy_read_struct(&png_, &info_, nullptr); }
    CPng(const CPng&) = delete;
    CPng& operator=(const CPng&) = delete;

    bool ReadHeader() {
        constexpr u32 kMostSide = 65535;
        constexpr png_alloc_size_t kMostOfAChunk = 1 << 20;
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_read_fn(png_, this, Feed);
        png_set_user_limits(png_, kMostSide, kMostSide);
        png_set_chunk_malloc_max(png_, kMostOfAChunk);
        png_read_info(png_, info_);
        return true;
    }
    u32 Width() const { return png_get_image_width(png_, info_); }
    u32 Height() const { return png_get_image_height(png_, info_); }
    int Bits() const { return png_get_bit_depth(png_, info_); }
    bool IsGrey() const { return png_get_color_type(png_, info_) == PNG_COLOR_TYPE_GRAY; }

    /// The counts, low byte first, and all that stands behind them.
    bool ReadCounts(u8* counts) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_swap(png_);
        const u32 height = Height();
        for (int pass = png_set_interlace_handling(png_); pass > 0; --pass) {
            for (u32 y = 0; y < height; ++y) png_read_row(png_, counts + std::size_t{2} * Width() * y, nullptr);
        }
        png_read_end(png_, nullptr);
        return true;
    }
    /// What libpng said last.
    std::string Problem() const { return problem_; }

  private:
    [[noreturn]] static void KeepProblem(png_structp png, png_const_charp problem) {
        auto& self = *static_cast<CPng*>(png_get_error_ptr(png));
        std::snprintf(self.problem_, sizeof self.problem_, "%s", problem);
        png_longjmp(png, 1);
    }
    std::size_t Take(u8* data, std::size_t size) {
        try {
            const std::size_t read = bytes_.ReadAt(at_, {data, size});
            at_ += read;
            return read;
        } catch (const CError&) {
            return 0;  // libpng knows no exceptions
        }
    }
    static void Feed(png_structp png, png_bytep data, std::size_t size) {
        if (static_cast<CPng*>(png_get_io_ptr(png))->Take(data, size) != size) png_error(png, "the file ends before");
    }

    const IBytes& bytes_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    u64 at_ = 0;
    char problem_[200] = "";
};

class CPngImage final : public IPackedFrames {
  public:
    explicit CPngImage(const IBytes& bytes) : bytes_(bytes) {}

    void Read(u64 number, std::span<u8> counts) const override {
        CPng png(bytes_);
        if (png.ReadHeader() && u64{2} * png.Width() * png.Height() == counts.size() && png.Bits() == 16 &&
            png.IsGrey() && png.ReadCounts(counts.data()))
            return;
        throw CError({.id = EError::PixelsDamaged,
                      .file = bytes_.Name(),
                      .frame = number,
                      .problem = "the picture does not unpack",
                      .found = png.Problem()});
    }

  private:
    const IBytes& bytes_;
};

/// Whether the mark at the end of a PNG is there, behind which others may stand.
bool HasEnd(const IBytes& bytes) {
    using namespace std::string_view_literals;
    constexpr u64 kMostBehind = 65536;
    const std::vector<u8> tail = bytes.Get(bytes.Size() - std::min(bytes.Size(), kMostBehind), kMostBehind);
    const std::string_view text(reinterpret_cast<const char*>(tail.data()), tail.size());
    return text.find("\0\0\0\0IEND\xAE\x42\x60\x82"sv) != text.npos;
}

}  // namespace

SArrayFile FindInPng(const IBytes& bytes) {
    CPng png(bytes);
    const bool read = png.ReadHeader();
    if (!read || png.Bits() != 16 || !png.IsGrey())
        RefuseArray(bytes, "a PNG", "16 bits of grey a pixel",
                    read ? Say(png.Bits(), " bits", png.IsGrey() ? "" : " of colours") : png.Problem());
    SArrayFile array{.format = CountsOf(bytes, png.Width(), png.Height(), false), .stated = 1};
    if (HasEnd(bytes)) array.frames.push_back({0, u64{2} * array.format.PixelCount()});
    array.packed = std::make_unique<CPngImage>(bytes);
    return array;
}

}  // namespace ovix::measure
