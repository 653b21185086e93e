#include "apps/ovix/output/picture_marks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ovix::app {
namespace {

constexpr SColour kLight = ColourOf(0xFFFFFF);
constexpr SColour kShadow = ColourOf(0x000000);

bool HasValue(const SPicture& picture, std::size_t i) {
    const u8 status = picture.status.empty() ? u8{0} : picture.status[i];
    const EPixelKind kind = KindOf(picture.values[i], status, {0, 0});
    return kind != PixelNoData && kind != PixelUnder && kind != PixelOver;
}

/// Where the least and the greatest of the good pixels are, the first of equal ones; none where no pixel is good.
std::optional<std::pair<std::size_t, std::size_t>> ExtremesAt(const SPicture& picture) {
    std::optional<std::pair<std::size_t, std::size_t>> at;
    for (std::size_t i = 0; i < picture.values.size(); ++i) {
        const float value = picture.values[i];
        if (!std::isfinite(value) || (!picture.status.empty() && picture.status[i])) continue;
        if (!at) at = {i, i};
        if (value < picture.values[at->first]) at->first = i;
        if (value > picture.values[at->second]) at->second = i;
    }
    return at;
}

/// With as many decimals as show a thousandth of what lies between the two.
std::string ValueText(float value, double span, const SUnitText& unit) {
    const int decimals = span > 0 ? std::clamp(static_cast<int>(std::ceil(2.5 - std::log10(span))), 0, 6) : 1;
    return fmt::format("{:.{}f} {}", value, decimals, unit.symbol);
}

}  // namespace

SBox CPictureMarks::BoxOf(int x, int y, int width, int height) const {
    return {image_.x + x * scale_, image_.y + y * scale_, width * scale_, height * scale_};
}

template <class Differ>
void CPictureMarks::Edges(SPoint from, SPoint to, const Differ& differ) {
    const auto draw = [&](int thickness, SColour colour) {
        const int before = thickness / 2, length = scale_ + thickness;
        for (int y = from.y; y <= to.y; ++y) {
            for (int x = from.x; x <= to.x; ++x) {
                const SBox box = BoxOf(x, y, 1, 1);
                const int right = box.x + scale_ - before, below = box.y + scale_ - before;
                if (differ(x, y, x + 1, y)) canvas_.Fill(right, box.y - before, thickness, length, colour);
                if (differ(x, y, x, y + 1)) canvas_.Fill(box.x - before, below, length, thickness, colour);
            }
        }
    };
    draw(3 * Line(), kShadow);
    draw(Line(), kLight);
}

void CPictureMarks::Region(const measure::CPixelSet& region) {
    const measure::SRegion& bounds = region.Bounds();
    const int left = bounds.x - 1, top = bounds.y - 1, width = bounds.width + 2, height = bounds.height + 2;
    std::vector<bool> inside(static_cast<std::size_t>(width * height));  // with a rim of pixels that are not
    const auto at = [&](int x, int y) { return static_cast<std::size_t>((y - top) * width + x - left); };
    for (const reduce::SScanLine& line : region.Lines()) {
        for (int x = line.left; x <= line.right; ++x) inside[at(x, line.row)] = true;
    }
    Edges({left, top}, {left + width - 2, top + height - 2},
          [&](int x, int y, int x2, int y2) { return inside[at(x, y)] != inside[at(x2, y2)]; });
    Name(region.Shape().name, BoxOf(bounds.x, bounds.y, bounds.width, bounds.height), true);
}

void CPictureMarks::Isotherm(const SPicture& picture, u16 width, float level) {
    const int height = static_cast<int>(picture.values.size()) / std::max<int>(1, width);
    Edges({0, 0}, {width - 1, height - 1}, [&](int x, int y, int x2, int y2) {
        const auto at = [&](int column, int row) {
            return static_cast<std::size_t>(row) * width + static_cast<std::size_t>(column);
        };
        const std::size_t i = at(x, y), j = at(x2, y2);
        return x2 < width && y2 < height && (picture.values[i] >= level) != (picture.values[j] >= level) &&
               HasValue(picture, i) && HasValue(picture, j);
    });
}

void CPictureMarks::Extremes(const SPicture& picture, u16 width, const SUnitText& unit) {
    const auto at = ExtremesAt(picture);
    if (!at) return;
    const auto [least, greatest] = *at;
    const double span = double{picture.values[greatest]} - picture.values[least];
    const auto upper = std::min(least, greatest);  // its value stands above it, that of the other one below
    for (const auto& [pixel, word] : {std::pair{least, "min"}, std::pair{greatest, "max"}}) {
        const SBox box = BoxOf(static_cast<int>(pixel % width), static_cast<int>(pixel / width), 1, 1);
        CrossHair(box);
        const int arm = Letters(0.7);
        Name(fmt::format("{} {}", word, ValueText(picture.values[pixel], span, unit)),
             {box.x, box.y - arm, box.width, box.height + 2 * arm}, pixel == upper);
    }
}

/// Four arms that leave the pixel itself to be seen.
void CPictureMarks::CrossHair(const SBox& pixel) {
    const int line = Line(), gap = 2 * line, arm = Letters(0.9);
    const int x = pixel.x + (pixel.width - line) / 2, y = pixel.y + (pixel.height - line) / 2;
    const auto draw = [&](int edge, SColour colour) {
        const int length = arm + 2 * edge, thickness = line + 2 * edge;
        canvas_.Fill(pixel.x - gap - arm - edge, y - edge, length, thickness, colour);
        canvas_.Fill(pixel.x + pixel.width + gap - edge, y - edge, length, thickness, colour);
        canvas_.Fill(x - edge, pixel.y - gap - arm - edge, thickness, length, colour);
        canvas_.Fill(x - edge, pixel.y + pixel.height + gap - edge, thickness, length, colour);
    };
    draw(line, kShadow);
    draw(0, kLight);
}

void CPictureMarks::LineAcross(const SBox& box, int y) {
    const int line = Line();
    canvas_.Fill(box.x, y - line - line / 2, box.width, 3 * line, kShadow);
    canvas_.Fill(box.x, y - line / 2, box.width, line, kLight);
}

/// Above its box, or inside where there is no room above; below it where that is wanted and there is room; never beyond
/// its room, where the colour bar is.
void CPictureMarks::Name(const std::string& name, const SBox& box, bool above) {
    const int lowest = image_.y + image_.height - Letters(0.5), under = box.y + box.height + Letters(1.8);
    const bool below = !above && under <= lowest;
    const bool roomAbove = !below && box.y - Letters(2) > image_.y;
    const int inside = std::min(box.y + Letters(1.8), lowest);
    const int baseline = below ? under : roomAbove ? box.y - Letters(0.7) : inside;
    const double room = room_ - Letters(0.8);
    const double width = std::min(CCanvas::TextWidth(name, letter_), room);
    const double left = box.x + (roomAbove || below ? 0 : Letters(0.8));
    canvas_.TextOnPicture(std::clamp(left, 0.0 + image_.x, image_.x + room - width), baseline, letter_, name, kLight,
                          room);
}

}  // namespace ovix::app
