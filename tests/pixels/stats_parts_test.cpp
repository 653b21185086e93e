#include "reduce/pixels/stats.h"

#include "support/forms.h"
#include "support/pixel_reference.h"
#include "support/stats_fields.h"

namespace ovix::reduce {
namespace {

using namespace test;

TEST(StatsCalculator, FollowsItsStepsAndNotesNoIndex) {
    CStats stats = Held(), expected = Held(), fresh;
    CStatsCalculator calculator(stats);
    calculator.Start();
    EXPECT_TRUE(stats.allMinimumIndex == 0xFFFFFFFF && stats.allMaximumIndex == 0xFFFFFFFF && stats.mean == -1.5);
    calculator.AddData(-2, 8, 9, 0);  // above what the record held, -2.5; not counted
    calculator.AddData(-8, 1, 3, 5);  // the first that counts
    calculator.AddData(-2, 4, 3, 3);  // the maximum, but not of all: the first stands
    calculator.AddData(-2, 2, 2, 4);  // not the maximum: the first stands
    calculator.AddData(-20, 16, 1, 1);
    calculator.Finish();
    expected.sum = -12, expected.mean = -4, expected.count = 3;
    expected.variance = 72 / 3.0 - 16, expected.standardDeviation = std::sqrt(8.0);
    expected.minimum = -8, expected.minimumPosition = {3, 5}, expected.minimumStatus = 1;
    expected.maximum = -2, expected.maximumPosition = {3, 3}, expected.maximumStatus = 4;
    expected.statusUnion = 7;
    expected.allMinimum = -20, expected.allMinimumPosition = {1, 1};
    expected.allMaximum = -2, expected.allMaximumPosition = {9, 0};
    expected.minimumIndex = expected.maximumIndex = expected.allMinimumIndex = expected.allMaximumIndex = 0;
    expected.boundsTopLeft = {1, 0}, expected.boundsBottomRight = {9, 5};
    expected.boundsWidth = 9, expected.boundsHeight = 6, expected.centerX = 5, expected.centerY = 2.5;
    ExpectSame(stats, expected);

    CStatsCalculator below(fresh);
    below.Start();
    below.AddData(-5, 24, 7, 7);
    below.Finish();
    EXPECT_EQ(fresh.allMaximum, 0) << "goes on from what the record held";
    EXPECT_TRUE(fresh.allMaximumIndex == 0xFFFFFFFF && fresh.boundsWidth == 0 && fresh.boundsTopLeft == SPoint());
}

TEST(CalcPositions, PlacesInTheSelectionBecomePoints) {
    const auto expect = [](std::vector<SPoint> expected, const auto&... selection) {
        CStats s = Held();
        s.minimumIndex = 0, s.maximumIndex = 3, s.allMinimumIndex = 5, s.allMaximumIndex = 0xFFFFFFFF;
        s.firstIndex = 1, s.lastIndex = 4;
        CalcPositions(s, selection...);
        const SPoint found[] = {s.minimumPosition, s.maximumPosition,   s.allMinimumPosition,
                                s.boundsTopLeft,   s.boundsBottomRight, s.allMaximumPosition};
        for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(found[i], expected[i]) << i;
    };
    expect({{20, 10}, {20, 11}, {22, 11}, {21, 10}, {21, 11}}, SArea{10, 20, 12, 22});
    expect({{0, 0}, {3, 0}, {1, 1}, {1, 0}, {0, 1}}, u16{4}, u16{9});
    // Five pixels: places 5 and beyond lie nowhere, and their points stay.
    expect({{5, 7}, {1, 2}, {101, 102}, {6, 7}, {2, 2}, {101, 102}}, TArray<SScanLine>{{7, 5, 7}, {2, 1, 2}});
    const u32 indices[] = {9, 4, 8, 6, 13};
    expect({{4, 1}, {1, 1}, {0, 0}, {4, 0}, {3, 2}, {0, 0}}, u16{5}, u16{3}, indices, u32{5});
    // Rows 1 and 2, columns 1 to 3: four pixels.
    const u8 mask[] = {9, 9, 9, 9, 9, /**/ 9, 1, 0, 1, 9, /**/ 9, 0, 1, 1, 9};
    expect({{1, 1}, {3, 2}, {101, 102}, {3, 1}, {4, 2}, {101, 102}}, SArea{1, 1, 2, 3}, mask, u32{5});
}

TEST(GetStatsLUT, IsTheCalculatorOverTheTables) {
    const SForms forms;
    constexpr u16 kLower = 20, kUpper = 900;
    std::vector<float> luts[3];
    std::vector<u8> statusLuts[3], presets;
    for (u32 p = 0; p < 3; ++p) {
        for (u32 k = 0; k <= kUpper; ++k) {
            luts[p].push_back(static_cast<float>(k * k % 997) * 0.1f - static_cast<float>(20 * p));
            statusLuts[p].push_back(static_cast<u8>(p && k % 7 == p ? 8 : k % 5));
        }
    }
    luts[2][kLower] = std::nanf("");
    statusLuts[2].assign(kUpper + 1, 16);
    const float* values[] = {luts[0].data(), luts[1].data(), luts[2].data()};
    const u8* flags[] = {statusLuts[0].data(), statusLuts[1].data(), statusLuts[2].data()};
    for (u32 i = 0; i < forms.Count(); ++i) presets.push_back(static_cast<u8>(i * i % 3));

    for (u32 type = Int8; type <= Flt64; ++type) {
        SCOPED_TRACE(type);
        Visit(static_cast<EDataType>(type), [&]<class T>(TElement<T>) {
            TGuarded<T> frame(forms.Count());
            FillEdges(frame, type);
            for (u32 i = 0; i < forms.Count(); i += 2) frame[i] = static_cast<T>(i % 120);
            for (u32 only = 0; only <= 3; ++only) {  // each pair of tables by itself, and all by presets
                const bool single = only < 3;
                for (const EForm form : kForms) {
                    SCOPED_TRACE(testing::Message() << "form " << static_cast<int>(form) << ' ' << only);
                    CStats stats = Held(), expected = Held();
                    const auto call = [&](auto... f) {
                        return single
                                   ? GetStatsLUT(frame.Typed(), stats, f..., values[only], flags[only], kLower, kUpper)
                                   : GetStatsLUT(frame.Typed(), presets.data(), stats, f..., values, flags, kLower,
                                                 kUpper);
                    };
                    ASSERT_TRUE(forms.CallInFrame(form, call));
                    CStatsCalculator calculator(expected);
                    calculator.Start();
                    for (const u32 i : forms.Visited(form)) {
                        const u32 place = Place(static_cast<float>(frame[i]), kLower, kUpper);
                        const u8 p = single ? static_cast<u8>(only) : presets[i];
                        calculator.AddData(values[p][place], flags[p][place], static_cast<int>(i % forms.width),
                                           static_cast<int>(i / forms.width));
                    }
                    calculator.Finish();
                    ExpectSame(stats, expected);
                }
            }
        });
    }
    u16 pixel = 3;
    CStats stats = Held();
    EXPECT_FALSE(GetStatsLUT({&pixel, Opaque}, stats, 1, 1, values[0], flags[0], 0, 9));
    ExpectSame(stats, Held());
    CStats bare;
    EXPECT_TRUE(GetStatsLUT({&pixel, UInt16}, bare, 1, 1, values[0], nullptr, 0, 9)) << "no status table";
    EXPECT_EQ(bare.count, 1U);
}

}  // namespace
}  // namespace ovix::reduce
