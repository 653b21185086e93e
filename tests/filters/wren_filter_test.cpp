#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "reduce/filters/dunlin_factory_cal_reduce_object.h"
#include "reduce/filters/dunlin_frame_info_reduce_object.h"
#include "support/dunlin_frames.h"
#include "support/frame_reader.h"

namespace ovix::reduce {
namespace {

using namespace test;

CFrameReader Reader(u16 width = 2, u16 height = 1) { return {L"Wren", kWren, width, height}; }

/// 2 x 1 pixels; every byte of the record is its offset unless a line says otherwise.
Bytes NativeByBytes() {
    Bytes record(109);
    for (std::size_t i = 0; i < 109; ++i) record[i] = static_cast<u8>(i);
    const auto put = [&](std::size_t at, std::initializer_list<u8> bytes) {
        std::copy(bytes.begin(), bytes.end(), record.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(6, {0x40, 0xE2, 0x01, 0, 0, 0, 0, 0});                                       // 123456 microseconds
    put(30, {0, 0, 0x9B, 0x42});                                                     // 77.5
    put(34, {0, 0, 0x80, 0x3F, 0, 0, 0, 0x40, 0, 0, 0x40, 0x40, 0, 0, 0x80, 0x40});  // 1, 2, 3, 4
    put(50, {0, 0, 0xA0, 0x40, 0, 0xC0, 0x79, 0xC4, 0, 0, 0x20, 0x42});              // 5, -999, 40
    put(63, {0});
    put(67, {0});
    put(75, {0x08, 0xEB, 0x01, 0});  // 125,704 microseconds
    put(79, {24});                   // 2024
    return Join({{0x23, 0xC1, 0xFF, 0xFF}, {'P', 'R', 'U', 'V'}, record});
}

constexpr const char* kValuesByBytes =
    "IntegrationTime=-999 (Float, float)\n"
    "FrameRate=40 (Float, float)\n"
    "VideoPreset=6424 (Integer, int)\n"  // 0x1918
    "NumPresets=5910 (Integer, int)\n"
    "DetectorTemp=77.5 (Float, float)\n"
    "SensorTemp[0]=1 (Float, float)\n"
    "SensorTemp[1]=2 (Float, float)\n"
    "SensorTemp[2]=3 (Float, float)\n"
    "SensorTemp[3]=4 (Float, float)\n"
    "MasterClock=5 (Float, float)\n"
    "FilterPosition=62 (Integer, int)\n"
    "ExternalTrigger=F (Flag, ascii)\n"
    "TriggerInput=T (Flag, ascii)\n"
    "DataDisable=T (Flag, ascii)\n"
    "PageIndex=65 (Integer, int)\n"
    "LensChange=T (Flag, ascii)\n"
    "InputSignalGrabb=F (Flag, ascii)\n"
    "LockinPeriod=1431589714 (Integer, int)\n"  // 0x55545352
    "LockinPhase=1498961750 (Integer, int)\n"
    "LockinMin=T (Flag, ascii)\n"
    "LockinMax=T (Flag, ascii)\n"
    "SignalNumber=92 (Integer, int)\n"
    "LockinMeanValue[0]=24157 (Integer, int)\n"  // 0x5E5D
    "LockinMeanValue[1]=24671 (Integer, int)\n"
    "LockinMeanValue[2]=25185 (Integer, int)\n"
    "LockinMeanValue[3]=25699 (Integer, int)\n";

TEST(Wren, NativeFrameByBytes) {
    CFrameReader reader = Reader();
    const Bytes frame = NativeByBytes();
    ASSERT_TRUE(reader.Check(frame));
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_EQ(reader.preset, 3);  // of the first pixel, not the record's
    EXPECT_EQ(reader.pixels, (std::vector<u16>{0x0123, 0x3FFF}));
    EXPECT_EQ(reader.Values(), kValuesByBytes);
    EXPECT_EQ(reader.Info()->preset, 3);
    EXPECT_EQ(reader.Info()->frameNumber, 0x11100F0Eu);  // the low half of the counter
    // Day 0x4746 = 18246 of 2024, 72:73:74: what is beyond rolls over. Time flags 0x45: no year.
    reader.Info()->time.Set(L"2024-05-05");
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_TRUE(reader.Info()->time.Format(L"%Y-%m-%d %H:%M:%S.%f") == L"2073-12-17 01:14:14.125704");

    const auto cal = reader.objects.Get<CDunlinFactoryCalReduceObject>(3, false);
    EXPECT_EQ(cal->integrationTime, -999.0f);
    const auto d = reader.objects.Get<CDunlinFrameInfoReduceObject>(3, false);
    EXPECT_EQ(d->flags, 0x05040302u);
    EXPECT_EQ(d->frameCounter, 0x1514131211100F0Eu);
    EXPECT_EQ(d->videoPresetLow, 0x1918);  // as it stands
    EXPECT_EQ(d->videoPresetHigh, 0x1B1A);
    EXPECT_EQ(d->activePreset, 0x1D1C);
    EXPECT_EQ(d->sensorTemp[3], 4.0f);
    EXPECT_EQ(d->integrationTime, -999);
    EXPECT_EQ(d->triggerInput, 68);
    EXPECT_EQ(d->lockinWord, 0x5150);
    EXPECT_EQ(d->timeFlags, 0x45);
    const auto light = reader.Light(frame);
    EXPECT_EQ(light.counter, 0x1514131211100F0Eu);
    EXPECT_EQ(light.presetOfAll, 3);

    const std::string told = reader.Description(frame);
    for (const char* line : {"0+2 Preset=3\n", "4+4 Signature=PRUV\n", "8+2 RecordSize=256 bytes\n",
                             "62+4 IntegrationTime=-999 µs\n", "107+2 LockinMeanValue[3]=25699\n"}) {
        EXPECT_NE(told.find(line), std::string::npos) << line << told;
    }
}

TEST(Wren, OlderTrailerIsConverted) {
    CFrameReader reader = Reader();
    STomzTrailer trailer;
    trailer.olderWren = true;
    trailer.triggerInput = 2;
    trailer.timeFlags = 1;
    trailer.flags = 0b1111;
    const Bytes frame = TomzFrame({0x4001, 0x8002}, trailer);
    ASSERT_TRUE(reader.Check(frame));
    ASSERT_TRUE(reader.Parse(frame));
    EXPECT_EQ(reader.preset, 1);
    EXPECT_EQ(reader.pixels, (std::vector<u16>{1, 2}));
    EXPECT_TRUE(reader.Info()->time.Format(L"%Y %j:%(irig)") == L"2026 200:13:14:15.678901");
    EXPECT_EQ(reader.Light(frame).time, reader.Info()->time);
    EXPECT_EQ(reader.Values(),
              "IntegrationTime=1000 (Float, float)\nFrameRate=50 (Float, float)\nVideoPreset=3 (Integer, int)\n"
              "NumPresets=3 (Integer, int)\nDetectorTemp=77.5 (Float, float)\nSensorTemp[0]=295.5 (Float, float)\n"
              "SensorTemp[1]=296.25 (Float, float)\nSensorTemp[2]=297 (Float, float)\n"
              "SensorTemp[3]=298 (Float, float)\nMasterClock=4e+07 (Float, float)\n"
              "FilterPosition=4 (Integer, int)\nExternalTrigger=T (Flag, ascii)\nTriggerInput=T (Flag, ascii)\n"
              "DataDisable=T (Flag, ascii)\nPageIndex=9 (Integer, int)\nLensChange=T (Flag, ascii)\n"
              "InputSignalGrabb=F (Flag, ascii)\nLockinPeriod=22222 (Integer, int)\n"
              "LockinPhase=33333 (Integer, int)\nLockinMin=F (Flag, ascii)\nLockinMax=T (Flag, ascii)\n"
              "SignalNumber=5 (Integer, int)\nLockinMeanValue[0]=41 (Integer, int)\n"
              "LockinMeanValue[1]=42 (Integer, int)\nLockinMeanValue[2]=43 (Integer, int)\n"
              "LockinMeanValue[3]=44 (Integer, int)\n");
    const auto d = reader.objects.Get<CDunlinFrameInfoReduceObject>(1, false);
    EXPECT_EQ(d->flags, 3u);
    EXPECT_EQ(d->videoPresetLow, 3);
    EXPECT_EQ(d->videoPresetHigh, 5);
    EXPECT_EQ(d->activePreset, 2);
    EXPECT_EQ(d->triggerInput, 2);
    EXPECT_EQ(d->lockinWord, 0x1111);

    trailer.flags = 0;  // without lock-in data
    trailer.timeFlags = 0;
    ASSERT_TRUE(reader.Parse(TomzFrame({0x4001, 0x8002}, trailer)));
    EXPECT_EQ(d->flags, 1u);
    EXPECT_EQ(d->lockinWord + d->lockinPeriod + d->lockinPhase + d->lockinMax + d->signalNumber + d->lockinMean[0], 0u);
    EXPECT_TRUE(reader.Info()->GetValue(L"LockinPeriod") == L"0");
    EXPECT_EQ(reader.Info()->time.GetTimestamp(), 130'000'000'000'000'000);
}

TEST(Wren, DamagedTrailersAreRefusedButByTheLightOperations) {
    STomzTrailer version, words, sum, strange;
    version.version = 2;
    words.words = 47;
    sum.checksumError = 1;
    strange.signature = "TOMX";
    const struct {
        STomzTrailer trailer;
        bool light;
        u64 offset;
        const wchar_t* found;
    } cases[] = {{version, true, 8, L"2"},
                 {words, true, 10, L"47"},
                 {sum, true, 98, nullptr},
                 {strange, false, 4, L"0x584D4F54"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.offset);
        CFrameReader reader = Reader();
        Bytes frame = TomzFrame({0xC001, 2}, c.trailer);
        EXPECT_FALSE(reader.Parse(frame));
        EXPECT_EQ(reader.objects.size(), 0u);
        const auto light = reader.Light(frame);
        EXPECT_TRUE(light.hasPreset && light.preset == 3);
        EXPECT_TRUE(light.hasCounter == c.light && light.hasTime == c.light && light.hasAll == c.light);
        SFrameFault fault;
        EXPECT_FALSE(CheckFrame(L"Wren", frame.data(), kWren, 2, 1, static_cast<u32>(frame.size()), &fault));
        EXPECT_EQ(fault.offset, c.offset);
        EXPECT_TRUE(!c.found || fault.found == c.found) << fault.found.GetUTF8();
    }
    for (const Bytes& whole : {NativeByBytes(), TomzFrame({1, 2}, {.olderWren = true})}) {
        CFrameReader reader = Reader();
        EXPECT_TRUE(reader.Check(whole));
        for (std::size_t size = 0; size < whole.size(); ++size) {
            EXPECT_FALSE(reader.Check(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)))) << size;
        }
    }
}

TEST(Wren, OlderCounterGoesOnBeyondThirtyTwoBits) {
    const struct {
        std::vector<u32> counters;
        u64 last;
    } cases[] = {
        {{0xFFFFFFFE, 1}, 0x1'0000'0001},
        {{0x7FFFFFFF, 1}, 1},
        {{0x80000000, 1}, 1},  // one short of the upper half
        {{0x80000001, 1}, 0x1'0000'0001},
        {{0xFFFFFFFE, 1, 0xFFFFFFFF, 0xFFFFFFFF, 0}, 0x2'0000'0000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.last);
        CFrameReader reader = Reader();
        for (const u32 counter : c.counters) {
            STomzTrailer trailer;
            trailer.counter = counter;
            const Bytes frame = TomzFrame({1, 2}, trailer);
            EXPECT_EQ(reader.Light(frame).counter, counter);  // neither extended nor counted
            ASSERT_TRUE(reader.Parse(frame));
            EXPECT_EQ(reader.Info()->frameNumber, counter);
        }
        EXPECT_EQ(reader.objects.Get<CDunlinFrameInfoReduceObject>(0, false)->frameCounter, c.last);
    }
}

struct SStored {
    bool done;
    Bytes bytes;
};
SStored Store(const Bytes& buffer, u16 width, u16 height, u16 count, u16 index, u32 destSize) {
    const auto source = CFrameReader::Exact(buffer);
    const auto dest = CFrameReader::Exact(Bytes(destSize, 0xCC));
    const bool done = Reader().filter->StoreFrame(source.get(), static_cast<u32>(buffer.size()), kWren, width, height,
                                                  count, index, dest.get(), destSize);
    return {done, Bytes(dest.get(), dest.get() + destSize)};
}

TEST(Wren, StoresFramesOfNativePackets) {
    const std::vector<u16> pixels = Ramp(18, 14);  // three images of 3 x 2
    const std::vector<u16> second(pixels.begin() + 6, pixels.begin() + 12);
    SPruvRecord plain, fired, disabled;
    fired.triggerInput = 1;
    fired.counter = 77;
    disabled.dataDisable = 1;
    const Bytes packet = PruvBuffer(pixels, {plain, fired, disabled});
    const SStored stored = Store(packet, 3, 2, 3, 1, 130);
    ASSERT_TRUE(stored.done);
    Bytes expected = PruvBuffer(second, {fired});
    CFrameReader reader = Reader(3, 2);
    ASSERT_TRUE(reader.Check(expected) && reader.Parse(expected));  // a frame by itself
    EXPECT_EQ(reader.Info()->frameNumber, 77u);
    EXPECT_EQ(reader.pixels, second);
    expected.resize(130, 0xCC);
    EXPECT_EQ(stored.bytes, expected);

    EXPECT_FALSE(Store(packet, 3, 2, 3, 2, 125).done);  // disabled
    EXPECT_EQ(Store(packet, 3, 2, 3, 2, 125).bytes, Bytes(125, 0xCC));
    EXPECT_TRUE(Store(packet, 3, 2, 3, 1, 125).done);
    EXPECT_FALSE(Store(packet, 3, 2, 3, 1, 124).done);
    EXPECT_FALSE(Store(packet, 3, 2, 3, 3, 125).done);
    EXPECT_FALSE(Store(packet, 3, 2, 4, 0, 125).done);
    EXPECT_FALSE(Store(Bytes(packet.begin(), packet.end() - 1), 3, 2, 3, 0, 125).done);
    EXPECT_FALSE(Store(packet, 65535, 65535, 65535, 0, 125).done);
    EXPECT_FALSE(Store(Bytes(15), 3, 2, 1, 0, 125).done);

    const auto trigger = [&](const Bytes& buffer, u16 count) {
        bool triggered = true;
        u16 index = 9;
        const auto source = CFrameReader::Exact(buffer);
        const bool done = reader.filter->CheckForTrigger(source.get(), static_cast<u32>(buffer.size()), kWren, 3, 2,
                                                         count, 5, triggered, index);
        return (testing::Message() << done << triggered << index).GetString();
    };
    EXPECT_EQ(trigger(packet, 3), "truetrue1");
    EXPECT_EQ(trigger(PruvBuffer(Ramp(12), {plain, plain}), 2), "truefalse0");
    EXPECT_EQ(trigger(Bytes(packet.begin(), packet.end() - 1), 3), "falsefalse0");
    EXPECT_EQ(trigger(packet, 65535), "falsefalse0");
}

TEST(Wren, OlderFramesAreStoredWithTheLinesOfTheirTrailer) {
    const struct {
        u16 width, height;
        std::size_t stride;
    } cases[] = {{640, 1, 2 * 1280}, {32, 2, 4 * 64}, {48, 1, 2 * 96}, {47, 1, 3 * 94}, {1, 1, 49 * 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.width);
        const std::vector<u16> pixels = Ramp(std::size_t{c.width} * c.height);
        const Bytes one = TomzFrame(pixels, {.olderWren = true}, c.stride);
        Bytes two = one;
        two[0] = 0xAB;
        const Bytes packet = Join({one, two});
        const u32 size = static_cast<u32>(c.stride);
        const SStored stored = Store(packet, c.width, c.height, 2, 1, size);
        EXPECT_TRUE(stored.done);
        EXPECT_EQ(stored.bytes, two);
        EXPECT_FALSE(Store(packet, c.width, c.height, 2, 1, size - 1).done);
        EXPECT_FALSE(Store(packet, c.width, c.height, 2, 2, size).done);
        EXPECT_FALSE(Store(Bytes(packet.begin(), packet.end() - 1), c.width, c.height, 2, 1, size).done);
    }
    EXPECT_FALSE(Store(TomzFrame({}, {}, 200), 0, 3, 1, 0, 200).done);  // no lines to count
}

TEST(Wren, AnswersOfTheFamily) {
    CFrameReader reader = Reader();
    IFilter& filter = *reader.filter;
    EXPECT_STREQ(filter.GetName(), L"Wren");
    EXPECT_TRUE(filter.HasPixels(kWren) && !filter.HasPixels(rootIRType));
    TArray<CString> names;
    EXPECT_TRUE(filter.GetTriggerFields(kWren, names) && names.size() == 1 && names[0] == L"TriggerInput");
    reader.type = rootIRType;
    EXPECT_TRUE(reader.Check(NativeByBytes()) && reader.Parse(NativeByBytes()));
    reader.type = kLapwing;
    EXPECT_FALSE(reader.Check(NativeByBytes()) || reader.Parse(NativeByBytes()) ||
                 reader.Light(NativeByBytes()).hasAll);
}

}  // namespace
}  // namespace ovix::reduce
