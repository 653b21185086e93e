#include "reduce/pixels/radiance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace ovix::reduce {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The trapezoid sum, with the places of the samples counted in whole hundredths.
double Trapezoid(double celsius, int lowHundredths, int highHundredths, double scale) {
    const long double kelvin = celsius + 273.15L;
    const auto planck = [&](int hundredths) {
        const long double wave = hundredths / 100.0L;
        return 11910.7L / (std::exp(14388.4L / (wave * kelvin)) - 1) / std::pow(wave, 5.0L) * scale;
    };
    long double sum = 0;
    for (int i = lowHundredths; i < highHundredths; ++i) sum += (planck(i) + planck(i + 1)) / 2 * 0.01L;
    return static_cast<double>(sum);
}

TEST(Radiance, SumsPlanckOverTheBand) {
    const struct {
        double celsius, low, high, scale;
        int lowHundredths, highHundredths;
    } cases[] = {{25, 8.001, 12.005, 1, 800, 1200},
                 {-40, 7.506, 13.009, 0.93, 750, 1300},
                 {1200, 3.001, 5.003, 1, 300, 500},
                 {0, 10.001, 10.012, 2, 1000, 1001}};
    for (const auto& c : cases) {
        const double expected = Trapezoid(c.celsius, c.lowHundredths, c.highHundredths, c.scale);
        EXPECT_NEAR(Radiance(c.celsius, c.low, c.high, c.scale), expected, expected * 1e-9) << c.celsius;
    }
}

TEST(Radiance, AnEmptyBandGivesNothing) {
    EXPECT_EQ(Radiance(25, 8, 8, 1), 0);
    EXPECT_EQ(Radiance(25, 12, 8, 1), 0);
    EXPECT_EQ(Radiance(25, 8, 1e300, 1), 0) << "a band that no integer counts";
}

TEST(Radiance, ScalarOrders) {
    const double a[] = {10, 3, 0.5, 0.25, 0.125, 2, 1};
    // Count 5, background 1, scale 2.
    const std::pair<int, double> cases[] = {{0, 10},       {1, 50},       {2, 75},  {3, 137.5}, {4, 293.75},
                                            {5, 12793.75}, {6, 44043.75}, {-1, 34}, {-2, 44}};
    for (const auto& [order, expected] : cases) {
        EXPECT_DOUBLE_EQ(ToRadiance(5, a, order, 1, 2), expected) << order;
    }
    EXPECT_EQ(ToRadiance(5, nullptr, 0, 0, 2), 10);
    const double square[] = {0, 0, 1};
    EXPECT_EQ(ToRadiance(50000, square, 2, 0, 1), 2.5e9) << "powers in double";
    EXPECT_TRUE(std::isnan(ToRadiance(kNaN, a, 2, 0, 1)));
}

TEST(Radiance, FillerCountsAndWraps) {
    const double square[] = {0, 0, 1};
    std::vector<float> table(65537, -1.0f);
    std::vector<u8> status(65537, 77);
    ASSERT_TRUE(CountsToRadiance(0, 65535, table.data(), status.data(), false, 0, 0, 0, 0, square, 2, 0, 1));
    EXPECT_EQ(table[46340], 2147395600.0f);
    EXPECT_EQ(table[46341], static_cast<float>(2147488281.0 - 4294967296.0));
    EXPECT_EQ(table[50000], static_cast<float>(2500000000.0 - 4294967296.0));
    EXPECT_EQ(table[65535], static_cast<float>(4294836225.0 - 4294967296.0));
    EXPECT_EQ(table[65536], -1.0f);
    EXPECT_EQ(status[65535], 0);
    EXPECT_EQ(status[65536], 77);

    const double line[] = {1, 2};
    float one[] = {-1, -1};
    EXPECT_TRUE(CountsToRadiance(65535, 65535, one, nullptr, true, 0, 0, 0, 0, line, -1, 65530, 3));
    EXPECT_EQ(one[0], 0.0f) << "5 * 2 * 3 + 1, cut";
    EXPECT_EQ(one[1], -1.0f);
    EXPECT_TRUE(CountsToRadiance(7, 6, one, nullptr, false, 0, 0, 0, 0, line, 1, 0, 1));
    EXPECT_TRUE(CountsToRadiance(0, 1, one, nullptr, false, 0, 0, 0, 0, line, -3, 0, 1)) << "no order";
    EXPECT_EQ(one[1], -1.0f);
}

TEST(Radiance, FillerChecksTheRoundedValue) {
    // Counts 0 to 9 as they are: clip at 2 and 8, warn at 4 and 6.
    float table[10];
    u8 status[10];
    ASSERT_TRUE(CountsToRadiance(0, 9, table, status, true, 4, 6, 2, 8, nullptr, 0, 0, 1));
    const float values[] = {2, 2, 2, 3, 4, 5, 6, 7, 8, 8};
    const u8 flags[] = {2, 2, 1, 1, 1, 0, 1, 1, 1, 4};
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(table[i], values[i]) << i;
        EXPECT_EQ(status[i], flags[i]) << i;
    }
    // 2 / 3 as a float is above itself as a double: held against that limit, it overflows.
    ASSERT_TRUE(CountsToRadiance(2, 2, table, status, true, 0, 0.5, 0, 2 / 3.0, nullptr, 0, 0, 1 / 3.0));
    EXPECT_EQ(status[0], 4);
}

TEST(Radiance, LookupInvertsATable) {
    const double radiances[] = {1, 2, 6, 7, 20};
    const double temperatures[] = {-10, 0, 10, 40, 100};
    const struct {
        double temperature;
        ETempType type;
        double expected;
        bool inside;
    } cases[] = {{-10, Celsius, 1, true},    {100, Celsius, 20, true},    {10, Celsius, 6, true},
                 {5, Celsius, 4, true},      {-5, Celsius, 1.5, true},    {70, Celsius, 13.5, true},
                 {41, Fahrenheit, 4, true},  {278.15, Kelvin, 4, true},   {500.67, Rankine, 4, true},
                 {-10.5, Celsius, 1, false}, {100.5, Celsius, 20, false}, {5, ETempType{9}, 4, true}};
    for (const auto& c : cases) {
        double radiance = -1;
        EXPECT_EQ(ToRadianceLookup(radiance, c.temperature, radiances, temperatures, 5, false, 2, c.type), c.inside);
        EXPECT_NEAR(radiance, 2 * c.expected, 1e-9) << c.temperature;
        EXPECT_TRUE(ToRadianceLookup(radiance, c.temperature, radiances, temperatures, 5, true, 2, c.type));
    }
    double radiance = -1;
    EXPECT_FALSE(ToRadianceLookup(radiance, 5, radiances, temperatures, 1, true, 1, Celsius));
    EXPECT_EQ(radiance, -1);
    EXPECT_TRUE(ToRadianceLookup(radiance, 5, radiances + 1, temperatures + 1, 2, true, 1, Celsius));
    EXPECT_EQ(radiance, 4);
    ToRadianceLookup(radiance, kNaN, radiances, temperatures, 5, true, 1, Celsius);
    EXPECT_TRUE(std::isnan(radiance)) << "the search ends";
    const double disorder[] = {5, -3, 9, 1, 100};
    for (int t = -3; t <= 100; ++t) ToRadianceLookup(radiance, t, radiances, disorder, 5, true, 1, Celsius);
}

}  // namespace
}  // namespace ovix::reduce
