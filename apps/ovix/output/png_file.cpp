#include "apps/ovix/output/png_file.h"

#include <png.h>

#include <new>

#include "apps/ovix/output/file_kinds.h"

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

/// libpng leaves by `longjmp`, so nothing here may have a destructor. The pixels are packed already.
bool Encode(png_structp png, png_infop info, const SPngRows& rows, std::span<const u8> packed, png_textp texts,
            int textCount) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_IHDR(png, info, rows.width, rows.height, rows.grey16 ? 16 : 8,
                 rows.grey16 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!rows.grey16) png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
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

}  // namespace

SPngRows RowsOf(int width, int height, const std::function<const u32*(int y)>& row) {
    SPngRows rows{static_cast<u32>(width), static_cast<u32>(height), false, {}};
    rows.bytes.resize(rows.height * (1 + 3 * std::size_t{rows.width}));
    u8* next = rows.bytes.data();
    for (int y = 0; y < height; ++y) {
        *next++ = 0;
        const u32* pixels = row(y);
        for (u32 x = 0; x < rows.width; ++x, next += 3) {
            next[0] = static_cast<u8>(pixels[x] >> 16);
            next[1] = static_cast<u8>(pixels[x] >> 8);
            next[2] = static_cast<u8>(pixels[x]);
        }
    }
    return rows;
}

SPngRows RowsOf(const CCanvas& canvas) {
    return RowsOf(canvas.Width(), canvas.Height(), [&](int y) { return canvas.Row(y); });
}

std::vector<u8> PngOf(const SPngRows& rows, std::string description, int level) {
    std::vector<u8> bytes;
    const std::vector<u8> packed = Deflated(rows.bytes, level);
    std::string software = "ovix " OVIX_VERSION;
    png_text texts[] = {Text("Software", software), Text("Description", description)};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) throw std::bad_alloc();
    png_set_write_fn(png, &bytes, AppendBytes, nullptr);
    const bool done = Encode(png, info, rows, packed, texts, 2);
    png_destroy_write_struct(&png, &info);
    if (!done) throw CAppError(ExitBadData, "a picture of this size cannot be written as PNG");
    return bytes;
}

}  // namespace ovix::app
