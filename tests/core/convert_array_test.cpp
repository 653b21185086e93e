#include "core/typed_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "core/visit.h"
#include "tests/support/pixel_buffers.h"

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
    test::ForEachPair([]<class S, class D>(TElement<S>, TElement<D>) {
        const i8 values[] = {std::is_unsigned_v<S> ? i8{3} : i8{-3}, 100};
        const S source[] = {static_cast<S>(values[0]), static_cast<S>(values[1])};
        D dest[] = {0, 0, 77};
        EXPECT_TRUE(ConvertArray({dest, DataTypeOf<D>()}, {const_cast<S*>(source), DataTypeOf<S>()}, 2));
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(dest[i], static_cast<D>(values[i])) << DataTypeOf<S>() << " to " << DataTypeOf<D>();
        }
        EXPECT_EQ(dest[2], 77);
    });
}

TEST(ConvertArray, TruncatesOneByOneWhereABlockHoldsValuesBeyond32Bits) {
    std::vector<float> source(1000);
    for (u32 i = 0; i < 1000; ++i) source[i] = static_cast<float>(i) * 70.5f - 200;
    source[300] = 4294967296.0f + 1024;  // 32 bits would give 0
    source[999] = -kInf;
    std::vector<u16> dest(1000);
    ASSERT_TRUE(ConvertArray({dest.data(), UInt16}, {source.data(), Flt32}, 1000));
    for (u32 i = 0; i < 1000; ++i) {
        const double whole = std::trunc(source[i]);
        EXPECT_EQ(dest[i], std::isinf(whole) ? 0 : static_cast<u16>(static_cast<i64>(whole))) << i;
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
