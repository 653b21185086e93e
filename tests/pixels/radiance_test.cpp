#include "reduce/pixels/radiance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "core/visit.h"
#include "support/forms.h"

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
    // An empty band gives nothing, and so does one that no integer counts.
    EXPECT_TRUE(Radiance(25, 8, 8, 1) == 0 && Radiance(25, 12, 8, 1) == 0 && Radiance(25, 8, 1e300, 1) == 0);
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
    const std::pair<u32, double> wrapped[] = {{46341, 2147488281.0}, {50000, 2500000000.0}, {65535, 4294836225.0}};
    for (const auto& [count, power] : wrapped) EXPECT_EQ(table[count], static_cast<float>(power - 4294967296.0));
    EXPECT_TRUE(table[65536] == -1.0f && status[65535] == 0 && status[65536] == 77);

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
    EXPECT_FALSE(ToRadianceLookup(radiance, 5, radiances, temperatures, 1, true, 1, Celsius) || radiance != -1);
    EXPECT_TRUE(ToRadianceLookup(radiance, 5, radiances + 1, temperatures + 1, 2, true, 1, Celsius) && radiance == 4);
    ToRadianceLookup(radiance, kNaN, radiances, temperatures, 5, true, 1, Celsius);
    EXPECT_TRUE(std::isnan(radiance)) << "the search ends";
    const double disorder[] = {5, -3, 9, 1, 100};
    for (int t = -3; t <= 100; ++t) ToRadianceLookup(radiance, t, radiances, disorder, 5, true, 1, Celsius);
}

using namespace test;

constexpr int kPresets = 6;

/// Laws for six presets, of different orders, and a frame of backgrounds for each.
struct SLaws {
    SForms forms;
    double a[kPresets][7] = {{3, 2, 0.5, 0.25, 0.125, 0.01, 1e-3},
                             {-1, 1.5, 1e-3, 1e-4, 1e-6, 0, 0},
                             {7, 0.1, 2, 0, 0, 0, 0},
                             {5, 3, 0, 0, 0, 0, 0},
                             {-4, 0.25, 1, 1, 1, 0, 0},
                             {1, 1, 1, 1, 1, 1, 1}};
    const double* coefficients[kPresets];
    double scales[kPresets] = {2, 0.5, 3, 1, 0.25, 1};
    double backgrounds[kPresets] = {1, 2, 3, 4, 5, 6};
    std::vector<double> frames[kPresets];
    const double* pixelBackgrounds[kPresets];
    std::vector<u8> presets;

    SLaws() {
        std::mt19937 random(9);
        for (int p = 0; p < kPresets; ++p) {
            coefficients[p] = a[p];
            for (u32 i = 0; i < forms.Count(); ++i) frames[p].push_back(static_cast<double>(random() % 100));
            pixelBackgrounds[p] = frames[p].data();
        }
        // Stretches of one preset, and places where it changes with every pixel.
        u8 preset = 0;
        for (u32 i = 0; i < forms.Count(); ++i) {
            if (i % 90 == 0 || i % 200 < 30) preset = static_cast<u8>(random() % kPresets);
            presets.push_back(preset);
        }
    }
};

/// A power that is cut to signed 32 bits.
double Cut(u64 power) {
    const u64 low = power & 0xFFFFFFFF;
    return low < 0x80000000 ? static_cast<double>(low) : static_cast<double>(low) - 4294967296.0;
}

/// The order code by its definition; `bits` holds the count as 64-bit integer where powers wrap.
std::optional<double> Reference(const double* a, int order, double c, std::optional<u64> bits, double b, double s) {
    if (order < -2) return std::nullopt;
    if (order == -1) return (c - b) * a[1] * s + a[0];
    if (order == -2) return ((c - b) * a[1] + a[0]) * s;
    if (order == 0) return c * s;
    double sum = a[0] + a[1] * c;
    u64 wrapped = bits.value_or(0);
    for (int k = 2; k <= order; ++k) {
        wrapped *= bits.value_or(0);
        double power = c;
        for (int i = 1; i < k; ++i) power *= c;
        sum += a[k] * (bits && order <= 4 ? Cut(wrapped) : power);
    }
    return sum * s;
}

template <class S>
std::vector<S> Source(u32 count) {
    std::mt19937_64 random(3);
    std::vector<S> source(count);
    for (S& pixel : source) {
        if constexpr (std::is_floating_point_v<S>) {
            pixel = static_cast<S>(static_cast<S>(random() % 2000000) / 16 - 30000);
        } else {
            pixel = static_cast<S>(random());
        }
    }
    return source;
}

template <class D>
void ExpectNear(D found, std::optional<double> expected, const std::string& where) {
    const D value = static_cast<D>(expected.value_or(-12345));  // what the destination held
    if (value == found) return;
    const double tolerance = std::is_same_v<D, float> ? 1e-6 : 1e-12;
    ASSERT_NEAR(found, value, std::abs(value) * tolerance + (std::is_same_v<D, float> ? 1e-4 : 1e-9)) << where;
}

double* Lent(const double* values) { return const_cast<double*>(values); }  // nobody writes to them

/// Every form, shape and order for one pair of types, held against the formula pixel by pixel.
template <class S, class D>
void CheckAll(const SLaws& laws) {
    const SForms& forms = laws.forms;
    std::vector<S> source = Source<S>(forms.Count());
    const STypedData in{source.data(), DataTypeOf<S>()};
    std::vector<D> result;
    /// `call(destination, form arguments...)` must give `expected(frame index, count, its bits where powers wrap)`.
    const auto check = [&](EForm form, const std::string& what, bool wraps, const auto& call, const auto& expected) {
        result.assign(forms.Count() + 200, static_cast<D>(-12345));
        const STypedData out{result.data(), DataTypeOf<D>()};
        ASSERT_TRUE(forms.Call(form, [&](auto... f) { return call(out, f...); })) << what;
        const std::vector<u32> visited = forms.Visited(form);
        const bool cut = wraps && std::is_integral_v<S> && (form == EForm::W || form == EForm::L);
        for (std::size_t n = 0; n < visited.size(); ++n) {
            const S pixel = source[visited[n]];
            std::optional<u64> bits;
            if constexpr (std::is_integral_v<S>) {
                if (cut) bits = static_cast<u64>(pixel);
            }
            ExpectNear(result[n], expected(visited[n], static_cast<double>(pixel), bits),
                       what + " form " + std::to_string(static_cast<int>(form)) + " pixel " + std::to_string(n));
            if (testing::Test::HasFatalFailure()) return;
        }
        ASSERT_EQ(result[visited.size()], static_cast<D>(-12345)) << what;
    };
    const double* a = laws.a[0];
    const double* frame = laws.pixelBackgrounds[2];
    for (const EForm form : kForms) {
        for (int order = -3; order <= 6; ++order) {
            const std::string what = "order " + std::to_string(order);
            const auto ofOne = [&](u32, double c, auto b) { return Reference(a, order, c, b, 7.5, 2); };
            const auto ofFrame = [&](u32 i, double c, auto b) { return Reference(a, order, c, b, frame[i], 2); };
            if constexpr (!std::is_same_v<S, u64>) {
                const auto call = [&](auto background) {
                    return
                        [=](STypedData out, auto... f) { return ToRadiance(out, in, f..., a, order, background, 2); };
                };
                check(form, what, true, call(7.5), ofOne);
                check(form, what + " backgrounds", true, call(frame), ofFrame);
            }
            const auto record = [&](const double* backgrounds) {
                const SRadianceParams params{Lent(a), order, 7.5, Lent(backgrounds)};
                return [=](STypedData out, auto... f) {
                    return CountsToRadiance(in, out, f..., params, SCommonParams{.radianceScale = 2});
                };
            };
            check(form, what + " record", false, record(nullptr), ofOne);
            check(form, what + " record with backgrounds", false, record(frame), ofFrame);
        }
        const i32 orders[kPresets] = {2, -1, 4, -2, 3, -5};
        const auto preset = [&](u32 i) { return laws.presets[i]; };
        if constexpr (!std::is_same_v<S, u64>) {
            const auto call = [&](const u8* presets, CPresetBackgrounds backgrounds) {
                return [=, &laws, &orders](STypedData out, auto... f) {
                    return ToRadiance(out, in, presets, f..., laws.coefficients, orders, backgrounds, laws.scales);
                };
            };
            const auto expected = [&](u8 p, double c, auto b, double background) {
                return Reference(laws.a[p], orders[p], c, b, background, laws.scales[p]);
            };
            check(form, "presets", true, call(laws.presets.data(), laws.backgrounds),
                  [&](u32 i, double c, auto b) { return expected(preset(i), c, b, laws.backgrounds[preset(i)]); });
            const double* arrays[kPresets];
            std::copy_n(laws.pixelBackgrounds, kPresets, arrays);
            arrays[3] = nullptr;  // counts as 0
            check(form, "presets with backgrounds", true, call(laws.presets.data(), arrays),
                  [&](u32 i, double c, auto b) {
                      return expected(preset(i), c, b, arrays[preset(i)] ? arrays[preset(i)][i] : 0);
                  });
            check(form, "no map", true, call(nullptr, laws.backgrounds),
                  [&](u32, double c, auto b) { return expected(0, c, b, 1); });
        }
        const bool flags[kPresets] = {true, true, false, true, true, false};
        SRadianceParams records[kPresets];
        for (int p = 0; p < kPresets; ++p) {
            records[p] = {Lent(laws.a[p]), orders[p], laws.backgrounds[p],
                          p == 3 ? nullptr : Lent(laws.pixelBackgrounds[p])};
        }
        const auto byRecord = [&](STypedData out, auto... f) {
            const SCommonParams common{.radianceScale = 0.5};
            return CountsToRadiance(in, out, laws.presets.data(), f..., flags, records, common);
        };
        check(form, "records", false, byRecord, [&](u32 i, double c, auto) {
            const u8 p = preset(i);
            const bool perPixel = p == 0 || p == 1 || p == 4;
            return Reference(laws.a[p], orders[p], c, {}, perPixel ? laws.pixelBackgrounds[p][i] : laws.backgrounds[p],
                             0.5);
        });
    }
}

TEST(ToRadiance, EveryFormShapeOrderAndTypeFollowsTheFormula) {
    const SLaws laws;
    for (u32 type = Int8; type <= Flt64; ++type) {
        SCOPED_TRACE(type);
        Visit(static_cast<EDataType>(type), [&]<class S>(TElement<S>) {
            CheckAll<S, float>(laws);
            CheckAll<S, double>(laws);
        });
    }
}

TEST(ToRadiance, OtherTypesAreRefusedAndNothingIsWritten) {
    u64 pixels[4] = {1, 2, 3, 4};
    double result[4] = {-1, -1, -1, -1};
    double a[] = {0, 1};
    const SRadianceParams params{a, 1, 0, nullptr};
    for (u32 from = 0; from < 13; ++from) {
        for (u32 to = 0; to < 13; ++to) {
            const STypedData in{pixels, EDataType{from}}, out{result, EDataType{to}};
            const bool floats = to == Flt32 || to == Flt64;
            EXPECT_EQ(ToRadiance(out, in, 0, a, 1, 0.0, 1), floats && from <= Flt64 && from != UInt64);
            EXPECT_EQ(CountsToRadiance(in, out, 0, params, {}), floats && from <= Flt64);
            if (floats && from <= Flt64) continue;
            ToRadiance(out, in, 2, a, 1, 0.0, 1);
            CountsToRadiance(in, out, 2, params, {});
        }
    }
    EXPECT_FALSE(ToRadiance({result, Flt64}, {pixels, UInt64}, 2, a, 1, 0.0, 1));
    EXPECT_EQ(result[0], -1);
}

TEST(ToRadiance, LimitsCutAndFlag) {
    // Two presets: the second is held against limits ten higher.
    const float counts[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, NAN};
    const u8 presets[] = {0, 0, 1, 0, 0, 1, 0, 0, 0, 0};
    const u32 indices[] = {9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
    const double warnLow[] = {4, 14}, warnHigh[] = {6, 16}, clipLow[] = {2, 12}, clipHigh[] = {8, 18};
    const double* coefficients[] = {nullptr, nullptr};
    const i32 orders[] = {0, 0};
    const double scales[] = {1, 1};
    const STypedData in{const_cast<float*>(counts), Flt32};
    const double plain[] = {2, 2, 3, 4, 5, 6, 7, 8, 8, NAN};
    const u8 plainFlags[] = {2, 1, 1, 1, 0, 1, 1, 1, 4, 1};
    const double perPreset[] = {2, 2, 12, 4, 5, 12, 7, 8, 8, NAN};
    const u8 perPresetFlags[] = {2, 1, 2, 1, 0, 2, 1, 1, 4, 1};
    const auto check = [&](bool listed, bool split, auto... arguments) {
        SCOPED_TRACE(listed * 2 + split);
        double result[10];
        u8 status[10];
        std::fill_n(status, 10, u8{64});  // ORed into
        ASSERT_TRUE(ToRadiance({result, Flt64}, in, status, arguments...));
        for (int n = 0; n < 10; ++n) {
            const int i = listed ? 9 - n : n;
            const double expected = split ? perPreset[i] : plain[i];
            EXPECT_TRUE(result[n] == expected || (std::isnan(result[n]) && std::isnan(expected))) << n;
            EXPECT_EQ(status[n], 64 | (split ? perPresetFlags[i] : plainFlags[i])) << n;
        }
        u8* const none = nullptr;
        EXPECT_TRUE(ToRadiance({result, Flt64}, in, none, arguments...)) << "no status wanted";
    };
    const u8* const map = presets;
    const u32* const list = indices;
    const double* const* const noPolynomial = coefficients;
    check(false, false, 10, 4.0, 6.0, 2.0, 8.0, nullptr, 0, 0.0, 1.0);
    check(true, false, list, 10, 4.0, 6.0, 2.0, 8.0, nullptr, 0, 0.0, 1.0);
    check(false, true, map, 10, warnLow, warnHigh, clipLow, clipHigh, noPolynomial, orders, nullptr, scales);
    check(true, true, map, list, 10, warnLow, warnHigh, clipLow, clipHigh, noPolynomial, orders, nullptr, scales);
}

}  // namespace
}  // namespace ovix::reduce
