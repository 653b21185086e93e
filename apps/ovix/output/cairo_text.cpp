#include "apps/ovix/output/cairo_text.h"

#include <algorithm>
#include <new>

namespace ovix::app {
namespace {

constexpr double kCapitalOfEm = 0.729;  ///< of the usual sans serif fonts

template <class T>
CairoObject<T> Own(T* object) {
    if (!object) throw std::bad_alloc();
    return {object, g_object_unref};
}

}  // namespace

CairoObject<PangoLayout> LayOut(const std::string& text, double size, double room) {
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
    if (WidthOf(layout.get()) > room) {
        pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
        pango_layout_set_width(layout.get(), static_cast<int>(std::max(room, 0.0) * PANGO_SCALE));
    }
    return layout;
}

double WidthOf(PangoLayout* layout) {
    int width = 0;
    pango_layout_get_size(layout, &width, nullptr);
    return static_cast<double>(width) / PANGO_SCALE;
}

void SetColour(cairo_t* cairo, SColour colour, double strength) {
    cairo_set_source_rgba(cairo, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0, strength);
}

void MoveToBaseline(cairo_t* cairo, PangoLayout* layout, double x, double y) {
    cairo_move_to(cairo, x, y - static_cast<double>(pango_layout_get_baseline(layout)) / PANGO_SCALE);
}

}  // namespace ovix::app
