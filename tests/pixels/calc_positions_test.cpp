#include "reduce/pixels/stats.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/stats_fields.h"

namespace ovix::reduce {
namespace {

using test::Held;

TEST(CalcPositions, PlacesInTheSelectionBecomePoints) {
    const auto points = [](const auto&... selection) {
        CStats s = Held();
        s.minimumIndex = 0;
        s.maximumIndex = 3;
        s.allMinimumIndex = 5;
        s.allMaximumIndex = 0xFFFFFFFF;
        s.firstIndex = 1;
        s.lastIndex = 4;
        CalcPositions(s, selection...);
        return std::vector<SPoint>{s.minimumPosition, s.maximumPosition,   s.allMinimumPosition,
                                   s.boundsTopLeft,   s.boundsBottomRight, s.allMaximumPosition};
    };
    const auto expect = [](std::vector<SPoint> found, std::vector<SPoint> expected) {
        for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(found[i], expected[i]) << i;
    };
    expect(points(SArea{10, 20, 12, 22}), {{20, 10}, {20, 11}, {22, 11}, {21, 10}, {21, 11}});
    expect(points(u16{4}, u16{9}), {{0, 0}, {3, 0}, {1, 1}, {1, 0}, {0, 1}});
    TArray<SScanLine> lines;
    lines.Add({7, 5, 7});
    lines.Add({2, 1, 2});  // five pixels: places 5 and beyond lie nowhere, and their points stay
    expect(points(lines), {{5, 7}, {1, 2}, {101, 102}, {6, 7}, {2, 2}, {101, 102}});
    const u32 indices[] = {9, 4, 8, 6, 13};
    expect(points(u16{5}, u16{3}, indices, u32{5}), {{4, 1}, {1, 1}, {0, 0}, {4, 0}, {3, 2}, {0, 0}});
    const u8 mask[] = {9, 9, 9, 9, 9, /**/ 9, 1, 0, 1, 9, /**/ 9, 0, 1, 1, 9};
    const u32 stride = 5;  // rows 1 and 2, columns 1 to 3: four pixels
    expect(points(SArea{1, 1, 2, 3}, mask, stride), {{1, 1}, {3, 2}, {101, 102}, {3, 1}, {4, 2}, {101, 102}});
}

}  // namespace
}  // namespace ovix::reduce
