#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "reduce/filters/dunlin_camera_info_reduce_object.h"
#include "reduce/filters/dunlin_factory_cal_reduce_object.h"
#include "reduce/filters/dunlin_frame_info_reduce_object.h"
#include "support/dunlin_frames.h"
#include "support/frame_reader.h"

namespace ovix::reduce {
namespace {

using namespace test;

CFrameReader Reader(u16 width = 2, u16 height = 1) { return {L"Lapwing", kLapwing, width, height}; }

/// 2 x 1 pixels; every byte of the trailer is its offset unless a line says otherwise.
Bytes FrameByBytes() {
    Bytes trailer(96);
    for (std::size_t i = 0; i < 96; ++i) trailer[i] = static_cast<u8>(i);
    const auto put = [&](std::size_t at, std::initializer_list<u8> bytes) {
        std::copy(bytes.begin(), bytes.end(), trailer.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(0, {'T', 'O', 'M', 'Z'});
    put(8, {0x40, 0xE2, 0x01, 0, 0, 0, 0, 0});  // 123456 microseconds
    put(16, {1, 2, 3, 0xF4});                   // counter 0xF4030201
    put(20, {0xA3, 4, 0x0D, 23});               // video presets 3 and 10, 4 presets, preset 5 and a bit above, page 23
    put(24, {0x05, 0x28});                      // sensor 1: -5, bits above 11 not its own
    put(28, {0x10, 0x00});                      // sensor 0: +16
    put(40, {0, 0, 0x9B, 0x42});                // 77.5
    put(44, {10, 0, 0, 0});                     // 10 MHz
    put(48, {0xC3, 9, 0, 0});                   // 2500 ticks
    put(52, {0x48, 0xE8, 1, 0});                // 125,000 ticks
    put(56, {3, 7, 0xFA});                      // trigger input, filter position; lock-in data, lens change
    put(61, {0xF2, 60, 0});                     // year valid; day 60
    put(67, {0x08, 0xEB, 0x01, 0});             // 125,704 microseconds
    put(71, {24});                              // 2024
    put(82, {0x1E});                            // lock-in maximum, signal number 7
    return Join({{0xFF, 0xFF, 0x34, 0x12}, trailer});
}

TEST(Lapwing, FrameByBytes) {
    CFrameReader reader = Reader();
    const Bytes frame = FrameByBytes();
    ASSERT_TRUE(reader.Check(frame));
    EXPECT_FALSE(reader.Check(Bytes(frame.begin(), frame.end() - 1)));
    const auto known = reader.objects.Get<CDunlinFrameInfoReduceObject>(5, true);
    known->inputSignalGrabbed = 9;
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_EQ(reader.pixels, (std::vector<u16>{0xFFFF, 0x1234}));
    EXPECT_EQ(reader.preset, 5);
    EXPECT_EQ(reader.Info()->preset, 5);
    EXPECT_EQ(reader.Info()->frameNumber, 0xF4030201u);
    EXPECT_EQ(reader.Info()->time.GetTimestamp(), 1'234'560);
    EXPECT_EQ(reader.Values(),
              "IntegrationTime=250 (Float, float)\n"
              "FrameRate=80 (Float, float)\n"
              "VideoPreset=163 (Integer, int)\n"
              "NumPresets=4 (Integer, int)\n"
              "DetectorTemp=77.5 (Float, float)\n"
              "SensorTemp[0]=274.15 (Float, float)\n"
              "SensorTemp[1]=272.8375 (Float, float)\n"
              "MasterClock=10 (Float, float)\n"
              "FilterPosition=7 (Integer, int)\n"
              "ExternalTrigger=F (Flag, ascii)\n"
              "TriggerInput=T (Flag, ascii)\n"
              "DataDisable=F (Flag, ascii)\n"
              "PageIndex=23 (Integer, int)\n"
              "LensChange=T (Flag, ascii)\n"
              "LockinPeriod=1296845642 (Integer, int)\n"  // 0x4D4C4B4A
              "LockinPhase=1364217678 (Integer, int)\n"   // 0x51504F4E
              "LockinMin=F (Flag, ascii)\n"
              "LockinMax=T (Flag, ascii)\n"
              "SignalNumber=7 (Integer, int)\n"
              "LockinMeanValue[0]=21844 (Integer, int)\n"
              "LockinMeanValue[1]=22358 (Integer, int)\n"
              "LockinMeanValue[2]=22872 (Integer, int)\n"
              "LockinMeanValue[3]=23386 (Integer, int)\n");

    const auto cal = reader.objects.Get<CDunlinFactoryCalReduceObject>(5, false);
    EXPECT_EQ(cal->detectorTemp, 77.5f);
    EXPECT_EQ(cal->integrationTime, 250.0f);
    const CDunlinFrameInfoReduceObject& d = *known;
    EXPECT_FALSE(d.valid || cal->valid);
    EXPECT_EQ(d.frameNumber, IReduceObject::NoFrame);
    EXPECT_EQ(d.flags, 3u);
    EXPECT_EQ(d.timeStamp, 123'456u);
    EXPECT_EQ(d.frameCounter, 0xF4030201u);
    EXPECT_EQ(d.numPresets, 4);
    EXPECT_EQ(d.videoPresetLow, 4);  // counts from 1
    EXPECT_EQ(d.videoPresetHigh, 10);
    EXPECT_EQ(d.activePreset, 14);  // all of the byte, and from 1
    EXPECT_EQ(d.sensorTemp[1], 272.8375f);
    EXPECT_EQ(d.sensorTemp[3], 0.0f);
    EXPECT_EQ(d.integrationTime, 250);
    EXPECT_EQ(d.frameRate, 80.0f);
    EXPECT_EQ(d.triggerInput, 3);
    EXPECT_EQ(d.lensChange, 1);
    EXPECT_EQ(d.inputSignalGrabbed, 9);  // as it was
    EXPECT_EQ(d.lockinWord, 0x4948);
    EXPECT_EQ(d.lockinMean[3], 0x5B5A);
    EXPECT_EQ(d.timeFlags, 0xF2);
    EXPECT_EQ(d.dayOfYear, 60);
    EXPECT_EQ(d.hours + 100 * d.minutes + 10000 * d.seconds, 666564);
    EXPECT_EQ(d.microseconds, 125'704u);
    EXPECT_EQ(d.year, 24);

    const std::string told = reader.Description(frame);
    for (const char* line : {"4+4 Signature=TOMZ\n", "12+8 TimeStamp=123456 µs\n", "52+4 IntegrationTime=250 µs\n",
                             "32+2 SensorTemp[0]=274.15 K\n", "62+1 LensChange=T\n", "98+2 Checksum=24414\n"}) {
        EXPECT_NE(told.find(line), std::string::npos) << line << told;
    }
}

TEST(Lapwing, TimeIsThatOfTheClockThatTheApplicationChooses) {
    CFrameReader reader = Reader();
    const auto camera = reader.objects.Get<CDunlinCameraInfoReduceObject>(-1, true);
    camera->useCameraClock = true;
    Bytes frame = FrameByBytes();
    Patch(frame, 4 + 64, 0x090807, 3);
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_TRUE(reader.Info()->time.Format(L"%Y-%m-%d %H:%M:%S.%f") == L"2024-02-29 07:08:09.125704");
    EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(5, false)->timeFlags, 0xF3);
    EXPECT_EQ(reader.Light(frame).time.GetTimestamp(), 1'234'560);  // the time stamp all the same
    Patch(frame, 4 + 61, 0x04, 1);                                  // the year does not count
    reader.Info()->time.Set(L"2021-05-05");
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_TRUE(reader.Info()->time.Format(L"%Y-%m-%d") == L"2021-03-01");
}

TEST(Lapwing, PresetOfTheFrameBeforeServesAFrameWithoutSignature) {
    CFrameReader reader = Reader();
    STomzTrailer trailer;
    trailer.activePreset = 0x0A;
    const Bytes frame = TomzFrame({1, 2}, trailer);
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_EQ(reader.preset, 2);
    const auto light = reader.Light(frame);
    EXPECT_TRUE(light.hasPreset && light.hasTime && light.hasCounter && light.hasAll);
    EXPECT_EQ(light.preset, 2);
    EXPECT_EQ(light.presetOfAll, 10);
    EXPECT_EQ(light.counter, 0x12345678u);
    EXPECT_EQ(light.counterOfAll, light.counter);
    EXPECT_EQ(light.timeOfAll.GetTimestamp(), 130'000'000'000'000'000);

    trailer.signature = "tomz";
    trailer.activePreset = 4;
    Bytes unsignedFrame = TomzFrame({3, 4}, trailer);
    Patch(unsignedFrame, 4 + 48, 79'999, 4);
    Patch(unsignedFrame, 4 + 57, 8, 1);
    EXPECT_TRUE(reader.Check(unsignedFrame));
    ASSERT_TRUE(reader.Parse(unsignedFrame));
    EXPECT_EQ(reader.preset, 2);
    EXPECT_EQ(reader.pixels[1], 4);
    EXPECT_TRUE(reader.Info()->GetValue(L"IntegrationTime") == L"1000");  // that of the calibration, which stays
    EXPECT_TRUE(reader.Info()->GetValue(L"FilterPosition") == L"8");
    EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(2, false)->integrationTime, 1000);
    const auto dark = reader.Light(unsignedFrame);
    EXPECT_TRUE(dark.hasPreset && !dark.hasTime && !dark.hasCounter && !dark.hasAll);
    EXPECT_EQ(dark.preset, 2);
}

TEST(Lapwing, ValuesWithoutSenseHarmNothing) {
    CFrameReader reader = Reader();
    Bytes frame = FrameByBytes();
    Patch(frame, 4 + 44, 0, 4);  // no clock
    Patch(frame, 4 + 8, ~u64{0}, 8);
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(5, false)->integrationTime, -2147483647 - 1);
    EXPECT_EQ(reader.Info()->time.GetTimestamp(), -10);
}

TEST(Lapwing, AnswersOfTheFamily) {
    CFrameReader reader = Reader();
    IFilter& filter = *reader.filter;
    EXPECT_STREQ(filter.GetName(), L"Lapwing");
    EXPECT_TRUE(filter.HasPixels(kLapwing) && !filter.HasPixels(rootIRType));
    EXPECT_TRUE(filter.HasTime(rootIRType) && filter.HasFrameCounter(kWren) && !filter.HasHeader(kLapwing));
    EXPECT_EQ(filter.FrameCounterMaxValue(kLapwing), 0xFFFFFFFFu);
    TArray<CString> names;
    EXPECT_TRUE(filter.GetTriggerFields(kWren, names));
    EXPECT_TRUE(names.size() == 1 && names[0] == L"TriggerInput");
    Bytes frame = FrameByBytes();
    void* pixels = nullptr;
    i32 stride = 0;
    EXPECT_TRUE(filter.GetPixels(frame.data(), rootIRType, 2, 1, 100, &pixels, stride));
    EXPECT_TRUE(pixels == frame.data() && stride == 4);
    reader.type = rootIRType;
    EXPECT_TRUE(reader.Check(frame) && reader.Parse(frame));
    reader.type = kWren;
    const auto light = reader.Light(frame);
    EXPECT_FALSE(reader.Check(frame) || reader.Parse(frame) || light.hasPreset || light.hasAll);
    EXPECT_FALSE(filter.GetPixels(frame.data(), kWren, 2, 1, 100, &pixels, stride));
}

/// Three frames of 60 x 2 pixels: 240 bytes of pixels and a line of 120 bytes each.
TEST(Lapwing, PacketsGiveTheirFramesAndTheFirstTrigger) {
    CFrameReader reader = Reader(60, 2);
    STomzTrailer quiet, fired;
    fired.triggerInput = 1;
    const Bytes one = TomzFrame(Ramp(120), quiet, 360), two = TomzFrame(Ramp(120, 9), fired, 360);
    const Bytes packet = Join({one, two, two});
    const struct {
        u32 sourceSize, count, index, destSize;
        bool done;
    } cases[] = {
        {1080, 3, 1, 360, true},  {1080, 3, 1, 500, true},  {1080, 3, 2, 100, true},  // the start of it
        {1080, 3, 3, 360, false}, {1079, 3, 2, 360, false}, {1079, 3, 2, 359, true},
        {963, 3, 0, 10, false},   {964, 3, 0, 10, true},    {244, 1, 0, 244, true},
        {243, 1, 0, 10, false},   {1080, 0, 0, 360, false}, {1080, 65535, 0, 360, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.sourceSize << " " << c.count << " " << c.index << " " << c.destSize);
        const auto source = CFrameReader::Exact(Bytes(packet.begin(), packet.begin() + c.sourceSize));
        const auto dest = CFrameReader::Exact(Bytes(c.destSize, 0xCC));
        EXPECT_EQ(reader.filter->StoreFrame(source.get(), c.sourceSize, kLapwing, 60, 2, static_cast<u16>(c.count),
                                            static_cast<u16>(c.index), dest.get(), c.destSize),
                  c.done);
        Bytes expected(c.destSize, 0xCC);
        if (c.done) std::copy_n(packet.begin() + 360 * c.index, std::min(c.destSize, 360u), expected.begin());
        EXPECT_EQ(Bytes(dest.get(), dest.get() + c.destSize), expected);
    }

    const auto trigger = [&](const Bytes& buffer, u16 width, u16 height, u16 count) {
        bool triggered = true;
        u16 index = 9;
        const auto source = CFrameReader::Exact(buffer);
        const bool done = reader.filter->CheckForTrigger(source.get(), static_cast<u32>(buffer.size()), kLapwing, width,
                                                         height, count, 7, triggered, index);
        return testing::Message() << done << triggered << index;
    };
    EXPECT_EQ(trigger(packet, 60, 2, 3).GetString(), "truetrue1");
    EXPECT_EQ(trigger(packet, 60, 2, 1).GetString(), "truefalse0");
    EXPECT_EQ(trigger(packet, 60, 2, 4).GetString(), "falsefalse0");
    EXPECT_EQ(trigger(packet, 60, 2, 0).GetString(), "truefalse0");
    // Lines too narrow for the input's byte, and none at all.
    EXPECT_EQ(trigger(Bytes(3 * 12, 1), 2, 2, 3).GetString(), "falsefalse0");
    EXPECT_EQ(trigger(Bytes(56, 1), 0, 5, 1).GetString(), "falsefalse0");
    EXPECT_EQ(trigger(Bytes(57, 1), 0, 5, 1).GetString(), "truetrue0");
}

}  // namespace
}  // namespace ovix::reduce
