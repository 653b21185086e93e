#include "reduce/convert/factory_converters.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "reduce/convert/factory_calibrations.h"
#include "reduce/convert/radiometry.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"
#include "support/curlew_camera.h"
#include "support/selection_forms.h"

namespace ovix::reduce {
namespace {

using test::CCurlewReference;
using test::Real;
using test::SScene;

class CurlewConverter : public ::testing::Test {
  protected:
    CurlewConverter() {
        cal = array.Get<CCurlewFactoryCalReduceObject>(0, true);
        test::SCurlewConstants().CopyAdjustTo(*cal);
        test::SCurlewConstants().CopyCalibTo(*cal);
        cal->valid = true;
        std::iota(counts.begin(), counts.end(), u16{0});
    }
    bool Update(EUnit unit, ETempType scale = Celsius) {
        bool presets[] = {true, false, true};
        return converter.Update(Counts, Celsius, array, unit, scale, presets, 3, 0);
    }
    STypedData In() { return {counts.data(), UInt16}; }
    /// All signals through the table.
    std::vector<float> Table(u8* status = nullptr) {
        std::vector<float> out(65536, -1.0f);
        EXPECT_TRUE(converter.BaseToOutput(In(), {out.data(), Flt32}, status, 65536));
        return out;
    }

    CReduceObjectArray array;
    TSharedPtr<CCurlewFactoryCalReduceObject> cal;
    std::vector<u16> counts = std::vector<u16>(65536);
    CCurlewConverter converter;
};

TEST_F(CurlewConverter, NeedsAValidCalibration) {
    TArray<EUnit> units{RGBAverage};
    EXPECT_FALSE(CCurlewConverter::SupportedUnits(units, RadianceUser, array));
    EXPECT_TRUE(CCurlewConverter::SupportedUnits(units, Counts, array));
    const EUnit expected[] = {RGBAverage, Counts, RadianceFactory, ObjectSignal, TemperatureFactory};
    EXPECT_TRUE(std::equal(units.begin(), units.end(), std::begin(expected), std::end(expected)));
    cal->valid = false;
    EXPECT_FALSE(Update(TemperatureFactory));
    EXPECT_FALSE(CCurlewConverter::SupportedUnits(units, Counts, array));
    array.Reset();
    EXPECT_FALSE(Update(TemperatureFactory));
}

TEST_F(CurlewConverter, TableIsTheFormulaAtEveryEntry) {
    const auto params = array.GetObjectParameters(true);
    const SScene scene{.emissivity = 0.85f, .distance = 12.0f, .reflectedTemp = 305.0f, .extOpticsTrans = 0.95f};
    CopyScene(*params, scene);
    const CCurlewReference reference({}, scene);
    for (const EUnit unit : {TemperatureFactory, ObjectSignal}) {
        ASSERT_TRUE(Update(unit, Fahrenheit));
        std::vector<u8> status(65536);
        const std::vector<float> table = Table(status.data());
        for (int i = 0; i < 65536; ++i) {
            int flags = 0;
            const long double signal = reference.ObjectSignal(i, flags);
            const long double expected = unit == ObjectSignal ? signal : reference.Kelvin(signal) * 1.8L - 459.67L;
            ASSERT_NEAR(table[static_cast<u32>(i)], static_cast<double>(expected), 1e-4) << i;
            ASSERT_EQ(status[static_cast<u32>(i)], i ? flags : 34) << i;
        }
        const auto end = [&](Real pow) {
            const Real signal = pow * reference.K1 - reference.K2;
            return unit == ObjectSignal ? signal : reference.Kelvin(signal) * 1.8L - 459.67L;
        };
        test::ExpectRange(converter, table, status, end(reference.lower), end(reference.upper));
    }
    EXPECT_EQ(params->estimatedAtmosphereTrans, static_cast<float>(reference.tau));

    ASSERT_TRUE(Update(RadianceFactory));
    const std::vector<float> radiance = Table();
    EXPECT_GT(radiance[20000], radiance[19999]);
    float value = 0;
    u8 status = 0;
    EXPECT_FALSE(converter.SignalToOutput(20000, value, status, 255));  // no value form
    float upper = 0;
    EXPECT_TRUE(converter.GetCalibratedRange(value, upper, 255));
    EXPECT_GT(upper, value);
    ASSERT_TRUE(Update(Counts));
    EXPECT_FALSE(converter.GetCalibratedRange(value, upper, 255));
    EXPECT_FALSE(converter.UpdateLUT());
    EXPECT_FALSE(converter.BaseToOutput(In(), {&value, Flt32}, nullptr, 1));
}

TEST_F(CurlewConverter, SingleValuesInEveryScale) {
    std::vector<test::SScaleStep> steps(std::begin(test::kScaleSteps), std::end(test::kScaleSteps));
    steps.push_back({static_cast<ETempType>(7), 1, 0});  // an unknown scale is kelvin here
    const CCurlewReference reference({}, {});            // and without object parameters the scene the default one
    for (const auto& c : steps) {
        ASSERT_TRUE(Update(TemperatureFactory, c.scale));
        float out = 0, back = 0;
        u8 status = 99;
        for (const u16 signal : std::initializer_list<u16>{5000, 20000, 40000}) {
            int flags = 0;
            const double kelvin = static_cast<double>(reference.Kelvin(reference.ObjectSignal(signal, flags)));
            ASSERT_TRUE(converter.BaseToOutput(signal + 0.9f, out, status, 255));  // truncated
            EXPECT_NEAR(out, kelvin * c.factor - c.offset, 1e-4);
            EXPECT_EQ(status, flags);
            status = 99;
            ASSERT_TRUE(converter.OutputToBase(out, back, status, 0));
            EXPECT_EQ(back, signal);
            EXPECT_EQ(status, 0);
        }
        EXPECT_TRUE(converter.SignalToOutput(u16{0}, out, status, 2));
        EXPECT_EQ(status, 2);  // 34 in a buffer
    }
    float out = 0;
    u16 signal = 0;
    u8 status = 0;
    for (const u8 preset : std::initializer_list<u8>{1, 7, 8, 254}) {
        EXPECT_FALSE(converter.SignalToOutput(u16{20000}, out, status, preset)) << int{preset};
        EXPECT_FALSE(converter.SignalToOutput(5, 6, &out, &status, preset)) << int{preset};
        EXPECT_FALSE(converter.OutputToSignal(20, signal, status, preset)) << int{preset};
    }
}

TEST_F(CurlewConverter, LongRangesAndReadyTablesLeaveTheLastSignalOut) {
    std::vector<float> out(65536, -1.0f);
    std::vector<u8> status(65536, 99);
    const auto range = [&](u16 first, u16 last) {
        std::fill(out.begin(), out.end(), -1.0f);
        std::fill(status.begin(), status.end(), u8{99});
        return converter.SignalToOutput(first, last, out.data(), status.data(), 0);
    };
    ASSERT_TRUE(Update(TemperatureFactory));
    ASSERT_TRUE(range(1000, 1000 + 32768));  // by the formula
    EXPECT_NE(out[32768], -1.0f);
    const std::vector<float> direct = out;
    ASSERT_TRUE(range(1000, 40999));  // builds the table
    EXPECT_TRUE(std::equal(direct.begin(), direct.begin() + 32769, out.begin()));
    EXPECT_NE(out[39998], -1.0f);
    EXPECT_EQ(out[39999], -1.0f);
    EXPECT_EQ(status[39999], 99);
    ASSERT_TRUE(range(1000, 1002));  // now short ones take it too
    EXPECT_EQ(out[1], direct[1]);
    EXPECT_EQ(out[2], -1.0f);
    ASSERT_TRUE(range(1002, 1000));
    EXPECT_EQ(out[0], -1.0f);
    ASSERT_TRUE(converter.SignalToOutput(1000, 1002, out.data(), nullptr, 0));

    ASSERT_TRUE(Update(Counts));
    EXPECT_FALSE(range(0, 65535));
}

TEST_F(CurlewConverter, SelectsPixelsInAllForms) {
    ASSERT_TRUE(Update(TemperatureFactory));
    const auto convert = [&](const auto&... arguments) { return converter.BaseToOutput(arguments...); };
    test::SFormsImage().Check(convert, Table(), true);
}

TEST_F(CurlewConverter, BuffersRoundWhereSingleValuesTruncate) {
    ASSERT_TRUE(Update(ObjectSignal));
    const std::vector<float> table = Table();
    float in = 20100.5f, out = 0;
    ASSERT_TRUE(converter.BaseToOutput({&in, Flt32}, {&out, Flt32}, nullptr, 1));
    EXPECT_EQ(out, table[20101]);
    ASSERT_TRUE(Update(TemperatureFactory));
    float below = 0;
    u8 status = 0;
    ASSERT_TRUE(converter.BaseToOutput(in, out, status, 255));
    ASSERT_TRUE(converter.SignalToOutput(u16{20100}, below, status, 255));
    EXPECT_EQ(out, below);
    EXPECT_FALSE(converter.BaseToOutput({&in, Opaque}, {&out, Flt32}, nullptr, 1));
    EXPECT_FALSE(converter.BaseToOutput({&in, Flt32}, {&out, Opaque}, nullptr, 1));
}

TEST_F(CurlewConverter, AChangedSceneTakesEmissivityAndDistanceAlone) {
    ASSERT_TRUE(Update(TemperatureFactory, Kelvin));
    const std::vector<float> before = Table();
    CObjectParametersReduceObject params;
    params.reflectedTemp = 350.0f;
    ASSERT_TRUE(converter.ChangeObjectParameters(&params));
    EXPECT_EQ(Table(), before);
    params.emissivity = 0.6f;
    params.distance = 40.0f;
    ASSERT_TRUE(converter.ChangeObjectParameters(&params));
    int flags = 0;
    const CCurlewReference reference({}, {.emissivity = 0.6f, .distance = 40.0f});
    EXPECT_NEAR(Table()[20000], static_cast<double>(reference.Kelvin(reference.ObjectSignal(20000, flags))), 2e-5);
}

}  // namespace
}  // namespace ovix::reduce
