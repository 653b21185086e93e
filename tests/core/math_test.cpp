#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "core/string.h"
#include "core/typed_data.h"

namespace ovix {
namespace {

TEST(Math, ConvertsBetweenAllTemperatureScales) {
    // One temperature a line, in all four scales, from the definitions of the fixed points.
    constexpr double kSame[][4] = {
        {-273.15, -459.67, 0, 0}, {0, 32, 273.15, 491.67}, {100, 212, 373.15, 671.67}, {-40, -40, 233.15, 419.67}};
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

TEST(Numbers, HaveDecimalTexts) {
    const struct {
        CString text;
        const char* expected;
    } cases[] = {
        {CInt32::ToString(INT32_MIN), "-2147483648"},
        {CUInt8::ToString(255), "255"},
        {CUInt16::ToString(65535), "65535"},
        {CUInt32::ToString(CUInt32::Max), "4294967295"},
        {CUInt64::ToString(CUInt64::Max), "18446744073709551615"},
        {CFlt32::ToString(0.1f), "0.1"},
        {CFlt32::ToString(273.15f), "273.15"},
        {CFlt32::ToString(16777216.0f), "16777216"},
        {CFlt32::ToString(std::numeric_limits<float>::infinity()), "inf"},
        {CFlt32::ToString(-std::numeric_limits<float>::quiet_NaN()), "nan"},
    };
    for (const auto& [text, expected] : cases) EXPECT_STREQ(text.GetUTF8(), expected);

    wchar_t dest[5] = L"####";
    ltotcs(-12, dest, std::size(dest));
    EXPECT_STREQ(dest, L"-12");
    ltotcs(-12345, dest, std::size(dest));
    EXPECT_STREQ(dest, L"-123");
    ltotcs(7, dest, 0);
    EXPECT_STREQ(dest, L"-123");
}

TEST(Numbers, AreReadUpToTheFirstOtherCharacter) {
    const struct {
        const wchar_t* text;
        u64 unsigned64;
        i8 signed8;
        i32 signed32;
        i64 signed64;
        double real;
    } cases[] = {
        {L"", 0, 0, 0, 0, 0},
        {L" \t12.5x", 12, 12, 12, 12, 12.5},
        {L"+-5", 0, 0, 0, 0, 0},
        {L"-1", CUInt64::Max, -1, -1, -1, -1},
        {L"255", 255, -1, 255, 255, 255},
        {L"3000000000", 3000000000, 0, INT32_MAX, 3000000000, 3e9},
        {L"-3000000000", u64{0} - 3000000000, 0, INT32_MIN, -3000000000, -3e9},
        {L"18446744073709551615", CUInt64::Max, -1, INT32_MAX, INT64_MAX, 18446744073709551615.0},
        {L"18446744073709551616", CUInt64::Max, -1, INT32_MAX, INT64_MAX, 18446744073709551616.0},
        {L"1e3", 1, 1, 1, 1, 1000},
        {L"1,5", 1, 1, 1, 1, 1},
    };
    for (const auto& c : cases) {
        const CVariant variant(c.text);
        EXPECT_EQ(variant.ToUInt64(), c.unsigned64) << CString(c.text).GetUTF8();
        EXPECT_EQ(variant.ToInt8(), c.signed8) << CString(c.text).GetUTF8();
        EXPECT_EQ(TextToInt32(c.text), c.signed32) << CString(c.text).GetUTF8();
        EXPECT_EQ(TextToInt64(c.text), c.signed64) << CString(c.text).GetUTF8();
        EXPECT_EQ(TextToDouble(c.text), c.real) << CString(c.text).GetUTF8();
    }
}

double At(const TArray<double>& coefficients, double x) {
    double value = 0;
    for (u32 k = coefficients.size(); k-- > 0;) value = value * x + coefficients.ConstGetItem(k);
    return value;
}

TEST(LeastSquares, GivesPolynomialsBack) {
    const struct {
        const char* what;
        TArray<double> truth;
        double first, step;
        int points;
        double tolerance;  ///< of a value, relative to the greatest
    } cases[] = {
        {"a constant", {7.5}, 3, 0, 1, 1e-15},
        {"a line", {-1, 0.25}, 0, 10, 2, 1e-15},
        {"raw counts", {1.5, 2e-3, 4e-9}, 2000, 500, 120, 1e-13},
        {"raw counts, exactly as many points as coefficients", {1, -2e-4, 3e-8, 1e-12}, 10'000, 9'000, 4, 1e-12},
        {"time stamps", {5, 1e-8, 1e-18}, 1.3e9, 1000, 50, 1e-12},
        {"a high degree", {1, 1, 1, 1, 1, 1, 1, 1}, -1, 0.1, 21, 1e-13},
        {"small numbers", {1e-12, 1e-9, 1e-3}, 1e-7, 1e-8, 30, 1e-12},
    };
    for (const auto& c : cases) {
        TArray<double> x, y, fitted;
        double greatest = 0;
        for (int i = 0; i < c.points; ++i) {
            x.Add(c.first + i * c.step);
            y.Add(At(c.truth, x[static_cast<u32>(i)]));
            greatest = std::max(greatest, std::abs(y[static_cast<u32>(i)]));
        }
        ASSERT_TRUE(LinearLeastSquareFit(x, y, static_cast<int>(c.truth.size()) - 1, fitted)) << c.what;
        ASSERT_EQ(fitted.size(), c.truth.size()) << c.what;
        for (u32 i = 0; i < x.size(); ++i) EXPECT_NEAR(At(fitted, x[i]), y[i], c.tolerance * greatest) << c.what;
    }
}

TEST(LeastSquares, TakesTheMiddleOfContradictions) {
    TArray<double> x{1, 1, 3, 3}, y{0, 2, 4, 8}, fitted;
    ASSERT_TRUE(LinearLeastSquareFit(x, y, 1, fitted));  // through the means (1, 1) and (3, 6)
    EXPECT_NEAR(fitted[0], -1.5, 1e-14);
    EXPECT_NEAR(fitted[1], 2.5, 1e-14);
}

TEST(LeastSquares, RefusesWhatCannotBeSolved) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double most = std::numeric_limits<double>::max();
    struct {
        const char* what;
        TArray<double> x, y;
        int degree;
    } cases[] = {
        {"no points", {}, {}, 0},
        {"too few points", {1, 2}, {1, 2}, 2},
        {"too few different points", {1, 1, 2, 2}, {1, 1, 2, 2}, 2},
        {"one point over and over", {5, 5, 5}, {1, 2, 3}, 1},
        {"a negative degree", {1, 2}, {1, 2}, -1},
        {"a degree beyond all points", {1, 2}, {1, 2}, INT32_MAX},
        {"arrays of two lengths", {1, 2, 3}, {1, 2}, 1},
        {"an x that is no number", {1, nan, 3}, {1, 2, 3}, 1},
        {"an infinite y", {1, 2, 3}, {1, inf, 3}, 1},
        {"a spread beyond double", {-most, most}, {1, 2}, 1},
    };
    for (auto& c : cases) {
        TArray<double> fitted{42};
        EXPECT_FALSE(LinearLeastSquareFit(c.x, c.y, c.degree, fitted)) << c.what;
        EXPECT_TRUE(fitted.size() == 1 && fitted[0] == 42) << c.what;
    }
}

}  // namespace
}  // namespace ovix
