#include "reduce/pixels/stats.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/visit.h"
#include "support/forms.h"
#include "support/pixel_reference.h"
#include "support/stats_fields.h"

namespace ovix::reduce {
namespace {

using namespace test;

TEST(GetStatsLUT, IsTheCalculatorOverTheTables) {
    const SForms forms;
    constexpr u16 kLower = 20, kUpper = 900;
    std::vector<float> luts[3];
    std::vector<u8> statusLuts[3];
    for (u32 p = 0; p < 3; ++p) {
        for (u32 k = 0; k <= kUpper; ++k) {
            luts[p].push_back(static_cast<float>(k * k % 997) * 0.1f - static_cast<float>(20 * p));
            statusLuts[p].push_back(static_cast<u8>(k % 7 == p ? 8 : k % 5));
        }
    }
    const float* values[] = {luts[0].data(), luts[1].data(), luts[2].data()};
    const u8* flags[] = {statusLuts[0].data(), statusLuts[1].data(), statusLuts[2].data()};
    std::vector<u8> presets;
    for (u32 i = 0; i < forms.Count(); ++i) presets.push_back(static_cast<u8>(i * i % 3));

    const auto check = [&]<class T>(TElement<T>) {
        std::mt19937 random(4);
        std::vector<T> frame;
        for (u32 i = 0; i < forms.Count(); ++i) {
            const double quarters = static_cast<double>(random() % 4000) / 4 - 30;
            if constexpr (std::is_integral_v<T>) {
                frame.push_back(static_cast<T>(static_cast<i64>(quarters)));
            } else {
                frame.push_back(static_cast<T>(quarters));
            }
        }
        if constexpr (std::is_floating_point_v<T>) frame[100] = static_cast<T>(NAN), frame[101] = T{30.5};
        const STypedData data{frame.data(), DataTypeOf<T>()};
        for (int form = 0; form < 10; ++form) {
            SCOPED_TRACE(form);
            const EForm which = test::kForms[form % 5];
            const bool single = form < 5;
            const u8* map = single ? nullptr : presets.data();
            CStats stats = Held(), expected = Held();
            ASSERT_TRUE(forms.CallInFrame(which, [&](auto... f) {
                return single ? GetStatsLUT(data, stats, f..., values[0], flags[0], kLower, kUpper)
                              : GetStatsLUT(data, map, stats, f..., values, flags, kLower, kUpper);
            }));
            CStatsCalculator calculator(expected);
            calculator.Start();
            for (const u32 i : forms.Visited(which)) {
                const u32 place = test::Place(static_cast<float>(frame[i]), kLower, kUpper);
                const u8 p = map ? map[i] : u8{0};
                calculator.AddData(values[p][place], flags[p][place], static_cast<int>(i % forms.width),
                                   static_cast<int>(i / forms.width));
            }
            calculator.Finish();
            ExpectSame(stats, expected);
        }
    };
    for (u32 type = Int8; type <= Flt64; ++type) {
        SCOPED_TRACE(type);
        Visit(static_cast<EDataType>(type), check);
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
