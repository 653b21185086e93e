#pragma once

#include <cmath>

#include "apps/ovix/output/canvas.h"
#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

struct SBox {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// What is drawn on top of a frame's pixels: light lines between dark ones, which show on every colour.
class CPictureMarks {
  public:
    /// `scale` pixels of the canvas show one of the frame, `letter` is the height of a capital, and names have `room`
    /// to the right from the image's left edge.
    CPictureMarks(CCanvas& canvas, const SBox& image, int scale, int letter, int room)
        : canvas_(canvas), image_(image), scale_(scale), letter_(letter), room_(room) {}

    /// Its edge and its name.
    void Region(const measure::CPixelSet& region);
    /// A line between the pixels that are at least so warm and those that are not; none beside pixels without a value.
    void Isotherm(const SPicture& picture, u16 width, float level);
    /// Cross-hairs around the least and the greatest of the good pixels, with their values.
    void Extremes(const SPicture& picture, u16 width, const SUnitText& unit);
    /// A line over a part of the canvas, such as the colour bar.
    void LineAcross(const SBox& box, int y);

    /// The thickness of a line.
    int Line() const { return std::max(1, letter_ / 10); }

  private:
    /// Lines between neighbouring pixels that `differ(x, y, x2, y2)`, for pixels from `from` up to `to`, both included.
    template <class Differ>
    void Edges(SPoint from, SPoint to, const Differ& differ);
    SBox BoxOf(int x, int y, int width, int height) const;
    void CrossHair(const SBox& pixel);
    void Name(const std::string& name, const SBox& box, bool above);
    int Letters(double count) const { return static_cast<int>(std::lround(count * letter_)); }

    CCanvas& canvas_;
    SBox image_;
    int scale_;
    int letter_;
    int room_;
};

}  // namespace ovix::app
