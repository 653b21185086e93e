#pragma once

#include <memory>
#include <string>

#include "apps/ovix/output/palette.h"

namespace ovix::app {

/// A picture of RGB pixels to draw on. What lies outside is not drawn. Text is UTF-8 in any script that the fonts of
/// the machine have, from left to right or from right to left as it is written; all of it stands on one line.
class CCanvas {
  public:
    CCanvas(int width, int height, SColour ground);

    int Width() const { return width_; }
    int Height() const { return height_; }
    /// A row's pixels as 0xRRGGBB; what stands above these bits does not matter.
    const u32* Row(int y) const { return PixelsOf(y); }
    SColour At(int x, int y) const { return ColourOf(Row(y)[x]); }

    void Fill(int x, int y, int width, int height, SColour colour);
    /// A rectangle's edge, `thickness` pixels to the inside.
    void Frame(int x, int y, int width, int height, int thickness, SColour colour);
    /// A line of text; x is its left end, y its baseline, `size` the height of a capital in pixels. Text that is wider
    /// than `room` ends in three dots.
    void Text(double x, double y, double size, const std::string& text, SColour colour, double room = kNoLimit);
    /// The same with a dark edge around, for text on a picture.
    void TextOnPicture(double x, double y, double size, const std::string& text, SColour colour, double room);

    static double TextWidth(const std::string& text, double size);

    static constexpr double kNoLimit = 1e6;

  private:
    u32* PixelsOf(int y) const;

    int width_;
    int height_;
    struct SDrawing;
    std::unique_ptr<SDrawing, void (*)(SDrawing*)> drawing_;
};

}  // namespace ovix::app
