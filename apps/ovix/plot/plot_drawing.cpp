#include "apps/ovix/plot/plot_drawing.h"

#include <cairo-svg.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <new>

#include "apps/ovix/output/cairo_text.h"

namespace ovix::app {
namespace {

constexpr SColour kPaper = ColourOf(0xFFFFFF), kInk = ColourOf(0x16191F), kGrid = ColourOf(0xE0E4EA);
/// Distinct for eyes that mix up red and green, too; the second round is dashed.
constexpr SColour kCurveColours[] = {ColourOf(0x0072B2), ColourOf(0xD55E00), ColourOf(0x009E73),
                                     ColourOf(0xCC79A7), ColourOf(0xB8860B), ColourOf(0x56B4E9)};
constexpr double kLetter = 10, kEdge = 18, kNamesTop = 56, kNameLine = 22, kSample = 26;

struct SNamePlace {
    double x, y;
};

/// The names of the curves in lines below the title.
std::vector<SNamePlace> LayNames(const SPlot& plot) {
    std::vector<SNamePlace> places;
    double x = kEdge, y = kNamesTop;
    for (const SCurve& curve : plot.curves) {
        const double width = kSample + WidthOf(LayOut(curve.name, kLetter, kPlotWidth / 2.0).get()) + 2 * kLetter;
        if (x > kEdge && x + width > kPlotWidth - kEdge) x = kEdge, y += kNameLine;
        places.push_back({x, y});
        x += width;
    }
    return places;
}

/// The range of the curves and a little around it; histograms begin at 0.
SRange ValuesOf(const SPlot& plot) {
    double low = plot.steps ? 0 : INFINITY, high = -INFINITY;
    for (const SCurve& curve : plot.curves) {
        for (const double value : curve.values) {
            if (!std::isfinite(value)) continue;
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    if (!(low <= high)) return {0, 1};
    const SRange range = RangeBetween(static_cast<float>(low), static_cast<float>(high));
    const float around = (range.high - range.low) * 0.04f;
    return {plot.steps ? 0 : range.low - around, range.high + around};
}

class CPlotDrawing {
  public:
    CPlotDrawing(cairo_t* cairo, const SPlot& plot) : cairo_(cairo), plot_(plot), frame_(FrameOf(plot)) {}

    void Draw() {
        SetColour(cairo_, kPaper);
        cairo_paint(cairo_);
        Text(kEdge, 30, kLetter * 1.2, plot_.title, kPlotWidth - 2 * kEdge);
        DrawAxes();
        const auto places = LayNames(plot_);
        for (std::size_t i = 0; i < plot_.curves.size(); ++i) {
            DrawCurve(plot_.curves[i], i);
            DrawName(plot_.curves[i].name, i, places[i]);
        }
    }

  private:
    void Text(double x, double y, double size, const std::string& text, double room) {
        const auto layout = LayOut(text, size, room);
        SetColour(cairo_, kInk);
        MoveToBaseline(cairo_, layout.get(), x, y);
        pango_cairo_show_layout(cairo_, layout.get());
    }
    void Line(double x0, double y0, double x1, double y1) {
        cairo_move_to(cairo_, x0, y0);
        cairo_line_to(cairo_, x1, y1);
        cairo_stroke(cairo_);
    }

    void DrawAxes() {
        const double bottom = frame_.top + frame_.height, right = frame_.left + frame_.width;
        cairo_set_line_width(cairo_, 1);
        for (const STick& tick : Ticks({static_cast<float>(frame_.first), static_cast<float>(frame_.last)}, 10)) {
            const double x = std::round(frame_.XOf(tick.value)) + 0.5;
            SetColour(cairo_, kGrid);
            Line(x, frame_.top, x, bottom);
            Text(x - WidthOf(LayOut(tick.label, kLetter).get()) / 2, bottom + 2 * kLetter, kLetter, tick.label, 200);
        }
        for (const STick& tick : Ticks({static_cast<float>(frame_.lowest), static_cast<float>(frame_.highest)}, 7)) {
            const double y = std::round(frame_.YOf(tick.value)) + 0.5;
            SetColour(cairo_, kGrid);
            Line(frame_.left, y, right, y);
            const double width = WidthOf(LayOut(tick.label, kLetter).get());
            Text(frame_.left - width - kLetter * 0.8, y + kLetter / 2, kLetter, tick.label, 200);
        }
        SetColour(cairo_, kInk);
        Line(frame_.left, bottom, right, bottom);
        Line(frame_.left, frame_.top, frame_.left, bottom);
        const double width = WidthOf(LayOut(plot_.xLabel, kLetter).get());
        Text(frame_.left + (frame_.width - width) / 2, kPlotHeight - kEdge, kLetter, plot_.xLabel, frame_.width);
        cairo_save(cairo_);
        cairo_translate(cairo_, kEdge + kLetter, bottom);
        cairo_rotate(cairo_, -std::acos(0.0));
        const double length = std::min(WidthOf(LayOut(plot_.yLabel, kLetter).get()), frame_.height);
        Text((frame_.height - length) / 2, 0, kLetter, plot_.yLabel, frame_.height);
        cairo_restore(cairo_);
    }

    void SetCurve(std::size_t i) {
        constexpr std::size_t kColours = std::size(kCurveColours);
        const double dashes[] = {7, 4};
        SetColour(cairo_, kCurveColours[i % kColours]);
        cairo_set_dash(cairo_, dashes, i / kColours % 2 ? 2 : 0, 0);
        cairo_set_line_width(cairo_, 1.75);
        cairo_set_line_join(cairo_, CAIRO_LINE_JOIN_ROUND);
    }

    /// A value between two gaps is a dot.
    void DrawCurve(const SCurve& curve, std::size_t number) {
        SetCurve(number);
        cairo_set_line_cap(cairo_, CAIRO_LINE_CAP_ROUND);
        bool isOn = false;
        for (std::size_t i = 0; i < curve.values.size(); ++i) {
            const double x = frame_.XOf(plot_.x[i]), y = frame_.YOf(curve.values[i]);
            const bool goesOn = isOn;
            isOn = std::isfinite(y);
            if (!isOn) continue;
            goesOn ? cairo_line_to(cairo_, x, y) : cairo_move_to(cairo_, x, y);
            cairo_line_to(cairo_, plot_.steps ? frame_.XOf(plot_.x[i + 1]) : x, y);
        }
        cairo_stroke(cairo_);
        cairo_set_line_cap(cairo_, CAIRO_LINE_CAP_BUTT);
        cairo_set_dash(cairo_, nullptr, 0, 0);
    }

    void DrawName(const std::string& name, std::size_t number, const SNamePlace& place) {
        SetCurve(number);
        Line(place.x, place.y - kLetter / 2, place.x + kSample - kLetter * 0.7, place.y - kLetter / 2);
        cairo_set_dash(cairo_, nullptr, 0, 0);
        Text(place.x + kSample, place.y, kLetter, name, kPlotWidth / 2.0);
    }

    cairo_t* cairo_;
    const SPlot& plot_;
    SPlotFrame frame_;
};

void DrawOn(cairo_surface_t* surface, const SPlot& plot) {
    const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cairo(cairo_create(surface), cairo_destroy);
    CPlotDrawing(cairo.get(), plot).Draw();
    if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
    cairo_surface_flush(surface);
}

cairo_status_t Append(void* text, const unsigned char* data, unsigned int size) {
    try {
        static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(data), size);
        return CAIRO_STATUS_SUCCESS;
    } catch (...) {
        return CAIRO_STATUS_NO_MEMORY;
    }
}

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

}  // namespace

SPlotFrame FrameOf(const SPlot& plot) {
    const auto places = LayNames(plot);
    const SRange values = ValuesOf(plot);
    double labels = 0;
    for (const STick& tick : Ticks(values, 7)) labels = std::max(labels, WidthOf(LayOut(tick.label, kLetter).get()));
    const double top = (places.empty() ? kNamesTop : places.back().y) + 1.6 * kLetter;
    const double left = kEdge + 3.4 * kLetter + labels;
    const double first = plot.x.empty() ? 0 : plot.x.front(), last = plot.x.empty() ? 1 : plot.x.back();
    const bool onePlace = !(first < last);
    return {.left = left,
            .top = top,
            .width = kPlotWidth - kEdge - left,
            .height = kPlotHeight - kEdge - 4.2 * kLetter - top,
            .lowest = values.low,
            .highest = values.high,
            .first = onePlace ? first - 0.5 : first,
            .last = onePlace ? first + 0.5 : last};
}

SPngRows PlotPixels(const SPlot& plot) {
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kPlotWidth, kPlotHeight),
                          cairo_surface_destroy);
    DrawOn(surface.get(), plot);
    const auto row = [&](int y) {
        return reinterpret_cast<const u32*>(cairo_image_surface_get_data(surface.get()) +
                                            std::ptrdiff_t{y} * cairo_image_surface_get_stride(surface.get()));
    };
    return RowsOf(kPlotWidth, kPlotHeight, row);
}

std::string PlotSvg(const SPlot& plot, const std::string& description) {
    std::string svg;
    const Surface surface(cairo_svg_surface_create_for_stream(Append, &svg, kPlotWidth, kPlotHeight),
                          cairo_surface_destroy);
    cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
    DrawOn(surface.get(), plot);
    cairo_surface_finish(surface.get());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
    std::string safe;
    for (const char c : description) safe += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
    const std::size_t inside = svg.find('>', svg.find("<svg")) + 1;
    return svg.insert(inside, "\n<desc>" + safe + "</desc>");
}

}  // namespace ovix::app
