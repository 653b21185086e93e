#pragma once

#include "apps/ovix/output/picture_marks.h"

namespace ovix::app {

/// A drawn picture and where its parts lie.
struct SThermalPicture {
    CCanvas canvas;
    SBox image;  ///< `scale` times the frame's size
    SBox bar;    ///< the palette from `high` at its first row to `low` at its last; empty for video
    int scale;   ///< pixels of the picture for one of the frame, in both directions
};

/// How a picture is to look: of the options what they say of pictures, but for their range.
struct SLook {
    SRange range;
    const SWriteOptions& options;
};

/// The frame in the palette's colours, to its right the colour bar with numbers, above the title and the unit, below
/// the caption and, where they occur, what the colours outside the palette mean. Names and values of what is marked
/// stand inside the picture's part of the drawing, wherever it lies. Video has its own colours and no bar.
SThermalPicture DrawThermalPicture(const SSeries& series, const SPicture& picture, const SLook& look);

}  // namespace ovix::app
