#include "reduce/convert/converter.h"

#include <gtest/gtest.h>

#include "reduce/convert/converter_factory.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/convert/uncalibrated_converters.h"
#include "reduce/objects/reduce_object_array.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using test::Text;

constexpr EUnit kTestBase = static_cast<EUnit>(100), kFirstOnly = static_cast<EUnit>(101);
constexpr EUnit kShared = static_cast<EUnit>(102), kSecondOnly = static_cast<EUnit>(103);

/// Converters for a base unit that no built-in class knows. The first lists its units of others too, and refuses.
template <u8 kNumber>
class TOwnConverter : public TConverter<TOwnConverter<kNumber>> {
  public:
    static constexpr const wchar_t* kName = kNumber == 1 ? L"TestFirst" : L"TestSecond";
    static constexpr GUID kID{0x11111111, 0, 0, {0, 0, 0, 0, 0, 0, 0, kNumber}};
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray&) {
        if (kNumber == 2 && base != kTestBase) return false;
        units.Add(kNumber == 1 ? kFirstOnly : kShared);
        units.Add(kNumber == 1 ? kShared : kSecondOnly);
        return base == kTestBase;
    }
};
using CFirstConverter = TOwnConverter<1>;
using CSecondConverter = TOwnConverter<2>;

template <class Converter>
Converter Updated(EUnit base, ETempType baseType, EUnit output, ETempType outputType) {
    Converter converter;
    CReduceObjectArray array;
    bool presets[] = {true};
    EXPECT_TRUE(converter.Update(base, baseType, array, output, outputType, presets, 1, 0));
    return converter;
}

TEST(Converter, UpdateTakesUnitsAndPresets) {
    CFirstConverter converter;
    CReduceObjectArray array;
    bool presets[9] = {false, false, true, true};
    EXPECT_TRUE(converter.Update(Counts, Celsius, array, RadianceUser, Kelvin, presets, 4, 0));
    EXPECT_FALSE(converter.Update(RGB24, Kelvin, array, RGB48, Celsius, presets, 9, 0));
    EXPECT_EQ(Text(converter.baseUnit, converter.outputUnit, converter.outputTempType),
              Text(Counts, RadianceUser, Kelvin));
    EXPECT_TRUE(converter.activePreset == 2 && converter.presets[3]);
    EXPECT_TRUE(converter.Update(Counts, Celsius, array, Counts, Celsius, nullptr, 0, 0));
    EXPECT_EQ(converter.activePreset, 0);
    for (const bool enabled : converter.presets) EXPECT_FALSE(enabled);
}

TEST(Converter, DefaultsConvertAUnitToItself) {
    u16 in[] = {7, 65535, 100};
    float out[4] = {};
    u8 status[4] = {9, 9, 9, 9};
    auto counts = Updated<CFirstConverter>(Counts, Celsius, Counts, Celsius);
    const u32 indices[] = {2, 1};
    EXPECT_TRUE(counts.BaseToOutput({in, UInt16}, indices, 2, {out, Flt32}, status));  // the indices are ignored
    EXPECT_EQ(Text(out[0], out[1], status[1], status[2]), "7 65535 0 9 ");
    EXPECT_TRUE(counts.BaseToOutput({in, UInt16}, nullptr, {out, Flt32}, nullptr, 3));
    EXPECT_EQ(out[2], 100.0f);
    EXPECT_TRUE(counts.SignalToOutput(65533, 65535, out, status, 255));
    EXPECT_TRUE(counts.SignalToOutput(9, 8, out, status, 255));
    EXPECT_EQ(Text(out[0], out[2], status[2], status[3]), "65533 65535 0 9 ");
    u16 signal = 0;
    EXPECT_TRUE(counts.OutputToSignal(65539.9f, signal, status[3], 0));
    EXPECT_EQ(signal, 3);

    float one = 0;
    auto celsius = Updated<CFirstConverter>(TemperatureUser, Celsius, TemperatureUser, Fahrenheit);
    EXPECT_TRUE(celsius.BaseToOutput(100.0f, one, status[0], 0));
    EXPECT_FLOAT_EQ(one, 212.0f);
    EXPECT_TRUE(celsius.OutputToBase(212.0f, one, status[0], 0));
    EXPECT_FLOAT_EQ(one, 100.0f);
    EXPECT_TRUE(celsius.BaseToOutput({in, UInt16}, {out, Flt32}, status, 3));
    EXPECT_FLOAT_EQ(out[2], 212.0f);
    EXPECT_FALSE(celsius.SignalToOutput(u16{1}, one, status[0], 0));

    auto other = Updated<CFirstConverter>(Counts, Celsius, RadianceUser, Celsius);
    EXPECT_FALSE(other.BaseToOutput({in, UInt16}, {out, Flt32}, status, 3));
    EXPECT_FALSE(other.BaseToOutput(1.0f, one, status[0], 0) || other.OutputToBase(1.0f, one, status[0], 0));
    EXPECT_FALSE(other.SignalToOutput(u16{1}, one, status[0], 0) || other.SignalToOutput(1, 2, out, status, 0));
    EXPECT_FALSE(other.OutputToSignal(1.0f, signal, status[0], 0));
}

TEST(Converter, CountsThePixelsOfASelection) {
    EXPECT_EQ(IConverter::CalcNumPixels(1, 1, SArea{2, 3, 4, 5}), 9u);
    EXPECT_EQ(IConverter::CalcNumPixels(1, 1, SArea{4, 3, 2, 5}), 0u);
    EXPECT_EQ(IConverter::CalcNumPixels(1, 1, TArray<SScanLine>{{9, 0, 2}, {1, 5, 5}}), 4u);
    u8 mask[4 * 3] = {};
    mask[1 * 4 + 2] = 1;
    mask[2 * 4 + 3] = 255;
    EXPECT_EQ(IConverter::CalcNumPixels(1, 1, SArea{0, 2, 2, 3}, mask, 4), 2u);
}

TEST(ConverterFactory, TheFirstRegisteredWins) {
    CConverterFactory& factory = *converterFactory();
    ASSERT_TRUE(CFirstConverter::Register());
    ASSERT_TRUE(CSecondConverter::Register());
    EXPECT_FALSE(CSecondConverter::Register());
    CReduceObjectArray array;
    TArray<SConverterUnits> rows;
    EXPECT_FALSE(factory.GetConverterUnits(rows, array));  // no source info
    array.GetSourceInfo(true)->baseUnit = kTestBase;
    ASSERT_TRUE(factory.GetConverterUnits(rows, array));
    ASSERT_TRUE(factory.GetConverterUnits(rows, array));
    ASSERT_EQ(rows.size(), 4u);  // appended
    EXPECT_EQ(rows.GetAt(0).guid, CFirstConverter::kID);
    EXPECT_EQ(rows.GetAt(1).units.size(), 2u);
    TArray<EUnit> units{Counts};
    ASSERT_TRUE(factory.GetSupportedUnits(units, array));
    const EUnit expected[] = {kFirstOnly, kShared, kSecondOnly};
    EXPECT_TRUE(std::equal(units.begin(), units.end(), std::begin(expected), std::end(expected)));
    EXPECT_EQ(factory.ConverterGUIDForUnit(array, kShared), CFirstConverter::kID);
    EXPECT_EQ(factory.ConverterForUnit(array, kSecondOnly)->name(), CString(L"TestSecond"));
    EXPECT_TRUE(factory.IsUnitSupported(kSecondOnly, array));
    EXPECT_FALSE(factory.IsUnitSupported(Counts, array));
    EXPECT_EQ(factory.ConverterGUIDForUnit(Counts, array, kShared), CGUID::Empty);  // the first lists units and refuses
}

TEST(ConverterFactory, BuiltInsAndUnknowns) {
    CConverterFactory& factory = *converterFactory();
    const struct {
        const wchar_t* name;
        GUID id;
    } kBuiltins[] = {{L"RGBConverter", "{40AB4741-C1C8-4EC4-BC94-CA3131E3DCF6}"_guid},
                     {L"CurlewConverter", "{E81693AB-B4B6-4EC4-85C0-E89D1C35061E}"_guid},
                     {L"TemperatureConverter", "{DC1FAB38-0521-4ABB-8EA1-7ED6B6B83592}"_guid}};
    for (const auto& builtin : kBuiltins) {
        EXPECT_EQ(factory.GetGUIDFromName(builtin.name), builtin.id);
        EXPECT_EQ(factory.GetNameFromGUID(builtin.id), CString(builtin.name));
        ASSERT_TRUE(factory.CreateByGUID(builtin.id));
        EXPECT_EQ(factory.CreateByName(builtin.name)->id(), builtin.id);
        EXPECT_FALSE(factory.CreateByName(builtin.name)->isReversable());
    }
    const GUID unknown = "{11111111-0000-0000-0000-00000000FFFF}"_guid;
    EXPECT_TRUE(factory.GetNameFromGUID(unknown).IsEmpty());
    EXPECT_FALSE(factory.CreateByGUID(CGUID::Empty));
    EXPECT_EQ(factory.GetGUIDFromName(L"curlewconverter"), CGUID::Empty);

    CReduceObjectArray array;
    TArray<EUnit> units;
    EXPECT_FALSE(factory.GetSupportedUnits(units, array));
    EXPECT_FALSE(factory.ConverterForUnit(array, Counts));
    array.GetSourceInfo(true);
    ASSERT_TRUE(factory.GetSupportedUnits(units, array));
    ASSERT_EQ(units.size(), 1u);  // no calibration: its own unit, and no converter for it
    EXPECT_EQ(units.GetAt(0), Counts);
    EXPECT_EQ(factory.ConverterGUIDForUnit(array, Counts), CGUID::Empty);
    array.GetSourceInfo(false)->baseUnit = RGB24;
    EXPECT_FALSE(factory.IsUnitSupported(RGB24, array));
    EXPECT_TRUE(factory.IsUnitSupported(RGBAverage, array));
}

TEST(RGBConverter, ChannelsAndTheirMean) {
    u8 narrow[] = {1, 1, 2, 255, 255, 255, 10, 20, 30};
    u16 wide[] = {1, 1, 2, 65535, 65535, 65535, 1000, 2000, 4000};
    const struct {
        EUnit unit;
        float narrow[3], wide[3];
    } kCases[] = {{RedChannel, {1, 255, 10}, {1, 65535, 1000}},
                  {GreenChannel, {1, 255, 20}, {1, 65535, 2000}},
                  {BlueChannel, {2, 255, 30}, {2, 65535, 4000}},
                  {RGBAverage, {4 / 3.0f, 255, 20}, {4 / 3.0f, 65535, 7000 / 3.0f}},
                  {RGB24, {-1, -1, -1}, {-1, -1, -1}}};
    const u32 indices[] = {2, 0};
    const u8 map[3] = {};
    for (const auto& c : kCases) {
        auto converter = Updated<CRGBConverter>(RGB24, Celsius, c.unit, Celsius);
        float out[3] = {-1, -1, -1};
        u8 status[3] = {9, 9, 9};
        EXPECT_TRUE(converter.BaseToOutput({narrow, Opaque}, map, {out, Flt32}, status, 3));
        EXPECT_TRUE(std::equal(out, out + 3, c.narrow)) << c.unit;
        EXPECT_EQ(status[2], 0);
        EXPECT_TRUE(converter.BaseToOutput({wide, OpaqueWide}, map, indices, 2, {out, Flt32}, nullptr));
        EXPECT_TRUE(out[0] == c.wide[2] && out[1] == c.wide[0]);
        EXPECT_TRUE(converter.BaseToOutput({wide, OpaqueWide}, 2, 2, SArea{0, 1, 1, 0}, {out, Flt32}, nullptr));
        EXPECT_TRUE(converter.BaseToOutput({wide, OpaqueWide}, 2, 2, SArea{1, 0, 1, 0}, {out, Flt32}, nullptr));
        EXPECT_EQ(out[0], c.wide[2]);  // indices count in all forms
    }
    auto converter = Updated<CRGBConverter>(RGB24, Celsius, RedChannel, Celsius);
    double out[3] = {-1, -1, -1};
    float one = -1;
    u8 status = 9;
    EXPECT_FALSE(converter.BaseToOutput({narrow, Opaque}, {out, Flt64}, &status, 1));
    EXPECT_FALSE(converter.BaseToOutput({narrow, UInt8}, {&one, Flt32}, &status, 1));
    EXPECT_TRUE(converter.BaseToOutput({narrow, Opaque}, {&one, Flt32}, &status, 0));
    EXPECT_TRUE(one == -1.0f && status == 9);
    EXPECT_FALSE(converter.BaseToOutput(1.0f, one, status, 0));
    EXPECT_FALSE(converter.OutputToBase(1.0f, one, status, 0));
}

TEST(TemperatureConverter, BuffersAndSingleValuesWhichAreLeftAlone) {
    auto converter = Updated<CTemperatureConverter>(TemperatureUser, Celsius, TemperatureUser, Kelvin);
    double in[1000];
    for (int i = 0; i < 1000; ++i) in[i] = i - 100;
    u32 indices[700];
    for (u32 i = 0; i < 700; ++i) indices[i] = 999 - i;
    float out[701];
    u8 status[701];
    std::fill_n(out, 701, -1.0f);
    std::fill_n(status, 701, u8{9});
    const u8 map[1000] = {};
    ASSERT_TRUE(converter.BaseToOutput({in, Flt64}, map, indices, 700, {out, Flt32}, status));
    for (u32 i = 0; i < 700; ++i) ASSERT_FLOAT_EQ(out[i], 899.0f - static_cast<float>(i) + 273.15f);
    EXPECT_EQ(Text(out[700], status[699], status[700]), "-1 0 9 ");
    i16 whole[2];
    ASSERT_TRUE(converter.BaseToOutput({in, Flt64}, {whole, Int16}, nullptr, 2));
    EXPECT_EQ(whole[1], 174);  // 174.15 truncated
    ASSERT_TRUE(converter.BaseToOutput({in, Flt64}, 10, 100, SArea{2, 1, 2, 1}, {out, Flt32}, nullptr));
    EXPECT_FLOAT_EQ(out[0], 21 - 100 + 273.15f);
    EXPECT_FALSE(converter.BaseToOutput({in, Opaque}, indices, 1, {out, Flt32}, status));
    EXPECT_FALSE(converter.BaseToOutput({in, Flt64}, indices, 1, {out, Opaque}, status));
    float one = -1;
    status[0] = status[1] = 9;
    EXPECT_TRUE(converter.BaseToOutput(20.0f, one, status[0], 0) && converter.OutputToBase(20.0f, one, status[1], 0));
    EXPECT_EQ(Text(one, status[0], status[1]), "-1 0 0 ");
}

}  // namespace
}  // namespace ovix::reduce
