#include "apps/ovix/output/canvas.h"

#include <algorithm>
#include <cmath>

#include "apps/ovix/output/stroke_font.h"

namespace ovix::app {
namespace {

u8 Mix(u8 ground, u8 colour, float share) {
    const auto from = static_cast<float>(ground);
    return static_cast<u8>(std::lround(from + (static_cast<float>(colour) - from) * share));
}

float DistanceToPiece(SPenPoint p, SPenPoint a, SPenPoint b) {
    const float dx = b.x - a.x;
    const float dy = b.y - a.y;
    const float length = dx * dx + dy * dy;
    const float along = length > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length, 0.0f, 1.0f) : 0.0f;
    return std::hypot(p.x - a.x - along * dx, p.y - a.y - along * dy);
}

/// How much of each pixel of a rectangle the pen covers. The strokes of a text overlap, so the greatest share counts.
class CCoverage {
  public:
    CCoverage(int left, int top, int width, int height)
        : left_(left),
          top_(top),
          width_(width),
          height_(height),
          share_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

    void Piece(SPenPoint a, SPenPoint b, float pen) {
        const float reach = pen + 1;
        const int x0 = std::max(0, static_cast<int>(std::floor(std::min(a.x, b.x) - reach)) - left_);
        const int x1 = std::min(width_ - 1, static_cast<int>(std::ceil(std::max(a.x, b.x) + reach)) - left_);
        const int y0 = std::max(0, static_cast<int>(std::floor(std::min(a.y, b.y) - reach)) - top_);
        const int y1 = std::min(height_ - 1, static_cast<int>(std::ceil(std::max(a.y, b.y) + reach)) - top_);
        for (int y = y0; y <= y1; ++y) {
            for (int x = x0; x <= x1; ++x) {
                const SPenPoint centre{static_cast<float>(x + left_) + 0.5f, static_cast<float>(y + top_) + 0.5f};
                float& share = At(x, y);
                share = std::max(share, std::clamp(pen + 0.5f - DistanceToPiece(centre, a, b), 0.0f, 1.0f));
            }
        }
    }
    float& At(int x, int y) {
        return share_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)];
    }

  private:
    int left_;
    int top_;
    int width_;
    int height_;
    std::vector<float> share_;
};

}  // namespace

CCanvas::CCanvas(int width, int height, SColour ground)
    : width_(width),
      height_(height),
      pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), ground) {}

void CCanvas::Set(int x, int y, SColour colour) {
    if (x >= 0 && y >= 0 && x < width_ && y < height_) pixels_[Index(x, y)] = colour;
}

void CCanvas::Fill(int x, int y, int width, int height, SColour colour) {
    for (int row = std::max(y, 0); row < std::min(y + height, height_); ++row) {
        for (int column = std::max(x, 0); column < std::min(x + width, width_); ++column) {
            pixels_[Index(column, row)] = colour;
        }
    }
}

void CCanvas::Frame(int x, int y, int width, int height, int thickness, SColour colour) {
    Fill(x, y, width, thickness, colour);
    Fill(x, y + height - thickness, width, thickness, colour);
    Fill(x, y, thickness, height, colour);
    Fill(x + width - thickness, y, thickness, height, colour);
}

float CCanvas::TextWidth(const std::string& text, float size) { return WriteWithPen(text).width * size; }

void CCanvas::Text(float x, float y, float size, const std::string& text, SColour colour) {
    Draw(x, y, size, size * 0.065f, text, colour, 1.0f);
}

void CCanvas::TextOnPicture(float x, float y, float size, const std::string& text, SColour colour) {
    Draw(x, y, size, size * 0.065f + std::max(1.5f, size * 0.15f), text, ColourOf(0x000000), 0.55f);
    Text(x, y, size, text, colour);
}

void CCanvas::Draw(float x, float y, float size, float pen, const std::string& text, SColour colour, float strength) {
    const SPenText written = WriteWithPen(text);
    const int margin = static_cast<int>(std::ceil(pen)) + 2;
    const int left = static_cast<int>(std::floor(x)) - margin;
    const int top = static_cast<int>(std::floor(y - size * 1.2f)) - margin;
    const int width = static_cast<int>(std::ceil(written.width * size)) + 2 * margin + 1;
    const int height = static_cast<int>(std::ceil(size * 1.7f)) + 2 * margin + 1;
    CCoverage coverage(left, top, width, height);
    const auto place = [&](SPenPoint p) { return SPenPoint{x + p.x * size, y + p.y * size}; };
    for (const PenStroke& stroke : written.strokes) {
        for (std::size_t i = 1; i < stroke.size(); ++i) coverage.Piece(place(stroke[i - 1]), place(stroke[i]), pen);
    }
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const float share = coverage.At(column, row) * strength;
            const int px = left + column;
            const int py = top + row;
            if (share <= 0 || px < 0 || py < 0 || px >= width_ || py >= height_) continue;
            SColour& ground = pixels_[Index(px, py)];
            ground = {Mix(ground.red, colour.red, share), Mix(ground.green, colour.green, share),
                      Mix(ground.blue, colour.blue, share)};
        }
    }
}

}  // namespace ovix::app
