#include "reduce/convert/table_converter.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "reduce/convert/converter_factory.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/convert/factory_converters.h"
#include "reduce/convert/radiometry.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"
#include "support/merlin_camera.h"
#include "support/selection_forms.h"
#include "support/tern_camera.h"

/// What the converters of the two families with a table for each preset have in common, and where they differ.
namespace ovix::reduce {
namespace {

using test::SScene;

constexpr u32 kSignals = 16384;

/// Cameras whose presets differ in gain.
struct STern {
    using Converter = CTernConverter;
    using Cal = CTernFactoryCalReduceObject;

    static test::STernConstants Camera(int preset) {
        test::STernConstants camera;
        camera.adjustGain -= 0.1f * static_cast<float>(preset);
        return camera;
    }
    static void Fill(Cal& cal, int preset) {
        const test::STernConstants camera = Camera(preset);
        cal.adjustGain = camera.adjustGain, cal.adjustOffset = camera.adjustOffset;
        cal.tdriftMode = camera.tdriftMode;
        cal.frontPanelTemp = camera.frontPanelTemp, cal.airGapTemp = camera.airGapTemp;
        cal.dewarTemp = camera.dewarTemp;
        camera.CopyDriftTo(cal);
        camera.CopyCalibTo(cal);
    }
    static double Celsius(int preset, const SScene& scene, int signal, int& status) {
        const test::CTernReference reference(Camera(preset), scene, true);
        return static_cast<double>(reference.Kelvin(reference.ObjectSignal(signal, status)) - 273.15L);
    }
    static std::pair<double, double> Range(int preset, const SScene& scene) {
        const test::CTernReference r(Camera(preset), scene, true);
        const auto celsius = [&](test::Real pow) { return static_cast<double>(r.Kelvin(pow * r.K1 - r.K2) - 273.15L); };
        return {celsius(r.lower), celsius(r.upper)};
    }
};

struct SMerlin {
    using Converter = CMerlinConverter;
    using Cal = CMerlinFactoryCalReduceObject;

    static test::SMerlinConstants Camera(int preset) {
        test::SMerlinConstants camera;
        camera.c[1] -= 0.1 * preset;
        return camera;
    }
    static void Fill(Cal& cal, int preset) { Camera(preset).CopyTo(cal); }
    static double Celsius(int preset, const SScene& scene, int signal, int& status) {
        const test::CMerlinReference reference(Camera(preset), scene);
        return static_cast<double>(reference.Kelvin(reference.Limited(static_cast<u16>(signal), status)) - 273.15L);
    }
    static std::pair<double, double> Range(int preset, const SScene& scene) {
        const test::CMerlinReference r(Camera(preset), scene);
        return {static_cast<double>(r.Kelvin(r.lower) - 273.15L), static_cast<double>(r.Kelvin(r.upper) - 273.15L)};
    }
};

template <class Family>
class PresetTableConverter : public ::testing::Test {
  protected:
    PresetTableConverter() : counts(kSignals) { std::iota(counts.begin(), counts.end(), u16{0}); }
    void AddPreset(u8 number, int likePreset) {
        const auto cal = array.template Get<typename Family::Cal>(number, true);
        Family::Fill(*cal, likePreset);
        cal->valid = true;
    }
    bool Update(EUnit unit, std::vector<int> enabled, ETempType scale = Celsius) {
        bool presets[8] = {};
        for (const int p : enabled) presets[p] = true;
        return converter.Update(Counts, Celsius, array, unit, scale, presets, 8, 0);
    }
    STypedData In() { return {counts.data(), UInt16}; }
    std::vector<float> Table(u8* status = nullptr) {
        std::vector<float> out(kSignals, -1.0f);
        EXPECT_TRUE(converter.BaseToOutput(In(), {out.data(), Flt32}, status, kSignals));
        return out;
    }

    CReduceObjectArray array;
    std::vector<u16> counts;
    typename Family::Converter converter;
};
using Families = ::testing::Types<STern, SMerlin>;
TYPED_TEST_SUITE(PresetTableConverter, Families);

TYPED_TEST(PresetTableConverter, IsOfferedForAValidCalibration) {
    using Converter = typename TypeParam::Converter;
    TArray<EUnit> units{RGBAverage};
    EXPECT_FALSE(Converter::SupportedUnits(units, Counts, this->array));
    this->AddPreset(1, 0);
    EXPECT_FALSE(Converter::SupportedUnits(units, RadianceFactory, this->array));
    EXPECT_TRUE(Converter::SupportedUnits(units, Counts, this->array));
    std::vector<EUnit> expected{RGBAverage, Counts, RadianceFactory, ObjectSignal, TemperatureFactory};
    if (std::is_same_v<TypeParam, SMerlin>) expected.erase(expected.begin() + 3);
    EXPECT_TRUE(std::equal(units.begin(), units.end(), expected.begin(), expected.end()));
    EXPECT_EQ(converterFactory()->ConverterGUIDForUnit(Counts, this->array, TemperatureFactory), Converter::kID);

    EXPECT_FALSE(this->Update(TemperatureFactory, {0, 1}));
    EXPECT_TRUE(this->Update(TemperatureFactory, {1}));
    EXPECT_EQ(this->converter.activePreset, 1);
    this->array.template Get<typename TypeParam::Cal>(1, false)->valid = false;
    EXPECT_TRUE(this->Update(TemperatureFactory, {1, 4, 7}));  // not asked here; presets 4 to 7 have no model
    EXPECT_FALSE(Converter::SupportedUnits(units, Counts, this->array));
}

TYPED_TEST(PresetTableConverter, TablesAreTheFormulaAtEveryEntry) {
    const SScene scene{.emissivity = 0.85f, .distance = 12.0f, .reflectedTemp = 285.0f, .extOpticsTrans = 0.95f};
    const auto params = this->array.GetObjectParameters(true);
    CopyScene(*params, scene);
    this->AddPreset(2, 2);
    ASSERT_TRUE(this->Update(TemperatureFactory, {2}));
    EXPECT_GT(params->estimatedAtmosphereTrans, 0.9f);
    EXPECT_LT(params->estimatedAtmosphereTrans, 1.0f);
    std::vector<u8> status(kSignals);
    const std::vector<float> table = this->Table(status.data());
    for (u32 i = 0; i < kSignals; ++i) {
        int flags = 0;
        ASSERT_NEAR(table[i], TypeParam::Celsius(2, scene, static_cast<int>(i), flags), 1e-4) << i;
        ASSERT_EQ(status[i], flags) << i;
        float out = 0;
        u8 single = 99;
        ASSERT_TRUE(this->converter.SignalToOutput(static_cast<u16>(i), out, single, 255));
        ASSERT_EQ(out, table[i]);
        ASSERT_EQ(single, flags);
    }
    const auto [lower, upper] = TypeParam::Range(2, scene);
    test::ExpectRange(this->converter, table, status, lower, upper);
    EXPECT_FALSE((this->Update(Counts, {2}) && this->converter.UpdateLUT(2)));
    EXPECT_EQ((this->Update(ObjectSignal, {2}) && this->converter.UpdateLUT(2)), (std::is_same_v<TypeParam, STern>));
    ASSERT_TRUE(this->Update(RadianceFactory, {2}));
    const std::vector<float> radiance = this->Table(status.data());
    for (u32 i = 1; i < kSignals; ++i) ASSERT_TRUE(radiance[i] > radiance[i - 1] || status[i] & 6) << i;
    EXPECT_FALSE(this->converter.UpdateLUT(4));
    EXPECT_FALSE(this->converter.UpdateLUT(200));
}

TYPED_TEST(PresetTableConverter, SingleValuesThereAndBack) {
    this->AddPreset(0, 0);
    this->AddPreset(1, 1);
    for (const EUnit unit : {TemperatureFactory, RadianceFactory}) {
        ASSERT_TRUE(this->Update(unit, {0, 1, 5}, Fahrenheit));
        // Two fitted parabolas are not each other's inverse.
        const float tolerance = unit == RadianceFactory && std::is_same_v<TypeParam, STern> ? 150 : 1;
        for (const u8 preset : std::initializer_list<u8>{0, 1, 255}) {
            for (float signal = 2000; signal < 12000; signal += 371) {
                float out = 0, back = 0;
                u8 status = 99;
                ASSERT_TRUE(this->converter.BaseToOutput(signal + 0.9f, out, status, preset));  // truncated
                EXPECT_EQ(status, 0);
                ASSERT_TRUE(this->converter.OutputToBase(out, back, status, preset));
                EXPECT_NEAR(back, signal, tolerance);
                EXPECT_EQ(status, 0);
            }
        }
        float out = 0;
        u16 signal = 0;
        u8 status = 0;
        for (const u8 preset : std::initializer_list<u8>{2, 5, 8, 254}) {  // off, or no model
            EXPECT_FALSE(this->converter.SignalToOutput(u16{9000}, out, status, preset)) << int{preset};
            EXPECT_FALSE(this->converter.SignalToOutput(5, 6, &out, &status, preset)) << int{preset};
            EXPECT_FALSE(this->converter.OutputToSignal(20, signal, status, preset)) << int{preset};
        }
    }
    ASSERT_TRUE(this->Update(ObjectSignal, {0}));
    u16 signal = 0;
    u8 status = 0;
    float out = 0;
    EXPECT_FALSE(this->converter.OutputToSignal(5000, signal, status, 0));
    EXPECT_EQ(this->converter.SignalToOutput(u16{9000}, out, status, 0), (std::is_same_v<TypeParam, STern>));
}

TYPED_TEST(PresetTableConverter, SelectsPixelsInAllForms) {
    for (const u8 preset : std::initializer_list<u8>{0, 2}) this->AddPreset(preset, 0);
    ASSERT_TRUE(this->Update(TemperatureFactory, {0, 2}));
    const auto convert = [&](const auto&... arguments) { return this->converter.BaseToOutput(arguments...); };
    test::SFormsImage().Check(convert, this->Table(), false);
}

TYPED_TEST(PresetTableConverter, PixelsOfAMergedFrameGoByTheirOwnPreset) {
    for (const int preset : {0, 1, 3}) this->AddPreset(static_cast<u8>(preset), preset);
    ASSERT_TRUE(this->Update(TemperatureFactory, {1, 3}));
    std::vector<float> of[4];
    for (const u8 preset : std::initializer_list<u8>{1, 3}) {
        this->converter.activePreset = preset;
        of[preset] = this->Table();
    }
    const u8 map[] = {1, 3, 3, 1, 1};
    const u32 indices[] = {4, 1};
    float out[5];
    u8 status[5];
    u16 pixels[] = {9000, 9001, 9002, 20000, 9004};  // the fourth is limited to the table
    const STypedData in{pixels, UInt16}, to{out, Flt32};
    ASSERT_TRUE(this->converter.BaseToOutput(in, map, to, status, 5u));
    for (u32 i = 0; i < 5; ++i) EXPECT_EQ(out[i], of[map[i]][std::min<u32>(pixels[i], 16383)]) << i;
    ASSERT_TRUE(this->converter.BaseToOutput(in, map, indices, 2u, to, nullptr));
    EXPECT_EQ(out[0], of[1][9004]);
    EXPECT_EQ(out[1], of[3][9001]);

    // A preset that is not enabled has the table of a model without calibration; one without table ends the call before
    // a pixel is written.
    const u8 off[] = {1, 2}, none[] = {1, 4}, wild[] = {1, 255};
    EXPECT_TRUE(this->converter.BaseToOutput(in, off, to, status, 2u));
    EXPECT_EQ(out[1], -273.15f);
    for (const u8* bad : {none, wild}) {
        out[0] = -1;
        EXPECT_FALSE(this->converter.BaseToOutput(in, bad, to, status, 2u));
        EXPECT_EQ(out[0], -1.0f);
        EXPECT_TRUE(this->converter.BaseToOutput(in, bad, to, status, 1u));  // only what is selected counts
    }
    EXPECT_FALSE(this->converter.BaseToOutput({pixels, Opaque}, map, to, status, 1u));
    EXPECT_FALSE(this->converter.BaseToOutput(in, map, {out, Opaque}, status, 1u));
}

TYPED_TEST(PresetTableConverter, AChangedSceneShowsInTheNextConversion) {
    this->AddPreset(0, 0);
    ASSERT_TRUE(this->Update(TemperatureFactory, {0}));
    const std::vector<float> before = this->Table();
    CObjectParametersReduceObject params;
    params.reflectedTemp = 330.0f;
    params.emissivity = 0.8f;
    ASSERT_TRUE(this->converter.ChangeObjectParameters(&params));
    SScene scene{.emissivity = 0.8f};
    if (std::is_same_v<TypeParam, SMerlin>) scene.reflectedTemp = 330.0f;  // the other family takes two values alone
    int flags = 0;
    EXPECT_NEAR(this->Table()[12000], TypeParam::Celsius(0, scene, 12000, flags), 1e-4);
    EXPECT_TRUE(this->converter.canChangeObjectParameters());
    EXPECT_TRUE(this->converter.canUseLUT());
}

TYPED_TEST(PresetTableConverter, RangesOfSignals) {
    this->AddPreset(0, 0);
    const bool takesTables = std::is_same_v<TypeParam, SMerlin>;
    std::vector<float> out(kSignals + 1), direct(kSignals + 1);
    const auto written = [&](u16 first, u16 last) {
        std::fill(out.begin(), out.end(), -1000.0f);
        EXPECT_TRUE(this->converter.SignalToOutput(first, last, out.data(), nullptr, 0));
        return std::find(out.begin(), out.end(), -1000.0f) - out.begin();
    };
    ASSERT_TRUE(this->Update(TemperatureFactory, {0}));
    EXPECT_EQ(written(100, 100 + 8192), 8193);  // by the formula
    direct = out;
    EXPECT_EQ(written(100, 100 + 8193), takesTables ? 8193 : 8194);
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + 8193, direct.begin()));
    EXPECT_EQ(written(100, 102), takesTables ? 2 : 3);  // now that there is a table
    EXPECT_EQ(written(100, 16383), 16284);
    EXPECT_EQ(written(16383, 16384), 2);
    EXPECT_EQ(written(5, 4), 0);
}

}  // namespace
}  // namespace ovix::reduce
