#include "reduce/convert/convert_context.h"

#include <numeric>
#include <string_view>

#include "reduce/reduce.h"
#include "support/cameras.h"
#include "support/selection_forms.h"
#include "support/simd_targets.h"
#include "support/stats_fields.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

class ConvertContext : public ::testing::Test {
  protected:
    ConvertContext() {
        source = array.GetSourceInfo(true);
        context.setReduceObjs(&array);
    }
    /// With a flag for each character, `+` or `-`.
    bool Update(std::string_view flags) {
        bool presets[9];
        std::transform(flags.begin(), flags.end(), presets, [](char flag) { return flag == '+'; });
        return context.Update(presets, static_cast<u8>(flags.size()), 0);
    }
    void AddCalibration() {
        auto cal = test::CurlewCamera();
        cal.preset = 0;
        cal.valid = true;
        array.Add(cal.Duplicate());
    }
    TSharedPtr<CCorrectionReduceObject> AddCorrection(u8 preset, float gain, i16 offset) {
        const auto correction = array.GetCorrection(preset, true);
        correction->Create(3, 1, preset, CorrectionGain | CorrectionOffset | CorrectionBadPixels);
        for (u32 i = 0; i < 3; ++i) correction->gain[i] = gain, correction->offset[i] = offset;
        return correction;
    }

    CReduceObjectArray array;
    TSharedPtr<CSourceInfoReduceObject> source;
    CConvertContext context;
    u16 frame[3] = {100, 200, 300};
    float out[4] = {-1, -1, -1, -1};
    u8 status[4] = {9, 9, 9, 9};
};

TEST_F(ConvertContext, PresetFlagsAndTheirQuirks) {
    EXPECT_TRUE(Update("+"));
    EXPECT_FALSE(Update("-+"));  // a count below 8 never leaves preset 1 enabled
    EXPECT_TRUE(Update("-+-+----"));
    AddCorrection(1, 2, 0);
    ASSERT_TRUE(Update("-+-+----"));
    EXPECT_TRUE(context.needToApplyNUC());
    EXPECT_TRUE(Update("--"));  // preset 3 survives from the call before
    EXPECT_FALSE(context.needToApplyNUC());
    AddCorrection(3, 2, 0);
    EXPECT_TRUE(Update("+"));
    EXPECT_TRUE(context.needToApplyNUC());  // preset 3 has tables, while 0 is the active one
    STypedData result;
    ASSERT_TRUE(context.ApplyNUC({frame, UInt16}, {out, Flt32}, 3, result));
    EXPECT_EQ(result.data, frame);
    EXPECT_FALSE(Update("+--------"));
    EXPECT_TRUE(array.HasObjectOfType(CAbateCfgReduceObject::typeID, true));
    EXPECT_TRUE(array.HasObjectOfType(CCorrectionCfgReduceObject::typeID, true));
}

TEST_F(ConvertContext, ChoosesAConverter) {
    TArray<EUnit> units;
    CConvertContext unbound;
    EXPECT_FALSE(unbound.GetUnits(units) || unbound.SetUnit(Counts, Celsius) || unbound.Update(nullptr, 0, 0));

    EXPECT_TRUE(context.SetUnit(Counts, Celsius) && !context.needToConvert());
    AddCalibration();
    EXPECT_TRUE(context.GetUnits(units) && units.size() == 4);
    EXPECT_TRUE(context.SetUnit(TemperatureFactory, Kelvin));
    ASSERT_TRUE(context.needToConvert() && context.canChangeObjectParameters());
    EXPECT_EQ(context.converter()->name(), CString(L"CurlewConverter"));
    ASSERT_TRUE(Update("+"));
    const auto cal = array.Get<test::CCurlewCal>(0, false);
    cal->valid = false;
    EXPECT_FALSE(Update("+"));  // the converter's own update fails
    cal->valid = true;
    EXPECT_FALSE(context.SetUnit(RadianceUser, Celsius));  // nobody gives it, and the converter is lost
    EXPECT_FALSE(context.needToConvert() || context.canChangeObjectParameters());
    EXPECT_FALSE(context.ChangeObjectParameters(nullptr));

    source->baseUnit = TemperatureFactory, source->baseTempType = Kelvin;
    EXPECT_TRUE(context.SetUnit(TemperatureFactory, Celsius));
    EXPECT_EQ(context.converter()->name(), CString(L"TemperatureConverter"));
    ASSERT_TRUE(Update("+") && context.Convert({frame, UInt16}, {out, Flt32}, status, 3));
    EXPECT_FLOAT_EQ(out[2], 26.85f);
    EXPECT_TRUE(context.SetUnit(TemperatureFactory, Kelvin) && !context.needToConvert());
    array.Reset();
    EXPECT_FALSE(context.SetUnit(Counts, Celsius) || Update("+"));
}

TEST_F(ConvertContext, ConvertsInAllForms) {
    const auto convert = [&](const auto&... arguments) { return context.Convert(arguments...); };
    std::vector<u16> counts(65536);
    std::iota(counts.begin(), counts.end(), u16{0});
    // Without a converter pixels are moved, and maps are not looked at.
    ASSERT_TRUE(context.SetUnit(Counts, Celsius));
    ASSERT_TRUE(Update("+"));
    test::CheckForms(convert, {counts.begin(), counts.end()}, false);
    float value = 0;
    EXPECT_FALSE(context.GetCalibratedRange(value, out[0], 255));
    EXPECT_TRUE(context.Convert(5.5f, value, status[0], 255) && value == 5.5f && status[0] == 0);
    EXPECT_TRUE(context.ConvertBack(6.5f, value, status[0], 255) && value == 6.5f);
    const u32 index = 0;
    EXPECT_FALSE(context.Convert({frame, UInt16}, &index, 1, {out, Opaque}, status + 1));
    EXPECT_EQ(status[1], 9);

    AddCalibration();
    ASSERT_TRUE(context.SetUnit(TemperatureFactory, Kelvin));
    ASSERT_TRUE(Update("+"));
    std::vector<float> kelvin(65536);
    ASSERT_TRUE(context.Convert({counts.data(), UInt16}, {kelvin.data(), Flt32}, nullptr, 65536));
    test::CheckForms(convert, kelvin, true);
    EXPECT_TRUE(context.Convert(30000.0f, value, status[0], 255) && value == kelvin[30000]);
    EXPECT_TRUE(context.ConvertBack(value, value, status[0], 255) && value == 30000.0f);
    EXPECT_TRUE(context.GetCalibratedRange(value, out[0], 255) && value < 253.15f && out[0] > 473.15f);
    const CConvertContext copy = context;
    EXPECT_EQ(copy.converter(), context.converter());
}

TEST_F(ConvertContext, CorrectsTheActivePreset) {
    STypedData result;
    EXPECT_FALSE(context.ApplyNUC({frame, UInt16}, {out, Flt32}, 3, result));  // no settings yet
    AddCorrection(0, 2.0f, 5)->map[0] = 2;
    ASSERT_TRUE(Update("+"));
    const auto cfg = array.GetCorrectionCfg(false);
    cfg->maximum = 500;
    const auto check = [&](bool nuc, bool badPixels, std::initializer_list<float> expected) {
        cfg->applyNUC = nuc;
        cfg->applyBadPixels = badPixels;
        EXPECT_TRUE(context.needToApplyNUC());
        ASSERT_TRUE(context.ApplyNUC({frame, UInt16}, {out, Flt32}, 3, result));
        EXPECT_EQ(result.data, out);
        EXPECT_TRUE(std::equal(out, out + 3, expected.begin()));
    };
    check(true, true, {500, 405, 500});  // 605 clipped to 500, and pixel 0 shows pixel 2
    check(true, false, {205, 405, 500});
    check(false, true, {300, 200, 300});
    cfg->applyNUC = cfg->applyBadPixels = false;
    EXPECT_FALSE(context.needToApplyNUC());
    ASSERT_TRUE(context.ApplyNUC({frame, UInt16}, {out, Flt32}, 3, result));
    EXPECT_TRUE(result.data == frame && result.type == UInt16);
    ASSERT_TRUE(context.ApplyNUC({frame, UInt16}, {out, Flt32}, 3));  // this form always fills the buffer
    EXPECT_EQ(out[2], 300.0f);
}

TEST_F(ConvertContext, MeasuresAFrameAsTheThreeStepsDo) {
    constexpr u16 kWidth = 71, kHeight = 67;  // two blocks and a rest
    constexpr u32 kPixels = kWidth * kHeight;
    std::vector<float> values(kPixels);
    std::vector<u16> counts(kPixels);
    for (u32 i = 0; i < kPixels; ++i) values[i] = counts[i] = static_cast<u16>(9000 + i * 40503 % 30000);
    const STypedData whole{counts.data(), UInt16}, floats{values.data(), Flt32};
    float nothing = 0;
    CStats stats;
    EXPECT_FALSE(context.MeasureFrame(whole, kWidth, kHeight, floats, nullptr, stats));  // no settings yet
    const auto measure = [&](u32 way) {
        const STypedData in = way & 1 ? whole : floats;
        const bool withStatus = way & 2;
        ASSERT_TRUE(context.SetUnit(way & 4 ? TemperatureFactory : Counts, Kelvin) && Update("+"));
        const auto cfg = array.GetCorrectionCfg(false);
        cfg->applyNUC = way & 8;
        cfg->applyBadPixels = way & 16;
        cfg->clip = way & 32;
        std::vector<float> corrected(kPixels), steps(kPixels), chain(kPixels, -1.0f);
        std::vector<u8> stepFlags(kPixels), chainFlags(kPixels);
        STypedData between;
        CStats stepStats, chainStats;
        u8* flags = withStatus ? stepFlags.data() : nullptr;
        ASSERT_TRUE(context.ApplyNUC(in, {corrected.data(), in.type}, kPixels, between));
        ASSERT_TRUE(context.Convert(between, {steps.data(), Flt32}, flags, kPixels));
        GetStats(stepStats, {steps.data(), Flt32}, kWidth, kHeight, nullptr, 0, flags);
        flags = withStatus ? chainFlags.data() : nullptr;
        ASSERT_TRUE(context.MeasureFrame(in, kWidth, kHeight, {chain.data(), Flt32}, flags, chainStats));
        EXPECT_TRUE(chain == steps && chainFlags == stepFlags);
        test::ExpectSame(chainStats, stepStats);
    };
    // Tables of 65,536 entries and of 16,384, with an offset and without.
    const auto curlew = test::CurlewCamera();
    const auto merlin = test::MerlinCamera();
    for (const IReduceObject* camera :
         {static_cast<const IReduceObject*>(&curlew), static_cast<const IReduceObject*>(&merlin)}) {
        array.Empty();
        source = array.GetSourceInfo(true);
        const auto cal = camera->Duplicate();
        cal->preset = 0;
        cal->valid = true;
        array.Add(cal);
        for (const u8 tables : {u8{CorrectionGain | CorrectionBadPixels}, u8{CorrectionOffset}}) {
            const auto correction = array.GetCorrection(0, true);
            correction->Create(kWidth, kHeight, 0, tables);
            for (u32 i = 0; i < kPixels; ++i) {
                correction->gain[i] = 0.9f + 0.0001f * static_cast<float>(i % 1000);
                correction->map[i] = i % 97 && i + 2 < kPixels ? i : (i * 31) % kPixels;
                if (correction->offset) correction->offset[i] = static_cast<i16>(i % 100);
            }
            // Beyond 32 bits, and a pixel in the rest.
            correction->gain[5] = 1e12f, correction->gain[kPixels - 2] = -1e12f;
            test::ForEachTarget([&] {
                for (u32 way = 0; way < 64; ++way) {
                    SCOPED_TRACE(testing::Message() << camera->GetName() << ", way " << way);
                    measure(way);
                }
            });
        }
    }
    EXPECT_FALSE(context.MeasureFrame(whole, 0, kHeight, {&nothing, Flt32}, nullptr, stats));
    EXPECT_FALSE(context.MeasureFrame({counts.data(), Opaque}, 1, 1, {&nothing, Flt32}, nullptr, stats));
    EXPECT_FALSE(context.MeasureFrame(whole, 1, 1, {&nothing, UInt64}, nullptr, stats));
}

TEST_F(ConvertContext, MergesPresets) {
    u16 hot[3] = {10, 20, 30}, merged[3] = {};
    const STypedData frames[8] = {{frame, UInt16}, {nullptr, Flt64}, {hot, UInt16}};
    EXPECT_FALSE(context.Abate(frames, 3, {merged, UInt16}, status));  // no settings yet
    AddCorrection(0, 1.0f, 1);
    ASSERT_TRUE(Update("+++"));
    const auto cfg = array.GetAbateCfg(false);
    cfg->high[0] = 250;
    ASSERT_TRUE(context.Abate(frames, 3, {merged, UInt16}, status));
    const u16 expected[3] = {101, 201, 30};
    EXPECT_TRUE(std::equal(merged, merged + 3, expected) && status[1] == 0 && status[2] == 2);
    EXPECT_FALSE(context.Abate(frames, 3, {merged, Int16}, status));
    const STypedData doubles[3] = {{frame, Flt64}, {frame, Flt64}, {frame, Flt64}};
    EXPECT_FALSE(context.Abate(doubles, 3, {merged, Flt64}, status));
    ASSERT_TRUE(Update("+"));  // preset 2 stays enabled, and has no frame any more
    ASSERT_TRUE(context.Abate(frames, 3, {merged, UInt16}, status));
    EXPECT_EQ(merged[2], 301);
}

TEST(ObjectParameters, OverrideAndRestore) {
    CReduceObjectArray array, empty;
    CObjectParametersReduceObject first, second, saved, nothing;
    const auto object = array.GetObjectParameters(true);
    object->fromSource = true;
    object->emissivity = 0.9f, object->relativeHumidity = 0.6f, object->estimatedAtmosphereTrans = 0.8f;
    first.emissivity = 0.5f, first.estimatedAtmosphereTrans = 0.1f, second.emissivity = 0.4f;
    const auto expect = [&](const char* values) {
        EXPECT_EQ(test::Text(object->emissivity, object->relativeHumidity, object->estimatedAtmosphereTrans,
                             object->fromSource),
                  values);
    };
    CConvertContext::OverrideObjectParameters(array, first, saved);
    expect("0.5 0.3 0.8 0 ");
    CConvertContext::OverrideObjectParameters(array, second, saved);
    expect("0.4 0.3 0.8 0 ");
    CConvertContext::RestoreObjectParameters(array, saved);
    expect("0.9 0.6 0.8 1 ");
    object->emissivity = 0.7f;
    CConvertContext::RestoreObjectParameters(array, saved);
    expect("0.7 0.6 0.8 1 ");

    CConvertContext::OverrideObjectParameters(empty, first, nothing);
    CConvertContext::RestoreObjectParameters(empty, nothing);
    EXPECT_EQ(empty.GetObjectParameters(false)->emissivity, 0.5f);
}

}  // namespace
}  // namespace ovix::reduce
