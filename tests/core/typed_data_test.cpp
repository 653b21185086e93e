#include "core/typed_data.h"

#include <gtest/gtest.h>

#include <vector>

namespace ovix::reduce {
namespace {

TEST(TypedData, UnitsHaveWords) {
    EXPECT_STREQ(UnitToString(Counts), L"Counts");
    EXPECT_STREQ(UnitToString(TemperatureFactory), L"Temperature (Factory)");
    EXPECT_STREQ(UnitToString(RGBAverage), L"RGB Average");
    for (const u32 none : {12u, 0x80000001u}) EXPECT_STREQ(UnitToString(static_cast<EUnit>(none)), L"Error");
}

TEST(TypedData, IndicesBecomePoints) {
    using Points = std::vector<SPoint>;
    const SPoint before{-1, -1};
    const auto turned = [&](TArray<u32> indices, u32 pointsBefore, const auto&... selection) {
        TArray<SPoint> points;
        for (u32 i = 0; i < pointsBefore; ++i) points.Add(before);
        IndiciesToPoints(selection..., indices, points);
        return Points(points.begin(), points.end());
    };
    EXPECT_EQ(turned({0, 2, 3, 100}, 0, SArea{5, 10, 8, 12}), (Points{{10, 5}, {12, 5}, {10, 6}, {11, 38}}));
    EXPECT_EQ(turned({0}, 0, SArea{7, 9, 7, 9}), (Points{{9, 7}}));
    EXPECT_EQ(turned({639, 640, 0xFFFFFFFF}, 0, u16{640}, u16{0}), (Points{{639, 0}, {0, 1}, {255, 6710886}}));
    EXPECT_EQ(turned({}, 1, u16{640}, u16{480}), (Points{before}));
    const TArray<SScanLine> lines{{4, 10, 12}, {7, 2, 3}};
    EXPECT_EQ(turned({3, 0, 5, 2}, 5, lines), (Points{{2, 7}, {10, 4}, before, {12, 4}, before}));
    EXPECT_EQ(turned({9, 1}, 0, lines), (Points{{0, 0}, {11, 4}})) << "into a short array";
    const TArray<SScanLine> wrapped{{1, 0, 65535}, {9, 5, 5}};  // the first line's 16-bit width is 0
    EXPECT_EQ(turned({0}, 0, wrapped), (Points{{5, 9}}));
}

}  // namespace
}  // namespace ovix::reduce
