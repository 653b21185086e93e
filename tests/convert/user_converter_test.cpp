#include "reduce/convert/user_converter.h"

#include <numeric>

#include "reduce/reduce.h"
#include "support/pixel_reference.h"
#include "support/selection_forms.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using test::Planck;
using test::Real;

/// Counts to radiance: 0.0006 at 2,000 counts, 0.03 at 51,000.
constexpr double kOffset = -0.0006, kGain = 6e-7;
/// Radiance to degrees Celsius, roughly.
const TArray<double> kPolynomial{-48, 4000, -1e4}, kNone;

/// Presets 0, 2 and 5 of a user's calibration, over frames of the size of the selection forms.
class UserConverter : public ::testing::Test {
  public:
    UserConverter() {
        object = array.Get<CRCalReduceObject>(-1, true);
        object->valid = true;
        Cal().SetBandpass(8, 12);
        for (int p = 0; p < 8; ++p) Cal().SetPolynomial(p, 1, {kOffset, kGain});
        for (double t = -40; t <= 400; t += 0.5) {
            temperatures.Add(t);
            radiances.Add(Radiance(t, 8, 12, 1));
        }
        source = array.GetSourceInfo(true);
        source->width = forms.width;
        source->height = forms.height;
        scene = array.GetObjectParameters(true);
        std::iota(counts.begin(), counts.end(), u16{0});
    }
    CRCalFile& Cal() { return object->cal; }
    bool Update(EUnit unit, EUnit base = Counts) {
        bool presets[] = {true, false, true, false, false, true};
        return converter.Update(base, Celsius, array, unit, Celsius, presets, 6, 0);
    }
    std::vector<float> Table() {
        std::vector<float> out(65536, -1.0f);
        EXPECT_TRUE(converter.BaseToOutput({counts.data(), UInt16}, {out.data(), Flt32}, nullptr, 65536));
        return out;
    }
    void SetBackgrounds(int preset, double first) {
        TArray<double> background;
        for (u32 i = 0; i < forms.Count(); ++i) background.Add(first + 10 * i);
        ASSERT_TRUE(Cal().SetBackgroundFile(preset, forms.width, forms.height, background));
        ASSERT_TRUE(Cal().SetPolynomial(preset, -2, {kOffset, kGain}));
    }
    Real Lookup(Real x) const {
        return test::Lookup(radiances.data(), temperatures.data(), static_cast<i32>(radiances.size()), x);
    }

    const test::SForms forms;
    CReduceObjectArray array;
    TSharedPtr<CRCalReduceObject> object;
    TSharedPtr<CSourceInfoReduceObject> source;
    TSharedPtr<CObjectParametersReduceObject> scene;
    TArray<double> radiances, temperatures;
    std::vector<u16> counts = std::vector<u16>(65536);
    CUserConverter converter;
};

TEST_F(UserConverter, UnitsOnOffer) {
    const auto offers = [&](EUnit base, std::initializer_list<EUnit> expected) {
        TArray<EUnit> units;
        EXPECT_EQ(CUserConverter::SupportedUnits(units, base, array), expected.size() > 0);
        EXPECT_TRUE(std::equal(units.begin(), units.end(), expected.begin(), expected.end()));
    };
    offers(Counts, {Counts, RadianceUser, TemperatureUser});
    offers(RadianceUser, {RadianceUser, TemperatureUser});
    offers(ObjectSignal, {});
    EXPECT_EQ(converterFactory()->ConverterGUIDForUnit(Counts, array, TemperatureUser), converter.id());
    object->valid = false;
    offers(Counts, {});
    object->valid = true;
    Cal().DefaultCal();
    offers(Counts, {});
    array.RemoveAllObjectsOfType(CRCalReduceObject::typeID);
    offers(Counts, {});
    EXPECT_FALSE(Update(TemperatureUser));
}

TEST_F(UserConverter, TableIsTheFormulaAtEveryEntry) {
    scene->emissivity = 0.75f;
    scene->atmosphereTrans = 0.5f;
    const std::tuple<EUnit, bool, bool, Real (*)(const UserConverter&, Real)> kCases[] = {
        {RadianceUser, true, true, [](const UserConverter&, Real r) { return r * 0.75L; }},
        {TemperatureUser, true, true, [](const UserConverter& t, Real r) { return t.Lookup(r); }},
        {TemperatureUser, false, true, [](auto&, Real r) { return test::Polynomial(kPolynomial.data(), 2, r); }},
        {TemperatureUser, false, false, [](const UserConverter&, Real r) { return Planck(r); }}};
    for (const auto& [unit, table, polynomial, model] : kCases) {
        for (const int p : {0, 2, 5}) {
            ASSERT_TRUE(Cal().SetLookup(p, table ? radiances : kNone, table ? temperatures : kNone));
            ASSERT_TRUE(Cal().SetTempPolynomial(p, polynomial ? 2 : 0, polynomial ? kPolynomial : kNone));
        }
        converter = CUserConverter();
        ASSERT_TRUE(Update(unit));
        EXPECT_EQ(scene->estimatedAtmosphereTrans, 0.5f);
        std::vector<float> out(65536), range(65536);
        std::vector<u8> status(65536, 99), rangeStatus(65536, 99);
        ASSERT_TRUE(converter.BaseToOutput({counts.data(), UInt16}, {out.data(), Flt32}, status.data(), 65536));
        ASSERT_TRUE(converter.SignalToOutput(u16{0}, u16{65535}, range.data(), rangeStatus.data(), 5));
        EXPECT_EQ(std::memcmp(out.data(), range.data(), 65536 * sizeof(float)), 0);
        for (u32 i = 2000; i < 65536; ++i) {  // from where the radiance is positive
            const float radiance = static_cast<float>((kOffset + kGain * i) * 2);
            const double near = unit == RadianceUser ? 1e-8 : 1e-4;
            ASSERT_NEAR(out[i], static_cast<double>(model(*this, radiance / 0.75L)), near) << i;
            ASSERT_GE(out[i], out[i - 1]) << i;
            ASSERT_EQ(status[i] + rangeStatus[i], 0);
        }
    }
}

TEST_F(UserConverter, AllFormsThroughTheTables) {
    ASSERT_TRUE(Update(TemperatureUser));
    test::CheckForms([&](auto... form) { return converter.BaseToOutput(form...); }, Table(), false);

    // By the map each pixel takes the table of its preset.
    Cal().SetPolynomial(2, 1, {0, 1});
    Cal().SetPolynomial(5, 0, {3});
    scene->atmosphereTrans = 0.25f;
    converter = CUserConverter();
    ASSERT_TRUE(Update(RadianceUser));
    float in[] = {10, 20, 30, 40};
    u8 map[] = {2, 0, 5, 2};
    double out[4] = {-1, -1, -1, -1};
    const STypedData from{in, Flt32}, to{out, Flt64};
    ASSERT_TRUE(converter.BaseToOutput(from, map, to, nullptr, 4));
    EXPECT_EQ(out[1], static_cast<float>((kOffset + kGain * 20) * 4));
    EXPECT_TRUE(out[0] == 40 && out[2] == 120 && out[3] == 160);
    const u32 list[] = {3, 2};
    for (const u8 stranger : std::initializer_list<u8>{1, 7, 8, 255}) {  // not enabled, and beyond eight
        map[1] = stranger;
        out[0] = -1;
        EXPECT_FALSE(converter.BaseToOutput(from, map, to, nullptr, 4)) << int{stranger};
        EXPECT_EQ(out[0], -1);
        EXPECT_TRUE(converter.BaseToOutput(from, map, list, 2, to, nullptr)) << "not among the selected";
    }
    EXPECT_EQ(out[1], 120);
    EXPECT_FALSE(converter.BaseToOutput(from, {out, NoPixels}, nullptr, 4));
    EXPECT_FALSE(converter.BaseToOutput(from, map, 2, 2, SArea{}, {out, NoPixels}, nullptr));
}

TEST_F(UserConverter, TablesStayUntilTheSceneChanges) {
    ASSERT_TRUE(Update(RadianceUser));
    const float before = Table()[20000];
    Cal().SetPolynomial(0, 1, {0, 1});
    ASSERT_TRUE(Update(RadianceUser));
    EXPECT_EQ(Table()[20000], before);
    float direct = 0;
    u8 status = 0;
    EXPECT_TRUE(converter.SignalToOutput(20000, 20000, &direct, &status, 0) && direct == 20000);
    CUserConverter copy = converter;  // shares the tables
    EXPECT_FALSE(converter.canChangeObjectParameters());
    const auto change = [&](float tau) {
        scene->atmosphereTrans = tau;
        EXPECT_TRUE(converter.ChangeObjectParameters(scene.ptr()));
        EXPECT_EQ(scene->estimatedAtmosphereTrans, tau > 0 ? tau : 1);
        return Table()[20000];
    };
    EXPECT_EQ(change(0.5f), 40000);
    EXPECT_EQ(change(0), 20000);
    converter = CUserConverter();
    for (const double constant : {1.0, 7.0}) {  // takes powers: made once, and anew for another polynomial
        ASSERT_TRUE(Cal().SetPolynomial(0, 5, {constant, 2, 0, 0, 0, 1e-20}));
        ASSERT_TRUE(Update(RadianceUser));
        for (const float tau : {0.5f, 0.25f})
            EXPECT_EQ(change(tau), static_cast<float>((constant + 40000 + 1e-20 * std::pow(20000.0, 5)) / tau));
    }
    EXPECT_TRUE(copy.BaseToOutput({&counts[20000], UInt16}, {&direct, Flt32}, nullptr, 1) && direct == 20000);
    EXPECT_FALSE(copy.UpdateLUT(8));
}

TEST_F(UserConverter, SingleValuesAnswerOnlyWhetherThePresetIsEnabled) {
    ASSERT_TRUE(Update(TemperatureUser));
    float out = -1, range[2] = {-1, -1};
    u16 signal = 7;
    u8 status = 99;
    for (const auto& [preset, enabled] :
         {std::pair{0, true}, {1, false}, {5, true}, {7, false}, {8, false}, {255, true}}) {
        const u8 p = static_cast<u8>(preset);
        EXPECT_EQ(converter.SignalToOutput(u16{20000}, out, status, p), enabled) << preset;
        EXPECT_EQ(converter.OutputToSignal(20, signal, status, p), enabled);
        EXPECT_EQ(converter.SignalToOutput(20000, 20001, range, nullptr, p), enabled);
    }
    EXPECT_FALSE(converter.BaseToOutput(20000.0f, out, status, 0) || converter.OutputToBase(20, out, status, 0));
    EXPECT_TRUE(converter.SignalToOutput(5, 4, range, &status, 0) && range[1] != -1);
    EXPECT_EQ(test::Text(out, signal, status), "-1 7 99 ");
}

TEST_F(UserConverter, PixelBackgroundsGoByTheFormula) {
    SetBackgrounds(2, 1000);
    SetBackgrounds(0, 500);
    Cal().SetPolynomial(5, -1, {kOffset, kGain});
    Cal().SetBackgroundValue(5, 300);
    ASSERT_TRUE(Update(TemperatureUser));
    EXPECT_TRUE(converter.needIndicies());
    EXPECT_FALSE(converter.canUseLUT());
    EXPECT_FALSE(converter.SignalToOutput(1, 2, nullptr, nullptr, 0)) << "a line over a background of each pixel";

    const u32 kPixels = forms.Count();
    std::vector<u8> map(kPixels);
    for (u32 i = 0; i < kPixels; ++i) map[i] = std::initializer_list<u8>{2, 5, 2, 0}.begin()[i % 4];
    const STypedData in{&counts[20000], UInt16};
    const auto radiance = [&](u32 pixel, u8 p) -> Real {
        const Real background = p == 5 ? 300 : (p == 0 ? 500 : 1000) + 10.0L * pixel;
        return (20000.0L + pixel - background) * Real{kGain} + Real{kOffset};
    };
    test::CheckForms([&](auto... form) { return converter.BaseToOutput(form...); }, in, map.data(),
                     [&](u32 pixel, u32, bool byMap) { return Planck(radiance(pixel, byMap ? map[pixel] : u8{0})); },
                     1e-11, true);

    // Whole buffers go by a radiance in single precision, areas do not.
    std::vector<float> single(kPixels);
    const STypedData to{single.data(), Flt32};
    EXPECT_TRUE(converter.BaseToOutput(in, to, nullptr, kPixels));
    for (u32 i = 0; i < kPixels; ++i)
        EXPECT_EQ(single[i], static_cast<float>(Planck(static_cast<float>(radiance(i, 0))))) << i;
    // Types that the formula does not take: true, and nothing is written.
    const float before = single[0];
    EXPECT_TRUE(converter.BaseToOutput(in, {single.data(), UInt16}, nullptr, 1));
    EXPECT_TRUE(converter.BaseToOutput(in, forms.width, forms.height, forms.area, {single.data(), Int32}, nullptr));
    EXPECT_TRUE(converter.BaseToOutput({single.data(), UInt64}, to, nullptr, 1));
    EXPECT_EQ(single[0], before);
    EXPECT_FALSE(converter.BaseToOutput(in, {single.data(), NoPixels}, nullptr, 1));
    // A frame larger than the background, or a preset that cannot be.
    EXPECT_FALSE(converter.BaseToOutput(in, to, nullptr, kPixels + 1));
    EXPECT_FALSE(converter.BaseToOutput(in, forms.width, u16{99}, SArea{0, 0, 41, 0}, to, nullptr));
    map[1] = 8;
    EXPECT_FALSE(converter.BaseToOutput(in, map.data(), to, nullptr, 3));

    // A copy lives on its own.
    const auto copy = std::make_unique<CUserConverter>(converter);
    converter = CUserConverter();
    double again = 0;
    EXPECT_TRUE(copy->BaseToOutput(in, forms.width, forms.height, SArea{1, 2, 1, 2}, {&again, Flt64}, nullptr));
    EXPECT_NEAR(again, static_cast<double>(Planck(radiance(forms.width + 2u, 0))), 1e-9);
}

TEST_F(UserConverter, WithoutABackgroundForFramesOfThisSizeItCountsAsNone) {
    SetBackgrounds(0, 500);
    const auto radianceOfFirst = [&](u16 width) {
        source->width = width;
        EXPECT_TRUE(Update(RadianceUser) && converter.needIndicies());
        double out = 0;
        EXPECT_TRUE(converter.BaseToOutput({&counts[10000], UInt16}, {&out, Flt64}, nullptr, 1));
        return (out - kOffset) / kGain;
    };
    EXPECT_DOUBLE_EQ(radianceOfFirst(forms.width), 9500);
    EXPECT_DOUBLE_EQ(radianceOfFirst(60000), 10000);
    EXPECT_DOUBLE_EQ(radianceOfFirst(forms.width), 9500);
    SetBackgrounds(0, 700);
    EXPECT_DOUBLE_EQ(radianceOfFirst(forms.width), 9300);
    // Elsewhere a single value counts in the forms of one step alone.
    SetBackgrounds(2, 0);
    Cal().SetBackgroundValue(0, 100);
    EXPECT_DOUBLE_EQ(radianceOfFirst(forms.width), 10000);
    double out = 0;
    EXPECT_TRUE(converter.BaseToOutput({&counts[10000], UInt16}, u16{1}, u16{1}, SArea{}, {&out, Flt64}, nullptr));
    EXPECT_DOUBLE_EQ((out - kOffset) / kGain, 9900);
}

TEST_F(UserConverter, FromRadiance) {
    double in[] = {0.002, 0.005}, out[2];
    u8 status[] = {99, 99};
    const u8 map[] = {2, 0};
    const u32 second = 1;
    const STypedData from{in, Flt64}, to{out, Flt64};
    // The first value of a whole buffer, one by the map and an area, and the second by a list.
    const auto expect = [&](Real whole, Real mapped, Real area, Real listed) {
        const auto check = [&](const char* form, bool done, Real expected) {
            EXPECT_TRUE(done) << form;
            EXPECT_NEAR(out[0], static_cast<double>(expected), 1e-9) << form;
            out[0] = -1;
        };
        out[0] = -1;
        check("whole", converter.BaseToOutput(from, to, status, 2), whole);
        check("list", converter.BaseToOutput(from, &second, 1, to, nullptr), listed);
        check("area", converter.BaseToOutput(from, 2, 1, SArea{}, to, nullptr), area);
        check("map", converter.BaseToOutput(from, map, to, nullptr, 2), mapped);
        EXPECT_NEAR(out[1], static_cast<double>(Lookup(in[1])), 1e-9);
    };
    // Preset 0 has a table, but not all have: whole buffers and lists take Planck for all, an area its own preset's.
    Cal().SetLookup(0, radiances, temperatures);
    ASSERT_TRUE(Update(TemperatureUser, RadianceUser));
    expect(Planck(in[0]), Planck(in[0]), Lookup(in[0]), Planck(in[1]));
    for (const int p : {2, 5}) Cal().SetLookup(p, radiances, temperatures);
    ASSERT_TRUE(Update(TemperatureUser, RadianceUser));
    expect(Lookup(in[0]), Lookup(in[0]), Lookup(in[0]), Lookup(in[1]));
    // Radiance to radiance: whole buffers and lists are left alone, the other forms give temperature all the same.
    status[0] = 99;
    ASSERT_TRUE(Update(RadianceUser, RadianceUser));
    expect(-1, Lookup(in[0]), Lookup(in[0]), -1);
    float value = 0;
    EXPECT_EQ(status[0], 0);
    EXPECT_TRUE(converter.BaseToOutput(0.5f, value, status[0], 0) && value == 0.5f);
}

}  // namespace
}  // namespace ovix::reduce
