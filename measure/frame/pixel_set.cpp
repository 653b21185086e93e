#include "measure/frame/pixel_set.h"

#include <algorithm>
#include <cmath>

#include "measure/error.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

struct SRun {
    i32 y;
    i32 left;
    i32 right;
};
using Runs = std::vector<SRun>;

void AddLine(Runs& runs, SPoint from, SPoint to) {
    for (const SPoint at : LinePixels(from, to)) runs.push_back({at.y, at.x, at.x});
}

Runs RectangleRuns(SPoint a, SPoint b) {
    Runs runs;
    for (i32 y = std::min(a.y, b.y); y <= std::max(a.y, b.y); ++y)
        runs.push_back({y, std::min(a.x, b.x), std::max(a.x, b.x)});
    return runs;
}

Runs CircleRuns(SPoint centre, double radius) {
    Runs runs;
    const auto reach = static_cast<i32>(radius);
    for (i32 dy = -reach; dy <= reach; ++dy) {
        const auto dx = static_cast<i32>(std::sqrt(radius * radius - double{1} * dy * dy));
        runs.push_back({centre.y + dy, centre.x - dx, centre.x + dx});
    }
    return runs;
}

/// The pixels of a row between the first and the second, the third and the fourth edge that it crosses.
void AddInside(Runs& runs, const std::vector<SPoint>& corners, i32 y) {
    std::vector<double> crossings;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const SPoint a = corners[i], b = corners[(i + 1) % corners.size()];
        if ((a.y <= y) != (b.y <= y)) crossings.push_back(a.x + double{1} * (y - a.y) * (b.x - a.x) / (b.y - a.y));
    }
    std::ranges::sort(crossings);
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
        const auto left = static_cast<i32>(std::ceil(crossings[i]));
        const auto right = static_cast<i32>(std::floor(crossings[i + 1]));
        if (left <= right) runs.push_back({y, left, right});
    }
}

Runs PolygonRuns(const std::vector<SPoint>& corners) {
    Runs runs;
    for (std::size_t i = 0; i < corners.size(); ++i) AddLine(runs, corners[i], corners[(i + 1) % corners.size()]);
    const auto [top, bottom] = std::ranges::minmax(corners, {}, &SPoint::y);
    for (i32 y = top.y; y <= bottom.y; ++y) AddInside(runs, corners, y);
    return runs;
}

Runs RunsOf(const SShape& shape) {
    const std::vector<SPoint>& points = shape.points;
    switch (shape.kind) {
        case EShape::Spot:
            return RectangleRuns(points[0], points[0]);
        case EShape::Line: {
            Runs runs;
            AddLine(runs, points[0], points[1]);
            return runs;
        }
        case EShape::Rectangle:
            return RectangleRuns(points[0], points[1]);
        case EShape::Circle:
            return CircleRuns(points[0], shape.radius);
        case EShape::Polygon:
            return PolygonRuns(points);
    }
    return {};
}

/// In order, within the frame, and each pixel once.
Runs Merged(Runs runs, u16 width, u16 height) {
    std::ranges::sort(runs, {}, [](const SRun& run) { return std::pair(run.y, run.left); });
    Runs merged;
    for (SRun run : runs) {
        run.left = std::max(run.left, 0);
        run.right = std::min(run.right, width - 1);
        if (run.y < 0 || run.y >= height || run.left > run.right) continue;
        if (!merged.empty() && merged.back().y == run.y && run.left <= merged.back().right + 1)
            merged.back().right = std::max(merged.back().right, run.right);
        else
            merged.push_back(run);
    }
    return merged;
}

void Check(const SShape& shape, u16 width, u16 height) {
    constexpr std::size_t kMostCorners = 10'000;
    const auto fail = [&](std::string expected, std::string found) {
        throw CError({.id = EError::WrongArgument,
                      .problem = "region " + shape.name,
                      .expected = std::move(expected),
                      .found = std::move(found)});
    };
    const std::size_t count = shape.points.size();
    const bool one = shape.kind == EShape::Spot || shape.kind == EShape::Circle;
    if (shape.kind == EShape::Polygon ? count < 3 || count > kMostCorners : count != (one ? 1 : 2))
        fail(shape.kind == EShape::Polygon ? "3 to 10000 corners"
             : one                         ? "one point"
                                           : "two points",
             Say(count, count == 1 ? " point" : " points"));
    for (const SPoint at : shape.points) {
        if (at.x < 0 || at.y < 0 || at.x >= width || at.y >= height)
            fail(Say("pixels of a frame of ", width, " x ", height), Say(at.x, ",", at.y));
    }
    constexpr double kLargest = 65535;
    if (!(shape.radius >= 0 && shape.radius <= kLargest)) fail("a radius from 0 to 65535", "another");
}

}  // namespace

const char* ShapeWord(EShape kind) {
    constexpr const char* kWords[] = {"spot", "line", "rectangle", "circle", "polygon"};
    return kWords[static_cast<std::size_t>(kind)];
}

SShape SShape::Rectangle(std::string name, u16 x, u16 y, u16 width, u16 height) {
    return {.name = std::move(name), .kind = EShape::Rectangle, .points = {{x, y}, {x + width - 1, y + height - 1}}};
}

std::vector<SPoint> LinePixels(SPoint from, SPoint to) {
    const i32 steps = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
    std::vector<SPoint> pixels{from};
    for (i32 i = 1; i <= steps; ++i) {
        const auto between = [&](i32 a, i32 b) {
            return static_cast<i32>(std::floor(a + double{1} * (b - a) * i / steps + 0.5));
        };
        pixels.push_back({between(from.x, to.x), between(from.y, to.y)});
    }
    return pixels;
}

CPixelSet::CPixelSet(SShape shape, u16 width, u16 height) : shape_(std::move(shape)), width_(width), height_(height) {
    Check(shape_, width, height);
    i32 left = width, right = 0;
    const Runs runs = Merged(RunsOf(shape_), width, height);
    for (const SRun& run : runs) {
        lines_.Add({static_cast<u16>(run.y), static_cast<u16>(run.left), static_cast<u16>(run.right)});
        count_ += static_cast<u32>(run.right - run.left + 1);
        left = std::min(left, run.left);
        right = std::max(right, run.right);
    }
    bounds_ = {.name = shape_.name,
               .x = static_cast<u16>(left),
               .y = static_cast<u16>(runs.front().y),
               .width = static_cast<u16>(right - left + 1),
               .height = static_cast<u16>(runs.back().y - runs.front().y + 1)};
}

}  // namespace ovix::measure
