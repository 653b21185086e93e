#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "reduce/filters/dunlin_reduce_objects.h"
#include "support/dunlin_frames.h"
#include "support/frame_reader.h"

namespace ovix::reduce {
namespace {

using namespace test;

SFrameReader WrenReader(u16 width = 2, u16 height = 1) { return {L"Wren", kWren, width, height}; }

/// 2 x 1 pixels; every byte of the record is its offset, but for the counter and what a line says.
Bytes NativeByBytes() {
    Bytes frame = PruvBuffer({0xC123, 0xFFFF}, {{.dataDisable = 64, .triggerInput = 68, .timeFlags = 0x45}});
    const auto put = [&](std::size_t at, u64 value) { Patch(frame, 8 + at, value, 4); };
    put(6, 123456), put(10, 0);                                     // microseconds
    put(30, 0x429B0000), put(34, 0x3F800000), put(38, 0x40000000);  // 77.5, 1, 2
    put(42, 0x40400000), put(46, 0x40800000), put(50, 0x40A00000);  // 3, 4, 5
    put(54, 0xC479C000), put(58, 0x42200000);                       // -999, 40
    put(75, 125'704);                                               // microseconds of the second
    return frame;
}

TEST(Wren, NativeFrameByBytes) {
    SFrameReader reader = WrenReader();
    const Bytes frame = NativeByBytes();
    ASSERT_TRUE(reader.Check(frame) && reader.Parse(frame));
    EXPECT_EQ(reader.preset, 3);  // of the first pixel, not the record's
    EXPECT_EQ(reader.pixels, (std::vector<u16>{0x0123, 0x3FFF}));
    EXPECT_EQ(reader.Info()->preset, 3);
    EXPECT_EQ(reader.Info()->frameNumber, 2u);  // the low half of the counter
    EXPECT_EQ(reader.Values(),
              "IntegrationTime=-999 Float/float, FrameRate=40 Float/float, VideoPreset=6424, NumPresets=5910, "
              "DetectorTemp=77.5 Float/float, SensorTemp[0]=1 Float/float, SensorTemp[1]=2 Float/float, "
              "SensorTemp[2]=3 Float/float, SensorTemp[3]=4 Float/float, MasterClock=5 Float/float, "
              "FilterPosition=62, ExternalTrigger=T Flag/ascii, TriggerInput=T Flag/ascii, DataDisable=T "
              "Flag/ascii, PageIndex=65, LensChange=T Flag/ascii, InputSignalGrabb=T Flag/ascii, "
              "LockinPeriod=1431589714, LockinPhase=1498961750, LockinMin=T Flag/ascii, LockinMax=T Flag/ascii, "
              "SignalNumber=92, LockinMeanValue[0]=24157, LockinMeanValue[1]=24671, LockinMeanValue[2]=25185, "
              "LockinMeanValue[3]=25699, ");
    EXPECT_EQ(reader.objects.Get<CDunlinFactoryCalReduceObject>(3, false)->integrationTime, -999.0f);
    EXPECT_EQ(FieldsOf(*reader.objects.Get<CDunlinFrameInfoReduceObject>(3, false)),
              "84148994 123456 4294967298 5910 6424 6938 7452 77.5 1 2 3 4 5 -999 40 62 63 64 65 66 67 68 20816 "
              "1431589714 1498961750 90 91 92 24157 24671 25185 25699 69 18246 72 73 74 125704 79 ");
    // Day 18246 and 72:73:74 roll over; time flags 0x45 take the time code but not its year.
    reader.Info()->time.Set(L"2024-05-05");
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_STREQ(reader.Info()->time.Format(L"%Y-%m-%d %H:%M:%S.%f"), L"2073-12-17 01:14:14.125704");
    const auto light = reader.Light(frame);
    EXPECT_TRUE(light.counter == 0x100000002 && light.counterOfAll == light.counter && light.presetOfAll == 3);
}

TEST(Wren, OlderTrailerIsConverted) {
    SFrameReader reader = WrenReader();
    STomzTrailer trailer{.olderWren = true, .triggerInput = 2, .flags = 0b1111, .timeFlags = 1};
    const Bytes frame = TomzFrame({0x4001, 0x8002}, trailer);
    ASSERT_TRUE(reader.Check(frame) && reader.Parse(frame));
    EXPECT_EQ(reader.preset, 1);
    EXPECT_EQ(reader.pixels, (std::vector<u16>{1, 2}));
    EXPECT_STREQ(reader.Info()->time.Format(L"%Y %j:%(irig)"), L"2026 200:13:14:15.678901");
    EXPECT_EQ(reader.Light(frame).time, reader.Info()->time);
    const auto info = reader.objects.Get<CDunlinFrameInfoReduceObject>(1, false);
    EXPECT_EQ(FieldsOf(*info),
              "3 13000000000000000 305419896 3 3 5 2 77.5 295.5 296.25 297 298 4e+07 1000 50 4 1 1 9 1 "
              "0 2 4369 22222 33333 0 1 5 41 42 43 44 1 200 13 14 15 678901 26 ");
    EXPECT_EQ(reader.Info()->extra.nValues(), 26u);  // those of a native frame
    EXPECT_TRUE(reader.Info()->GetValue(L"VideoPreset") == L"3");

    trailer.flags = trailer.timeFlags = 0;  // no lock-in data
    ASSERT_TRUE(reader.Parse(TomzFrame({0x4001, 0x8002}, trailer)));
    EXPECT_EQ(FieldsOf(*info),
              "1 13000000000000000 305419896 3 3 5 2 77.5 295.5 296.25 297 298 4e+07 1000 50 4 0 0 9 0 "
              "0 2 0 0 0 0 0 0 0 0 0 0 0 200 13 14 15 678901 26 ");
    EXPECT_EQ(reader.Info()->time.GetTimestamp(), 130'000'000'000'000'000);
}

TEST(Wren, DamagedTrailersAreRefusedButByTheLightOperations) {
    const std::tuple<STomzTrailer, bool, u64, const wchar_t*> cases[] = {
        // the light operations; the fault
        {{.version = 2}, true, 8, L"2"},
        {{.words = 47}, true, 10, L"47"},
        {{.checksumError = 1}, true, 98, nullptr},
        {{.signature = "TOMX"}, false, 4, L"0x584D4F54"}};
    for (const auto& [trailer, hasLight, offset, found] : cases) {
        SCOPED_TRACE(offset);
        SFrameReader reader = WrenReader();
        const Bytes frame = TomzFrame({0xC001, 2}, trailer);
        EXPECT_TRUE(!reader.Parse(frame) && reader.objects.size() == 0);
        const auto light = reader.Light(frame);
        EXPECT_TRUE(light.hasPreset && light.preset == 3 && light.hasCounter == hasLight && light.hasTime == hasLight &&
                    light.hasAll == hasLight);
        SFrameFault fault;
        EXPECT_FALSE(reader.Check(frame, &fault));
        EXPECT_EQ(fault.offset, offset);
        EXPECT_TRUE(!found || fault.found == found) << fault.found.GetUTF8();
    }
}

TEST(Wren, OlderCounterGoesOnBeyondThirtyTwoBits) {
    const std::pair<std::vector<u32>, u64> cases[] = {{{0xFFFFFFFE, 1}, 0x1'0000'0001},
                                                      {{0x7FFFFFFF, 1}, 1},
                                                      {{0x80000000, 1}, 1},  // one short of what counts as high
                                                      {{0x80000001, 1}, 0x1'0000'0001},
                                                      {{0xFFFFFFFE, 1, 0xFFFFFFFF, 0xFFFFFFFF, 0}, 0x2'0000'0000}};
    for (const auto& [counters, last] : cases) {
        SFrameReader reader = WrenReader();
        for (const u32 counter : counters) {
            const Bytes frame = TomzFrame({1, 2}, {.counter = counter});
            EXPECT_EQ(reader.Light(frame).counter, counter);  // neither extends nor counts
            EXPECT_TRUE(reader.Parse(frame) && reader.Info()->frameNumber == counter);
        }
        EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(0, false)->frameCounter, last);
    }
}

TEST(Wren, StoresFramesOfNativePackets) {
    const std::vector<u16> pixels = Ramp(18, 14);  // three images of 3 x 2
    const SPruvRecord plain, fired{.counter = 77, .triggerInput = 1}, disabled{.dataDisable = 1};
    const Bytes packet = PruvBuffer(pixels, {plain, fired, disabled}), cut(packet.begin(), packet.end() - 1);
    Bytes second = PruvBuffer({pixels.begin() + 6, pixels.begin() + 12}, {fired});
    SFrameReader reader = WrenReader(3, 2);
    EXPECT_TRUE(reader.Check(second) && reader.Parse(second));  // a frame by itself
    EXPECT_EQ(reader.Store(packet, 3, 1, 125), second);
    second.resize(130, 0xCC);
    EXPECT_EQ(reader.Store(packet, 3, 1, 130), second);
    const std::tuple<Bytes, u32, u32, u32> refusals[] = {
        {packet, 3, 2, 125},  // disabled
        {packet, 3, 1, 124}, {packet, 3, 3, 125}, {packet, 4, 0, 125}, {cut, 3, 0, 125}, {Bytes(15), 1, 0, 125}};
    for (const auto& [from, count, index, room] : refusals) EXPECT_TRUE(reader.Store(from, count, index, room).empty());
    EXPECT_EQ(reader.Trigger(packet, 3), 1);
    EXPECT_EQ(reader.Trigger(PruvBuffer(Ramp(12), {plain, plain}), 2), -1);
    EXPECT_EQ(reader.Trigger(cut, 3), std::nullopt);
    reader.width = reader.height = 65535;
    EXPECT_TRUE(reader.Store(packet, 65535, 0, 125).empty() && !reader.Trigger(packet, 65535));
}

TEST(Wren, OlderFramesAreStoredWithTheLinesOfTheirTrailer) {
    const std::tuple<u16, u16, std::size_t> cases[] = {
        // and the bytes that they come to
        {640, 1, 2 * 1280}, {32, 2, 4 * 64}, {48, 1, 2 * 96}, {47, 1, 3 * 94}, {1, 1, 49 * 2},
    };
    for (const auto& [width, height, stride] : cases) {
        const SFrameReader reader = WrenReader(width, height);
        const Bytes one = TomzFrame(Ramp(std::size_t{width} * height), {.olderWren = true}, stride);
        Bytes two = one;
        two[0] = 0xAB;
        const Bytes packet = Join({one, two});
        EXPECT_EQ(reader.Store(packet, 2, 1, stride), two) << width;
        EXPECT_TRUE(reader.Store(packet, 2, 1, stride - 1).empty() && reader.Store(packet, 2, 2, stride).empty() &&
                    reader.Store({packet.begin(), packet.end() - 1}, 2, 1, stride).empty());
    }
    EXPECT_TRUE(WrenReader(0, 3).Store(TomzFrame({}, {}, 200), 1, 0, 200).empty());  // no lines to count
}

SFrameReader LapwingReader(u16 width = 2, u16 height = 1) { return {L"Lapwing", kLapwing, width, height}; }

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
    SFrameReader reader = LapwingReader();
    const Bytes frame = FrameByBytes();
    EXPECT_TRUE(reader.Check(frame));
    const auto info = reader.objects.Get<CDunlinFrameInfoReduceObject>(5, true);
    info->inputSignalGrabbed = 99;
    info->sensorTemp[2] = info->sensorTemp[3] = 99;  // these two the camera lacks
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_EQ(reader.pixels, (std::vector<u16>{0xFFFF, 0x1234}));
    EXPECT_EQ(reader.Info()->preset, 5);
    EXPECT_EQ(reader.Info()->frameNumber, 0xF4030201u);
    EXPECT_EQ(reader.Info()->time.GetTimestamp(), 1'234'560);
    // 0x4D4C4B4A, 0x51504F4E and 0x5554, 0x5756, 0x5958, 0x5B5A: the fields that are their offsets.
    EXPECT_EQ(reader.Values(),
              "IntegrationTime=250 Float/float, FrameRate=80 Float/float, VideoPreset=163, NumPresets=4, "
              "DetectorTemp=77.5 Float/float, SensorTemp[0]=274.15 Float/float, SensorTemp[1]=272.8375 Float/float, "
              "MasterClock=10 Float/float, FilterPosition=7, ExternalTrigger=F Flag/ascii, TriggerInput=T "
              "Flag/ascii, DataDisable=F Flag/ascii, PageIndex=23, LensChange=T Flag/ascii, "
              "LockinPeriod=1296845642, LockinPhase=1364217678, LockinMin=F Flag/ascii, LockinMax=T Flag/ascii, "
              "SignalNumber=7, LockinMeanValue[0]=21844, LockinMeanValue[1]=22358, LockinMeanValue[2]=22872, "
              "LockinMeanValue[3]=23386, ");
    const auto cal = reader.objects.Get<CDunlinFactoryCalReduceObject>(5, false);
    EXPECT_TRUE(cal->detectorTemp == 77.5f && cal->integrationTime == 250.0f);
    EXPECT_FALSE(info->valid || cal->valid || info->IsPerFrame());
    // Lower video preset and active preset count from 1; nobody wrote the 99.
    EXPECT_EQ(FieldsOf(*info),
              "3 123456 4093837825 4 4 10 14 77.5 274.15 272.837 0 0 10 250 80 7 0 0 23 1 99 3 18760 "
              "1296845642 1364217678 0 1 7 21844 22358 22872 23386 242 60 64 65 66 125704 24 ");
}

TEST(Lapwing, TimeIsThatOfTheClockThatTheApplicationChooses) {
    SFrameReader reader = LapwingReader();
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
    SFrameReader reader = LapwingReader();
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
    const SFrameReader reader = LapwingReader(60, 2);
    const Bytes quiet = TomzFrame(Ramp(120), {}, 360), fired = TomzFrame(Ramp(120, 9), {.triggerInput = 1}, 360);
    const Bytes packet = Join({quiet, fired, fired});
    const std::tuple<int, u32, u32, u32, int> cases[] = {
        // size, count, index, room; bytes stored, 0 where it refuses
        {1080, 3, 1, 360, 360},  {1080, 3, 1, 500, 360}, {1080, 3, 2, 100, 100}, {1080, 3, 3, 360, 0},
        {1080, 2, 2, 360, 0},    {1079, 3, 2, 360, 0},   {1079, 3, 2, 359, 359}, {963, 3, 0, 10, 0},
        {964, 3, 0, 10, 10},     {244, 1, 0, 244, 244},  {243, 1, 0, 10, 0},     {1080, 0, 0, 360, 0},
        {1080, 65535, 0, 360, 0}};
    for (const auto& [size, count, index, room, stored] : cases) {
        const auto from = packet.begin() + 360 * i64{index};
        Bytes expected(from, from + stored);
        if (stored) expected.resize(room, 0xCC);
        EXPECT_EQ(reader.Store({packet.begin(), packet.begin() + size}, count, index, room), expected)
            << size << ' ' << index << ' ' << room;
    }
    EXPECT_EQ(reader.Trigger(packet, 3), 1);
    EXPECT_EQ(reader.Trigger(packet, 1), -1);
    EXPECT_EQ(reader.Trigger(packet, 0), -1);
    EXPECT_EQ(reader.Trigger(packet, 4), std::nullopt);
    // Lines too narrow for the input's byte, and none at all.
    EXPECT_EQ(LapwingReader(2, 2).Trigger(Bytes(3 * 12, 1), 3), std::nullopt);
    EXPECT_EQ(LapwingReader(0, 5).Trigger(Bytes(56, 1), 1), std::nullopt);
    EXPECT_EQ(LapwingReader(0, 5).Trigger(Bytes(57, 1), 1), 0);
}

}  // namespace
}  // namespace ovix::reduce
