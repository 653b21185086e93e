#include "reduce/pixels/radiance.h"

#include "support/forms.h"
#include "support/pixel_reference.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// How counts become radiance.
struct SLaw {
    const double* a;
    int order;
    double background, scale;

    /// By its definition; where powers are `cut`, they are signed ones of 32 bits.
    template <class S>
    double Of(S pixel, bool cut) const {
        const double c = static_cast<double>(pixel);
        if (order < -2) return kUntouched;
        if (order == -1) return (c - background) * a[1] * scale + a[0];
        if (order == -2) return ((c - background) * a[1] + a[0]) * scale;
        if (order == 0) return c * scale;
        double sum = a[0] + a[1] * c, power = c;
        u64 whole = 1;
        if constexpr (std::is_integral_v<S>) whole = static_cast<u64>(pixel);
        const u64 factor = whole;
        for (int k = 2; k <= order; ++k) {
            power *= c;
            whole *= factor;
            sum += a[k] * (cut && order <= 4 ? static_cast<i32>(static_cast<u32>(whole)) : power);
        }
        return sum * scale;
    }
};

TEST(Radiance, SumsPlanckOverTheBandBetweenHundredths) {
    const struct {
        double celsius, low, high, scale, lowUsed, highUsed;
    } cases[] = {{25, 8.001, 12.005, 1, 8, 12},
                 {-40, 7.506, 13.009, 0.93, 7.5, 13},
                 {1200, 3.001, 5.003, 1, 3, 5},
                 {0, 10.001, 10.012, 2, 10, 10.01}};
    for (const auto& c : cases) {
        const double expected = BandRadiance(c.celsius, c.lowUsed, c.highUsed) * c.scale;
        EXPECT_NEAR(Radiance(c.celsius, c.low, c.high, c.scale), expected, expected * 2e-5) << c.celsius;
    }
    // An empty band gives nothing, and so does one that no integer counts.
    EXPECT_TRUE(Radiance(25, 8, 8, 1) == 0 && Radiance(25, 12, 8, 1) == 0 && Radiance(25, 8, 1e300, 1) == 0);
}

TEST(Radiance, ScalarOrders) {
    const double a[] = {10, 3, 0.5, 0.25, 0.125, 2, 1};
    for (int order = -2; order <= 6; ++order)
        for (const double count : {0.0, 5.0, -7.25, 50000.0})
            EXPECT_DOUBLE_EQ(ToRadiance(count, a, order, 1, 2), (SLaw{a, order, 1, 2}.Of(count, false))) << order;
    EXPECT_EQ(ToRadiance(5, nullptr, 0, 0, 2), 10);
    EXPECT_TRUE(std::isnan(ToRadiance(kNaN, a, 2, 0, 1)));
}

TEST(Radiance, FillerCountsAndWraps) {
    const double a[] = {10, 3, 0.5, 0.25, 0.125, 1e-9, 1e-12};
    for (int order = -3; order <= 6; ++order) {
        std::vector<float> table(65537, kUntouched);
        std::vector<u8> status(65537, 77);
        ASSERT_TRUE(CountsToRadiance(0, 65535, table.data(), status.data(), false, 0, 0, 0, 0, a, order, 7, 2));
        for (u32 i = 0; i < 65536; ++i) {
            const double expected = SLaw{a, order, 7, 2}.Of(static_cast<u16>(i), true);
            ASSERT_NEAR(table[i], expected, 1e-7 * std::abs(expected)) << i << ", order " << order;
            ASSERT_EQ(status[i], 0) << i;
        }
        EXPECT_TRUE(table[65536] == kUntouched && status[65536] == 77);
    }
    float one[] = {-1, -1};
    EXPECT_TRUE(CountsToRadiance(65535, 65535, one, nullptr, true, 0, 0, 0, 0, a, -1, 65530, 3));
    EXPECT_TRUE(CountsToRadiance(7, 6, one + 1, nullptr, false, 0, 0, 0, 0, a, 1, 0, 1));
    EXPECT_TRUE(one[0] == 0.0f && one[1] == -1.0f) << "5 * 3 * 3 + 10, cut";
}

TEST(Radiance, LookupInvertsATable) {
    const double radiances[] = {1, 2, 6, 7, 20}, temperatures[] = {-10, 0, 10, 40, 100};
    const auto lookup = [&](double& radiance, double t, i32 count, bool clamp, ETempType scale) {
        return ToRadianceLookup(radiance, t, radiances, temperatures, count, clamp, 2, scale);
    };
    double radiance = -1;
    for (const ETempType scale : {Celsius, Fahrenheit, Kelvin, Rankine, ETempType{9}}) {
        for (double t = -15; t <= 105; t += 2.5) {
            const double scaled = static_cast<double>(FromCelsius(t, scale)), slack = 1e-9 * (t > 0 ? -1 : 1);
            EXPECT_EQ(lookup(radiance, scaled + slack, 5, false, scale), t >= -10 && t <= 100) << t;
            EXPECT_NEAR(radiance, static_cast<double>(2 * Lookup(temperatures, radiances, 5, t)), 1e-8) << t;
            EXPECT_TRUE(lookup(radiance, scaled, 5, true, scale));
        }
    }
    radiance = -1;
    EXPECT_FALSE(lookup(radiance, 5, 1, true, Celsius) || radiance != -1);
    EXPECT_TRUE(lookup(radiance, -5, 2, true, Celsius) && radiance == 3);
    lookup(radiance, kNaN, 5, true, Celsius);
    EXPECT_TRUE(std::isnan(radiance)) << "the search ends";
    const double disorder[] = {5, -3, 9, 1, 100};
    for (int t = -3; t <= 100; ++t) ToRadianceLookup(radiance, t, radiances, disorder, 5, true, 1, Celsius);
}

double* Lent(const double* values) { return const_cast<double*>(values); }  // nobody writes to them

constexpr u32 kPresets = 6;

/// Every form, shape and order for one pair of types, held against the formula pixel by pixel: of laws for six presets,
/// of different orders, and a frame of backgrounds for each.
template <class S, class D>
void CheckAll(bool few = false) {
    const SForms forms;
    const u32 pixels = forms.Count();
    constexpr double kA[kPresets][7] = {{3, 2, 0.5, 0.25, 0.125, 0.01, 1e-3},
                                        {-1, 1.5, 1e-3, 1e-4, 1e-6},
                                        {7, 0.1, 2},
                                        {5, 3},
                                        {-4, 0.25, 1, 1, 1},
                                        {1, 1, 1, 1, 1, 1, 1}};
    const double* const a[] = {kA[0], kA[1], kA[2], kA[3], kA[4], kA[5]};
    const i32 orders[] = {2, -1, 4, -2, 3, -5};
    const double scales[] = {2, 0.5, 3, 1, 0.25, 1}, singles[] = {1, 2, 3, 4, 5, 6};
    std::mt19937_64 random(3);
    std::vector<S> source(pixels);
    std::vector<u8> presets(pixels);
    std::vector<double> frames[kPresets];
    const double* frame[kPresets];
    for (u32 i = 0; i < pixels; ++i) {
        // Stretches of one preset, and places where it changes with every pixel.
        presets[i] = i % 90 == 0 || i % 200 < 30 ? static_cast<u8>(random() % kPresets) : presets[i - 1];
        for (auto& backgrounds : frames) backgrounds.push_back(static_cast<double>(random() % 100));
        if constexpr (std::is_integral_v<S>) source[i] = static_cast<S>(few ? 20000 + random() % 50 : random());
        if constexpr (!std::is_integral_v<S>) source[i] = static_cast<S>(random() % 2000000) / 16 - 30000;
    }
    for (u32 p = 0; p < kPresets; ++p) frame[p] = p == 3 ? nullptr : frames[p].data();  // which counts as 0
    const STypedData in{source.data(), DataTypeOf<S>()};

    const auto check = [&](bool wraps, const auto& lawAt, const auto& call) {
        for (const EForm form : kForms) {
            const bool cut = wraps && std::is_integral_v<S> && (form == EForm::W || form == EForm::L);
            const auto expected = [&](u32 i) { return lawAt(i).Of(source[i], cut); };
            ExpectForm<D>(forms, form, std::is_same_v<D, float> ? 1e-6 : 1e-11, expected, call);
        }
    };
    const u8* const map = presets.data();
    for (int i = 0; i < 20; ++i) {
        const int order = i / 2 - 3;
        const double* const each = i % 2 ? frame[2] : nullptr;
        SCOPED_TRACE("order " + std::to_string(order));
        const auto law = [&](u32 pixel) { return SLaw{a[0], order, each ? each[pixel] : 7.5, 2}; };
        const CBackground background = each ? CBackground(each) : CBackground(7.5);
        const SRadianceParams params{Lent(a[0]), order, 7.5, Lent(each)};
        check(false, law, [&](STypedData out, auto... f) {
            return CountsToRadiance(in, out, f..., params, SCommonParams{.radianceScale = 2});
        });
        if constexpr (!std::is_same_v<S, u64>) {
            check(true, law,
                  [&](STypedData out, auto... f) { return ToRadiance(out, in, f..., a[0], order, background, 2); });
        }
    }
    if constexpr (!std::is_same_v<S, u64>) {
        const auto checkEach = [&](const u8* presetMap, CPresetBackgrounds backgrounds, const auto& backgroundAt) {
            const auto law = [&](u32 i) {
                const u8 p = presetMap ? presetMap[i] : u8{0};
                return SLaw{a[p], orders[p], backgroundAt(p, i), scales[p]};
            };
            check(true, law, [&](STypedData out, auto... f) {
                return ToRadiance(out, in, presetMap, f..., a, orders, backgrounds, scales);
            });
        };
        checkEach(map, singles, [&](u8 p, u32) { return singles[p]; });
        checkEach(map, frame, [&](u8 p, u32 i) { return frame[p] ? frame[p][i] : 0; });
        checkEach(nullptr, singles, [&](u8, u32) { return 1.0; });
    }
    const bool usesFrame[] = {true, true, false, true, true, false};
    SRadianceParams records[kPresets];
    for (u32 p = 0; p < kPresets; ++p) records[p] = {Lent(a[p]), orders[p], singles[p], Lent(frame[p])};
    const auto law = [&](u32 i) {
        const u8 p = map[i];
        return SLaw{a[p], orders[p], usesFrame[p] && frame[p] ? frame[p][i] : singles[p], 0.5};
    };
    check(false, law, [&](STypedData out, auto... f) {
        return CountsToRadiance(in, out, map, f..., usesFrame, records, SCommonParams{.radianceScale = 0.5});
    });
}

TEST(ToRadiance, EveryFormShapeOrderAndTypeFollowsTheFormula) {
    for (u32 type = Int8; type <= Flt64; ++type) {
        SCOPED_TRACE(type);
        Visit(static_cast<EDataType>(type), [&]<class S>(TElement<S>) {
            CheckAll<S, float>();
            CheckAll<S, double>();
            if constexpr (std::is_same_v<S, u16>) CheckAll<S, double>(true);  // goes through tables
        });
    }
}

TEST(ToRadiance, LimitsCutAndFlag) {
    // Counts as they are, clip at 2 and 8, warn at 4 and 6. By the map some are held against limits ten higher.
    constexpr u32 kCount = 11;
    const float counts[kCount] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, NAN};
    const double values[][kCount] = {{2, 2, 2, 3, 4, 5, 6, 7, 8, 8, NAN}, {2, 2, 2, 12, 4, 5, 12, 7, 8, 8, NAN}};
    const u8 flags[][kCount] = {{2, 2, 1, 1, 1, 0, 1, 1, 1, 4, 1}, {2, 2, 1, 2, 1, 0, 2, 1, 1, 4, 1}};
    const u8 presets[kCount] = {0, 0, 0, 1, 0, 0, 1};
    const u32 indices[kCount] = {10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
    float table[kCount];
    u8 status[kCount];
    const auto check = [&](bool listed, bool split, auto... arguments) {
        SCOPED_TRACE(listed * 2 + split);
        double result[kCount];
        std::fill_n(status, kCount, u8{64});  // ORed into
        const STypedData in{const_cast<float*>(counts), Flt32}, out{result, Flt64};
        ASSERT_TRUE(ToRadiance(out, in, status, arguments...));
        for (u32 n = 0; n < kCount; ++n) {
            const u32 i = listed ? indices[n] : n;
            EXPECT_TRUE(Same(result[n], values[split][i]) && status[n] == (64 | flags[split][i])) << i;
        }
        EXPECT_TRUE(ToRadiance(out, in, static_cast<u8*>(nullptr), arguments...)) << "no status wanted";
    };
    const double warnLow[] = {4, 14}, warnHigh[] = {6, 16}, clipLow[] = {2, 12}, clipHigh[] = {8, 18},
                 scales[] = {1, 1};
    const double* const none[] = {nullptr, nullptr};
    const i32 orders[] = {0, 0};
    const u8* const map = presets;
    const u32* const list = indices;
    const double* const* const a = none;
    check(false, false, kCount, 4.0, 6.0, 2.0, 8.0, nullptr, 0, 0.0, 1.0);
    check(true, false, list, kCount, 4.0, 6.0, 2.0, 8.0, nullptr, 0, 0.0, 1.0);
    check(false, true, map, kCount, warnLow, warnHigh, clipLow, clipHigh, a, orders, nullptr, scales);
    check(true, true, map, list, kCount, warnLow, warnHigh, clipLow, clipHigh, a, orders, nullptr, scales);

    ASSERT_TRUE(CountsToRadiance(0, 9, table, status, true, 4, 6, 2, 8, nullptr, 0, 0, 1));
    for (u32 i = 0; i < 10; ++i) EXPECT_TRUE(table[i] == values[0][i] && status[i] == flags[0][i]) << i;
    // 2 / 3 as a float is above itself as a double: held against that limit, it overflows.
    ASSERT_TRUE(CountsToRadiance(2, 2, table, status, true, 0, 0.5, 0, 2 / 3.0, nullptr, 0, 0, 1 / 3.0));
    EXPECT_EQ(status[0], 4);
}

}  // namespace
}  // namespace ovix::reduce
