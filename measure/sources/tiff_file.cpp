#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "measure/sources/array_file.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

/// A TIFF that libtiff reads out of our bytes. It opens anew for each frame: nothing is shared by threads, and no
/// handler of the process is touched.
class CTiff {
  public:
    explicit CTiff(const IBytes& bytes) : bytes_(bytes) {
        constexpr tmsize_t kMostMemory = tmsize_t{1} << 30;
        const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                       TIFFOpenOptionsFree);
        if (!options) throw std::bad_alloc();
        TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMostMemory);
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), KeepProblem, this);
        TIFFOpenOptionsSetWarningHandlerExtR(
            options.get(), [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, nullptr);
        // c: strips as they are; h: no page yet; m: nothing is mapped
        tiff_ = TIFFClientOpenExt("", "rchm", this, Read, Write, Seek, Close, Size, nullptr, nullptr, options.get());
    }
    ~CTiff() {
        if (tiff_) TIFFClose(tiff_);
    }
    CTiff(const CTiff&) = delete;
    CTiff& operator=(const CTiff&) = delete;

    operator TIFF*() const { return tiff_; }
    /// What libtiff said last.
    std::string Problem() const { return problem_; }
    template <class T>
    T Value(uint32_t tag) const {
        T value = 0;
        TIFFGetFieldDefaulted(tiff_, tag, &value);
        return value;
    }

  private:
    static CTiff& Of(thandle_t handle) { return *static_cast<CTiff*>(handle); }
    static int KeepProblem(TIFF*, void* self, const char*, const char* format, va_list arguments) {
        std::vsnprintf(Of(self).problem_, sizeof problem_, format, arguments);
        return 1;
    }
    static tmsize_t Read(thandle_t handle, void* data, tmsize_t size) {
        CTiff& self = Of(handle);
        try {
            const std::size_t read = self.bytes_.ReadAt(self.at_, {static_cast<u8*>(data), static_cast<u64>(size)});
            self.at_ += read;
            return static_cast<tmsize_t>(read);
        } catch (const CError&) {
            return -1;  // libtiff knows no exceptions
        }
    }
    static tmsize_t Write(thandle_t, void*, tmsize_t) { return -1; }
    static toff_t Seek(thandle_t handle, toff_t offset, int origin) {
        CTiff& self = Of(handle);
        self.at_ = (origin == SEEK_SET ? 0 : origin == SEEK_CUR ? self.at_ : self.bytes_.Size()) + offset;
        return self.at_;
    }
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return Of(handle).bytes_.Size(); }

    const IBytes& bytes_;
    TIFF* tiff_ = nullptr;
    u64 at_ = 0;
    char problem_[200] = "";
};

[[noreturn]] void RefuseTiff(const IBytes& bytes, std::string expected, std::string found) {
    RefuseArray(bytes, "a TIFF", std::move(expected), std::move(found));
}

SFrameFormat FormatOfPage(const IBytes& bytes, const CTiff& tiff) {
    constexpr u16 kCompressions[] = {COMPRESSION_NONE,    COMPRESSION_LZW,      COMPRESSION_ADOBE_DEFLATE,
                                     COMPRESSION_DEFLATE, COMPRESSION_PACKBITS, COMPRESSION_ZSTD};
    const auto width = tiff.Value<u32>(TIFFTAG_IMAGEWIDTH), height = tiff.Value<u32>(TIFFTAG_IMAGELENGTH);
    const auto bits = tiff.Value<u16>(TIFFTAG_BITSPERSAMPLE), samples = tiff.Value<u16>(TIFFTAG_SAMPLESPERPIXEL);
    const auto kind = tiff.Value<u16>(TIFFTAG_SAMPLEFORMAT), compression = tiff.Value<u16>(TIFFTAG_COMPRESSION);
    const bool known = std::ranges::find(kCompressions, compression) != std::end(kCompressions);
    const bool grey = tiff.Value<u16>(TIFFTAG_PHOTOMETRIC) <= PHOTOMETRIC_MINISBLACK;
    if (bits != 16 || samples != 1 || kind != SAMPLEFORMAT_UINT || !grey || !known ||
        !TIFFIsCODECConfigured(compression))
        RefuseTiff(bytes,
                   "pages of 16-bit unsigned counts, one sample a pixel, plain or by LZW, Deflate, PackBits or "
                   "Zstandard",
                   Say(width, " x ", height, ", ", bits, " bits, ", samples, " samples of format ", kind,
                       ", compression ", compression));
    return CountsOf(bytes, width, height, TIFFIsBigEndian(tiff));
}

u32 PiecesOf(TIFF* tiff) { return TIFFIsTiled(tiff) ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff); }

/// A page whose pixels stand in the file as they are, in one piece.
std::optional<SExtent> InPlace(const CTiff& tiff, u64 size) {
    const u64 first = TIFFGetStrileOffset(tiff, 0);
    u64 next = first;
    if (tiff.Value<u16>(TIFFTAG_COMPRESSION) != COMPRESSION_NONE || TIFFIsTiled(tiff) ||
        tiff.Value<u16>(TIFFTAG_FILLORDER) != FILLORDER_MSB2LSB)
        return {};
    for (u32 i = 0; i < PiecesOf(tiff); ++i) {
        if (TIFFGetStrileOffset(tiff, i) != next) return {};
        next += TIFFGetStrileByteCount(tiff, i);
    }
    return next - first >= size ? std::optional(SExtent{first, size}) : std::nullopt;
}

/// Whether the file goes on to where a directory says which one is next. libtiff takes one that is cut there for the
/// last.
bool NamesNext(const IBytes& bytes, TIFF* tiff) {
    const bool big = TIFFIsBigTIFF(tiff);
    const u64 at = TIFFCurrentDirOffset(tiff), entry = big ? 20 : 12, word = big ? 8 : 4;
    const std::vector<u8> count = bytes.Get(at, big ? 8 : 2);
    u64 entries = 0;
    for (std::size_t i = 0; i < count.size(); ++i)
        entries = entries << 8 | count[TIFFIsBigEndian(tiff) ? i : count.size() - 1 - i];
    return entries <= 0xFFFF && at + count.size() + entries * entry + word <= bytes.Size();
}

bool IsWhole(TIFF* tiff, u64 end) {
    for (u32 i = 0; i < PiecesOf(tiff); ++i) {
        const u64 offset = TIFFGetStrileOffset(tiff, i), size = TIFFGetStrileByteCount(tiff, i);
        if (!size || offset > end || size > end - offset) return false;
    }
    return PiecesOf(tiff) > 0;
}

/// Unpacks pages, each found by the place of its directory.
class CTiffPages final : public IPackedFrames {
  public:
    CTiffPages(const IBytes& bytes, std::vector<u64> directories)
        : bytes_(bytes), directories_(std::move(directories)) {}

    void Read(u64 number, std::span<u8> counts) const override {
        const CTiff tiff(bytes_);
        const bool found = tiff && TIFFSetSubDirectory(tiff, directories_[number]);
        if (!found ||
            u64{2} * tiff.Value<u32>(TIFFTAG_IMAGEWIDTH) * tiff.Value<u32>(TIFFTAG_IMAGELENGTH) != counts.size())
            Refuse(tiff, number);
        if (!(TIFFIsTiled(tiff) ? ReadTiles(tiff, counts) : ReadStrips(tiff, counts))) Refuse(tiff, number);
    }

  private:
    [[noreturn]] void Refuse(const CTiff& tiff, u64 number) const {
        throw CError({.id = EError::PixelsDamaged,
                      .file = bytes_.Name(),
                      .frame = number,
                      .problem = "the page does not unpack",
                      .found = tiff.Problem()});
    }
    static bool ReadStrips(TIFF* tiff, std::span<u8> counts) {
        const auto step = static_cast<u64>(TIFFStripSize(tiff));
        u32 strip = 0;
        for (; step && !counts.empty(); ++strip) {
            const std::span<u8> rows = counts.first(std::min<u64>(step, counts.size()));
            const auto size = static_cast<tmsize_t>(rows.size());
            if (TIFFReadEncodedStrip(tiff, strip, rows.data(), size) != size) return false;
            counts = counts.subspan(rows.size());
        }
        return counts.empty();
    }
    /// Tiles hang over the edges of the page.
    static bool ReadTiles(const CTiff& tiff, std::span<u8> counts) {
        constexpr u32 kMostSide = 65536;
        const auto width = tiff.Value<u32>(TIFFTAG_IMAGEWIDTH), height = tiff.Value<u32>(TIFFTAG_IMAGELENGTH);
        const auto across = tiff.Value<u32>(TIFFTAG_TILEWIDTH), down = tiff.Value<u32>(TIFFTAG_TILELENGTH);
        // Before memory is taken: a tile is not much larger than the page.
        if (!across || !down || across > kMostSide || down > kMostSide || u64{across} * down > counts.size() + 65536)
            return false;
        std::vector<u8> tile(static_cast<std::size_t>(TIFFTileSize(tiff)));
        if (tile.size() != std::size_t{2} * across * down) return false;
        for (u32 top = 0; top < height; top += down) {
            for (u32 left = 0; left < width; left += across) {
                if (TIFFReadTile(tiff, tile.data(), left, top, 0, 0) < 0) return false;
                const std::size_t columns = std::min(across, width - left);
                for (u32 y = 0; y < std::min(down, height - top); ++y)
                    std::memcpy(counts.data() + 2 * (std::size_t{top + y} * width + left),
                                tile.data() + std::size_t{2} * y * across, 2 * columns);
            }
        }
        return true;
    }

    const IBytes& bytes_;
    std::vector<u64> directories_;
};

}  // namespace

SArrayFile FindInTiff(const IBytes& bytes) {
    const CTiff tiff(bytes);
    SArrayFile array;
    std::vector<u64> directories;
    bool inPlace = true;
    // A page of which nothing can be read is there nevertheless: another one, or the header, names it.
    for (bool more = tiff != nullptr; more; more = !TIFFLastDirectory(tiff) || !NamesNext(bytes, tiff)) {
        ++array.stated;
        if (!TIFFReadDirectory(tiff)) break;
        SFrameFormat format = FormatOfPage(bytes, tiff);
        if (array.stated == 1)
            array.format = std::move(format);
        else if (format.width != array.format.width || format.height != array.format.height)
            RefuseTiff(bytes, "pages of one size", Say(format.width, " x ", format.height));
        if (!IsWhole(tiff, bytes.Size())) continue;
        const u64 size = u64{2} * array.format.PixelCount();
        const std::optional<SExtent> place = InPlace(tiff, size);
        inPlace = inPlace && place;
        directories.push_back(TIFFCurrentDirOffset(tiff));
        array.frames.push_back(place.value_or(SExtent{directories.back(), size}));
    }
    if (!array.format.width) RefuseTiff(bytes, "a page", tiff.Problem());
    if (inPlace) return array;
    // libtiff hands numbers out in the order of the host, which is little-endian wherever this is built.
    static_assert(std::endian::native == std::endian::little);
    array.format.pixelTypeName = "counts";
    for (std::size_t i = 0; i < directories.size(); ++i) array.frames[i].offset = directories[i];
    array.packed = std::make_unique<CTiffPages>(bytes, std::move(directories));
    return array;
}

}  // namespace ovix::measure
