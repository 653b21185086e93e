#include "apps/ovix/output/png_writer.h"

#include <fmt/format.h>
#include <png.h>

#include "apps/ovix/app_error.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/output/series_json.h"
#include "apps/ovix/output/thermal_picture.h"

namespace ovix::app {
namespace {

static_assert(sizeof(SColour) == 3, "rows are handed to libpng as they lie in memory");

void Append(png_structp png, png_bytep data, size_t size) {
    auto& bytes = *static_cast<std::vector<u8>*>(png_get_io_ptr(png));
    try {
        bytes.insert(bytes.end(), data, data + size);
    } catch (...) {
        png_error(png, "out of memory");
    }
}

/// libpng leaves by `longjmp`, so nothing here may have a destructor.
bool Encode(png_structp png, png_infop info, const CCanvas& canvas, png_textp texts, int textCount) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_IHDR(png, info, static_cast<png_uint_32>(canvas.Width()), static_cast<png_uint_32>(canvas.Height()), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_set_text(png, info, texts, textCount);
    png_write_info(png, info);
    for (int y = 0; y < canvas.Height(); ++y) {
        const SColour* row = canvas.Pixels().data() + std::size_t(y) * std::size_t(canvas.Width());
        png_write_row(png, reinterpret_cast<png_const_bytep>(row));
    }
    png_write_end(png, info);
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
std::vector<u8> PngOf(const CCanvas& canvas, std::string description) {
    std::vector<u8> bytes;
    std::string software = "ovix " OVIX_VERSION;
    png_text texts[] = {Text("Software", software), Text("Description", description)};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) throw std::bad_alloc();
    png_set_write_fn(png, &bytes, Append, nullptr);
    const bool done = Encode(png, info, canvas, texts, 2);
    png_destroy_write_struct(&png, &info);
    if (!done) throw CAppError(ExitBadData, "a picture of this size cannot be written as PNG");
    return bytes;
}

class CPngWriter : public IFrameWriter {
  public:
    CPngWriter(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : target_(target), series_(series), options_(options) {
        if (options.range) range_ = RangeBetween(options.range->first, options.range->second);
        if (series.frames <= 1) file_ = std::make_unique<COutputFile>(target, options.overwrite);
    }

    void Add(const SPicture& picture) override {
        if (!range_) range_ = RangeOfPixels(picture.values, picture.status);
        Json description = DescribeSeries(series_);
        description.update(DescribeFrame(picture));
        description["range"] = {range_->low, range_->high};
        const std::vector<u8> png = PngOf(DrawThermalPicture(series_, picture, *range_, options_.marks).canvas,
                                          JsonText(description, -1, true));
        if (series_.frames > 1) file_ = std::make_unique<COutputFile>(PathOfFrame(picture.frame), options_.overwrite);
        file_->Write(png.data(), png.size());
        if (series_.frames > 1) file_->Commit();
        empty_ = false;
    }
    void Finish() override {
        if (empty_) throw CAppError(ExitBadData, target_.string() + ": no frame to write");
        if (series_.frames <= 1) file_->Commit();
    }

  private:
    std::filesystem::path PathOfFrame(u64 frame) const {
        return target_.parent_path() /
               fmt::format("{}-{:06}{}", target_.stem().string(), frame, target_.extension().string());
    }

    std::filesystem::path target_;
    SSeries series_;
    SWriteOptions options_;
    std::optional<SRange> range_;
    std::unique_ptr<COutputFile> file_;
    bool empty_ = true;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakePngWriter(const std::filesystem::path& target, const SSeries& series,
                                            const SWriteOptions& options) {
    return std::make_unique<CPngWriter>(target, series, options);
}

}  // namespace ovix::app
