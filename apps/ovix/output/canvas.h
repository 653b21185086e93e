#pragma once

#include <string>
#include <vector>

#include "apps/ovix/output/palette.h"

namespace ovix::app {

/// A picture of RGB pixels to draw on. What lies outside is not drawn.
class CCanvas {
  public:
    CCanvas(int width, int height, SColour ground);

    int Width() const { return width_; }
    int Height() const { return height_; }
    /// Width times height pixels, row by row.
    const std::vector<SColour>& Pixels() const { return pixels_; }
    SColour At(int x, int y) const { return pixels_[Index(x, y)]; }

    void Set(int x, int y, SColour colour);
    void Fill(int x, int y, int width, int height, SColour colour);
    /// A rectangle's edge, `thickness` pixels to the inside.
    void Frame(int x, int y, int width, int height, int thickness, SColour colour);
    /// A line of text; x is its left end, y its baseline, `size` the height of a capital in pixels.
    void Text(float x, float y, float size, const std::string& text, SColour colour);
    /// The same with a dark edge around, for text on a picture.
    void TextOnPicture(float x, float y, float size, const std::string& text, SColour colour);

    static float TextWidth(const std::string& text, float size);

  private:
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x);
    }
    void Draw(float x, float y, float size, float pen, const std::string& text, SColour colour, float strength);

    int width_;
    int height_;
    std::vector<SColour> pixels_;
};

}  // namespace ovix::app
