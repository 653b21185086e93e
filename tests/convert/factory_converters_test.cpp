#include "reduce/convert/factory_converters.h"

#include <malloc.h>

#include <numeric>

#include "reduce/objects/reduce_object_array.h"
#include "support/cameras.h"
#include "support/selection_forms.h"

/// What the converters of the three families have in common, and where they differ.
namespace ovix::reduce {
namespace {

using namespace test;

/// Cameras whose presets differ in gain; that of the first family has one calibration for all.
struct SCurlew {
    using Converter = CCurlewConverter;
    using Reference = CCurlewReference;
    static constexpr u32 kSignals = 65536, kSpan = 32768;
    static constexpr int kNoData = 34;
    static CCurlewCal Camera(int) { return CurlewCamera(); }
};
struct STern {
    using Converter = CTernConverter;
    using Reference = CTernReference;
    static constexpr u32 kSignals = 16384, kSpan = 16000;  // ranges never take tables
    static constexpr int kNoData = 34;
    static CTernCal Camera(int preset) {
        CTernCal camera = TernCamera();
        camera.adjustGain -= 0.1f * static_cast<float>(preset);
        return camera;
    }
};
struct SMerlin {
    using Converter = CMerlinConverter;
    using Reference = CMerlinReference;
    static constexpr u32 kSignals = 16384, kSpan = 8192;
    static constexpr int kNoData = 2;
    static CMerlinCal Camera(int preset) {
        CMerlinCal camera = MerlinCamera(preset == 2 ? 5 : 1);  // that takes powers
        camera.c[1] = 1.1 - 0.1 * preset;
        return camera;
    }
};

template <class Family>
class FactoryConverter : public ::testing::Test {
  protected:
    static constexpr bool kIsCurlew = std::is_same_v<Family, SCurlew>, kIsTern = std::is_same_v<Family, STern>;
    static constexpr bool kIsMerlin = std::is_same_v<Family, SMerlin>;
    static constexpr u32 kSignals = Family::kSignals;

    FactoryConverter() : counts(kSignals) { std::iota(counts.begin(), counts.end(), u16{0}); }
    void AddPreset(u8 number, int likePreset) {
        auto cal = Family::Camera(likePreset);
        cal.preset = kIsCurlew ? u8{0} : number;
        cal.valid = true;
        array.Add(cal.Duplicate());
    }
    static typename Family::Reference Reference(int preset, const SScene& scene) {
        return {Family::Camera(preset), scene};
    }
    bool Update(EUnit unit, std::initializer_list<u8> enabled, ETempType scale = Celsius) {
        bool presets[8] = {};
        for (const u8 preset : enabled) presets[preset] = true;
        return converter.Update(Counts, Celsius, array, unit, scale, presets, 8, 0);
    }
    STypedData In() { return {counts.data(), UInt16}; }
    std::vector<float> Table(u8* status = nullptr) {
        std::vector<float> out(kSignals, -1.0f);
        EXPECT_TRUE(converter.BaseToOutput(In(), {out.data(), Flt32}, status, kSignals));
        return out;
    }
    bool UpdateLUT(u8 preset) {
        if constexpr (kIsCurlew) return converter.UpdateLUT();
        if constexpr (!kIsCurlew) return converter.UpdateLUT(preset);
    }

    CReduceObjectArray array;
    std::vector<u16> counts;
    typename Family::Converter converter;
};
using Families = ::testing::Types<SCurlew, STern, SMerlin>;
TYPED_TEST_SUITE(FactoryConverter, Families);

TYPED_TEST(FactoryConverter, IsOfferedForAValidCalibration) {
    using Converter = typename TypeParam::Converter;
    TArray<EUnit> units{RGBAverage};
    EXPECT_FALSE(Converter::SupportedUnits(units, Counts, this->array));
    this->AddPreset(1, 0);
    EXPECT_FALSE(Converter::SupportedUnits(units, RadianceFactory, this->array));
    EXPECT_TRUE(Converter::SupportedUnits(units, Counts, this->array));
    std::vector<EUnit> expected{RGBAverage, Counts, RadianceFactory, ObjectSignal, TemperatureFactory};
    if (this->kIsMerlin) expected.erase(expected.begin() + 3);
    EXPECT_TRUE(std::equal(units.begin(), units.end(), expected.begin(), expected.end()));
    EXPECT_EQ(converterFactory()->ConverterGUIDForUnit(Counts, this->array, TemperatureFactory), Converter::kID);

    EXPECT_EQ(this->Update(TemperatureFactory, {0, 1}), this->kIsCurlew);
    EXPECT_TRUE(this->Update(TemperatureFactory, {1}) && this->converter.activePreset == 1);
    this->array.GetAt(0)->valid = false;
    // Only the family of one calibration asks here whether that is valid; presets 4 to 7 have no model in the others.
    EXPECT_EQ(this->Update(TemperatureFactory, {1, 4, 7}), !this->kIsCurlew);
    EXPECT_FALSE(Converter::SupportedUnits(units, Counts, this->array));
}

TYPED_TEST(FactoryConverter, TablesAreTheFormulaAtEveryEntry) {
    const SScene scene{.emissivity = 0.85f, .distance = 12.0f, .reflectedTemp = 285.0f, .extOpticsTrans = 0.95f};
    const auto params = this->array.GetObjectParameters(true);
    CopyScene(*params, scene);
    this->AddPreset(2, 2);
    ASSERT_TRUE(this->Update(TemperatureFactory, {2}, Fahrenheit));
    const auto reference = this->Reference(2, scene);
    const auto fahrenheit = [](Real kelvin) { return static_cast<double>(kelvin * 1.8L - 459.67L); };
    EXPECT_EQ(params->estimatedAtmosphereTrans, static_cast<float>(reference.tau));
    std::vector<u8> status(this->kSignals);
    const std::vector<float> table = this->Table(status.data());
    float lower = -1, upper = -1;
    ASSERT_TRUE(this->converter.GetCalibratedRange(lower, upper, 255));
    EXPECT_NEAR(lower, fahrenheit(reference.KelvinAt(reference.lower)), 1e-4);
    EXPECT_NEAR(upper, fahrenheit(reference.KelvinAt(reference.upper)), 1e-4);
    for (u32 i = 0; i < this->kSignals; ++i) {
        int flags = 0;
        const Real kelvin = reference.Kelvin(reference.ObjectSignal(static_cast<int>(i), flags));
        ASSERT_NEAR(table[i], fahrenheit(kelvin), 1e-4) << i;
        ASSERT_EQ(status[i], i ? flags : TypeParam::kNoData) << i;
        ASSERT_EQ(status[i] == 0, lower < table[i] && table[i] < upper) << i;
        float out = 0;
        u8 single = 99;
        ASSERT_TRUE(this->converter.SignalToOutput(static_cast<u16>(i), out, single, 255) && out == table[i]);
        ASSERT_EQ(single, i || !this->kIsCurlew ? status[i] : 2);
    }
    EXPECT_FALSE(this->converter.GetCalibratedRange(lower, upper, 7));  // not enabled
    ASSERT_TRUE(this->Update(RadianceFactory, {2}));
    const std::vector<float> radiance = this->Table(status.data());
    for (u32 i = 1; i < this->kSignals; ++i) ASSERT_TRUE(radiance[i] > radiance[i - 1] || status[i] & 6) << i;
    for (const EUnit unit : {RadianceFactory, ObjectSignal, Counts}) {
        const bool known = unit == RadianceFactory || (unit == ObjectSignal && !this->kIsMerlin);
        EXPECT_EQ(this->Update(unit, {2}) && this->UpdateLUT(2), known);
        EXPECT_EQ(this->converter.GetCalibratedRange(lower, upper, 2) && lower < upper, known);
        EXPECT_EQ(this->converter.BaseToOutput(this->In(), {&lower, Flt32}, nullptr, 1), known);
    }
    ASSERT_TRUE(this->Update(TemperatureFactory, {2}));
    EXPECT_EQ(this->UpdateLUT(4) || this->UpdateLUT(200), this->kIsCurlew);
}

TYPED_TEST(FactoryConverter, SingleValuesThereAndBack) {
    this->AddPreset(0, 0);
    this->AddPreset(1, 1);
    float out = 0, back = 0;
    u16 signal = 0;
    u8 status = 99;
    for (const auto& [scale, factor, offset] : kScaleSteps) {
        for (const EUnit unit : {TemperatureFactory, RadianceFactory}) {
            if (this->kIsCurlew && unit == RadianceFactory) continue;  // has no value form
            ASSERT_TRUE(this->Update(unit, {0, 1, 5}, scale));
            // Two fitted parabolas are not each other's inverse.
            const float tolerance = unit == RadianceFactory && this->kIsTern ? 150 : this->kIsCurlew ? 0 : 1;
            for (int i = 0; i < 57; ++i) {
                const u8 preset = std::initializer_list<u8>{0, 1, 255}.begin()[i % 3];
                const float in = 5000.0f + 123.0f * static_cast<float>(i);
                ASSERT_TRUE(this->converter.BaseToOutput(in + 0.9f, out, status, preset) && status == 0);  // truncated
                ASSERT_TRUE(this->converter.OutputToBase(out, back, status, preset) && status == 0);
                EXPECT_NEAR(back, in, tolerance);
            }
        }
    }
    ASSERT_TRUE(this->Update(TemperatureFactory, {0, 1, 4, 5}, kNoScale));
    ASSERT_TRUE(this->converter.SignalToOutput(u16{9000}, out, status, 0));
    int flags = 0;  // an unknown scale is kelvin, and without object parameters the scene the default one
    const auto plain = this->Reference(0, {});
    EXPECT_NEAR(out, static_cast<double>(plain.Kelvin(plain.ObjectSignal(9000, flags))), 1e-4);
    for (const u8 preset : std::initializer_list<u8>{2, 4, 5, 8, 254}) {  // off, or no model
        if ((preset == 4 || preset == 5) && this->kIsCurlew) continue;
        EXPECT_FALSE(this->converter.SignalToOutput(u16{9000}, out, status, preset)) << int{preset};
        EXPECT_FALSE(this->converter.SignalToOutput(5, 6, &out, &status, preset)) << int{preset};
        EXPECT_FALSE(this->converter.OutputToSignal(20, signal, status, preset)) << int{preset};
    }
    ASSERT_TRUE(this->Update(ObjectSignal, {0}));
    EXPECT_FALSE(this->converter.OutputToSignal(5000, signal, status, 0));
    EXPECT_EQ(this->converter.SignalToOutput(u16{9000}, out, status, 0), this->kIsTern);
    ASSERT_TRUE(this->Update(RadianceFactory, {0}));
    EXPECT_EQ(this->converter.SignalToOutput(u16{9000}, out, status, 0), !this->kIsCurlew);
}

TYPED_TEST(FactoryConverter, SelectsPixelsInAllFormsAndGoesByTheirOwnPresets) {
    for (const u8 preset : std::initializer_list<u8>{1, 3}) this->AddPreset(preset, preset);
    ASSERT_TRUE(this->Update(TemperatureFactory, {1, 3}));
    std::vector<float> of[4];
    for (const u8 preset : std::initializer_list<u8>{3, 1}) {
        this->converter.activePreset = preset;
        of[preset] = this->Table();
    }
    std::vector<u8> map(this->kSignals, 1);
    for (u32 i = 0; i < this->kSignals; i += 3) map[i] = 3;
    // The first family has one calibration for all, and takes by a map the first pixels of the buffer.
    test::CheckForms([&](const auto&... form) { return this->converter.BaseToOutput(form...); },
                     STypedData{&this->counts[10000], UInt16}, map.data(),
                     [&](u32 pixel, u32 place, bool byMap) {
                         if (this->kIsCurlew) return of[1][10000 + (byMap ? place : pixel)];
                         return of[byMap ? map[pixel] : 1][10000 + pixel];
                     });
    // A buffer rounds, and takes numbers alone.
    float in[] = {10100.5f, 20000}, out[2] = {0, -1};
    u8 status[2];
    const STypedData from{in, Flt32}, to{out, Flt32};
    ASSERT_TRUE(this->converter.BaseToOutput(from, to, nullptr, 1) && out[0] == of[1][10101]);
    for (const bool byMap : {false, true}) {
        const auto takes = [&](STypedData a, STypedData b) {
            return byMap ? this->converter.BaseToOutput(a, map.data(), b, status, 1u)
                         : this->converter.BaseToOutput(a, b, status, 1u);
        };
        EXPECT_FALSE(takes({in, Opaque}, to) || takes(from, {out, Opaque}));
    }
    if (this->kIsCurlew) return;
    // A preset that is not enabled has the table of a model without calibration; one without table ends the call before
    // a pixel is written.
    const u8 off[] = {2, 3}, none[] = {1, 4}, wild[] = {1, 255};
    EXPECT_TRUE(this->converter.BaseToOutput(from, off, to, status, 2u));
    EXPECT_TRUE(out[0] == -273.15f && out[1] == of[3][16383]);  // limited to the table
    for (const u8* bad : {none, wild}) {
        const float before = out[0];
        EXPECT_FALSE(this->converter.BaseToOutput(from, bad, to, status, 2u));
        EXPECT_EQ(out[0], before);
        EXPECT_TRUE(this->converter.BaseToOutput(from, bad, to, status, 1u));  // only what is selected counts
    }
}

TYPED_TEST(FactoryConverter, AChangedSceneGivesTheTablesOfANewUpdate) {
    this->AddPreset(2, 2);  // of the third family the polynomial that takes powers
    const auto scene = this->array.GetObjectParameters(true);
    for (const EUnit unit : {TemperatureFactory, RadianceFactory}) {
        CopyScene(*scene, SScene{});
        ASSERT_TRUE(this->Update(unit, {2}));
        std::vector<float> turned = this->Table();
        CObjectParametersReduceObject params;
        params.reflectedTemp = 330.0f;  // the first two families take two values alone
        params.distance = 30.0f;
        for (const float emissivity : {0.8f, 0.4f}) {
            params.emissivity = emissivity;
            ASSERT_TRUE(this->converter.ChangeObjectParameters(&params));
            turned = this->Table();
        }
        CopyScene(*scene, params);
        if (!this->kIsMerlin) scene->reflectedTemp = 293.15f;
        this->converter = {};
        ASSERT_TRUE(this->Update(unit, {2}));
        EXPECT_EQ(this->Table(), turned);
    }
    EXPECT_TRUE(this->converter.canChangeObjectParameters() && this->converter.canUseLUT());
}

TYPED_TEST(FactoryConverter, RangesOfSignals) {
    this->AddPreset(0, 0);
    std::vector<float> out(65536), direct;
    std::vector<u8> status(65536);
    const auto written = [&](u32 first, u32 last) {
        std::fill(out.begin(), out.end(), -1000.0f);
        EXPECT_TRUE(this->converter.SignalToOutput(static_cast<u16>(first), static_cast<u16>(last), out.data(),
                                                   status.data(), 0));
        return static_cast<u32>(std::find(out.begin(), out.end(), -1000.0f) - out.begin());
    };
    ASSERT_TRUE(this->Update(TemperatureFactory, {0}));
    const u32 span = TypeParam::kSpan;
    EXPECT_EQ(written(100, 100 + span), span + 1);  // by the formula
    direct = out;
    const bool takesTables = !this->kIsTern;
    EXPECT_EQ(written(100, 101 + span), takesTables ? span + 1 : span + 2);
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + span + 1, direct.begin()));
    EXPECT_EQ(written(100, 102), takesTables ? 2u : 3u);  // now that there is a table
    EXPECT_EQ(written(5, 4), 0u);
    if (this->kIsCurlew) return;
    EXPECT_EQ(written(100, 16383), 16284u);
    EXPECT_EQ(written(16383, 16384), 2u);
}

TYPED_TEST(FactoryConverter, AnUnknownScaleLeavesTheTableAtZero) {
    if (!this->kIsCurlew) return;
    this->AddPreset(0, 0);
    ASSERT_TRUE(this->Update(TemperatureFactory, {0}, kNoScale));
    mallopt(M_PERTURB, 0xA5);  // memory that nobody sets shows
    const std::vector<float> table = this->Table();
    mallopt(M_PERTURB, 0);
    EXPECT_EQ(table, std::vector<float>(this->kSignals));
}

}  // namespace
}  // namespace ovix::reduce
