#include "reduce/pixels/temperature.h"

#include "core/visit.h"
#include "reduce/pixels/radiance.h"
#include "support/forms.h"
#include "support/pixel_reference.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr auto kUnknownScale = static_cast<ETempType>(9);

/// What the long-wave band gives from -20 to 180 degrees Celsius.
double kRadiances[] = {0.0019, 0.0041, 0.0077, 0.0126, 0.0189, 0.0263};
double kTemperatures[] = {-20, 20, 60, 100, 140, 180};
constexpr i32 kTableSize = 6;
double kCoefficients[] = {-70, 30000, -2e6, 9e7, -1e9, 1e10, 1e11, -1e12, 3e13};
constexpr double kHigh = 12, kLow = 8, kEmissivity = 0.875;

constexpr auto kCoeffs = [](auto... a) -> decltype(ToTemperatureCoeffs(a...)) { return ToTemperatureCoeffs(a...); };
constexpr auto kLookup = [](auto... a) -> decltype(ToTemperatureLookup(a...)) { return ToTemperatureLookup(a...); };
constexpr auto kPlanck = [](auto... a) -> decltype(ToTemperaturePlanck(a...)) { return ToTemperaturePlanck(a...); };
constexpr auto kRBF = [](auto... a) -> decltype(ToTemperatureRBF(a...)) { return ToTemperatureRBF(a...); };

constexpr std::initializer_list<EForm> kLists{EForm::W, EForm::L}, kParts{EForm::A, EForm::S, EForm::M};

template <class S, class D>
void CheckAllModels() {
    const SForms forms;
    std::vector<S> source;
    std::vector<u8> presets;
    for (u32 i = 0; i < forms.Count(); ++i) {
        source.push_back(static_cast<S>(0.001 + 0.00003 * i));
        presets.push_back(static_cast<u8>(i / 7 % 4));
    }
    const STypedData in{source.data(), DataTypeOf<S>()};
    const u8* const map = presets.data();
    // A function over all pixels, or by the map, with the arguments of its model, gives `expected(radiance, preset)`.
    const auto one = [&](auto function, auto... model) {
        return [=](ETempType scale, STypedData out,
                   auto... form) -> decltype(function(out, in, form..., model..., kEmissivity, scale)) {
            return function(out, in, form..., model..., kEmissivity, scale);
        };
    };
    const auto each = [&](auto function, auto... models) {
        return one(
            [=](STypedData out, STypedData from, auto... more) -> decltype(function(out, from, map, more...)) {
                return function(out, from, map, more...);
            },
            models...);
    };
    const auto check = [&](std::initializer_list<EForm> which, double part, const auto& call, const auto& expected) {
        for (const ETempType scale : {Celsius, Fahrenheit, Kelvin, Rankine, kUnknownScale}) {
            SCOPED_TRACE(scale);
            const auto scaled = [&](u32 i) {
                return FromCelsius(expected(source[i] / Real{kEmissivity}, map[i]), scale);
            };
            for (const EForm form : which) ExpectForm<D>(forms, form, part, scaled, call, scale);
        }
    };
    const bool single = std::is_same_v<D, float>;
    const double near = single ? 5e-7 : 1e-11;
    for (i32 order = -2; order <= 8; ++order) {
        SCOPED_TRACE("order " + std::to_string(order));
        check(kForms, single ? 3e-5 : 1e-10, one(kCoeffs, kCoefficients, order),
              [&](Real x, u8) { return Polynomial(kCoefficients, order, x); });
    }
    const double* a[] = {kCoefficients, kCoefficients + 1, kCoefficients, kCoefficients};
    const i32 orders[] = {2, 1, 7, 3};
    check(kForms, single ? 1e-4 : 1e-10, each(kCoeffs, a, orders),
          [&](Real x, u8 p) { return Polynomial(a[p], orders[p], x); });

    // Whole buffers and lists say whether to clamp; the other forms do.
    double* const y = kTemperatures;
    const auto inTable = [&](Real x, u8) { return Lookup(kRadiances, y, kTableSize, x); };
    check(kLists, near, one(kLookup, kRadiances, y, kTableSize, true), inTable);
    check(kParts, near, one(kLookup, kRadiances, y, kTableSize), inTable);
    const double* xs[] = {kRadiances, kRadiances + 1, kRadiances, kRadiances + 2};
    const double* ys[] = {y, y, y + 1, y + 2};
    const i32 sizes[] = {6, 5, 2, 4};
    const auto inTables = [&](Real x, u8 p) { return Lookup(xs[p], ys[p], sizes[p], x); };
    check(kLists, near, each(kLookup, xs, ys, sizes, true), inTables);
    check(kParts, near, each(kLookup, xs, ys, sizes), inTables);

    check(kForms, near, one(kPlanck, kHigh, kLow), [](Real x, u8) { return Planck(x); });
    const double R[] = {2, 2.5, 3, 2}, B[] = {1450, 1400, 1500, 1450}, F[] = {1, 1.5, 0.5, 1},
                 O[] = {0, 1e-4, 0, -1e-3};
    const float* const none = nullptr;
    const auto fit = [&](Real x, u8 p) { return B[p] / std::log(R[p] / (x - O[p]) + F[p]) - 273.15L; };
    check(kLists, near, one(kRBF, R[1], B[1], F[1], O[1], 1.0f, 2.0f, 3.0f, 4.0f),
          [&](Real x, u8) { return fit(x, 1); });
    check(kLists, near, each(kRBF, R, B, F, O, none, none, none, none), fit);
}

TEST(ToTemperature, EveryFormShapeModelScaleAndTypeFollowsTheFormula) {
    CheckAllModels<float, float>();
    CheckAllModels<float, double>();
    CheckAllModels<double, float>();
    CheckAllModels<double, double>();
}

TEST(ToTemperature, SingleValues) {
    const double squares[] = {1, 0, 0, 1};
    EXPECT_EQ(ToTemperatureCoeffs(4, squares, 3, 2, Celsius), 17) << "the third term is the fourth power";
    EXPECT_EQ(ToTemperatureCoeffs(4, squares, 0, 2, Fahrenheit), 33.8);
    EXPECT_EQ(ToTemperatureCoeffs(4, squares, -1, 2, kUnknownScale), 1);

    for (double radiance = 0.001; radiance < 0.03; radiance += 0.0001) {
        double t = 0;
        const auto lookup = [&](bool clamp) {
            return ToTemperatureLookup(t, radiance / 2, kRadiances, kTemperatures, kTableSize, clamp, 0.5, Kelvin);
        };
        EXPECT_EQ(lookup(false), kRadiances[0] <= radiance && radiance <= kRadiances[5]) << radiance;
        EXPECT_NEAR(t, static_cast<double>(Lookup(kRadiances, kTemperatures, kTableSize, radiance)) + 273.15, 1e-10);
        EXPECT_TRUE(lookup(true));
    }
    double t = 7;
    EXPECT_FALSE(ToTemperatureLookup(t, 1, kRadiances, kTemperatures, 1, true, 1, Celsius));
    EXPECT_EQ(t, 7);
    EXPECT_TRUE(ToTemperatureLookup(t, kNaN, kRadiances, kTemperatures, kTableSize, false, 1, Celsius));
    EXPECT_TRUE(std::isnan(t));

    EXPECT_EQ(ToTemperaturePlanck(0, kHigh, kLow, 1, Kelvin), 0);
    EXPECT_NEAR(ToTemperaturePlanck(0.005, kHigh, kLow, 0.5, Celsius), static_cast<double>(Planck(0.01L)), 1e-9);

    const auto fit = [](double x, double R, double F, ETempType scale) {
        return ToTemperatureRBF(x, R, 1450, F, 0.25, 0, 0, 0, 0, 1, scale);
    };
    EXPECT_TRUE(fit(0.25, 2, 1, Celsius) == -273.15 && fit(kNaN, 2, 1, Kelvin) == 0);
    EXPECT_DOUBLE_EQ(fit(0.75, 2, 1, Rankine), 1450 / std::log(5.0) * 1.8);
    EXPECT_DOUBLE_EQ(fit(0.75, -2, 1, Kelvin), 1450 / std::log(1.0002));
    EXPECT_DOUBLE_EQ(fit(0.75, -2, 0.5, kUnknownScale), 1450 / std::log(1.0002) - 273.15);
    EXPECT_DOUBLE_EQ(fit(1e9, 2, 1.5, Kelvin), 1450 / std::log(1.5 * 1.0002)) << "the limit follows F";
}

TEST(ToTemperature, PowersAreSummedInSinglePrecisionForSingleDestinations) {
    double a[] = {16777216, 1, 1, 1, 1, 1, 1, 1};  // in single precision, each 1 is lost
    const double* coefficients[] = {a};
    const double one = 1;
    const i32 two = 2;
    const u8 preset = 0;
    float single = 0;
    double whole = 0;
    const STypedData in{const_cast<double*>(&one), Flt64}, out{&single, Flt32}, wide{&whole, Flt64};
    const STemperatureParams params{.coefficients = a, .order = 7};
    EXPECT_TRUE(ToTemperatureCoeffs(out, in, 1, a, 7, 1, Celsius) && single == 16777216);
    EXPECT_TRUE(ToTemperatureCoeffs(wide, in, 1, a, 7, 1, Celsius) && whole == 16777223);
    EXPECT_TRUE(ToTemperatureCoeffs(out, in, 1, a, 6, 1, Celsius) && single == 16777222) << "1 to 6 are written out";
    EXPECT_TRUE(ToTemperatureCoeffs(out, in, &preset, 1, coefficients, &two, 1, Celsius) && single == 16777216)
        << "for a preset, all orders take powers";
    EXPECT_TRUE(RadianceToTemperature(in, out, 1, params, {}) && single == 16777224);
}

TEST(ToTemperature, StopsWhereAPixelHasNoTemperature) {
    double in[] = {0.0041, 0.0077, 0.5, 0.0126}, result[4];
    u8 presets[] = {0, 1, 2, 1};
    const u32 list[] = {0, 1, 2, 3};
    const STypedData from{in, Flt64}, out{result, Flt64};
    // `done` pixels are written, the first of them `first`; all of them make the call a success.
    const auto expect = [&](const char* what, u32 done, double first, const auto& call) {
        std::fill_n(result, 4, -1.0);
        EXPECT_EQ(call(), done == 4) << what;
        EXPECT_EQ(result[0], done ? first : -1) << what;
        for (u32 i = 0; i < 4; ++i) EXPECT_EQ(result[i] != -1, i < done) << what << ' ' << i;
    };
    const auto lookup = [&](i32 size, bool clamp, auto... form) {
        return
            [=] { return ToTemperatureLookup(out, from, form..., kRadiances, kTemperatures, size, clamp, 1, Celsius); };
    };
    expect("outside", 2, 20, lookup(6, false, 4));
    expect("clamped", 4, 20, lookup(6, true, 4));
    expect("short", 0, 0, lookup(1, true, 4));
    expect("list", 2, 20, lookup(6, false, list, 4));
    const SArea row{0, 0, 0, 3};
    expect("short, area", 4, 273.15,
           [&] { return ToTemperatureLookup(out, from, 4, 1, row, kRadiances, kTemperatures, 1, 1, Kelvin); });

    const double* xs[] = {kRadiances, kRadiances, kRadiances};
    const double* ys[] = {kTemperatures, kTemperatures, kTemperatures};
    const i32 sizes[] = {6, 6, 1};
    const auto whole = [&](const u8* map) {
        return
            [=, &xs, &ys, &sizes] { return ToTemperatureLookup(out, from, map, 4, xs, ys, sizes, true, 1, Celsius); };
    };
    expect("preset without table", 2, 20, whole(presets));
    expect("no map", 4, 20, whole(nullptr));
    expect("the same, area", 4, 20,
           [&] { return ToTemperatureLookup(out, from, presets, 4, 1, row, xs, ys, sizes, 1, Celsius); });

    const double line[] = {0.5, 0};
    const double* lines[] = {line, line, line, line, line};
    const i32 orders[] = {1, 1, 0, 1, 1};
    for (const auto& [preset, done] : {std::pair{2, 2u}, {4, 2u}, {3, 4u}}) {  // no order, no such preset
        presets[2] = static_cast<u8>(preset);
        expect("polynomials", done, 0.5,
               [&] { return ToTemperatureCoeffs(out, from, presets, 4, lines, orders, 1, Celsius); });
    }
}

/// Eight presets: a table, a polynomial or Planck each.
struct SRecords {
    SRadianceParams toRadiance[8];
    STemperatureParams toTemperature[8];
    double line[2] = {8e-4, 2e-6};
    bool valid[8] = {true, true, true, false, true, true, false, true};
    std::vector<double> backgrounds;

    explicit SRecords(u32 pixels) {
        for (u32 i = 0; i < pixels; ++i) backgrounds.push_back(100 + i % 50);
        for (int p = 0; p < 8; ++p) {
            toRadiance[p] = {line, p % 2 ? -1 : 1, 50.0 * p, p > 4 ? backgrounds.data() : nullptr};
            if (p % 3 == 0) toTemperature[p] = {kRadiances, kTemperatures, kTableSize, kCoefficients, 2};
            if (p % 3 == 1) toTemperature[p] = {kRadiances, kTemperatures, p == 4 ? 1 : 0, kCoefficients, p};
            if (p % 3 == 2) toTemperature[p] = {kRadiances, nullptr, kTableSize, p == 2 ? nullptr : kCoefficients, 0};
        }
    }
    Real Radiance(Real count, u8 p, u32 pixel, bool flags, Real scale) const {
        const Real background = p > 4 && flags ? Real{backgrounds[pixel]} : 50.0L * p;
        return p % 2 ? (count - background) * line[1] * scale + line[0] : (line[0] + line[1] * count) * scale;
    }
    Real Temperature(Real radiance, u8 p, bool flags) const {
        const Real x = radiance / kEmissivity;
        if (p % 3 == 2) return Planck(x);
        if (p % 3 == 0 && flags) return Lookup(kRadiances, kTemperatures, kTableSize, x);
        return Polynomial(kCoefficients, p % 3 == 0 ? 2 : p, x);
    }
};

constexpr SCommonParams kCommon{0.5, kEmissivity, Rankine, kHigh, kLow};

TEST(ToTemperature, RecordsChooseTheModel) {
    const SForms forms;
    const SRecords records(forms.Count());
    std::vector<u8> presets(forms.Count());
    for (u32 i = 0; i < presets.size(); ++i) presets[i] = static_cast<u8>(i / 5 % 8);
    const u8* const map = presets.data();
    for (u32 kind = Int8; kind <= Flt64 + 1; ++kind) {
        SCOPED_TRACE(kind);
        const bool few = kind > Flt64;  // counts, which go through tables
        Visit(few ? UInt16 : static_cast<EDataType>(kind), [&]<class S>(TElement<S>) {
            std::vector<S> counts, radiances;
            for (u32 i = 0; i < forms.Count(); ++i) {
                counts.push_back(static_cast<S>(sizeof(S) == 1 || few ? i % 50 : 500 + i * 13));
                radiances.push_back(static_cast<S>(0.001 + 0.00002 * i));
            }
            const STypedData in{counts.data(), DataTypeOf<S>()}, of{radiances.data(), DataTypeOf<S>()};
            const auto check = [&](const auto& celsius, const auto& call) {
                for (const EForm form : kForms) {
                    ExpectForm<double>(
                        forms, form, 1e-10, [&](u32 i) { return FromCelsius(celsius(i), Rankine); }, call);
                }
            };
            const auto ofCount = [&](u8 p, u32 i, bool flags) {
                const Real radiance =
                    records.Radiance(static_cast<Real>(counts[i]), p, i, flags, kCommon.radianceScale);
                return records.Temperature(radiance, p, flags);
            };
            for (const bool* flags : {&records.valid[0], static_cast<const bool*>(nullptr)}) {
                const auto law = [&](u32 i) { return ofCount(map[i], i, flags && flags[map[i]]); };
                check(law, [&](STypedData out, auto... f) {
                    return CountsToTemperature(in, out, map, f..., flags, records.toRadiance, records.toTemperature,
                                               kCommon);
                });
            }
            for (const u8 p : std::initializer_list<u8>{0, 4, 5, 6}) {
                const auto law = [&](u32 i) { return ofCount(p, i, true); };
                check(law, [&](STypedData out, auto... f) {
                    return CountsToTemperature(in, out, f..., records.toRadiance[p], records.toTemperature[p], kCommon);
                });
            }
            if constexpr (std::is_floating_point_v<S>) {
                const auto byMap = [&](u32 i) {
                    return records.Temperature(radiances[i], map[i], records.valid[map[i]]);
                };
                const auto bySecond = [&](u32 i) { return records.Temperature(radiances[i], 2, true); };
                check(byMap, [&](STypedData out, auto... f) {
                    return RadianceToTemperature(of, out, map, f..., records.valid, records.toTemperature, kCommon);
                });
                check(bySecond, [&](STypedData out, auto... f) {
                    return RadianceToTemperature(of, out, f..., records.toTemperature[2], kCommon);
                });
            }
        });
    }
}

TEST(ToTemperature, CountsReachTemperatureWithoutRoundingBetween) {
    const u16 counts[] = {1, 2, 3, 1001};
    double lift[] = {1e8, 1}, lower[] = {-1e8, 1};  // a float near 1e8 knows multiples of 8
    float result[4];
    for (const i32 order : {1, -3}) {  // an order that is none writes nothing
        EXPECT_TRUE(CountsToTemperature({const_cast<u16*>(counts), UInt16}, {result, Flt32}, 4,
                                        {.coefficients = lift, .order = order}, {.coefficients = lower, .order = 1},
                                        {}));
        for (int i = 0; i < 4; ++i) EXPECT_EQ(result[i], counts[i]);
    }
}

}  // namespace
}  // namespace ovix::reduce
