#include "apps/ovix/output/canvas.h"

#include <fmt/format.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <new>

#include "apps/ovix/fault.h"

namespace ovix::app {
namespace {

constexpr double kCapitalOfEm = 0.729;  ///< of the usual sans serif fonts

template <class T>
using Object = std::unique_ptr<T, decltype(&g_object_unref)>;

template <class T>
Object<T> Own(T* object) {
    if (!object) throw std::bad_alloc();
    return {object, g_object_unref};
}

/// A line of text that is laid out. Edges are smoothed the same way on every machine, whatever its screen wants.
Object<PangoLayout> LayOut(const std::string& text, double size, double room) {
    const auto context = Own(pango_font_map_create_context(pango_cairo_font_map_get_default()));
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context.get(), options);
    cairo_font_options_destroy(options);

    auto layout = Own(pango_layout_new(context.get()));
    PangoFontDescription* font = pango_font_description_from_string("Sans");
    pango_font_description_set_absolute_size(font, size / kCapitalOfEm * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
    char* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    pango_layout_set_text(layout.get(), valid, -1);
    g_free(valid);
    int width = 0;
    pango_layout_get_size(layout.get(), &width, nullptr);
    if (width > room * PANGO_SCALE) {
        pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
        pango_layout_set_width(layout.get(), static_cast<int>(std::max(room, 0.0) * PANGO_SCALE));
    }
    return layout;
}

void SetColour(cairo_t* cairo, SColour colour, double strength = 1) {
    cairo_set_source_rgba(cairo, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0, strength);
}

/// The layout's top left corner for a text whose baseline begins at a point.
void MoveToBaseline(cairo_t* cairo, PangoLayout* layout, double x, double y) {
    cairo_move_to(cairo, x, y - static_cast<double>(pango_layout_get_baseline(layout)) / PANGO_SCALE);
}

}  // namespace

struct CCanvas::SDrawing {
    SDrawing(int width, int height)
        : surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), cairo_surface_destroy),
          cairo(cairo_create(surface.get()), cairo_destroy) {}

    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface;
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cairo;
};

CCanvas::CCanvas(int width, int height, SColour ground)
    : width_(width), height_(height), drawing_(new SDrawing(width, height), [](SDrawing* drawing) { delete drawing; }) {
    switch (cairo_status(drawing_->cairo.get())) {
        case CAIRO_STATUS_SUCCESS:
            break;
        case CAIRO_STATUS_INVALID_SIZE:
            throw CFault({.problem = fmt::format("a picture of {} x {} pixels cannot be drawn", width, height)});
        default:
            throw std::bad_alloc();
    }
    Fill(0, 0, width, height, ground);
}

u32* CCanvas::PixelsOf(int y) const {
    unsigned char* bytes = cairo_image_surface_get_data(drawing_->surface.get());
    return reinterpret_cast<u32*>(bytes + std::ptrdiff_t{y} * cairo_image_surface_get_stride(drawing_->surface.get()));
}

void CCanvas::Fill(int x, int y, int width, int height, SColour colour) {
    const int left = std::clamp(x, 0, width_), right = std::clamp(x + width, left, width_);
    const u32 pixel = u32{colour.red} << 16 | u32{colour.green} << 8 | colour.blue;
    for (int row = std::max(y, 0); row < std::min(y + height, height_); ++row) {
        std::fill(PixelsOf(row) + left, PixelsOf(row) + right, pixel);
    }
}

void CCanvas::Frame(int x, int y, int width, int height, int thickness, SColour colour) {
    Fill(x, y, width, thickness, colour);
    Fill(x, y + height - thickness, width, thickness, colour);
    Fill(x, y, thickness, height, colour);
    Fill(x + width - thickness, y, thickness, height, colour);
}

double CCanvas::TextWidth(const std::string& text, double size) {
    int width = 0;
    pango_layout_get_size(LayOut(text, size, kNoLimit).get(), &width, nullptr);
    return static_cast<double>(width) / PANGO_SCALE;
}

void CCanvas::Text(double x, double y, double size, const std::string& text, SColour colour, double room) {
    const auto layout = LayOut(text, size, room);
    cairo_surface_mark_dirty(drawing_->surface.get());  // pixels are also filled past it
    SetColour(drawing_->cairo.get(), colour);
    MoveToBaseline(drawing_->cairo.get(), layout.get(), x, y);
    pango_cairo_show_layout(drawing_->cairo.get(), layout.get());
    cairo_surface_flush(drawing_->surface.get());
}

void CCanvas::TextOnPicture(double x, double y, double size, const std::string& text, SColour colour, double room) {
    const auto layout = LayOut(text, size, room);
    cairo_surface_mark_dirty(drawing_->surface.get());
    MoveToBaseline(drawing_->cairo.get(), layout.get(), x, y);
    pango_cairo_layout_path(drawing_->cairo.get(), layout.get());
    SetColour(drawing_->cairo.get(), ColourOf(0x000000), 0.6);
    cairo_set_line_join(drawing_->cairo.get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_width(drawing_->cairo.get(), std::max(3.0, size * 0.3));
    cairo_stroke(drawing_->cairo.get());
    cairo_surface_flush(drawing_->surface.get());
    Text(x, y, size, text, colour, room);
}

}  // namespace ovix::app
