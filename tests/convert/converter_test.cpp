#include "reduce/convert/converter.h"

#include <gtest/gtest.h>

#include <vector>

#include "reduce/reduce.h"
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
    u16 in[] = {7, 65535, 100}, signal = 0;
    float out[4] = {}, one = 0;
    u8 status[4] = {9, 9, 9, 9};
    const STypedData from{in, UInt16}, to{out, Flt32};
    auto counts = Updated<CFirstConverter>(Counts, Celsius, Counts, Celsius);
    const u32 indices[] = {2, 1};
    EXPECT_TRUE(counts.BaseToOutput(from, indices, 2, to, status));  // the indices are ignored
    EXPECT_EQ(Text(out[0], out[1], status[1], status[2]), "7 65535 0 9 ");
    EXPECT_TRUE(counts.BaseToOutput(from, nullptr, to, nullptr, 3) && out[2] == 100.0f);
    EXPECT_TRUE(counts.SignalToOutput(65533, 65535, out, status, 255));
    EXPECT_TRUE(counts.SignalToOutput(9, 8, out, status, 255));
    EXPECT_EQ(Text(out[0], out[2], status[2], status[3]), "65533 65535 0 9 ");
    EXPECT_TRUE(counts.OutputToSignal(65539.9f, signal, status[3], 0) && signal == 3);

    auto celsius = Updated<CFirstConverter>(TemperatureUser, Celsius, TemperatureUser, Fahrenheit);
    EXPECT_TRUE(celsius.BaseToOutput(100.0f, one, status[0], 0) && celsius.BaseToOutput(from, to, status, 3));
    EXPECT_TRUE(celsius.OutputToBase(212.0f, out[0], status[0], 0));
    EXPECT_EQ(Text(one, out[0], out[2]), "212 100 212 ");
    EXPECT_FALSE(celsius.SignalToOutput(u16{1}, one, status[0], 0));

    auto other = Updated<CFirstConverter>(Counts, Celsius, RadianceUser, Celsius);
    EXPECT_FALSE(other.BaseToOutput(from, to, status, 3) || other.OutputToSignal(1.0f, signal, status[0], 0));
    EXPECT_FALSE(other.BaseToOutput(1.0f, one, status[0], 0) || other.OutputToBase(1.0f, one, status[0], 0));
    EXPECT_FALSE(other.SignalToOutput(u16{1}, one, status[0], 0) || other.SignalToOutput(1, 2, out, status, 0));
}

TEST(Converter, CountsThePixelsOfASelection) {
    const u8 mask[] = {0, 0, 0, 0, /**/ 0, 0, 1, 0, /**/ 0, 0, 0, 255};
    EXPECT_EQ(IConverter::CalcNumPixels(1, 1, SArea{2, 3, 4, 5}), 9u);
    EXPECT_EQ(IConverter::CalcNumPixels(1, 1, TArray<SScanLine>{{9, 0, 2}, {1, 5, 5}}), 4u);
    EXPECT_EQ(IConverter::CalcNumPixels(1, 1, SArea{0, 2, 2, 3}, mask, 4), 2u);
}

TEST(ConverterFactory, TheFirstRegisteredWins) {
    CConverterFactory& factory = *converterFactory();
    ASSERT_TRUE(CFirstConverter::Register() && CSecondConverter::Register());
    EXPECT_FALSE(CSecondConverter::Register());
    CReduceObjectArray array;
    TArray<SConverterUnits> rows;
    EXPECT_FALSE(factory.GetConverterUnits(rows, array));  // no source info
    array.GetSourceInfo(true)->baseUnit = kTestBase;
    ASSERT_TRUE(factory.GetConverterUnits(rows, array) && factory.GetConverterUnits(rows, array));
    ASSERT_EQ(rows.size(), 4u);  // appended
    EXPECT_TRUE(rows.GetAt(0).guid == CFirstConverter::kID && rows.GetAt(1).units.size() == 2);
    TArray<EUnit> units{Counts};
    ASSERT_TRUE(factory.GetSupportedUnits(units, array));
    const EUnit expected[] = {kFirstOnly, kShared, kSecondOnly};
    EXPECT_TRUE(std::equal(units.begin(), units.end(), std::begin(expected), std::end(expected)));
    EXPECT_EQ(factory.ConverterGUIDForUnit(array, kShared), CFirstConverter::kID);
    EXPECT_EQ(factory.ConverterForUnit(array, kSecondOnly)->name(), CString(L"TestSecond"));
    EXPECT_TRUE(factory.IsUnitSupported(kSecondOnly, array) && !factory.IsUnitSupported(Counts, array));
    EXPECT_EQ(factory.ConverterGUIDForUnit(Counts, array, kShared), CGUID::Empty);  // the first lists units and refuses
}

TEST(ConverterFactory, BuiltInsAndUnknowns) {
    CConverterFactory& factory = *converterFactory();
    const std::pair<const wchar_t*, GUID> builtins[] = {
        {L"RGBConverter", "{40AB4741-C1C8-4EC4-BC94-CA3131E3DCF6}"_guid},
        {L"CurlewConverter", "{E81693AB-B4B6-4EC4-85C0-E89D1C35061E}"_guid},
        {L"TemperatureConverter", "{DC1FAB38-0521-4ABB-8EA1-7ED6B6B83592}"_guid}};
    for (const auto& [name, id] : builtins) {
        EXPECT_EQ(factory.GetGUIDFromName(name), id);
        EXPECT_EQ(factory.GetNameFromGUID(id), CString(name));
        ASSERT_TRUE(factory.CreateByGUID(id));
        EXPECT_EQ(factory.CreateByName(name)->id(), id);
        EXPECT_FALSE(factory.CreateByName(name)->isReversable());
    }
    EXPECT_TRUE(factory.GetNameFromGUID("{11111111-0000-0000-0000-00000000FFFF}"_guid).IsEmpty());
    EXPECT_FALSE(factory.CreateByGUID(CGUID::Empty));
    EXPECT_EQ(factory.GetGUIDFromName(L"curlewconverter"), CGUID::Empty);

    CReduceObjectArray array;
    TArray<EUnit> units;
    EXPECT_FALSE(factory.GetSupportedUnits(units, array) || factory.ConverterForUnit(array, Counts));
    const auto source = array.GetSourceInfo(true);
    ASSERT_TRUE(factory.GetSupportedUnits(units, array));
    ASSERT_EQ(units.size(), 1u);  // no calibration: its own unit, and no converter for it
    EXPECT_EQ(units.GetAt(0), Counts);
    EXPECT_EQ(factory.ConverterGUIDForUnit(array, Counts), CGUID::Empty);
    source->baseUnit = RGB24;
    EXPECT_TRUE(!factory.IsUnitSupported(RGB24, array) && factory.IsUnitSupported(RGBAverage, array));
}

TEST(RGBConverter, ChannelsAndTheirMean) {
    u8 narrow[] = {1, 1, 2, 255, 255, 255, 10, 20, 30}, status[3] = {9, 9, 9};
    u16 wide[] = {1, 1, 2, 65535, 65535, 65535, 1000, 2000, 4000};
    const STypedData bytes{narrow, Opaque}, words{wide, OpaqueWide};
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
        const STypedData to{out, Flt32};
        EXPECT_TRUE(converter.BaseToOutput(bytes, map, to, status, 3));
        EXPECT_TRUE(std::equal(out, out + 3, c.narrow) && status[2] == 0) << c.unit;
        EXPECT_TRUE(converter.BaseToOutput(words, map, indices, 2, to, nullptr));
        EXPECT_TRUE(out[0] == c.wide[2] && out[1] == c.wide[0]);
        EXPECT_TRUE(converter.BaseToOutput(words, 2, 2, SArea{0, 1, 1, 0}, to, nullptr));
        EXPECT_TRUE(converter.BaseToOutput(words, 2, 2, SArea{1, 0, 1, 0}, to, nullptr));
        EXPECT_EQ(out[0], c.wide[2]);  // indices count in all forms
    }
    auto converter = Updated<CRGBConverter>(RGB24, Celsius, RedChannel, Celsius);
    float one = -1;
    status[0] = 9;
    EXPECT_FALSE(converter.BaseToOutput(bytes, {&one, Flt64}, status, 1));
    EXPECT_FALSE(converter.BaseToOutput({narrow, UInt8}, {&one, Flt32}, status, 1));
    EXPECT_TRUE(converter.BaseToOutput(bytes, {&one, Flt32}, status, 0));
    EXPECT_FALSE(converter.BaseToOutput(1.0f, one, *status, 0) || converter.OutputToBase(1.0f, one, *status, 0));
    EXPECT_TRUE(one == -1.0f && status[0] == 9);
}

TEST(TemperatureConverter, BuffersAndSingleValuesWhichAreLeftAlone) {
    auto converter = Updated<CTemperatureConverter>(TemperatureUser, Celsius, TemperatureUser, Kelvin);
    double in[1000];
    u32 indices[700];
    for (u32 i = 0; i < 1000; ++i) in[i] = i - 100.0;
    for (u32 i = 0; i < 700; ++i) indices[i] = 999 - i;
    std::vector<float> out(701, -1.0f);
    std::vector<u8> status(701, 9);
    const u8 map[1000] = {};
    const STypedData from{in, Flt64}, to{out.data(), Flt32};
    ASSERT_TRUE(converter.BaseToOutput(from, map, indices, 700, to, status.data()));
    for (u32 i = 0; i < 700; ++i) ASSERT_FLOAT_EQ(out[i], 899.0f - static_cast<float>(i) + 273.15f);
    EXPECT_EQ(Text(out[700], status[699], status[700]), "-1 0 9 ");
    i16 whole[2];
    ASSERT_TRUE(converter.BaseToOutput(from, {whole, Int16}, nullptr, 2));
    EXPECT_EQ(whole[1], 174);  // 174.15 truncated
    ASSERT_TRUE(converter.BaseToOutput(from, 10, 100, SArea{2, 1, 2, 1}, to, nullptr));
    EXPECT_FLOAT_EQ(out[0], 21 - 100 + 273.15f);
    EXPECT_FALSE(converter.BaseToOutput({in, Opaque}, indices, 1, to, status.data()));
    EXPECT_FALSE(converter.BaseToOutput(from, indices, 1, {out.data(), Opaque}, status.data()));
    float one = -1;
    status[0] = status[1] = 9;
    EXPECT_TRUE(converter.BaseToOutput(20.0f, one, status[0], 0) && converter.OutputToBase(20.0f, one, status[1], 0));
    EXPECT_EQ(Text(one, status[0], status[1]), "-1 0 0 ");
}

}  // namespace
}  // namespace ovix::reduce
