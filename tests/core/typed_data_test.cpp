#include "core/typed_data.h"

#include <gtest/gtest.h>

#include <vector>

namespace ovix::reduce {
namespace {

TEST(TypedData, UnitsHaveWords) {
    const char* const expected[] = {
        "Counts",        "Radiance (User)",    "Temperature (User)",
        "Object Signal", "Radiance (Factory)", "Temperature (Factory)",
        "RGB (24-bit)",  "RGB (48-bit)",       "Red Channel",
        "Green Channel", "Blue Channel",       "RGB Average",
        "Error",
    };
    for (u32 unit = 0; unit < std::size(expected); ++unit) {
        EXPECT_STREQ(CString(UnitToString(static_cast<EUnit>(unit))).GetUTF8(), expected[unit]);
    }
    EXPECT_STREQ(UnitToString(static_cast<EUnit>(0x80000001)), L"Error");
}

TEST(TypedData, IndicesBecomePoints) {
    const TArray<SScanLine> lines{{4, 10, 12}, {7, 2, 3}};
    const TArray<SScanLine> wrapped{{1, 0, 65535}, {9, 5, 5}};  // the first line's 16-bit width is 0
    const SPoint before{-1, -1};
    using Points = TArray<SPoint>;
    const struct {
        const char* what;
        void (*turn)(const TArray<SScanLine>&, const TArray<u32>&, Points&);
        TArray<SScanLine> lines;
        TArray<u32> indices;
        Points points, expected;
    } cases[] = {
        {"an area",
         [](auto&, auto& i, auto& p) {
             IndiciesToPoints(SArea{5, 10, 8, 12}, i, p);
         },
         {},
         {0, 2, 3, 100},
         {},
         {{10, 5}, {12, 5}, {10, 6}, {11, 38}}},
        {"an area of one pixel",
         [](auto&, auto& i, auto& p) {
             IndiciesToPoints(SArea{7, 9, 7, 9}, i, p);
         },
         {},
         {0},
         {},
         {{9, 7}}},
        {"a width",
         [](auto&, auto& i, auto& p) { IndiciesToPoints(640, 0, i, p); },
         {},
         {639, 640, 0xFFFFFFFF},
         {},
         {{639, 0}, {0, 1}, {255, 6710886}}},
        {"no indices", [](auto&, auto& i, auto& p) { IndiciesToPoints(640, 480, i, p); }, {}, {}, {before}, {before}},
        {"scan lines",
         [](auto& l, auto& i, auto& p) { IndiciesToPoints(l, i, p); },
         lines,
         {3, 0, 5, 2},
         {before, before, before, before, before},
         {{2, 7}, {10, 4}, before, {12, 4}, before}},
        {"scan lines into a short array",
         [](auto& l, auto& i, auto& p) { IndiciesToPoints(l, i, p); },
         lines,
         {9, 1},
         {},
         {{0, 0}, {11, 4}}},
        {"a line that wraps", [](auto& l, auto& i, auto& p) { IndiciesToPoints(l, i, p); }, wrapped, {0}, {}, {{5, 9}}},
    };
    for (const auto& c : cases) {
        Points points = c.points;
        c.turn(c.lines, c.indices, points);
        EXPECT_EQ(std::vector(points.begin(), points.end()), std::vector(c.expected.begin(), c.expected.end()))
            << c.what;
    }
}

}  // namespace
}  // namespace ovix::reduce
