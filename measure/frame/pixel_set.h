#pragma once

#include <span>
#include <string>
#include <vector>

#include "measure/frame/region.h"

namespace ovix::measure {

enum class EShape : u8 { Spot, Line, Rectangle, Circle, Polygon };

/// The name of a shape: "spot", "line", "rectangle", "circle", "polygon".
OVIX_MEASURE_API const char* ShapeWord(EShape kind);

/// A region of any shape, given by pixels, counted from 0 at the top left.
struct SShape {
    std::string name = {};
    EShape kind = EShape::Rectangle;
    /// Spot: itself. Line: its two ends. Rectangle: two opposite corners, both inside. Circle: the centre. Polygon: its
    /// corners, three or more, in order.
    std::vector<SPoint> points = {};
    double radius = 0;  ///< of a circle, in pixels; 0 is the centre alone

    OVIX_MEASURE_API static SShape Rectangle(std::string name, u16 x, u16 y, u16 width, u16 height);
};

/// The pixels of a line in order, both ends included: one for each step along its longer side, at the nearest place
/// across it, halves towards larger numbers.
OVIX_MEASURE_API std::vector<SPoint> LinePixels(SPoint from, SPoint to);

/// The pixels of a shape in frames of one size. Immutable; to be made once and used for all frames.
///
/// A circle holds the pixels whose centres are no further from its own than its radius, a polygon those of its outline
/// (the lines between its corners) and those whose centres it surrounds by the even-odd rule.
class OVIX_MEASURE_API CPixelSet {
  public:
    /// Throws `CError` (WrongArgument) for a shape that does not lie within the frame, or has too few or too many
    /// points. A circle may reach over the edge of the frame, whose pixels alone count then.
    CPixelSet(SShape shape, u16 width, u16 height);

    const SShape& Shape() const { return shape_; }
    /// Runs of pixels in rows from the top, each pixel once.
    const TArray<reduce::SScanLine>& Lines() const { return lines_; }
    u32 Count() const { return count_; }
    /// The smallest rectangle around them; for a rectangle, itself.
    const SRegion& Bounds() const { return bounds_; }
    u16 FrameWidth() const { return width_; }
    u16 FrameHeight() const { return height_; }

  private:
    SShape shape_;
    u16 width_;
    u16 height_;
    TArray<reduce::SScanLine> lines_;
    u32 count_ = 0;
    SRegion bounds_;
};

}  // namespace ovix::measure
