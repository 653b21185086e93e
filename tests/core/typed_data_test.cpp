#include "core/typed_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "core/pixel_types.h"
#include "core/visit.h"
#include "tests/support/pixel_buffers.h"

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
    source[600] = -2147483648.0f;        // which vectors give for all that they cannot hold
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

TEST(Deinterlace, PutsTheLinesOfTwoFieldsInTheirPlaces) {
    const struct {
        int width, height, bytes;
        const char* source;
        const char* expected;
    } cases[] = {{2, 5, 1, "aabbccddee", "aaddbbeecc"},
                 {1, 4, 3, "aaabbbcccddd", "aaacccbbbddd"},
                 {3, 1, 1, "abc", "abc"},
                 {0, 4, 1, "", ""},
                 {4, 0, 1, "", ""},
                 {-1, -1, -1, "", ""}};
    for (const auto& [width, height, bytes, source, expected] : cases) {
        std::string dest(std::char_traits<char>::length(expected), '#');
        deinterlace(dest.data(), source, width, height, bytes, -1, -1);
        EXPECT_EQ(dest, expected);
    }
}

constexpr GUID NumberedId(u32 n) { return {0x7E570000 + n, 0, 0, {}}; }

TEST(PixelTypes, FormChainsOfBaseTypes) {
    const GUID family = NumberedId(1), type = NumberedId(2), ring = NumberedId(3), ring2 = NumberedId(4);
    EXPECT_TRUE(RegisterPixelType(family, L"family", 2, UInt16, rootIRType));
    EXPECT_TRUE(RegisterPixelType(type, L"type", 3, Opaque, family));
    EXPECT_TRUE(RegisterPixelType(ring, L"ring", 1, UInt8, ring2));
    EXPECT_TRUE(RegisterPixelType(ring2, L"ring 2", 1, UInt8, ring));
    EXPECT_TRUE(RegisterPixelType(type, L"second", 9, Flt64, rootScreenType));  // does no harm, changes nothing

    SPixelType facts;
    ASSERT_TRUE(GetPixelType(type, facts));
    EXPECT_TRUE(facts.name.Equals(L"type") && facts.bytesPerPixel == 3 && facts.baseType == family);
    EXPECT_TRUE(PixelWidth(type) == 3 && PixelWidth(NumberedId(99)) == 0);

    const struct {
        GUID type, base;
        bool stands;
    } cases[] = {{type, type, true},
                 {type, family, true},
                 {type, rootIRType, true},
                 {family, type, false},
                 {type, rootScreenType, false},
                 {rootIRType, rootIRType, true},
                 {NumberedId(99), NumberedId(99), true},
                 {NumberedId(99), rootIRType, false},
                 {ring, ring2, true},
                 {ring, rootIRType, false}};
    for (const auto& c : cases) EXPECT_EQ(IsPixelBaseType(c.type, c.base), c.stands) << c.type.data1 << c.base.data1;
    EXPECT_EQ(OldPixelTypeUInt32ToNewPixelType(0), rootIRType);
    EXPECT_EQ(OldPixelTypeUInt32ToNewPixelType(12345), rootIRType);
}

TEST(PixelTypes, MayBeRegisteredWhileOthersLook) {
    std::vector<std::thread> threads;
    for (u32 t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (u32 i = 0; i < 50; ++i) {
                const GUID id = NumberedId(1000 + t * 50 + i);
                RegisterPixelType(id, L"x", 2, UInt16, rootIRType);
                EXPECT_TRUE(IsPixelBaseType(id, rootIRType));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace ovix::reduce
