#include <gtest/gtest.h>

#include "reduce/filters/dunlin_reduce_objects.h"
#include "support/dunlin_frames.h"
#include "support/frame_reader.h"

namespace ovix::reduce {
namespace {

using namespace test;

SFrameReader Reader(u16 width = 2, u16 height = 1) { return {L"Lapwing", kLapwing, width, height}; }

/// 2 x 1 pixels; every byte of the trailer is its offset unless a line says otherwise.
Bytes FrameByBytes() {
    Bytes trailer(96);
    for (std::size_t i = 0; i < 96; ++i) trailer[i] = static_cast<u8>(i);
    const auto put = [&](std::size_t at, const Bytes& bytes) {
        std::copy(bytes.begin(), bytes.end(), trailer.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(0, {'T', 'O', 'M', 'Z'});
    put(8, {0x40, 0xE2, 0x01, 0, 0, 0, 0, 0});  // 123456 microseconds
    put(16, {1, 2, 3, 0xF4});                   // counter 0xF4030201
    put(20, {0xA3, 4, 0x0D, 23});               // video presets 3 and 10, 4 presets, preset 5 and a bit above, page 23
    put(24, {0x05, 0x28});                      // sensor 1: -5; bits above 11 are not its own
    put(28, {0x10, 0x00});                      // sensor 0: +16
    put(40, {0, 0, 0x9B, 0x42});                // 77.5
    put(44, {10, 0, 0, 0});                     // 10 MHz
    put(48, {0xC3, 9, 0, 0});                   // 2500 ticks, less one
    put(52, {0x48, 0xE8, 1, 0});                // 125,000 ticks
    put(56, {3, 7, 0xFA});                      // trigger input, filter position; lock-in data, lens change
    put(61, {0xF3, 60, 0});                     // the year counts; bit 0 is the application's, not the camera's; day 60
    put(67, {0x08, 0xEB, 0x01, 0});             // 125,704 microseconds
    put(71, {24});                              // 2024
    put(82, {0x1E});                            // lock-in maximum, signal number 7
    return Join({{0xFF, 0xFF, 0x34, 0x12}, trailer});
}

TEST(Lapwing, FrameByBytes) {
    SFrameReader reader = Reader();
    const Bytes frame = FrameByBytes();
    EXPECT_TRUE(reader.Check(frame));
    const auto info = reader.objects.Get<CDunlinFrameInfoReduceObject>(5, true);
    info->inputSignalGrabbed = 99;
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_EQ(reader.pixels, (std::vector<u16>{0xFFFF, 0x1234}));
    EXPECT_EQ(reader.Info()->preset, 5);
    EXPECT_EQ(reader.Info()->frameNumber, 0xF4030201u);
    EXPECT_EQ(reader.Info()->time.GetTimestamp(), 1'234'560);
    // 0x4D4C4B4A, 0x51504F4E and 0x5554, 0x5756, 0x5958, 0x5B5A: the fields that are their offsets.
    EXPECT_EQ(reader.Values(),
              "IntegrationTime=250 Float/float, FrameRate=80 Float/float, VideoPreset=163 Integer/int, "
              "NumPresets=4 Integer/int, DetectorTemp=77.5 Float/float, SensorTemp[0]=274.15 Float/float, "
              "SensorTemp[1]=272.8375 Float/float, MasterClock=10 Float/float, FilterPosition=7 Integer/int, "
              "ExternalTrigger=F Flag/ascii, TriggerInput=T Flag/ascii, DataDisable=F Flag/ascii, "
              "PageIndex=23 Integer/int, LensChange=T Flag/ascii, LockinPeriod=1296845642 Integer/int, "
              "LockinPhase=1364217678 Integer/int, LockinMin=F Flag/ascii, LockinMax=T Flag/ascii, "
              "SignalNumber=7 Integer/int, LockinMeanValue[0]=21844 Integer/int, LockinMeanValue[1]=22358 Integer/int, "
              "LockinMeanValue[2]=22872 Integer/int, LockinMeanValue[3]=23386 Integer/int, ");
    const auto cal = reader.objects.Get<CDunlinFactoryCalReduceObject>(5, false);
    EXPECT_TRUE(cal->detectorTemp == 77.5f && cal->integrationTime == 250.0f);
    EXPECT_FALSE(info->valid || cal->valid || info->IsPerFrame());
    // Lower video preset and active preset count from 1; nobody wrote the 99.
    EXPECT_EQ(FieldsOf(*info),
              "3 123456 4093837825 4 4 10 14 77.5 274.15 272.837 0 0 10 250 80 7 0 0 23 1 99 3 18760 "
              "1296845642 1364217678 0 1 7 21844 22358 22872 23386 242 60 64 65 66 125704 24 ");
}

TEST(Lapwing, TimeIsThatOfTheClockThatTheApplicationChooses) {
    SFrameReader reader = Reader();
    reader.objects.Get<CDunlinCameraInfoReduceObject>(-1, true)->useCameraClock = true;
    Bytes frame = FrameByBytes();
    Patch(frame, 4 + 64, 0x090807, 3);
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_STREQ(reader.Info()->time.Format(L"%Y-%m-%d %H:%M:%S.%f"), L"2024-02-29 07:08:09.125704");
    EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(5, false)->timeFlags, 0xF3);
    EXPECT_EQ(reader.Light(frame).time.GetTimestamp(), 1'234'560);  // the time stamp all the same
    Patch(frame, 4 + 61, 0x04, 1);                                  // the year does not count
    reader.Info()->time.Set(L"2021-05-05");
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_STREQ(reader.Info()->time.Format(L"%Y-%m-%d"), L"2021-03-01");
}

TEST(Lapwing, PresetOfTheFrameBeforeServesAFrameWithoutSignature) {
    SFrameReader reader = Reader();
    const Bytes frame = TomzFrame({1, 2}, {.activePreset = 0x0A});
    ASSERT_TRUE(reader.Parse(frame));
    const auto light = reader.Light(frame);
    EXPECT_TRUE(light.hasPreset && light.hasTime && light.hasCounter && light.hasAll);
    EXPECT_TRUE(reader.preset == 2 && light.preset == 2 && light.presetOfAll == 10);
    EXPECT_TRUE(light.counter == 0x12345678 && light.counterOfAll == light.counter);
    EXPECT_EQ(light.timeOfAll.GetTimestamp(), 130'000'000'000'000'000);

    Bytes dark = TomzFrame({3, 4}, {.signature = "tomz", .activePreset = 4});
    Patch(dark, 4 + 48, 79'999, 4);
    Patch(dark, 4 + 57, 8, 1);
    EXPECT_TRUE(reader.Check(dark));
    ASSERT_TRUE(reader.Parse(dark));
    EXPECT_TRUE(reader.preset == 2 && reader.pixels[1] == 4);
    EXPECT_TRUE(reader.Info()->GetValue(L"IntegrationTime") == L"1000");  // that of the calibration, which stays
    EXPECT_TRUE(reader.Info()->GetValue(L"FilterPosition") == L"8");
    EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(2, false)->integrationTime, 1000);
    const auto left = reader.Light(dark);
    EXPECT_TRUE(left.hasPreset && left.preset == 2 && !left.hasTime && !left.hasCounter && !left.hasAll);

    Bytes senseless = TomzFrame({3, 4}, {});
    Patch(senseless, 4 + 44, 0, 4);  // no clock
    Patch(senseless, 4 + 8, ~u64{0}, 8);
    ASSERT_TRUE(reader.Parse(senseless));
    EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(2, false)->integrationTime, -2147483647 - 1);
    EXPECT_EQ(reader.Info()->time.GetTimestamp(), -10);
}

/// Three frames of 60 x 2 pixels: 240 bytes of pixels and a line of 120 bytes each.
TEST(Lapwing, PacketsGiveTheirFramesAndTheFirstTrigger) {
    const SFrameReader reader = Reader(60, 2);
    const Bytes quiet = TomzFrame(Ramp(120), {}, 360), fired = TomzFrame(Ramp(120, 9), {.triggerInput = 1}, 360);
    const Bytes packet = Join({quiet, fired, fired});
    const struct {
        int size, count, index, room, stored;  ///< bytes stored; 0 where it refuses
    } cases[] = {
        {1080, 3, 1, 360, 360}, {1080, 3, 1, 500, 360}, {1080, 3, 2, 100, 100}, {1080, 3, 3, 360, 0},
        {1079, 3, 2, 360, 0},   {1079, 3, 2, 359, 359}, {963, 3, 0, 10, 0},     {964, 3, 0, 10, 10},
        {244, 1, 0, 244, 244},  {243, 1, 0, 10, 0},     {1080, 0, 0, 360, 0},   {1080, 65535, 0, 360, 0},
    };
    for (const auto& c : cases) {
        Bytes expected(packet.begin() + 360 * c.index, packet.begin() + 360 * c.index + c.stored);
        if (c.stored) expected.resize(static_cast<std::size_t>(c.room), 0xCC);
        EXPECT_EQ(reader.Store({packet.begin(), packet.begin() + c.size}, static_cast<u32>(c.count),
                               static_cast<u32>(c.index), static_cast<std::size_t>(c.room)),
                  expected)
            << c.size << " " << c.index << " " << c.room;
    }
    EXPECT_EQ(reader.Trigger(packet, 3), 1);
    EXPECT_EQ(reader.Trigger(packet, 1), -1);
    EXPECT_EQ(reader.Trigger(packet, 0), -1);
    EXPECT_EQ(reader.Trigger(packet, 4), std::nullopt);
    // Lines too narrow for the input's byte, and none at all.
    EXPECT_EQ(Reader(2, 2).Trigger(Bytes(3 * 12, 1), 3), std::nullopt);
    EXPECT_EQ(Reader(0, 5).Trigger(Bytes(56, 1), 1), std::nullopt);
    EXPECT_EQ(Reader(0, 5).Trigger(Bytes(57, 1), 1), 0);
}

}  // namespace
}  // namespace ovix::reduce
