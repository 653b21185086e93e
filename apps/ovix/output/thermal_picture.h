#pragma once

#include "apps/ovix/output/canvas.h"
#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

struct SBox {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// A drawn picture and where its parts lie.
struct SThermalPicture {
    CCanvas canvas;
    SBox image;  ///< `scale` times the frame's size
    SBox bar;    ///< the palette from `high` at its first row to `low` at its last
    int scale;   ///< pixels of the picture for one of the frame, in both directions
};

/// How a picture is to look.
struct SLook {
    SRange range;
    const SPalette& palette;
    std::span<const SRegion> marks;  ///< regions to be drawn with their names
};

/// The frame in the palette's colours, to its right the colour bar with numbers, above the title and the unit, below
/// the caption and, where they occur, what the colours outside the palette mean. The name of a region stands inside the
/// picture's part of the drawing, wherever the region lies.
SThermalPicture DrawThermalPicture(const SSeries& series, const SPicture& picture, const SLook& look);

}  // namespace ovix::app
