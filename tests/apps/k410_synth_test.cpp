#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "apps/ovix/app_error.h"
#include "apps/ovix/output/palette.h"
#include "apps/ovix/pipeline/guarded_decode.h"
#include "apps/ovix/synth/synth.h"
#include "support/byte_writer.h"

namespace ovix::app {
namespace {

constexpr GUID kF7M0 = "{76ECF27C-7517-49D1-AED0-8C429934409D}"_guid;
constexpr GUID kFNM0 = "{E97ED85F-B45C-409C-B685-0568E493A9D0}"_guid;
constexpr GUID kGigEFlipped = "{B3E83B04-FC6B-411D-B883-258685C80882}"_guid;
constexpr GUID kUYVY = "{4030E1B1-6E28-4E5C-88F7-16E54AF6A54A}"_guid;
constexpr GUID kBGR = "{036DA1C3-5794-4341-8BC1-5DEEAB52DFD5}"_guid;
constexpr GUID kMJLS = "{ADA2658E-40C0-4C31-9C44-7667B8169FF6}"_guid;

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
    test::CByteWriter expected;
    for (double t : {290.0, 300.0, 310.0, 340.0}) expected.U16(static_cast<u16>(std::lround(CountOf(t))));
    expected.U16(0).U16(16383);  // what the detector cannot measure ends at its limits
    const std::size_t container = expected.bytes.size();
    expected.U32(0x4D4B4D).PadTo(container + 64).U16(32).PadTo(container + 76).U32(128).U32(2428);
    expected.PadTo(container + 96).U16(1).U16(0).PadTo(container + 128);
    const std::size_t record = expected.bytes.size();
    const auto at = [&](std::size_t offset) -> test::CByteWriter& { return expected.PadTo(record + offset); };
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
    EXPECT_EQ(Frame(Clean(kF7M0, "plain", 3, 2), 7, kelvin), expected.bytes);
}

TEST(K410Synth, FormsDifferAsTold) {
    const std::vector<float> kelvin{290, 300, 310, 340, 320, 330};
    const std::vector<u8> plain = Frame(Clean(kF7M0, "plain", 3, 2), 0x1234, kelvin);
    const std::size_t tail = 12;

    std::vector<u8> digital = Frame(Clean(kF7M0, "digital", 3, 2), 0x1234, kelvin);
    ASSERT_EQ(digital.size(), plain.size() + 32);
    EXPECT_EQ(digital[tail + 12], 0x12);
    EXPECT_EQ(digital[tail + 13], 0x34);
    digital.erase(digital.begin() + tail, digital.begin() + tail + 32);
    EXPECT_EQ(digital, plain);
    EXPECT_EQ(Frame(Clean(kF7M0, "", 3, 2), 0, kelvin).size(), plain.size() + 32);

    const std::vector<u8> swapped = Frame(Clean(kF7M0, "plain-swapped", 3, 2), 0x1234, kelvin);
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

    const std::vector<u8> flipped = Frame(Clean(kGigEFlipped, "plain", 3, 2), 0x1234, kelvin);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(flipped[2 * i], plain[10 - 2 * i]);
        EXPECT_EQ(flipped[2 * i + 1], plain[11 - 2 * i]);
    }

    const std::vector<u8> stream = Frame(Clean(kMJLS, "jpeg-ls", 3, 2), 0x1234, kelvin);
    const std::size_t length = std::size_t{stream[0]} << 24 | stream[1] << 16 | stream[2] << 8 | stream[3];
    EXPECT_EQ(stream[4], 0xFF);
    EXPECT_EQ(stream[5], 0xD8);  // the start of an image
    EXPECT_TRUE(
        std::equal(stream.begin() + 4 + static_cast<long>(length), stream.end(), plain.begin() + tail, plain.end()));
}

TEST(K410Synth, VideoShowsColdDarkAndHotBright) {
    const std::vector<float> kelvin{283.15f, 283.15f, 358.15f, 358.15f};  // a cold line above a hot one
    const std::vector<u8> bgr = Frame(Clean(kBGR, "", 2, 2), 0, kelvin);
    EXPECT_EQ(bgr, (std::vector<u8>{0xA4, 0xFF, 0xFC, 0xA4, 0xFF, 0xFC, 4, 0, 0, 4, 0, 0}));
    const std::vector<u8> uyvy = Frame(Clean(kUYVY, "", 2, 2), 0, kelvin);
    ASSERT_EQ(uyvy.size(), 8u);
    EXPECT_NEAR(uyvy[0], 130, 1);  // next to no colour
    EXPECT_EQ(uyvy[1], 16);
    EXPECT_EQ(uyvy[3], 16);
    EXPECT_GT(uyvy[5], 220);
}

TEST(K410Synth, CorrectionUndoesTheDetector) {
    SSynthOptions options{.type = kF7M0, .form = "plain", .width = 200, .height = 150, .seed = 5};
    const std::vector<float> kelvin(30'000, 310.0f);
    const auto camera = FindSynthFamily(kF7M0)->make(options);
    const std::vector<u8> frame = camera->Frame(3, kelvin);
    EXPECT_EQ(frame, FindSynthFamily(kF7M0)->make(options)->Frame(3, kelvin));
    EXPECT_NE(frame, camera->Frame(4, kelvin));

    const auto tables = camera->Correction();
    ASSERT_TRUE(tables);
    EXPECT_EQ(tables->width, 200u);
    const double wanted = CountOf(310);
    double uncorrected = 0;
    u32 bad = 0;
    for (u32 i = 0; i < 30'000; ++i) {
        const u32 from = tables->map[i];
        ASSERT_LT(from, 30'000u);
        EXPECT_EQ(tables->mask[from], 0) << i;
        bad += tables->mask[i];
        const double raw = frame[2 * i] + 256.0 * frame[2 * i + 1];
        const double good = frame[2 * from] + 256.0 * frame[2 * from + 1];
        EXPECT_NEAR(good * tables->gain[from] + tables->offset[from], wanted, 8) << i;
        uncorrected = std::max(uncorrected, std::abs(raw - wanted));
    }
    EXPECT_GT(uncorrected, 1000);  // a stuck pixel
    EXPECT_GE(bad, 6u);
    EXPECT_LE(bad, 40u);

    EXPECT_FALSE(FindSynthFamily(kF7M0)->make(Clean(kF7M0, "", 8, 8))->Correction());
    // Too small for a neighbour: nothing is stuck.
    EXPECT_EQ(FindSynthFamily(kF7M0)
                  ->make({.type = kF7M0, .form = "", .width = 1, .height = 1})
                  ->Frame(0, {&kelvin[0], 1})
                  .size(),
              2u + 32 + 128 + 2428);
}

/// The pixels that the library's decoder finds, and what it says of the frame.
std::vector<u8> Decoded(const SSynthForm& form, std::vector<u8> frame, reduce::CReduceObjectArray& objects) {
    CGuardedDecode decoder(
        {.filter = "K410", .pixelType = form.type, .pixelTypeName = form.form, .width = 16, .height = 12});
    decoder.Decode(frame, objects);
    const u8* pixels = static_cast<const u8*>(decoder.Pixels().data);
    return {pixels, pixels + 192 * decoder.Form().BytesPerPixel()};
}

TEST(K410Synth, LibraryReadsAllForms) {
    std::vector<float> kelvin;
    for (int i = 0; i < 192; ++i) kelvin.push_back(284 + 0.38f * static_cast<float>(i));
    int infrared = 0;
    for (const SSynthForm& form : FindSynthFamily(kF7M0)->forms()) {
        SCOPED_TRACE(form.description);
        reduce::CReduceObjectArray objects;
        const std::vector<u8> pixels =
            Decoded(form, Frame(Clean(form.type, form.form.c_str(), 16, 12), 77, kelvin), objects);
        const auto info = objects.GetFrameInfo(0, false);
        ASSERT_TRUE(info);
        for (std::size_t i = 0; i < 192 && form.form != "video"; ++i) {
            ASSERT_NEAR(pixels[2 * i] + 256.0 * pixels[2 * i + 1], CountOf(kelvin[i]), 0.51) << i;
        }
        if (form.form == "video") {
            // Half of the pixels of the packed types bear the colour of their neighbour, which is a step away.
            for (std::size_t i = 0; i < 192; i += 2) {
                const SColour shown = PaletteColour(kelvin[i], 283.15f, 358.15f);
                ASSERT_NEAR(pixels[3 * i], shown.red, 6) << i;
                ASSERT_NEAR(pixels[3 * i + 1], shown.green, 6) << i;
                ASSERT_NEAR(pixels[3 * i + 2], shown.blue, 6) << i;
            }
            continue;
        }
        ++infrared;
        EXPECT_TRUE(info->frameFilled);
        // Some forms hold no counter that the decoder would take; it counts by itself then.
        const bool counted = form.form.starts_with("digital") || (form.form != "jpeg-ls" && form.type != kFNM0);
        EXPECT_EQ(info->frameNumber, counted ? 77u : 0u);
        const auto calibration = objects.Get<reduce::CCurlewFactoryCalReduceObject>(0, false);
        ASSERT_TRUE(calibration);
        EXPECT_TRUE(calibration->valid);
        EXPECT_EQ(calibration->planckR, 515000.0f);
        EXPECT_EQ(calibration->offset, 5000);
        EXPECT_EQ(calibration->imgMax, 16383);
        const auto scene = objects.GetObjectParameters(false);
        EXPECT_EQ(scene->emissivity, 0.95f);
        EXPECT_EQ(scene->relativeHumidity, 0.45f);
    }
    EXPECT_EQ(infrared, 17);
}

TEST(K410Synth, RefusesWhatItDoesNotMake) {
    EXPECT_EQ(FindSynthFamily(rootIRType), nullptr);
    for (const SSynthOptions& options : {Clean(kF7M0, "jpeg-ls", 8, 8), Clean(kF7M0, "plain", 0, 8)}) {
        EXPECT_THROW(FindSynthFamily(kF7M0)->make(options), CAppError);
    }
}

}  // namespace
}  // namespace ovix::app
