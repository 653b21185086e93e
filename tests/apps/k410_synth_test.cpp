#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "apps/ovix/app_error.h"
#include "apps/ovix/synth/synth.h"
#include "support/k410_frames.h"

namespace ovix::app {
namespace {

using namespace test;

std::vector<u8> Frame(SSynthOptions options, u64 number, const std::vector<float>& kelvin) {
    return FindSynthFamily(options.type)->make(options)->Frame(number, kelvin);
}

/// An even detector without noise.
SSynthOptions Clean(const GUID& type, const char* form, u16 width, u16 height) {
    return {.type = type,
            .form = form,
            .width = width,
            .height = height,
            .noise = false,
            .fixedPattern = false,
            .badPixels = false};
}

/// A count by the formulas of the camera's data sheet, with the constants that it sends: Planck's curve, the air, the
/// surroundings that the object mirrors.
double CountOf(double kelvin) {
    const auto signal = [](double t) { return 515000 / (std::exp(1428 / t) - 1); };
    const double t = 21.0;  // of the air, degrees Celsius
    const double water = std::exp(1.5587 + 0.06939 * t - 0.00027816 * t * t + 6.8455e-7 * t * t * t);
    const double w = std::sqrt(water * 0.45);
    const double s = std::sqrt(2.0);
    const double tau = 1.9 * std::exp(-s * (0.006569 - 0.002276 * w)) - 0.9 * std::exp(-s * (0.01262 - 0.00667 * w));
    const double arrives = 0.95 * tau * signal(kelvin) + 0.05 * tau * signal(295.15) + (1 - tau) * signal(294.15);
    return arrives / 0.5 - 5000;
}

TEST(K410Synth, PlainFrameByteByByte) {
    const std::vector<float> kelvin{290, 300, 310, 340, 200, 500};
    CByteWriter expected;
    for (double t : {290.0, 300.0, 310.0, 340.0}) expected.U16(static_cast<u16>(std::lround(CountOf(t))));
    expected.U16(0).U16(16383);  // what the detector cannot measure ends at its limits
    const std::size_t container = expected.bytes.size();
    expected.U32(0x4D4B4D).PadTo(container + 64).U16(32).PadTo(container + 76).U32(128).U32(2428);
    expected.PadTo(container + 96).U16(1).U16(0).PadTo(container + 128);
    const std::size_t record = expected.bytes.size();
    const auto at = [&](std::size_t offset) -> CByteWriter& { return expected.PadTo(record + offset); };
    at(0).U16(2).U16(3).U16(2);
    at(12).U16(2);
    at(16).U16(1);
    at(24).U16(7);
    at(32).F32(0.95f).F32(2).F32(295.15f).F32(294.15f).F32(293.15f).F32(1).F32(0).F32(0.45f);
    at(88).F32(515000).F32(1428).F32(1);
    at(112).F32(0.006569f).F32(0.01262f).F32(-0.002276f).F32(-0.00667f).F32(1.9f);
    at(144).F32(373.15f).F32(263.15f).F32(365.15f).F32(271.15f).F32(363.15f).F32(273.15f);
    at(776).U32(5000).F32(0.5f).U16(16).U16(16383).U16(0);
    at(900).U32(1768478400).U32(140);  // seven frames of 20 ms after noon of 15 January 2026
    at(2428);
    EXPECT_EQ(Frame(Clean(kK410F7M0, "plain", 3, 2), 7, kelvin), expected.bytes);
}

TEST(K410Synth, FormsDifferAsTold) {
    const std::vector<float> kelvin{290, 300, 310, 340, 320, 330};
    const std::vector<u8> plain = Frame(Clean(kK410F7M0, "plain", 3, 2), 0x1234, kelvin);
    const std::size_t tail = 12;

    std::vector<u8> digital = Frame(Clean(kK410F7M0, "digital", 3, 2), 0x1234, kelvin);
    ASSERT_EQ(digital.size(), plain.size() + 32);
    EXPECT_EQ(digital[tail + 12], 0x12);
    EXPECT_EQ(digital[tail + 13], 0x34);
    digital.erase(digital.begin() + tail, digital.begin() + tail + 32);
    EXPECT_EQ(digital, plain);
    EXPECT_EQ(Frame(Clean(kK410F7M0, "", 3, 2), 0, kelvin).size(), plain.size() + 32);

    const std::vector<u8> swapped = Frame(Clean(kK410F7M0, "plain-swapped", 3, 2), 0x1234, kelvin);
    ASSERT_EQ(swapped.size(), plain.size());
    const std::size_t record = tail + 128;
    const struct {
        std::size_t offset;
        std::size_t width;
    } turned[] = {{0, 2},           {10, 2},           {record, 2},       {record + 24, 2}, {record + 32, 4},
                  {record + 88, 4}, {record + 776, 4}, {record + 786, 2}, {record + 900, 4}};
    for (const auto& field : turned) {
        std::vector<u8> bytes(swapped.begin() + static_cast<long>(field.offset),
                              swapped.begin() + static_cast<long>(field.offset + field.width));
        std::reverse(bytes.begin(), bytes.end());
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), plain.begin() + static_cast<long>(field.offset)))
            << field.offset;
    }
    EXPECT_EQ(swapped[tail + 98], 1);
    EXPECT_TRUE(std::equal(plain.begin() + tail, plain.begin() + tail + 98, swapped.begin() + tail));

    const std::vector<u8> flipped = Frame(Clean(kK410GigEFlipped, "plain", 3, 2), 0x1234, kelvin);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(flipped[2 * i], plain[10 - 2 * i]);
        EXPECT_EQ(flipped[2 * i + 1], plain[11 - 2 * i]);
    }

    const std::vector<u8> stream = Frame(Clean(kK410MJLS, "jpeg-ls", 3, 2), 0x1234, kelvin);
    const std::size_t length = std::size_t{stream[0]} << 24 | stream[1] << 16 | stream[2] << 8 | stream[3];
    EXPECT_EQ(stream[4], 0xFF);
    EXPECT_EQ(stream[5], 0xD8);  // the start of an image
    EXPECT_TRUE(
        std::equal(stream.begin() + 4 + static_cast<long>(length), stream.end(), plain.begin() + tail, plain.end()));
}

TEST(K410Synth, VideoShowsColdDarkAndHotBright) {
    const std::vector<float> kelvin{283.15f, 283.15f, 358.15f, 358.15f};  // a cold line above a hot one
    const std::vector<u8> bgr = Frame(Clean(kK410BGR, "", 2, 2), 0, kelvin);
    EXPECT_EQ(bgr, (std::vector<u8>{0xA4, 0xFF, 0xFC, 0xA4, 0xFF, 0xFC, 4, 0, 0, 4, 0, 0}));
    const std::vector<u8> uyvy = Frame(Clean(kK410UYVY, "", 2, 2), 0, kelvin);
    ASSERT_EQ(uyvy.size(), 8u);
    EXPECT_NEAR(uyvy[0], 130, 1);  // next to no colour
    EXPECT_EQ(uyvy[1], 16);
    EXPECT_EQ(uyvy[3], 16);
    EXPECT_GT(uyvy[5], 220);
    const std::vector<u8> yuy2 = Frame(Clean(kK410YUY2, "", 2, 2), 0, kelvin);
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(yuy2.at(i), uyvy[i ^ 1]) << i;
}

/// That they undo the detector shows in the temperatures of the demonstration.
TEST(K410Synth, CorrectionPointsToGoodPixels) {
    const SSynthOptions options{.type = kK410F7M0, .form = "plain", .width = 200, .height = 150, .seed = 5};
    const std::vector<float> kelvin(30'000, 310.0f);
    const auto camera = FindSynthFamily(kK410F7M0)->make(options);
    const std::vector<u8> frame = camera->Frame(3, kelvin);
    EXPECT_EQ(frame, FindSynthFamily(kK410F7M0)->make(options)->Frame(3, kelvin));
    EXPECT_NE(frame, camera->Frame(4, kelvin));
    const auto tables = camera->Correction();
    ASSERT_TRUE(tables);
    u32 bad = 0;
    for (u32 i = 0; i < 30'000; ++i) {
        ASSERT_LT(tables->map[i], 30'000u);
        EXPECT_EQ(tables->mask[tables->map[i]], 0) << i;
        bad += tables->mask[i];
    }
    EXPECT_GE(bad, 6u);
    EXPECT_LE(bad, 40u);

    EXPECT_FALSE(FindSynthFamily(kK410F7M0)->make(Clean(kK410F7M0, "", 8, 8))->Correction());
    // Too small for a neighbour: nothing is stuck.
    const auto tiny = FindSynthFamily(kK410F7M0)->make({.type = kK410F7M0, .form = "", .width = 1, .height = 1});
    EXPECT_EQ(tiny->Frame(0, {&kelvin[0], 1}).size(), 2u + 32 + 128 + 2428);
}

TEST(K410Synth, RefusesWhatItDoesNotMake) {
    EXPECT_EQ(FindSynthFamily(rootIRType), nullptr);
    for (const SSynthOptions& options : {Clean(kK410F7M0, "jpeg-ls", 8, 8), Clean(kK410F7M0, "plain", 0, 8)}) {
        EXPECT_THROW(FindSynthFamily(kK410F7M0)->make(options), CAppError);
    }
}

}  // namespace
}  // namespace ovix::app
