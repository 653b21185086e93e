#include "apps/ovix/output/canvas.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/cairo_text.h"

namespace ovix::app {

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

double CCanvas::TextWidth(const std::string& text, double size) { return WidthOf(LayOut(text, size).get()); }

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
