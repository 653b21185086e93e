#include "core/typed_data.h"

#include <string>
#include <thread>

#include "core/pixel_types.h"
#include "core/string.h"
#include "core/visit.h"
#include "tests/support/pixel_buffers.h"

namespace ovix::reduce {
namespace {

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
    constexpr u64 kBeyond = u64{1} << 63;
    const std::tuple<double, i64, u64, i32, u8> cases[] = {
        {2.9, 2, 2, 2, 2},
        {-2.9, -2, ~u64{0} - 1, -2, 0xFE},
        {300.5, 300, 300, 300, 44},
        {4294967297.0, 4294967297, 4294967297, 1, 1},
        {9223372036854775808.0, INT64_MIN, kBeyond, 0, 0},
        {18446744073709549568.0, INT64_MIN, 0xFFFFFFFFFFFFF800, 0, 0},
        {18446744073709551616.0, INT64_MIN, kBeyond, 0, 0},
        {-1e300, INT64_MIN, kBeyond, 0, 0},
        {kInf, INT64_MIN, kBeyond, 0, 0},
        {kNaN, INT64_MIN, kBeyond, 0, 0}};
    for (const auto& [value, signed64, unsigned64, signed32, unsigned8] : cases) {
        EXPECT_EQ(NumericCast<i64>(value), signed64) << value;
        EXPECT_EQ(NumericCast<u64>(value), unsigned64) << value;
        EXPECT_EQ(NumericCast<i32>(value), signed32) << value;
        EXPECT_EQ(NumericCast<u8>(value), unsigned8) << value;
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
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(dest[i], static_cast<D>(values[i])) << DataTypeOf<S>() << " to " << DataTypeOf<D>();
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
    const std::tuple<int, int, int, std::string, std::string> cases[] = {{2, 5, 1, "aabbccddee", "aaddbbeecc"},
                                                                         {1, 4, 3, "aaabbbcccddd", "aaacccbbbddd"},
                                                                         {3, 1, 1, "abc", "abc"},
                                                                         {0, 4, 1, "", ""},
                                                                         {4, 0, 1, "", ""},
                                                                         {-1, -1, -1, "", ""}};
    for (const auto& [width, height, bytes, source, expected] : cases) {
        std::string dest(expected.size(), '#');
        deinterlace(dest.data(), source.data(), width, height, bytes, -1, -1);
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

    const GUID unknown = NumberedId(99);
    const std::pair<GUID, GUID> standing[] = {
        {type, type}, {type, family}, {type, rootIRType}, {rootIRType, rootIRType}, {unknown, unknown}, {ring, ring2}};
    for (const auto& [above, base] : standing) EXPECT_TRUE(IsPixelBaseType(above, base)) << above.data1;
    const std::pair<GUID, GUID> others[] = {
        {family, type}, {type, rootScreenType}, {unknown, rootIRType}, {ring, rootIRType}};
    for (const auto& [above, base] : others) EXPECT_FALSE(IsPixelBaseType(above, base)) << above.data1;
    EXPECT_EQ(OldPixelTypeUInt32ToNewPixelType(0), rootIRType);
    EXPECT_EQ(OldPixelTypeUInt32ToNewPixelType(12345), rootIRType);
}

TEST(PixelTypes, MayBeRegisteredWhileOthersLook) {
    std::vector<std::jthread> threads;
    for (u32 t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (u32 i = 0; i < 50; ++i) {
                const GUID id = NumberedId(1000 + t * 50 + i);
                RegisterPixelType(id, L"x", 2, UInt16, rootIRType);
                EXPECT_TRUE(IsPixelBaseType(id, rootIRType));
            }
        });
    }
}

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
    const std::pair<ETempType, ETempType> cases[] = {
        {Kelvin, Kelvin}, {static_cast<ETempType>(4), Kelvin}, {Celsius, static_cast<ETempType>(9)}};
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
        {"small numbers", {1e-12, 1e-9, 1e-3}, 1e-7, 1e-8, 30, 1e-12}};
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
    const double most = std::numeric_limits<double>::max();
    std::tuple<const char*, TArray<double>, TArray<double>, int> cases[] = {
        {"no points", {}, {}, 0},
        {"too few points", {1, 2}, {1, 2}, 2},
        {"too few different points", {1, 1, 2, 2}, {1, 1, 2, 2}, 2},
        {"one point over and over", {5, 5, 5}, {1, 2, 3}, 1},
        {"a negative degree", {1, 2}, {1, 2}, -1},
        {"a degree beyond all points", {1, 2}, {1, 2}, INT32_MAX},
        {"arrays of two lengths", {1, 2, 3}, {1, 2}, 1},
        {"an x that is no number", {1, kNaN, 3}, {1, 2, 3}, 1},
        {"an infinite y", {1, 2, 3}, {1, kInf, 3}, 1},
        {"a spread beyond double", {-most, most}, {1, 2}, 1}};
    for (auto& [what, x, y, degree] : cases) {
        TArray<double> fitted{42};
        EXPECT_FALSE(LinearLeastSquareFit(x, y, degree, fitted)) << what;
        EXPECT_TRUE(fitted.size() == 1 && fitted[0] == 42) << what;
    }
}

}  // namespace
}  // namespace ovix::reduce
