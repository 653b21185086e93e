#include "core/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace ovix {
namespace {

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

}  // namespace
}  // namespace ovix
