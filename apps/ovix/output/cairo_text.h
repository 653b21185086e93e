#pragma once

#include <pango/pangocairo.h>

#include <memory>
#include <string>

#include "apps/ovix/output/palette.h"

namespace ovix::app {

// Text on a drawing of Cairo's. Only what draws includes this.

template <class T>
using CairoObject = std::unique_ptr<T, decltype(&g_object_unref)>;

/// A line of text that is laid out, whose capitals are `size` high; if it is wider than `room` it ends in three dots.
/// Edges are smoothed the same way on every machine, whatever its screen wants.
CairoObject<PangoLayout> LayOut(const std::string& text, double size, double room = 1e6);
double WidthOf(PangoLayout* layout);

void SetColour(cairo_t* cairo, SColour colour, double strength = 1);
/// To the layout's top left corner for a text whose baseline begins at a point.
void MoveToBaseline(cairo_t* cairo, PangoLayout* layout, double x, double y);

}  // namespace ovix::app
