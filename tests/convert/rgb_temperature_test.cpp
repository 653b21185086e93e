#include <gtest/gtest.h>

#include "reduce/convert/uncalibrated_converters.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {
namespace {

void Update(IConverter& converter, EUnit base, ETempType baseType, EUnit output, ETempType outputType) {
    CReduceObjectArray array;
    bool presets[] = {true};
    ASSERT_TRUE(converter.Update(base, baseType, array, output, outputType, presets, 1, 0));
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
        CRGBConverter converter;
        Update(converter, RGB24, Celsius, c.unit, Celsius);
        float out[3] = {-1, -1, -1};
        u8 status[3] = {9, 9, 9};
        EXPECT_TRUE(converter.BaseToOutput({narrow, Opaque}, map, {out, Flt32}, status, 3));
        EXPECT_TRUE(std::equal(out, out + 3, c.narrow)) << c.unit;
        EXPECT_EQ(status[2], 0);
        EXPECT_TRUE(converter.BaseToOutput({wide, OpaqueWide}, map, indices, 2, {out, Flt32}, nullptr));
        EXPECT_EQ(out[0], c.wide[2]);
        EXPECT_EQ(out[1], c.wide[0]);
        EXPECT_TRUE(converter.BaseToOutput({wide, OpaqueWide}, 2, 2, SArea{0, 1, 1, 0}, {out, Flt32}, nullptr));
        EXPECT_TRUE(converter.BaseToOutput({wide, OpaqueWide}, 2, 2, SArea{1, 0, 1, 0}, {out, Flt32}, nullptr));
        EXPECT_EQ(out[0], c.wide[2]);  // indices count in all forms
    }
    CRGBConverter converter;
    Update(converter, RGB24, Celsius, RedChannel, Celsius);
    double out[3] = {-1, -1, -1};
    float one = -1;
    u8 status = 9;
    EXPECT_FALSE(converter.BaseToOutput({narrow, Opaque}, {out, Flt64}, &status, 1));
    EXPECT_FALSE(converter.BaseToOutput({narrow, UInt8}, {&one, Flt32}, &status, 1));
    EXPECT_EQ(status, 9);
    EXPECT_TRUE(converter.BaseToOutput({narrow, Opaque}, {&one, Flt32}, &status, 0));
    EXPECT_EQ(one, -1.0f);
    EXPECT_FALSE(converter.BaseToOutput(1.0f, one, status, 0));
    EXPECT_FALSE(converter.OutputToBase(1.0f, one, status, 0));
}

TEST(TemperatureConverter, Buffers) {
    CTemperatureConverter converter;
    Update(converter, TemperatureUser, Celsius, TemperatureUser, Kelvin);
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
    EXPECT_EQ(out[700], -1.0f);
    EXPECT_EQ(status[699], 0);
    EXPECT_EQ(status[700], 9);
    i16 whole[2];
    ASSERT_TRUE(converter.BaseToOutput({in, Flt64}, {whole, Int16}, nullptr, 2));
    EXPECT_EQ(whole[1], 174);  // 174.15 truncated
    ASSERT_TRUE(converter.BaseToOutput({in, Flt64}, 10, 100, SArea{2, 1, 2, 1}, {out, Flt32}, nullptr));
    EXPECT_FLOAT_EQ(out[0], 21 - 100 + 273.15f);
    EXPECT_FALSE(converter.BaseToOutput({in, Opaque}, indices, 1, {out, Flt32}, status));
    EXPECT_FALSE(converter.BaseToOutput({in, Flt64}, indices, 1, {out, Opaque}, status));
}

TEST(TemperatureConverter, SingleValuesAreLeftAlone) {
    CTemperatureConverter converter;
    Update(converter, TemperatureUser, Celsius, TemperatureUser, Kelvin);
    float out = -1;
    u8 status[2] = {9, 9};
    EXPECT_TRUE(converter.BaseToOutput(20.0f, out, status[0], 0));
    EXPECT_TRUE(converter.OutputToBase(20.0f, out, status[1], 0));
    EXPECT_TRUE(status[0] == 0 && status[1] == 0);
    EXPECT_EQ(out, -1.0f);
}

}  // namespace
}  // namespace ovix::reduce
