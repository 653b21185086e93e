#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "reduce/filters/dunlin_reduce_objects.h"
#include "support/dunlin_frames.h"
#include "support/frame_reader.h"

namespace ovix::reduce {
namespace {

using namespace test;

SFrameReader Reader(u16 width = 2, u16 height = 1) { return {L"Wren", kWren, width, height}; }

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
    SFrameReader reader = Reader();
    const Bytes frame = NativeByBytes();
    ASSERT_TRUE(reader.Check(frame) && reader.Parse(frame));
    EXPECT_EQ(reader.preset, 3);  // of the first pixel, not the record's
    EXPECT_EQ(reader.pixels, (std::vector<u16>{0x0123, 0x3FFF}));
    EXPECT_EQ(reader.Info()->preset, 3);
    EXPECT_EQ(reader.Info()->frameNumber, 2u);  // the low half of the counter
    EXPECT_EQ(reader.Values(),
              "IntegrationTime=-999 Float/float, FrameRate=40 Float/float, VideoPreset=6424 Integer/int, "
              "NumPresets=5910 Integer/int, DetectorTemp=77.5 Float/float, SensorTemp[0]=1 Float/float, "
              "SensorTemp[1]=2 Float/float, SensorTemp[2]=3 Float/float, SensorTemp[3]=4 Float/float, "
              "MasterClock=5 Float/float, FilterPosition=62 Integer/int, ExternalTrigger=T Flag/ascii, "
              "TriggerInput=T Flag/ascii, DataDisable=T Flag/ascii, PageIndex=65 Integer/int, LensChange=T Flag/ascii, "
              "InputSignalGrabb=T Flag/ascii, LockinPeriod=1431589714 Integer/int, LockinPhase=1498961750 Integer/int, "
              "LockinMin=T Flag/ascii, LockinMax=T Flag/ascii, SignalNumber=92 Integer/int, "
              "LockinMeanValue[0]=24157 Integer/int, LockinMeanValue[1]=24671 Integer/int, "
              "LockinMeanValue[2]=25185 Integer/int, LockinMeanValue[3]=25699 Integer/int, ");
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
    SFrameReader reader = Reader();
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
    const struct {
        STomzTrailer trailer;
        bool light;
        u64 offset;
        const wchar_t* found;
    } cases[] = {{{.version = 2}, true, 8, L"2"},
                 {{.words = 47}, true, 10, L"47"},
                 {{.checksumError = 1}, true, 98, nullptr},
                 {{.signature = "TOMX"}, false, 4, L"0x584D4F54"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.offset);
        SFrameReader reader = Reader();
        const Bytes frame = TomzFrame({0xC001, 2}, c.trailer);
        EXPECT_FALSE(reader.Parse(frame));
        EXPECT_EQ(reader.objects.size(), 0u);
        const auto light = reader.Light(frame);
        EXPECT_TRUE(light.hasPreset && light.preset == 3);
        EXPECT_TRUE(light.hasCounter == c.light && light.hasTime == c.light && light.hasAll == c.light);
        SFrameFault fault;
        EXPECT_FALSE(reader.Check(frame, &fault));
        EXPECT_EQ(fault.offset, c.offset);
        EXPECT_TRUE(!c.found || fault.found == c.found) << fault.found.GetUTF8();
    }
}

TEST(Wren, OlderCounterGoesOnBeyondThirtyTwoBits) {
    const std::pair<std::vector<u32>, u64> cases[] = {
        {{0xFFFFFFFE, 1}, 0x1'0000'0001},
        {{0x7FFFFFFF, 1}, 1},
        {{0x80000000, 1}, 1},  // one short of what counts as high
        {{0x80000001, 1}, 0x1'0000'0001},
        {{0xFFFFFFFE, 1, 0xFFFFFFFF, 0xFFFFFFFF, 0}, 0x2'0000'0000},
    };
    for (const auto& [counters, last] : cases) {
        SFrameReader reader = Reader();
        for (const u32 counter : counters) {
            const Bytes frame = TomzFrame({1, 2}, {.counter = counter});
            EXPECT_EQ(reader.Light(frame).counter, counter);  // neither extends nor counts
            ASSERT_TRUE(reader.Parse(frame));
            EXPECT_EQ(reader.Info()->frameNumber, counter);
        }
        EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(0, false)->frameCounter, last);
    }
}

TEST(Wren, StoresFramesOfNativePackets) {
    const std::vector<u16> pixels = Ramp(18, 14);  // three images of 3 x 2
    const SPruvRecord plain, fired{.counter = 77, .triggerInput = 1}, disabled{.dataDisable = 1};
    const Bytes packet = PruvBuffer(pixels, {plain, fired, disabled});
    Bytes second = PruvBuffer({pixels.begin() + 6, pixels.begin() + 12}, {fired});
    SFrameReader reader = Reader(3, 2);
    EXPECT_TRUE(reader.Check(second) && reader.Parse(second));  // a frame by itself
    EXPECT_EQ(reader.Store(packet, 3, 1, 125), second);
    second.resize(130, 0xCC);
    EXPECT_EQ(reader.Store(packet, 3, 1, 130), second);
    const Bytes refused, cut(packet.begin(), packet.end() - 1);
    EXPECT_EQ(reader.Store(packet, 3, 2, 125), refused);  // disabled
    EXPECT_EQ(reader.Store(packet, 3, 1, 124), refused);
    EXPECT_EQ(reader.Store(packet, 3, 3, 125), refused);
    EXPECT_EQ(reader.Store(packet, 4, 0, 125), refused);
    EXPECT_EQ(reader.Store(cut, 3, 0, 125), refused);
    EXPECT_EQ(reader.Store(Bytes(15), 1, 0, 125), refused);
    EXPECT_EQ(reader.Trigger(packet, 3), 1);
    EXPECT_EQ(reader.Trigger(PruvBuffer(Ramp(12), {plain, plain}), 2), -1);
    EXPECT_EQ(reader.Trigger(cut, 3), std::nullopt);
    reader.width = reader.height = 65535;
    EXPECT_EQ(reader.Store(packet, 65535, 0, 125), refused);
    EXPECT_EQ(reader.Trigger(packet, 65535), std::nullopt);
}

TEST(Wren, OlderFramesAreStoredWithTheLinesOfTheirTrailer) {
    const struct {
        u16 width, height;
        std::size_t stride;
    } cases[] = {{640, 1, 2 * 1280}, {32, 2, 4 * 64}, {48, 1, 2 * 96}, {47, 1, 3 * 94}, {1, 1, 49 * 2}};
    for (const auto& [width, height, stride] : cases) {
        const SFrameReader reader = Reader(width, height);
        const Bytes one = TomzFrame(Ramp(std::size_t{width} * height), {.olderWren = true}, stride);
        Bytes two = one;
        two[0] = 0xAB;
        const Bytes packet = Join({one, two}), refused;
        EXPECT_EQ(reader.Store(packet, 2, 1, stride), two) << width;
        EXPECT_EQ(reader.Store(packet, 2, 1, stride - 1), refused);
        EXPECT_EQ(reader.Store(packet, 2, 2, stride), refused);
        EXPECT_EQ(reader.Store({packet.begin(), packet.end() - 1}, 2, 1, stride), refused);
    }
    EXPECT_TRUE(Reader(0, 3).Store(TomzFrame({}, {}, 200), 1, 0, 200).empty());  // no lines to count
}

}  // namespace
}  // namespace ovix::reduce
