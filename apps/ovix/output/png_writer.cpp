#include <fmt/format.h>
#include <png.h>

#include <algorithm>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/output/thermal_picture.h"

namespace ovix::app {
namespace {

void AppendBytes(png_structp png, png_bytep data, size_t size) {
    auto& bytes = *static_cast<std::vector<u8>*>(png_get_io_ptr(png));
    try {
        bytes.insert(bytes.end(), data, data + size);
    } catch (...) {
        png_error(png, "out of memory");
    }
}

/// The rows as a zlib stream. Their filter is 0, "none": a palette's colours repeat, their differences do not.
std::vector<u8> PackedRows(const CCanvas& canvas, int level) {
    const std::size_t width = static_cast<std::size_t>(canvas.Width());
    std::vector<u8> rows(static_cast<std::size_t>(canvas.Height()) * (1 + 3 * width));
    u8* next = rows.data();
    for (int y = 0; y < canvas.Height(); ++y) {
        *next++ = 0;
        const u32* pixels = canvas.Row(y);
        for (std::size_t x = 0; x < width; ++x, next += 3) {
            next[0] = static_cast<u8>(pixels[x] >> 16);
            next[1] = static_cast<u8>(pixels[x] >> 8);
            next[2] = static_cast<u8>(pixels[x]);
        }
    }
    return Deflated(rows, level);
}

/// libpng leaves by `longjmp`, so nothing here may have a destructor. The pixels are packed already.
bool Encode(png_structp png, png_infop info, const CCanvas& canvas, std::span<const u8> packed, png_textp texts,
            int textCount) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_IHDR(png, info, static_cast<png_uint_32>(canvas.Width()), static_cast<png_uint_32>(canvas.Height()), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_set_text(png, info, texts, textCount);
    png_write_info(png, info);
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"), packed.data(), packed.size());
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
    return true;
}

png_text Text(const char* key, std::string& text) {
    png_text entry = {};
    entry.compression = PNG_TEXT_COMPRESSION_NONE;
    entry.key = const_cast<char*>(key);
    entry.text = text.data();
    entry.text_length = text.size();
    return entry;
}

/// `description` is ASCII.
std::vector<u8> PngOf(const CCanvas& canvas, std::string description, int level) {
    std::vector<u8> bytes;
    const std::vector<u8> packed = PackedRows(canvas, level);
    std::string software = "ovix " OVIX_VERSION;
    png_text texts[] = {Text("Software", software), Text("Description", description)};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) throw std::bad_alloc();
    png_set_write_fn(png, &bytes, AppendBytes, nullptr);
    const bool done = Encode(png, info, canvas, packed, texts, 2);
    png_destroy_write_struct(&png, &info);
    if (!done) throw CAppError(ExitBadData, "a picture of this size cannot be written as PNG");
    return bytes;
}

class CPngWriter final : public IFrameWriter {
  public:
    CPngWriter(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : target_(target), series_(series), options_(options) {
        if (series.frames <= 1) file_ = std::make_unique<COutputFile>(target, options.overwrite);
    }

    SEncodedFrame Encode(const SPicture& picture) const override {
        const SRange range = RangeFor(picture);
        Json description = DescribeSeries(series_);
        description.update(DescribeFrame(picture));
        description["range"] = {range.low, range.high};
        description["palette"] = options_.palette->name;
        const SThermalPicture drawn = DrawThermalPicture(series_, picture, {range, *options_.palette, options_.marks});
        SEncodedFrame encoded;
        encoded.values.push_back(PngOf(drawn.canvas, JsonText(description, -1, true), options_.compression));
        return encoded;
    }
    void Append(const SPicture& picture, const SEncodedFrame& encoded) override {
        if (series_.frames > 1) file_ = std::make_unique<COutputFile>(PathOfFrame(picture.frame), options_.overwrite);
        for (const auto& piece : encoded.values) file_->Write(piece.data(), piece.size());
        if (series_.frames > 1) file_->Commit();
        empty_ = false;
    }
    void Finish() override {
        if (empty_) throw CAppError(ExitBadData, target_.string() + ": no frame to write");
        if (series_.frames <= 1) file_->Commit();
    }

  private:
    SRange RangeFor(const SPicture& picture) const {
        if (options_.range) return RangeBetween(options_.range->first, options_.range->second);
        if (series_.frames > 1) throw UsageFault(target_.string() + ": pictures of several frames need one range");
        return RangeOfPixels(picture.values, picture.status);
    }
    std::filesystem::path PathOfFrame(u64 frame) const {
        return target_.parent_path() /
               fmt::format("{}-{:06}{}", target_.stem().string(), frame, target_.extension().string());
    }

    std::filesystem::path target_;
    SSeries series_;
    SWriteOptions options_;
    std::unique_ptr<COutputFile> file_;
    bool empty_ = true;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakePngWriter(const std::filesystem::path& target, const SSeries& series,
                                            const SWriteOptions& options) {
    return std::make_unique<CPngWriter>(target, series, options);
}

}  // namespace ovix::app
