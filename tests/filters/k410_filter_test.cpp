#include <gtest/gtest.h>

#include <algorithm>

#include "core/pixel_types.h"
#include "support/frame_reader.h"
#include "support/k410_frames.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 7, kHeight = 5;  // odd numbers of pixels at odd addresses
constexpr u32 kPixels = kWidth * kHeight, kImage = 2 * kPixels;

SFrameReader Reader(GUID type, u16 width = kWidth, u16 height = kHeight) { return {L"K410", type, width, height}; }

/// In the order of the record.
std::vector<float> SceneOf(SFrameReader& reader) {
    const auto p = reader.objects.GetObjectParameters(false);
    return {p->emissivity,    p->distance,       p->reflectedTemp,   p->atmosphereTemp,
            p->extOpticsTemp, p->extOpticsTrans, p->atmosphereTrans, p->relativeHumidity};
}
/// The time, or 0 for one that is not before the other and not after now.
i64 TicksOf(const CDateTime& time, const CDateTime& before) {
    const i64 ticks = time.GetTimestamp();
    return ticks >= before.GetTimestamp() && ticks <= CDateTime().GetTimestamp() ? 0 : ticks;
}
constexpr i64 kTime = SK410Record::kTime, kNow = 0;

/// Read in place, the swapped record's numbers stay swapped: 0x6553F100 s and 0x000000FA ms.
constexpr i64 kTurned = ((0x00F15365LL + 11644473600LL) * 1000 + 0xFA000000LL) * 10000, kFails = -1;

/// Number and times of the light operations; without a counter `kFails` for the time of all.
std::string LightOf(SFrameReader& reader, const Bytes& frame) {
    const CDateTime before;
    const auto light = reader.Light(frame);
    EXPECT_TRUE(light.hasPreset && light.preset == 0 && light.presetOfAll == 0 && light.hasCounter == light.hasAll);
    EXPECT_TRUE(!light.hasAll || light.counter == light.counterOfAll);
    return Text(light.hasAll ? light.counter : 0, light.hasTime ? TicksOf(light.time, before) : kFails,
                light.hasAll ? TicksOf(light.timeOfAll, before) : kFails);
}

TEST(K410, InfraredFormsGivePixelsNumberAndTime) {
    // A fresh decoder has counted no frame; a digital header holds no time.
    const struct {
        const char* name;
        GUID type;
        bool digital, pixelsSwapped, recordSwapped;
        u64 frameNumber;
        i64 time;
        u64 lightNumber;
        i64 lightTime, timeOfAll;
    } cases[] = {{"F7M0 plain", kK410F7M0, false, false, false, 0x1234, kTime, 0x1234, kTime, kTime},
                 {"F7M0 digital", kK410F7M0, true, false, false, 0x5678, kNow, 0x5678, kNow, kNow},
                 {"F7M0 swapped record", kK410F7M0, false, false, true, 0x1234, kTime, 0x3412, kTurned, kTurned},
                 {"F7M0 swapped pixels", kK410F7M0, false, true, false, 0x1234, kTime, 0x1234, kTime, kTime},
                 {"FNM0 plain", kK410FNM0, false, false, false, 0, kNow, 0, kNow, kNow},
                 {"FNM0 digital", kK410FNM0, true, false, false, 0x5678, kNow, 0, kNow, kNow},
                 {"GigE plain", kK410GigE, false, false, true, 0x1234, kTime, 0x3412, kNow, kTurned},
                 {"GigE digital", kK410GigE, true, true, false, 0x5678, kNow, 0x5678, kNow, kNow},
                 {"flipped", kK410GigEFlipped, false, false, false, 0x1234, kTime, 0x1234, kNow, kTime},
                 {"flipped, swapped pixels", kK410GigEFlipped, true, true, true, 0x5678, kNow, 0x5678, kNow, kNow}};
    SFrameReader reader = Reader(kK410F7M0);  // what one frame leaves is not to show in the next
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const CDateTime before;
        reader.type = c.type;
        reader.filter = filterFactory()->CreateForPixelType(c.type);
        std::vector<u16> pixels = Ramp(kPixels);
        SK410Container container{.record = {.swapped = c.recordSwapped}};
        container.pixelsSwapped = c.pixelsSwapped ? 1 : 2;  // anything but 1 is the plain order
        const SK410DigitalHeader header{.mark = 0xFE, .in1 = 1, .counter = 0x5678};
        const Bytes frame = c.digital ? DigitalFrame(pixels, header, container) : PlainFrame(pixels, container);
        EXPECT_EQ(LightOf(reader, frame), Text(c.lightNumber, c.lightTime, c.timeOfAll));
        ASSERT_TRUE(reader.Check(frame) && reader.Parse(frame) && reader.preset == 0);
        if (c.type == kK410GigEFlipped) std::reverse(pixels.begin(), pixels.end());
        EXPECT_EQ(reader.pixels, pixels);
        const auto info = reader.Info();
        EXPECT_EQ(Text(info->frameFilled, info->preset, info->frameNumber, TicksOf(info->time, before)),
                  Text(1, 0, c.frameNumber, c.time));
        EXPECT_EQ(reader.Values(),
                  c.digital ? "DigitalIn1=1 Flag/int, DigitalIn2=0 Flag/int, Mark=254 Flag/int, " : "");
        const auto camera = reader.Camera();
        EXPECT_TRUE(camera->valid && camera->recordPresent && camera->digitalHeaderPresent == c.digital);
        EXPECT_EQ(Bytes(camera->digitalHeader, camera->digitalHeader + 32), c.digital ? header.Make() : Bytes(32));
    }
    // Where nothing stands behind the pixels; types without a number of their own count the frames that were parsed.
    ASSERT_TRUE(reader.ParseMetadata(PlainFrame(Ramp(kPixels), {})));
    for (const auto& [type, light] : {std::pair{kK410F7M0, Text(0, kFails, kFails)},
                                      {kK410GigE, Text(0, kNow, kFails)},
                                      {kK410MJLS, Text(2, kNow, kNow)},
                                      {kK410BGR, Text(2, kNow, kNow)},
                                      {rootIRType, Text(2, kNow, kNow)}}) {
        reader.type = type;
        EXPECT_EQ(LightOf(reader, Bytes(3000)), light);
    }
    // 64 bytes behind the pixels are asked for, and where they are not, the frame's end is not looked beyond.
    const Bytes frame = PlainFrame(Ramp(kPixels), {});
    u64 counter = 0;
    for (const u32 more : {63u, 64u})
        EXPECT_EQ(
            reader.filter->ParseFrameCounter(CExact(frame).get(), kK410GigE, kWidth, kHeight, kImage + more, counter),
            more == 64);
}

TEST(K410, RecordFillsParametersCalibrationAndArchive) {
    const auto floatAt = [](u32 offset) { return static_cast<float>(offset) + 0.25f; };
    const auto wordAt = [](u32 offset) { return static_cast<u16>(100 * offset + 1); };
    for (const bool swapped : {false, true}) {
        SCOPED_TRACE(swapped);
        SFrameReader reader = Reader(kK410F7M0);
        SK410Container container{.record = {.swapped = swapped, .invalidFrame = 1}};
        const auto p = reader.objects.GetObjectParameters(true);
        p->estimatedAtmosphereTrans = 0.75f;
        p->valid = false;
        p->parameterMask = 0;
        ASSERT_TRUE(reader.ParseMetadata(PlainFrame(Ramp(kPixels), container)));
        EXPECT_FALSE(reader.Info()->frameFilled);
        EXPECT_TRUE(p->fromSource && !p->valid && p->parameterMask == 255 && p->estimatedAtmosphereTrans == 0.75f);
        for (u32 i = 0; i < 8; ++i) EXPECT_EQ(SceneOf(reader)[i], floatAt(32 + 4 * i)) << i;

        const auto& c = *reader.Cal();
        EXPECT_TRUE(c.valid && c.offset == 77601 && c.nonlinearOffset == 79601);
        EXPECT_TRUE(c.imgMin == wordAt(784) && c.imgMax == wordAt(786) && c.nonlinearOn == wordAt(788));
        const float floats[] = {c.gain,         c.nonlinearGain, c.planckR,        c.planckB,
                                c.planckF,      c.atmAlpha1,     c.atmAlpha2,      c.atmBeta1,
                                c.atmBeta2,     c.atmX,          c.radFitHighTemp, c.radFitLowTemp,
                                c.overflowTemp, c.underflowTemp, c.upperTemp,      c.lowerTemp};
        const u32 offsets[] = {780, 792, 88, 92, 96, 112, 116, 120, 124, 128, 144, 148, 152, 156, 160, 164};
        for (int i = 0; i < 16; ++i) EXPECT_EQ(floats[i], floatAt(offsets[i])) << offsets[i];

        // The archive is the record in the native order, its height being the caller's.
        container.record.swapped = false;
        Bytes expected = container.record.Make();
        Patch(expected, 4, kHeight, 2);
        Patch(expected, 16, kHeight - 1, 2);
        const u8* kept = reader.Camera()->record;
        for (const auto& [from, to] : {std::pair{0u, 18u}, {24u, 26u}, {32u, 64u}, {1130u, 1132u}, {2108u, 2428u}})
            EXPECT_TRUE(std::equal(kept + from, kept + to, expected.begin() + from)) << from;
    }
}

/// A GigE frame of 2 x 1 pixels in the digital form with a record of 64 bytes, the smallest that gives all parameters.
TEST(K410, FrameByBytes) {
    const std::vector<float> scene = {0.75f, 10, 300, 298, 296, 0.5f, 0.25f, 0.125f};
    CByteWriter w;
    w.U16(0x1234).U16(0x5678);                                 // the pixels
    w.PadTo(6).U8(2).PadTo(14).U8(3).U8(0).U8(0xAB).U8(0xCD);  // digital header: mark; inputs, counter, big-endian
    w.PadTo(36).U32(0x4D4B4D).PadTo(100).U16(32);              // container; its first entry is the record,
    w.PadTo(112).U32(100).U32(64);                             // 100 bytes behind its start, of 64 bytes
    w.PadTo(132).U16(1).U16(1);                                // the second entry: the pixels, which are swapped
    w.PadTo(136).U16(2).U16(2).U16(1).PadTo(160).U16(0x2211);  // record: order, size; a counter that is not used
    w.PadTo(168);
    for (const float value : scene) w.F32(value);
    ASSERT_EQ(w.bytes.size(), 200u);
    SFrameReader reader = Reader(kK410GigE, 2, 1);
    const Bytes before = PlainFrame({1, 2}, {});
    ASSERT_TRUE(reader.ParseMetadata(before));  // what it leaves is not to show
    ASSERT_TRUE(reader.Check(w.bytes) && reader.Parse(w.bytes));
    EXPECT_TRUE(reader.pixels == (std::vector<u16>{0x3412, 0x7856}) && reader.Info()->frameNumber == 0xABCD);
    EXPECT_EQ(reader.Values(), "DigitalIn1=3 Flag/int, DigitalIn2=0 Flag/int, Mark=2 Flag/int, ");
    EXPECT_EQ(SceneOf(reader), scene);
    EXPECT_EQ(std::count(reader.Camera()->record + 64, reader.Camera()->record + 2428, 0), 2364);  // did not come
}

TEST(K410, CompressedFrames) {
    for (const int bits : {9, 12, 13, 14, 16}) {
        SCOPED_TRACE(bits);
        SFrameReader reader = Reader(kK410MJLS);
        const std::vector<u16> pixels = Ramp(kPixels, static_cast<u16>(bits));
        const Bytes frame = CompressedFrame(EncodeJpegLs(pixels, kWidth, kHeight, {.bits = bits}), {});
        for (const u64 number : {0, 1}) {
            const CDateTime before;
            reader.pixels.assign(kPixels, 0);
            ASSERT_TRUE(reader.Check(frame) && reader.Parse(frame));
            EXPECT_EQ(reader.pixels, pixels);
            EXPECT_TRUE(reader.Info()->frameNumber == number && TicksOf(reader.Info()->time, before) == kNow);
        }
        const auto camera = reader.Camera();
        EXPECT_TRUE(reader.Cal()->valid && camera->valid && camera->recordPresent && !camera->digitalHeaderPresent);
    }
    // Nobody looks at what becomes of the stream, but its length and the container are looked at.
    SFrameReader reader = Reader(kK410MJLS);
    reader.pixels.assign(kPixels, 5);
    Bytes frame = CompressedFrame(Bytes(40, 0), {});
    EXPECT_TRUE(reader.Parse(frame));
    EXPECT_EQ(reader.pixels, std::vector<u16>(kPixels, 5));
    for (const u32 length : {0xFFFFFFFCu, 0xFFFFFFF8u, static_cast<u32>(frame.size() - 7), 39u}) {
        Patch(frame, 0, length, 4, true);
        EXPECT_FALSE(reader.ParseMetadata(frame)) << length;
    }
    EXPECT_FALSE(reader.ParseMetadata(Bytes(7)));
}

TEST(K410, VideoFrames) {
    // From the formula by hand: black, white, pure red of the studio range, and values beyond both ends.
    const std::tuple<u8, u8, u8, Bytes> colours[] = {
        {16, 128, 128, {0, 0, 0}}, {235, 128, 128, {255, 255, 255}}, {82, 90, 240, {255, 1, 0}},
        {0, 128, 128, {0, 0, 0}},  {255, 255, 255, {255, 125, 255}}, {126, 120, 134, {138, 126, 112}},
        {0, 0, 0, {0, 135, 0}}};
    SFrameReader reader = Reader(kK410UYVY, 3, 1);
    Bytes rgb(12);
    const STypedData dest{rgb.data(), Opaque};
    for (const auto& [y, u, v, expected] : colours) {
        for (const bool uyvy : {false, true}) {
            // Three pixels: of the odd one nothing is written.
            reader.type = uyvy ? kK410UYVY : kK410YUY2;
            const Bytes pair = uyvy ? Bytes{u, y, v, 16} : Bytes{y, u, 16, v};
            std::fill(rgb.begin(), rgb.end(), u8{77});
            ASSERT_TRUE(reader.Parse(Join({pair, {1, 2}}), dest));
            EXPECT_EQ(Bytes(rgb.begin(), rgb.begin() + 3), expected) << int{y};
            EXPECT_EQ(Bytes(rgb.begin() + 6, rgb.end()), Bytes(6, 77));
        }
    }
    reader.type = kK410F7M0;
    ASSERT_TRUE(reader.ParseMetadata(PlainFrame(Ramp(3), {})) && reader.Cal()->valid && reader.Camera()->valid);
    reader.Info()->extra.Add(L"left", L"over", L"", L"");
    reader.Info()->frameFilled = false;
    reader.type = kK410BGR;
    reader.width = reader.height = 2;
    const CDateTime before;
    ASSERT_TRUE(reader.Parse({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, dest));
    EXPECT_EQ(rgb, (Bytes{9, 8, 7, 12, 11, 10, 3, 2, 1, 6, 5, 4}));
    EXPECT_FALSE(reader.Cal()->valid || reader.Camera()->valid);
    EXPECT_TRUE(reader.Info()->frameFilled && TicksOf(reader.Info()->time, before) == kNow);
    EXPECT_TRUE(reader.Info()->extra.nValues() == 0 && reader.Info()->frameNumber == 15);  // all of them count
}

TEST(K410, RefusalsLeaveTheFourObjects) {
    const auto with = [](const SK410Container& container) { return PlainFrame(Ramp(kPixels), container); };
    const Bytes good = with({});
    const struct {
        const char* name;
        Bytes frame;
        GUID type;
        EDataType dest = UInt16;
    } cases[] = {{"a type of nobody", good, rootIRType},
                 {"infrared to colours", good, kK410F7M0, Opaque},
                 {"compressed to floats", CompressedFrame(Bytes(40), {}), kK410MJLS, Flt32},
                 {"video to counts", Bytes(3 * kPixels), kK410YUY2},
                 {"neither form of the tail", Join({PixelBytes(Ramp(kPixels)), Bytes(3000)}), kK410F7M0},
                 {"no record entry", with({.firstEntry = 31}), kK410GigE},
                 {"no pixels entry", with({.secondEntry = 0}), kK410GigE}};
    SFrameReader reader = Reader(kK410F7M0);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        reader.objects.Reset();
        reader.type = c.type;
        std::vector<u16> dest(2 * kPixels, 7);
        EXPECT_FALSE(reader.Parse(c.frame, STypedData{dest.data(), c.dest}));
        EXPECT_EQ(dest, std::vector<u16>(2 * kPixels, 7));
        const std::pair<GUID, u8> order[] = {{CObjectParametersReduceObject::typeID, 255},
                                             {CCurlewFactoryCalReduceObject::typeID, 0},
                                             {CFrameInfoReduceObject::typeID, 0},
                                             {CCurlewCameraInfoReduceObject::typeID, 255}};
        ASSERT_EQ(reader.objects.size(), 4u);
        for (u32 i = 0; i < 4; ++i) {
            const auto object = reader.objects.GetAt(i);
            EXPECT_TRUE(object->GetTypeID() == order[i].first && object->preset == order[i].second) << i;
        }
    }
    // None of them was counted: the own counter starts at 0, and again after 65535. A size beyond the record's is cut.
    for (u32 number = 0; number < 65537; ++number) {
        reader.type = number % 65535 < 2 ? kK410FNM0 : kK410YUY2;
        ASSERT_TRUE(reader.ParseMetadata(number % 65535 < 2 ? with({.recordSize = 3000}) : Bytes(4)));
        ASSERT_EQ(reader.Info()->frameNumber, number % 65536);
    }
}

TEST(K410, DigitalTriggers) {
    // A header, and which of four fields it triggers.
    const std::pair<SK410DigitalHeader, const char*> cases[] = {{{.mark = 3, .in2 = 1}, "-TT-"},
                                                                {{.in1 = 1}, "T---"},
                                                                {{.in2 = 0x80}, "-T--"},
                                                                {{.mark = 1}, "--T-"},
                                                                {{.mark = 2}, "--T-"},
                                                                {{.mark = 0xFC}, "----"},
                                                                {{.mark = 3, .in1 = 1, .in2 = 1}, "TTT-"}};
    for (const auto& [header, fields] : cases) {
        const Bytes frame = DigitalFrame(Ramp(kPixels), header, {});
        for (u8 field = 0; field < 4; ++field) {
            for (const GUID& type : {kK410F7M0, kK410FNM0, kK410GigE})
                EXPECT_EQ(Reader(type).Trigger(frame, 1, field), fields[field] == 'T' ? 0 : -1) << fields;
            for (const GUID& type : {kK410GigEFlipped, kK410MJLS, kK410YUY2, rootIRType})
                EXPECT_EQ(Reader(type).Trigger(frame, 1, field), std::nullopt);
        }
    }
    EXPECT_EQ(Reader(kK410GigE).Trigger(Bytes(3000), 1, 2), -1);  // neither form
}

TEST(K410, MarkCounterTriggersWhenItRises) {
    const auto frame = [](u32 mark, bool swapped, u16 pixelsEntry = 1) {
        return PlainFrame(Ramp(kPixels), {.secondEntry = pixelsEntry, .record = {.swapped = swapped, .mark = mark}});
    };
    const std::tuple<u32, u8, bool> steps[] = {{7, 2, false}, {7, 2, false},         {8, 2, true},  {9, 1, false},
                                               {9, 2, false}, {0xFFFFFFFF, 2, true}, {0, 2, false}, {1, 2, true}};
    for (const bool swapped : {false, true}) {
        const SFrameReader reader = Reader(kK410FNM0);
        for (const auto& [mark, field, triggered] : steps)
            EXPECT_EQ(reader.Trigger(frame(mark, swapped), 1, field), triggered - 1) << mark;
        EXPECT_EQ(reader.Trigger(frame(100, swapped, 2), 1, 2), std::nullopt);
        EXPECT_EQ(reader.Trigger(frame(2, swapped), 1, 2), 0);  // the broken one was not remembered
    }
}

TEST(K410, PacketsAreCutIntoFrames) {
    const Bytes container = SK410Container().Make(),
                digital = Join({SK410DigitalHeader{.counter = 0x9234}.Make(), container});
    const struct {
        const char* name;
        GUID type;
        u16 count, index;
        Bytes tail;
        u32 counter = 0;  ///< expected in the header, when there is one
        bool stored = true;
    } cases[] = {{"two of two", kK410GigE, 2, 1, digital, 0x2469},
                 {"one of two", kK410F7M0, 2, 0, digital, 0x2468},
                 {"three keep theirs", kK410GigE, 3, 1, digital, 0x9234},
                 {"other types keep theirs", kK410FNM0, 2, 1, digital, 0x9234},
                 {"plain", kK410GigE, 3, 2, container},
                 {"any tail", kK410MJLS, 2, 1, Bytes(20)},  // these types are not looked into
                 {"any tail", kK410FNM0, 3, 2, Bytes(40)},
                 {"neither form", kK410GigEFlipped, 3, 2, Bytes(40), 0, false},
                 {"neither form", kK410GigE, 3, 2, Bytes(40), 0, false},
                 {"no tail", kK410F7M0, 3, 2, {}, 0, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Bytes images = PixelBytes(Ramp(c.count * kPixels)), source = Join({images, c.tail});
        const auto image = images.begin() + c.index * kImage;
        Bytes expected = Join({{image, image + kImage}, c.tail, Bytes(5, 0xEE)}), dest(expected.size(), 0xEE);
        if (c.counter) Patch(expected, kImage + 12, c.counter, 2, true);
        EXPECT_EQ(Reader(c.type).filter->StoreFrame(source.data(), SFrameReader::Size(source), c.type, kWidth, kHeight,
                                                    c.count, c.index, dest.data(), SFrameReader::Size(dest)),
                  c.stored);
        EXPECT_EQ(dest, expected);
    }
    // Products beyond 32 bits: 65535 images of 65535 x 65535 are not in 64 bytes.
    SFrameReader large = Reader(kK410GigE);
    large.width = large.height = 65535;
    EXPECT_TRUE(large.Store(Bytes(64), 65535, 65534, 64).empty());
}

}  // namespace
}  // namespace ovix::reduce
