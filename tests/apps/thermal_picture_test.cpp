#include "apps/ovix/output/thermal_picture.h"

#include <gmock/gmock.h>
#include <png.h>

#include <array>
#include <cmath>
#include <limits>

#include "apps/ovix/output/frame_writer.h"
#include "apps/ovix/output/plain_picture.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// CIELAB by the definition, from sRGB under the white D65.
std::array<double, 3> Lab(SColour c) {
    const auto linear = [](u8 channel) {
        const double v = channel / 255.0;
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    const double r = linear(c.red), g = linear(c.green), b = linear(c.blue);
    const auto f = [](double t) { return t > 216.0 / 24389 ? std::cbrt(t) : (t * 24389 / 27 + 16) / 116; };
    const double x = f((0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.9505), y = f(0.2126 * r + 0.7152 * g + 0.0722 * b),
                 z = f((0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.089);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}
double Lightness(SColour c) { return Lab(c)[0]; }
double Difference(SColour a, SColour b) {
    const auto from = Lab(a), to = Lab(b);
    return std::hypot(from[0] - to[0], from[1] - to[1], from[2] - to[2]);
}

TEST(Palette, LightnessGoesOneWay) {
    constexpr double kRounding = -0.05;  // of the channels to 8 bits
    ASSERT_EQ(Palettes().size(), 6u);
    for (const SPalette& palette : Palettes()) {
        const auto lightness = [&](int i) { return Lightness(ColourOf(palette.colours[static_cast<std::size_t>(i)])); };
        const double way = lightness(255) > lightness(0) ? 1 : -1;
        for (int i = 1; i < 256; ++i)
            EXPECT_GT(way * (lightness(i) - lightness(i - 1)), kRounding) << palette.name << " " << i;
    }
    for (u32 i = 0; i < 256; ++i)
        EXPECT_NEAR(Lightness(ColourOf(Palettes().front().colours[i])), 98.0 * i / 255, 6) << i;
}

/// Whatever palette is shown, these are told from it at a glance: by more than 25 in the CIELAB space, where 2 can just
/// be seen side by side.
TEST(Palette, WhatItCannotSayLooksLikeNoneOfIt) {
    const SColour special[] = {kBelowColour, kAboveColour, kUnderColour, kOverColour, kNoDataColour};
    for (const SColour& colour : special) {
        for (const SPalette& palette : Palettes())
            for (const u32 entry : palette.colours)
                ASSERT_GT(Difference(colour, ColourOf(entry)), 25) << palette.name << std::hex << " " << entry;
        for (const SColour& other : special) EXPECT_TRUE(other == colour || Difference(colour, other) > 25);
    }
}

TEST(ColourScale, KindsOfPixels) {
    const std::tuple<float, u8, EPixelKind> cases[] = {
        {15, 0, PixelShown},        {10, 1, PixelUncalibrated},  {20, 8 | 16, PixelShown},      {9.99f, 0, PixelBelow},
        {15, 2, PixelUnder},        {-kInfinity, 0, PixelBelow}, {20.1f, 0, PixelAbove},        {15, 4 | 1, PixelOver},
        {kInfinity, 0, PixelAbove}, {kNaN, 0, PixelNoData},      {15, 32 | 2 | 4, PixelNoData}, {9, 1, PixelBelow},
    };
    for (const auto& [value, status, kind] : cases)
        EXPECT_EQ(KindOf(value, status, {10, 20}), kind) << value << " " << +status;
}

TEST(PictureRange, LooksAtWhatIsShown) {
    const auto expectRange = [](std::vector<float> values, std::vector<u8> status, float low, float high) {
        CCommonRange common;
        common.Add(SuitingRange(values, status, static_cast<u32>(values.size())));
        const SRange range = common.Range();
        EXPECT_FLOAT_EQ(range.low, low);
        EXPECT_FLOAT_EQ(range.high, high);
    };
    expectRange({3, -2, kNaN, kInfinity, -kInfinity, 7}, {}, -2, 7);
    expectRange({3, -2, 9, 100, 7}, {0, 2, 1, 4, 32}, 3, 9);
    expectRange({5, 5}, {}, 4.5f, 5.5f);
    for (std::size_t size : {31u, 32u, 33u, 100u}) {  // wherever they stand in a long row
        std::vector<float> values(size, 20);
        values.front() = 1e30f, values[size / 2] = 7, values.back() = 91;
        std::vector<u8> status(size);
        status.front() = 4;
        expectRange(values, status, 7, 91);
    }
    expectRange({kNaN}, {}, 0, 1);
    expectRange({}, {}, 0, 1);
    expectRange({1e9f}, {}, 1e9f - 1000, 1e9f + 1000);
}

/// A slope from 20 to 30 with what is put into it.
std::vector<float> Slope(std::initializer_list<std::pair<std::size_t, float>> with) {
    std::vector<float> values(200 * 100);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = 20 + 10 * static_cast<float>(i % 200) / 199;
    for (const auto& [at, value] : with) values[at] = value;
    return values;
}

TEST(PictureRange, IsSpoiledByNoDeadPixelAndKeepsSmallSpots) {
    const std::size_t middle = 50 * 200 + 100;
    const std::tuple<const char*, std::vector<float>, SRange> cases[] = {
        {"nothing", Slope({}), {20, 30}},
        {"dead in the middle, a corner and an edge", Slope({{middle, 99}, {0, 0}, {19999, 99}, {199, -5}}), {20, 30}},
        {"two dead ones side by side", Slope({{middle, 99}, {middle + 1, 98}}), {20, 30}},
        {"three of them in a corner", Slope({{middle, 99}, {middle + 1, 98}, {middle + 200, 97}}), {20, 30}},
        {"a spot", Slope({{middle, 50}, {middle + 1, 51}, {middle + 200, 52}, {middle + 201, 53}}), {20, 53}},
        {"a cold spot and one hot pixel", Slope({{0, 5}, {1, 5}, {200, 4}, {201, 5}, {middle, 99}}), {4, 30}},
        {"what noise may do", Slope({{middle, 33.4f}, {0, 16.6f}}), {16.6f, 33.4f}},
    };
    CCommonRange common;  // of a sequence, the widest
    for (const auto& [what, values, expected] : cases) {
        const auto range = SuitingRange(values, {}, 200);
        ASSERT_TRUE(range && range->low == expected.low && range->high == expected.high) << what;
        common.Add(range);
    }
    EXPECT_TRUE(common.Range().low == 4 && common.Range().high == 53);
}

TEST(PictureRange, PercentilesAreValuesOfThePixels) {
    std::vector<float> values(101);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>((i * 37) % 101);  // 0 to 100
    std::vector<u8> status(101);
    const auto expect = [&](Percentiles shares, float low, float high) {
        const auto range = SuitingRange(values, status, 101, shares);
        ASSERT_TRUE(range && range->low == low && range->high == high) << low << ' ' << high;
    };
    expect({0, 100}, 0, 100);
    expect({1, 99}, 1, 99);
    expect({25, 50}, 25, 50);
    for (std::size_t i = 0; i < values.size(); ++i) status[i] = values[i] < 50 ? 32 : 0;  // 50 to 100 are left
    expect({0, 50}, 50, 75);
}

TEST(ColourScale, TicksAreRoundNumbers) {
    const std::tuple<SRange, int, std::vector<std::string>> cases[] = {
        {{10.3f, 79.2f}, 7, {"20", "30", "40", "50", "60", "70"}}, {{-1, 1}, 4, {"-1.0", "-0.5", "0.0", "0.5", "1.0"}},
        {{0.0031f, 0.0049f}, 4, {"0.0035", "0.0040", "0.0045"}},   {{0, 16383}, 5, {"0", "5000", "10000", "15000"}},
        {{20.01f, 20.02f}, 2, {"20.010", "20.015", "20.020"}},     {{1e9f, 3e9f}, 2, {"1e+09", "2e+09", "3e+09"}},
    };
    for (const auto& [range, wanted, expected] : cases) {
        std::vector<std::string> labels;
        for (const STick& tick : Ticks(range, wanted)) labels.push_back(tick.label);
        EXPECT_EQ(labels, expected) << range.low;
    }
    // Neighbouring floats leave no room for a round number; there is a label all the same.
    EXPECT_FALSE(Ticks({1000000, std::nextafter(1000000.0f, 2e6f)}, 5).empty());
}

SSeries Series(u16 width, u16 height) {
    SSeries series;
    series.width = width;
    series.height = height;
    series.unit = UnitText(TemperatureFactory, Celsius);
    series.title = "A title far too long for so small a picture, which ends in three dots at the bar";
    return series;
}

/// What was drawn at a place of the frame, in its pixels.
SColour At(const SThermalPicture& drawn, double x, double y) {
    const auto on = [&](double place, int start) { return start + static_cast<int>(place * drawn.scale); };
    return drawn.canvas.At(on(x, drawn.image.x), on(y, drawn.image.y));
}

/// A drawing in the first palette.
SThermalPicture Draw(const SSeries& series, const SPicture& picture, SRange range, const SWriteOptions& options = {}) {
    return DrawThermalPicture(series, picture, {range, options});
}

/// The palette is sampled, not computed with: entry 255 x share, which the test knows from a share of its own.
SColour Entry(double share) { return ColourOf(Palettes()[0].colours[static_cast<u32>(std::lround(255 * share))]); }

TEST(ThermalPicture, PixelsAndBarShareOnePalette) {
    const SSeries series = Series(4, 2);
    const std::vector<float> values{10, 12.5f, 20, 30, 9, 31, 15, 29};
    const std::vector<u8> status{0, 0, 0, 0, 0, 0, 32, 4};
    const SThermalPicture drawn = Draw(series, {0, values, status, "caption"}, {10, 30});
    EXPECT_GT(drawn.scale, 50);
    const SColour expected[2][4] = {{Entry(0), Entry(0.125), Entry(0.5), Entry(1)},
                                    {kBelowColour, kAboveColour, kNoDataColour, kOverColour}};
    for (int y : {0, 1})
        for (int x : {0, 1, 2, 3}) EXPECT_EQ(At(drawn, x + 0.5, y + 0.5), expected[y][x]) << x << ' ' << y;

    const SBox& bar = drawn.bar;
    const auto barAt = [&](int row) { return drawn.canvas.At(bar.x + bar.width / 2, bar.y + row); };
    EXPECT_EQ(barAt(0), Entry(1));
    EXPECT_EQ(barAt(bar.height - 1), Entry(0));
    for (int row : {bar.height / 4, bar.height / 2, bar.height - 10})
        EXPECT_EQ(barAt(row), Entry(1 - row / (bar.height - 1.0))) << row;
    // Ticks stand where the bar has their value: at 20 of 10 to 30 in the middle.
    const int middle = bar.y + static_cast<int>(std::lround((bar.height - 1) * 0.5));
    EXPECT_NE(drawn.canvas.At(bar.x + bar.width + 2, middle), drawn.canvas.At(bar.x + bar.width + 2, middle - 3));
}

TEST(ThermalPicture, HatchesWhatIsNotCalibrated) {
    const std::vector<float> values{20, 20};
    const std::vector<u8> status{0, 1};
    const SThermalPicture drawn = Draw(Series(2, 1), {0, values, status, ""}, {10, 30});
    const auto plainPixels = [&](int x) {
        int plain = 0;
        for (int i = 0; i < drawn.scale; ++i) plain += At(drawn, x + (i + 0.5) / drawn.scale, 0.5) == Entry(0.5);
        return plain;
    };
    EXPECT_EQ(plainPixels(0), drawn.scale);
    EXPECT_LT(plainPixels(1), drawn.scale * 9 / 10);
    EXPECT_GT(plainPixels(1), drawn.scale / 2);
}

/// Wherever the region lies and whatever it is called, the drawing right of the picture's part stays the same.
TEST(ThermalPicture, NamesNeverCoverTheBar) {
    const std::vector<float> values(160 * 120, 25.0f);
    const SPicture picture{0, values, {}, ""};
    const SThermalPicture plain = Draw(Series(160, 120), picture, {25, 26});
    for (const char* name : {"a name that is far longer than all of the picture is wide, so that it cannot end in it",
                             "\u0645\u062d\u0645\u0644", "\u8f74\u627f", "short", "\xFF\xFE", "two\nlines"}) {
        using measure::CPixelSet, measure::SShape;
        for (const CPixelSet& mark : {CPixelSet(SShape::Rectangle(name, 150, 60, 10, 10), 160, 120),
                                      CPixelSet({name, measure::EShape::Circle, {{159, 60}}, 9}, 160, 120)}) {
            const SThermalPicture drawn = Draw(Series(160, 120), picture, {25, 26}, {.marks = {mark}});
            u32 changed = 0;
            for (int y = 0; y < plain.canvas.Height(); ++y) {
                for (int x = 0; x < plain.canvas.Width(); ++x) {
                    const bool same = drawn.canvas.At(x, y) == plain.canvas.At(x, y);
                    ASSERT_TRUE(same || x < plain.bar.x - 3) << name << " " << x << " " << y;
                    changed += !same;
                }
            }
            EXPECT_GT(changed, 150u) << name;
        }
    }
}

/// Light lines run between the pixels on both sides of the level, and nowhere else.
TEST(ThermalPicture, IsothermsRunBetweenPixels) {
    const SSeries series = Series(4, 2);
    const std::vector<float> values{10, 20, 30, 30, 10, 30, kNaN, 30};
    const SThermalPicture drawn = Draw(series, {0, values, {}, ""}, {0, 40}, {.isotherms = {25}, .zoom = 40});
    ASSERT_EQ(drawn.scale, 40);
    const auto isLight = [&](double x, double y) { return At(drawn, x, y) == ColourOf(0xFFFFFF); };
    EXPECT_TRUE(isLight(2, 0.5) && isLight(1, 1.5) && isLight(1.5, 1));  // 20 | 30, 10 | 30, 20 above 30
    EXPECT_FALSE(isLight(1, 0.5) || isLight(3, 0.5) || isLight(0.5, 1));
    EXPECT_FALSE(isLight(2, 1.5) || isLight(2.5, 1));  // beside no number
    const int row = drawn.bar.y + static_cast<int>(std::lround((drawn.bar.height - 1) * 15 / 40.0));
    EXPECT_EQ(drawn.canvas.At(drawn.bar.x + 2, row), ColourOf(0xFFFFFF));
}

TEST(ThermalPicture, CrossHairsStandAtTheHottestAndColdestGoodPixel) {
    std::vector<float> values(40 * 30, 20.0f);
    std::vector<u8> status(values.size());
    values[10 * 40 + 7] = 10, values[20 * 40 + 30] = 33;
    values[100] = 99, status[100] = 4;
    const SPicture picture{0, values, status, ""};
    const SThermalPicture plain = Draw(Series(40, 30), picture, {10, 33}, {.zoom = 9});
    const SThermalPicture marked = Draw(Series(40, 30), picture, {10, 33}, {.markExtremes = true, .zoom = 9});
    const auto changed = [&](int x, int y, int dx, int dy) {
        const int u = plain.image.x + x * 9 + 4 + dx, v = plain.image.y + y * 9 + 4 + dy;
        return marked.canvas.At(u, v) != plain.canvas.At(u, v);
    };
    for (const auto& [x, y] : {std::pair{7, 10}, {30, 20}}) {
        EXPECT_FALSE(changed(x, y, 0, 0));  // the pixel itself is seen
        for (const auto& [dx, dy] : {std::pair{-9, 0}, {9, 0}, {0, -9}, {0, 9}}) EXPECT_TRUE(changed(x, y, dx, dy));
    }
    EXPECT_FALSE(changed(100 % 40, 100 / 40, 9, 0));
}

TEST(ThermalPicture, VideoHasItsOwnColoursAndNoBar) {
    const std::vector<float> values{1, 2};
    const std::vector<u32> colours{0x102030, 0xFFEE01};
    const SThermalPicture drawn = Draw(Series(2, 1), {0, values, {}, "", {}, colours}, {});
    EXPECT_EQ(drawn.bar.width, 0);
    for (const u32 x : {0u, 1u}) EXPECT_EQ(At(drawn, x + 0.5, 0.5), ColourOf(colours[x]));
}

TEST(ThermalPicture, AnySizeCanBeDrawn) {
    for (const auto& [width, height] : {std::pair<u16, u16>{1, 1}, {1, 700}, {900, 1}, {641, 3}, {2000, 1500}}) {
        const std::vector<float> values(std::size_t{width} * height, 25.0f);
        const SSeries series = Series(width, height);
        const std::vector<measure::CPixelSet> marks{
            {measure::SShape::Rectangle("all", 0, 0, width, height), width, height}};
        const SThermalPicture drawn = Draw(series, {0, values, {}, "caption"}, {25, 26}, {.marks = marks});
        EXPECT_EQ(drawn.image.width, width * drawn.scale);
        EXPECT_LE(drawn.image.x + drawn.image.width, drawn.bar.x);
        EXPECT_LE(drawn.image.y + drawn.image.height, drawn.canvas.Height());
        EXPECT_GE(drawn.canvas.Width(), 300);
    }
}

std::vector<u8> ReadPng(const std::filesystem::path& path, png_image& image) {
    image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_TRUE(png_image_begin_read_from_file(&image, path.c_str())) << path;
    image.format = PNG_FORMAT_RGB;
    std::vector<u8> pixels(PNG_IMAGE_SIZE(image));
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
    return pixels;
}

TEST(PngWriter, ReadsBackAsDrawnInOneRangeForAll) {
    CTestFolder folder;
    SSeries series = Series(32, 16);
    std::vector<float> values(512);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>(i);
    std::vector<float> hotter = values;
    for (float& value : hotter) value += 100;

    series.frames = 2;
    EXPECT_THROW(MakeFrameWriter(folder.At("s.png"), series, {})->Encode({3, values, {}, ""}), CAppError);
    const auto several = MakeFrameWriter(folder.At("s.png"), series, {.range = std::pair(0.0f, 511.0f)});
    several->Add({3, values, {}, ""});
    several->Add({12, hotter, {}, ""});
    several->Finish();
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"s-000003.png", "s-000012.png"}));
    const SThermalPicture drawn = Draw(series, {12, hotter, {}, ""}, {0, 511});
    png_image image;
    const std::vector<u8> pixels = ReadPng(folder.At("s-000012.png"), image);
    ASSERT_EQ(image.width, static_cast<u32>(drawn.canvas.Width()));
    ASSERT_EQ(image.height, static_cast<u32>(drawn.canvas.Height()));
    const u8* next = pixels.data();
    for (int y = 0; y < drawn.canvas.Height(); ++y)
        for (int x = 0; x < drawn.canvas.Width(); ++x, next += 3)
            ASSERT_EQ((SColour{next[0], next[1], next[2]}), drawn.canvas.At(x, y));
}

TEST(PlainPicture, NumbersTellTheValues) {
    const SUnitText celsius = UnitText(TemperatureFactory, Celsius), counts = UnitText(Counts, Celsius);
    const std::tuple<SRange, SUnitText, double, double> scales[] = {
        {{20, 30}, celsius, 2e-4, 19.9998},  // 10 in 65,533 steps of 1.53e-4, rounded up
        {{-40, 25}, celsius, 1e-3, -40.001},
        {{7, 7}, celsius, 2e-10, 7 - 2e-10},
        {{0, 65535}, counts, 1, 0},
        {{-1, 70000}, counts, 2, -4}};
    for (const auto& [ends, unit, scale, offset] : scales) {
        const Json found = CPlainScale(ends, unit).Describe();
        EXPECT_NEAR(found["scale"].get<double>(), scale, scale * 1e-9);
        EXPECT_NEAR(found["offset"].get<double>(), offset, 1e-9);
    }
    const std::vector<float> values{20, 30, 25, 19, 99, kNaN};
    const std::vector<u8> status{0, 0, 32, 2, 0, 0};
    u64 beyond = 9;
    const SPngRows rows = CPlainScale({20, 30}, celsius).Rows({0, values, status, ""}, 3, beyond);
    // 1, 50001 (C351), none; 1 for what is beyond, 65535, none: each but the first less the one before it, byte by
    // byte.
    EXPECT_THAT(rows.bytes, testing::ElementsAre(1, 0, 1, 0xC3, 0x50, 0x3D, 0xAF,  //
                                                 1, 0, 1, 0xFF, 0xFE, 1, 1));
    EXPECT_EQ(beyond, 2u);
    EXPECT_TRUE(rows.grey16);
}

/// Blue, green and red of each pixel, the lowest line first, as the camera sends them.
TEST(ConvertCommand, WritesVideoInItsColours) {
    CToolFolder folder;
    WriteText(folder.At("v.raw"), std::string("\x03\x02\x01\x06\x05\x04\x30\x20\x10\xFF\x80\x01", 12));
    const Arguments convert{"convert", "v.raw", "--pixel-type", "K410 BGR (24-bit)", "--size", "2x2", "-o"};
    folder.Do(convert + Arguments{"v.png", "--plain"});
    png_image image;
    const std::vector<u8> pixels = ReadPng(folder.At("v.png"), image);
    EXPECT_THAT(pixels, testing::ElementsAre(0x10, 0x20, 0x30, 0x01, 0x80, 0xFF, 1, 2, 3, 4, 5, 6));
    EXPECT_EQ(folder.Run(convert + Arguments{"r.png", "--range", "0,9"}).status, 2);
}

TEST(ConvertCommand, PictureOptionsThatMeanNothingAreRefused) {
    CToolFolder folder;
    folder.Do({"synth", "--size", "64x48", "--family", "Plover", "-o", "f.raw"});
    const Arguments convert = Arguments{"convert", "f.raw"} + FramesOf("Plover IR (F7M0)");
    using Words = Arguments;
    for (const Words& more : {Words{"o.npy", "--zoom", "2"},
                              {"o.csv", "--isotherm", "3"},
                              {"o.tif", "--mark-extremes"},
                              {"o.npy", "--plain"},
                              {"o.png", "--range", "p9,p1"},
                              {"o.png", "--range", "p1,99"},
                              {"o.png", "--range", "p-1,p50"},
                              {"o.png", "--isotherm", "nan"},
                              {"o.png", "--zoom", "0"},
                              {"o.png", "--plain", "--zoom", "2"},
                              {"o.png", "--plain", "--range", "p1,p99"}})
        EXPECT_EQ(folder.Run(convert + Words{"-o"} + more).status, 2) << more.back();
    folder.Do(convert + Words{"-o", "o.png", "--range", "p1,p99", "--isotherm", "40"});
    const std::string png = ReadText(folder.At("o.png"));
    EXPECT_THAT(png, testing::HasSubstr("2026-01-15T12:00:00.000000Z  \\u00b7  emissivity 0.95"));
}

}  // namespace
}  // namespace ovix::app
