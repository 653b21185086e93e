#include "core/typed_data.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace ovix {
namespace {

TEST(Math, ConvertsBetweenAllTemperatureScales) {
    // One temperature a line, in all four scales, from the definitions of the fixed points.
    constexpr double kSame[][4] = {
        {-273.15, -459.67, 0, 0},
        {0, 32, 273.15, 491.67},
        {100, 212, 373.15, 671.67},
        {-40, -40, 233.15, 419.67},
    };
    for (const auto& scales : kSame) {
        for (u32 from = 0; from < 4; ++from) {
            for (u32 to = 0; to < 4; ++to) {
                const double answer =
                    CMath::ConvertTemperature(scales[from], static_cast<ETempType>(from), static_cast<ETempType>(to));
                EXPECT_NEAR(answer, scales[to], 1e-12 * 700) << from << " to " << to;
            }
        }
    }
    EXPECT_EQ(CMath::ConvertTemperature(20, Celsius, Rankine), (20 + 273.15) * 1.8);
    EXPECT_EQ(CMath::ConvertTemperature(68, Fahrenheit, Kelvin), (68 + 459.67) / 1.8);
    EXPECT_EQ(CMath::ConvertTemperature(20, static_cast<ETempType>(4), Kelvin), 20);
    EXPECT_EQ(CMath::ConvertTemperature(20, Kelvin, static_cast<ETempType>(~0u)), 20);
}

TEST(Math, ConvertsBuffersInPlaceAndAcrossBlocks) {
    for (const u32 count : {0u, 1u, 511u, 512u, 513u, 1500u}) {
        std::vector<float> buffer(count + 1);
        for (u32 i = 0; i <= count; ++i) buffer[i] = static_cast<float>(i);
        const STypedData typed{buffer.data(), Flt32};
        EXPECT_TRUE(CMath::ConvertTemperature(typed, typed, count, Celsius, Fahrenheit));
        for (u32 i = 0; i < count; ++i) ASSERT_EQ(buffer[i], static_cast<float>(i * 1.8 + 32.0)) << i;
        EXPECT_EQ(buffer[count], static_cast<float>(count));
    }
    const i16 counts[] = {0, 37, -41};
    u16 kelvin[3] = {};
    EXPECT_TRUE(CMath::ConvertTemperature({kelvin, UInt16}, {const_cast<i16*>(counts), Int16}, 3, Celsius, Kelvin));
    EXPECT_TRUE(kelvin[0] == 273 && kelvin[1] == 310 && kelvin[2] == 232);
}

TEST(Math, MovesNumbersWholeWhereNoScaleChanges) {
    const i64 precise[] = {INT64_MAX - 1};  // would not survive a double
    const struct {
        ETempType from, to;
    } cases[] = {{Kelvin, Kelvin}, {static_cast<ETempType>(4), Kelvin}, {Celsius, static_cast<ETempType>(9)}};
    for (const auto& [from, to] : cases) {
        i64 moved = 0;
        EXPECT_TRUE(CMath::ConvertTemperature({&moved, Int64}, {const_cast<i64*>(precise), Int64}, 1, from, to));
        EXPECT_EQ(moved, precise[0]);
    }
    i64 untouched = 5;
    EXPECT_FALSE(CMath::ConvertTemperature({&untouched, Opaque}, {&untouched, Int64}, 1, Celsius, Kelvin));
    EXPECT_FALSE(CMath::ConvertTemperature({&untouched, Int64}, {&untouched, NoPixels}, 1, Celsius, Kelvin));
    EXPECT_EQ(untouched, 5);
}

}  // namespace
}  // namespace ovix
