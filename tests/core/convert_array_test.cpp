#include "core/convert_array.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/numeric_cast.h"
#include "core/visit.h"

namespace ovix {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(NumericCast, TruncatesAndWraps) {
    const struct {
        double value;
        i64 signed64;
        u64 unsigned64;
        i32 signed32;
        u8 unsigned8;
    } cases[] = {
        {2.9, 2, 2, 2, 2},
        {-2.9, -2, ~u64{0} - 1, -2, 0xFE},
        {300.5, 300, 300, 300, 44},
        {4294967297.0, 4294967297, 4294967297, 1, 1},
        {9223372036854775808.0, INT64_MIN, u64{1} << 63, 0, 0},
        {18446744073709549568.0, INT64_MIN, 0xFFFFFFFFFFFFF800, 0, 0},
        {18446744073709551616.0, INT64_MIN, u64{1} << 63, 0, 0},
        {-1e300, INT64_MIN, u64{1} << 63, 0, 0},
        {kInf, INT64_MIN, u64{1} << 63, 0, 0},
        {kNaN, INT64_MIN, u64{1} << 63, 0, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(NumericCast<i64>(c.value), c.signed64) << c.value;
        EXPECT_EQ(NumericCast<u64>(c.value), c.unsigned64) << c.value;
        EXPECT_EQ(NumericCast<i32>(c.value), c.signed32) << c.value;
        EXPECT_EQ(NumericCast<u8>(c.value), c.unsigned8) << c.value;
    }
    EXPECT_EQ(TruncateTo<i32>(2147483648.0), INT32_MIN);
    EXPECT_EQ(TruncateTo<i32>(2147483647.9), INT32_MAX);
    EXPECT_EQ(TruncateTo<i32>(-2147483648.0f), INT32_MIN);
}

TEST(ConvertArray, MovesBetweenAllPairsOfTypes) {
    for (u32 from = Int8; from <= Flt64; ++from) {
        for (u32 to = Int8; to <= Flt64; ++to) {
            // -3 and 100 in the source type, through bytes that the test spells itself
            alignas(8) u8 source[16] = {}, dest[24] = {};
            const bool isUnsigned = from == UInt8 || from == UInt16 || from == UInt32 || from == UInt64;
            const double values[] = {isUnsigned ? 3.0 : -3.0, 100.0};
            Visit(static_cast<EDataType>(from), [&]<class T>(TElement<T>) {
                for (int i = 0; i < 2; ++i) reinterpret_cast<T*>(source)[i] = static_cast<T>(values[i]);
            });
            dest[2 * ElementSize(static_cast<EDataType>(to))] = 0xA5;
            EXPECT_TRUE(ConvertArray({dest, static_cast<EDataType>(to)}, {source, static_cast<EDataType>(from)}, 2));
            Visit(static_cast<EDataType>(to), [&]<class T>(TElement<T>) {
                for (int i = 0; i < 2; ++i) {
                    const T expected =
                        values[i] < 0 ? static_cast<T>(-static_cast<T>(-values[i])) : static_cast<T>(values[i]);
                    EXPECT_EQ(reinterpret_cast<T*>(dest)[i], expected) << from << " to " << to;
                }
            });
            EXPECT_EQ(dest[2 * ElementSize(static_cast<EDataType>(to))], 0xA5);
        }
    }
}

TEST(ConvertArray, RefusesWhatIsNotNumeric) {
    u8 source[2] = {1, 2}, dest[2] = {7, 7};
    for (const u32 type : {10u, 11u, 12u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(ConvertArray({dest, UInt8}, {source, static_cast<EDataType>(type)}, 2));
        EXPECT_FALSE(ConvertArray({dest, static_cast<EDataType>(type)}, {source, UInt8}, 2));
    }
    EXPECT_EQ(dest[0], 7);
    EXPECT_TRUE(ConvertArray({nullptr, UInt8}, {nullptr, Flt32}, 0));
}

}  // namespace
}  // namespace ovix
