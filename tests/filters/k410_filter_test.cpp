#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "core/pixel_types.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/filters/camera_record.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "support/frame_reader.h"
#include "support/k410_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kPixels = kWidth * kHeight;
// 1,700,000,000 seconds and 250 milliseconds after 1970, as ticks since 1601.
constexpr i64 kRecordTime = 133'444'736'002'500'000;

/// A decoder with its stream and the objects of its source.
class CK410Test : public ::testing::Test {
  protected:
    bool Parse(Bytes frame, GUID type, STypedData dest, u16 width = kWidth, u16 height = kHeight) {
        before = CDateTime();
        u8 preset = 99;
        const bool done = filter->ParseFrame(frame.data(), type, width, height, static_cast<u32>(frame.size()), dest,
                                             objects, preset);
        EXPECT_EQ(preset, 0);
        return done;
    }
    bool ParseMetadata(Bytes frame, GUID type) { return Parse(std::move(frame), type, {nullptr, NoPixels}); }

    TSharedPtr<CFrameInfoReduceObject> Info() { return objects.Get<CFrameInfoReduceObject>(0, false); }
    TSharedPtr<CCurlewCameraInfoReduceObject> Camera() { return objects.Get<CCurlewCameraInfoReduceObject>(-1, false); }
    TSharedPtr<CCurlewFactoryCalReduceObject> Cal() { return objects.Get<CCurlewFactoryCalReduceObject>(0, false); }
    /// In the order of the record.
    static std::vector<float> Scene(const CObjectParametersReduceObject& p) {
        return {p.emissivity,    p.distance,       p.reflectedTemp,   p.atmosphereTemp,
                p.extOpticsTemp, p.extOpticsTrans, p.atmosphereTrans, p.relativeHumidity};
    }
    /// Between the last `Parse` and now.
    bool IsNow(const CDateTime& time) const {
        return time.GetTimestamp() >= before.GetTimestamp() && time.GetTimestamp() <= CDateTime().GetTimestamp();
    }

    TSharedPtr<IFilter> filter = filterFactory()->Create(L"K410");
    CReduceObjectArray objects;
    CDateTime before;
};

TEST_F(CK410Test, InfraredFormsGivePixelsNumberAndTime) {
    // A fresh decoder has counted no frame; a digital header holds no time.
    const struct {
        const char* name;
        GUID type;
        bool digital, pixelsSwapped, recordSwapped;
        u64 frameNumber;
        bool timeIsNow;
    } cases[] = {
        {"F7M0 plain", kK410F7M0, false, false, false, 0x1234, false},
        {"F7M0 digital", kK410F7M0, true, false, false, 0x5678, true},
        {"F7M0 swapped record", kK410F7M0, false, false, true, 0x1234, false},
        {"F7M0 swapped pixels", kK410F7M0, false, true, false, 0x1234, false},
        {"FNM0 plain", kK410FNM0, false, false, false, 0, true},
        {"FNM0 digital", kK410FNM0, true, false, false, 0x5678, true},
        {"GigE plain", kK410GigE, false, false, true, 0x1234, false},
        {"GigE digital", kK410GigE, true, true, false, 0x5678, true},
        {"flipped", kK410GigEFlipped, false, false, false, 0x1234, false},
        {"flipped, swapped pixels", kK410GigEFlipped, true, true, true, 0x5678, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        filter = filterFactory()->CreateForPixelType(c.type);
        const std::vector<u16> pixels = Ramp(kPixels);
        SK410Container container;
        container.pixelsSwapped = c.pixelsSwapped ? 1 : 2;  // anything but 1 is the plain order
        container.record.swapped = c.recordSwapped;
        SK410DigitalHeader header;
        header.mark = 0xFE;
        header.in1 = 1;
        header.counter = 0x5678;
        const Bytes frame = c.digital ? DigitalFrame(pixels, header, container) : PlainFrame(pixels, container);

        std::vector<u16> expected = pixels, found(kPixels + 1, 0xDEAD);
        if (c.type == kK410GigEFlipped) std::reverse(expected.begin(), expected.end());
        expected.push_back(0xDEAD);
        ASSERT_TRUE(CheckFrame(L"K410", frame.data(), c.type, kWidth, kHeight, static_cast<u32>(frame.size())));
        ASSERT_TRUE(Parse(frame, c.type, {found.data(), UInt16}));
        EXPECT_EQ(found, expected);

        EXPECT_TRUE(Info()->frameFilled);
        EXPECT_EQ(Info()->preset, 0);
        EXPECT_EQ(Info()->frameNumber, c.frameNumber);
        if (c.timeIsNow) {
            EXPECT_TRUE(IsNow(Info()->time));
        } else {
            EXPECT_EQ(Info()->time.GetTimestamp(), kRecordTime);
        }
        EXPECT_TRUE(Camera()->valid && Camera()->recordPresent);
        EXPECT_EQ(Camera()->digitalHeaderPresent, c.digital);
        const Bytes kept(Camera()->digitalHeader, Camera()->digitalHeader + 32);
        EXPECT_EQ(kept, c.digital ? header.Make() : Bytes(32));
        const std::vector<CString> names = {L"DigitalIn1", L"DigitalIn2", L"Mark"}, values = {L"1", L"0", L"254"};
        ASSERT_EQ(Info()->extra.nValues(), c.digital ? 3u : 0u);
        for (u32 i = 0; i < Info()->extra.nValues(); ++i) {
            const auto entry = Info()->GetAt(3 + i);
            EXPECT_TRUE(entry.name == names[i] && entry.value == values[i]);
            EXPECT_TRUE(entry.unit == L"Flag" && entry.type == L"int");
        }
    }
}

TEST_F(CK410Test, RecordFillsParametersCalibrationAndArchive) {
    const auto floatAt = [](u32 offset) { return static_cast<float>(offset) + 0.25f; };
    const auto wordAt = [](u32 offset) { return static_cast<u16>(100 * offset + 1); };
    for (const bool swapped : {false, true}) {
        SCOPED_TRACE(swapped);
        objects.Reset();
        SK410Container container;
        container.record.swapped = swapped;
        container.record.invalidFrame = 1;
        const auto parameters = objects.Get<CObjectParametersReduceObject>(-1, true);
        parameters->estimatedAtmosphereTrans = 0.75f;
        parameters->valid = false;
        parameters->parameterMask = 0;
        ASSERT_TRUE(ParseMetadata(PlainFrame(Ramp(kPixels), container), kK410F7M0));
        EXPECT_FALSE(Info()->frameFilled);

        const CObjectParametersReduceObject& p = *parameters;
        EXPECT_TRUE(p.fromSource);
        EXPECT_FALSE(p.valid);
        EXPECT_EQ(p.parameterMask, 255u);
        EXPECT_EQ(p.estimatedAtmosphereTrans, 0.75f);
        for (u32 i = 0; i < 8; ++i) EXPECT_EQ(Scene(p)[i], floatAt(32 + 4 * i)) << i;

        const CCurlewFactoryCalReduceObject& c = *Cal();
        EXPECT_TRUE(c.valid);
        EXPECT_EQ(c.offset, 77601);
        EXPECT_EQ(c.nonlinearOffset, 79601);
        EXPECT_EQ(c.imgMin, wordAt(784));
        EXPECT_EQ(c.imgMax, wordAt(786));
        EXPECT_EQ(c.nonlinearOn, wordAt(788));
        const std::pair<float, u32> floats[] = {
            {c.gain, 780},         {c.nonlinearGain, 792}, {c.planckR, 88},         {c.planckB, 92},
            {c.planckF, 96},       {c.atmAlpha1, 112},     {c.atmAlpha2, 116},      {c.atmBeta1, 120},
            {c.atmBeta2, 124},     {c.atmX, 128},          {c.radFitHighTemp, 144}, {c.radFitLowTemp, 148},
            {c.overflowTemp, 152}, {c.underflowTemp, 156}, {c.upperTemp, 160},      {c.lowerTemp, 164},
        };
        for (const auto& [value, offset] : floats) EXPECT_EQ(value, floatAt(offset)) << offset;

        // The archive is the record in the native order, its height being the caller's.
        container.record.swapped = false;
        Bytes expected = container.record.Make();
        Patch(expected, 4, kHeight, 2);
        Patch(expected, 16, kHeight - 1, 2);
        const u8* kept = Camera()->record;
        for (const auto& [from, to] : {std::pair{0u, 18u}, {24u, 26u}, {32u, 64u}, {1130u, 1132u}, {2108u, 2428u}}) {
            EXPECT_TRUE(std::equal(kept + from, kept + to, expected.begin() + from)) << from;
        }
    }
}

/// A GigE frame of 2 x 1 pixels in the digital form with a record of 64 bytes, the smallest that gives all parameters.
TEST_F(CK410Test, FrameByBytes) {
    const float scene[] = {0.75f, 10, 300, 298, 296, 0.5f, 0.25f, 0.125f};
    CByteWriter w;
    w.U16(0x1234).U16(0x5678);                                 // the pixels
    w.PadTo(6).U8(2).PadTo(14).U8(3).U8(0).U8(0xAB).U8(0xCD);  // digital header: mark; inputs, counter, big-endian
    w.PadTo(36).U32(0x4D4B4D).PadTo(100).U16(32);              // container; its first entry is the record,
    w.PadTo(112).U32(100).U32(64);                             // 100 bytes behind its start, of 64 bytes
    w.PadTo(132).U16(1).U16(1);                                // the second entry: the pixels, which are swapped
    w.PadTo(136).U16(2).U16(2).U16(1).PadTo(160).U16(0x2211);  // record: order, size; a counter that is not used
    w.PadTo(168);
    for (const float value : scene) w.F32(value);
    const Bytes& frame = w.bytes;
    ASSERT_EQ(frame.size(), 200u);
    ASSERT_TRUE(CheckFrame(L"K410", frame.data(), kK410GigE, 2, 1, 200));
    ASSERT_TRUE(ParseMetadata(PlainFrame(Ramp(kPixels), {}), kK410GigE));  // what it leaves is not to show
    std::vector<u16> pixels(2);
    ASSERT_TRUE(Parse(frame, kK410GigE, {pixels.data(), UInt16}, 2, 1));
    EXPECT_EQ(pixels, (std::vector<u16>{0x3412, 0x7856}));
    EXPECT_EQ(Info()->frameNumber, 0xABCDu);
    EXPECT_TRUE(Info()->GetValue(L"DigitalIn1") == L"3" && Info()->GetValue(L"Mark") == L"2");
    const std::vector<float> found = Scene(*objects.GetObjectParameters(false));
    EXPECT_TRUE(std::equal(found.begin(), found.end(), scene));
    EXPECT_EQ(std::count(Camera()->record + 64, Camera()->record + 2428, 0), 2364);  // what did not come is zero
}

TEST_F(CK410Test, UnalignedFramesAndAnyLength) {
    for (const u16 width : std::initializer_list<u16>{1, 7, 8, 9, 15, 16, 17, 31, 33, 67}) {
        SCOPED_TRACE(width);
        for (const u16 swapped : {u16{0}, u16{1}}) {
            for (const GUID& type : {kK410F7M0, kK410GigEFlipped}) {
                SK410Container container;
                container.pixelsSwapped = swapped;
                std::vector<u16> expected = Ramp(width), found(width);
                Bytes frame = Join({{0}, PlainFrame(expected, container)});
                if (type == kK410GigEFlipped) std::reverse(expected.begin(), expected.end());
                u8 preset = 0;
                ASSERT_TRUE(filter->ParseFrame(frame.data() + 1, type, width, 1, static_cast<u32>(frame.size() - 1),
                                               {found.data(), UInt16}, objects, preset));
                EXPECT_EQ(found, expected);
            }
        }
    }
}

TEST_F(CK410Test, CompressedFrames) {
    for (const int bits : {9, 12, 13, 14, 16}) {
        SCOPED_TRACE(bits);
        filter = filterFactory()->Create(L"K410");
        const std::vector<u16> pixels = Ramp(kPixels, static_cast<u16>(bits));
        const Bytes frame = CompressedFrame(EncodeJpegLs(pixels, kWidth, kHeight, {.bits = bits}), {});
        ASSERT_TRUE(CheckFrame(L"K410", frame.data(), kK410MJLS, kWidth, kHeight, static_cast<u32>(frame.size())));
        for (const u64 number : {0, 1}) {
            std::vector<u16> found(kPixels);
            ASSERT_TRUE(Parse(frame, kK410MJLS, {found.data(), UInt16}));
            EXPECT_EQ(found, pixels);
            EXPECT_EQ(Info()->frameNumber, number);
            EXPECT_TRUE(IsNow(Info()->time));
        }
        EXPECT_TRUE(Cal()->valid && Camera()->valid && Camera()->recordPresent);
        EXPECT_FALSE(Camera()->digitalHeaderPresent);
    }
    // Nobody looks at what becomes of the stream, but its length and the container are looked at.
    std::vector<u16> found(kPixels, 5);
    EXPECT_TRUE(Parse(CompressedFrame(Bytes(40, 0), {}), kK410MJLS, {found.data(), UInt16}));
    EXPECT_EQ(found, std::vector<u16>(kPixels, 5));
    Bytes frame = CompressedFrame(Bytes(40, 0), {});
    for (const u32 length : {0xFFFFFFFCu, 0xFFFFFFF8u, static_cast<u32>(frame.size() - 7), 39u}) {
        Patch(frame, 0, length, 4, true);
        EXPECT_FALSE(ParseMetadata(frame, kK410MJLS)) << length;
    }
    EXPECT_FALSE(ParseMetadata(Bytes(7), kK410MJLS));
}

TEST_F(CK410Test, VideoFrames) {
    // From the formula by hand: black, white, pure red of the studio range, and values beyond both ends.
    const struct {
        u8 y, u, v;
        u8 rgb[3];
    } colours[] = {
        {16, 128, 128, {0, 0, 0}}, {235, 128, 128, {255, 255, 255}}, {82, 90, 240, {255, 1, 0}},
        {0, 128, 128, {0, 0, 0}},  {255, 255, 255, {255, 125, 255}}, {126, 120, 134, {138, 126, 112}},
        {0, 0, 0, {0, 135, 0}},
    };
    for (const auto& c : colours) {
        SCOPED_TRACE(int{c.y});
        for (const bool uyvy : {false, true}) {
            // Three pixels: of the odd one nothing is written.
            const Bytes pair = uyvy ? Bytes{c.u, c.y, c.v, 16} : Bytes{c.y, c.u, 16, c.v};
            Bytes rgb(9, 77);
            ASSERT_TRUE(Parse(Join({pair, {1, 2}}), uyvy ? kK410UYVY : kK410YUY2, {rgb.data(), Opaque}, 3, 1));
            EXPECT_TRUE(std::equal(rgb.begin(), rgb.begin() + 3, c.rgb))
                << int{rgb[0]} << " " << int{rgb[1]} << " " << int{rgb[2]};
            EXPECT_EQ(Bytes(rgb.begin() + 6, rgb.end()), Bytes(3, 77));
        }
    }
    ASSERT_TRUE(ParseMetadata(PlainFrame(Ramp(kPixels), {}), kK410F7M0));
    ASSERT_TRUE(Cal()->valid && Camera()->valid);
    Info()->extra.Add(L"left", L"over", L"", L"");
    Info()->frameFilled = false;
    Bytes rgb(12);
    ASSERT_TRUE(Parse({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, kK410BGR, {rgb.data(), Opaque}, 2, 2));
    EXPECT_EQ(rgb, (Bytes{9, 8, 7, 12, 11, 10, 3, 2, 1, 6, 5, 4}));
    EXPECT_FALSE(Cal()->valid || Camera()->valid);
    EXPECT_TRUE(Info()->frameFilled && IsNow(Info()->time));
    EXPECT_EQ(Info()->extra.nValues(), 0u);
    EXPECT_EQ(Info()->frameNumber, 15u);  // 14 pairs above, and the infrared frame counts too
}

TEST_F(CK410Test, RefusalsLeaveTheFourObjects) {
    const Bytes good = PlainFrame(Ramp(kPixels), {}), video(3 * kPixels);
    const auto withoutTail = Join({PixelBytes(Ramp(kPixels)), Bytes(3000)});
    const auto changed = [](const std::function<void(SK410Container&)>& change) {
        SK410Container container;
        change(container);
        return PlainFrame(Ramp(kPixels), container);
    };
    const struct {
        const char* name;
        Bytes frame;
        GUID type;
        EDataType dest;
    } cases[] = {
        {"a type of nobody", good, rootIRType, UInt16},
        {"infrared to colours", good, kK410F7M0, Opaque},
        {"compressed to floats", CompressedFrame(Bytes(40), {}), kK410MJLS, Flt32},
        {"video to counts", video, kK410YUY2, UInt16},
        {"neither form of the tail", withoutTail, kK410F7M0, UInt16},
        {"no record entry", changed([](auto& c) { c.firstEntry = 31; }), kK410GigE, UInt16},
        {"no pixels entry", changed([](auto& c) { c.secondEntry = 0; }), kK410GigE, UInt16},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        objects.Reset();
        std::vector<u16> dest(2 * kPixels, 7);
        EXPECT_FALSE(Parse(c.frame, c.type, {dest.data(), c.dest}));
        EXPECT_EQ(dest, std::vector<u16>(2 * kPixels, 7));
        ASSERT_EQ(objects.size(), 4u);
        const GUID order[] = {CObjectParametersReduceObject::typeID, CCurlewFactoryCalReduceObject::typeID,
                              CFrameInfoReduceObject::typeID, CCurlewCameraInfoReduceObject::typeID};
        const u8 presets[] = {255, 0, 0, 255};
        for (u32 i = 0; i < 4; ++i) {
            EXPECT_EQ(objects.GetAt(i)->GetTypeID(), order[i]);
            EXPECT_EQ(objects.GetAt(i)->preset, presets[i]);
        }
    }
    // None of them was counted.
    ASSERT_TRUE(ParseMetadata(good, kK410FNM0));
    EXPECT_EQ(Info()->frameNumber, 0u);
    // A size beyond the record's is cut.
    ASSERT_TRUE(ParseMetadata(changed([](auto& c) { c.recordSize = 3000; }), kK410F7M0));
}

TEST_F(CK410Test, OwnCounterStartsAgainAfter65535) {
    for (u32 i = 0; i < 65535; ++i) ParseMetadata({0, 0, 0, 0}, kK410YUY2);
    for (const u64 number : {65535u, 0u, 1u}) {
        ASSERT_TRUE(ParseMetadata(PlainFrame(Ramp(kPixels), {}), kK410FNM0));
        EXPECT_EQ(Info()->frameNumber, number);
    }
}

TEST_F(CK410Test, LightOperations) {
    SK410Container native, foreign;
    foreign.record.swapped = true;
    const SK410DigitalHeader header{.counter = 0x5678};
    const Bytes plain = PlainFrame(Ramp(kPixels), native), swapped = PlainFrame(Ramp(kPixels), foreign),
                digital = DigitalFrame(Ramp(kPixels), header, native);
    SFrameReader reader(L"K410", kK410F7M0, kWidth, kHeight);
    ASSERT_TRUE(reader.Parse(plain));  // so that the decoder's own counter is 1
    // Read in place, the swapped record's numbers stay swapped: 0x6553F100 s and 0x000000FA ms.
    constexpr i64 kSwappedTime = ((0x00F15365LL + 11644473600LL) * 1000 + 0xFA000000LL) * 10000, kNow = 0, kFails = -1;
    const struct {
        Bytes frame;
        GUID type;
        u64 counter;
        i64 time, basicTime;
    } cases[] = {
        {plain, kK410F7M0, 0x1234, kRecordTime, kRecordTime},
        {plain, kK410GigE, 0x1234, kNow, kRecordTime},
        {plain, kK410GigEFlipped, 0x1234, kNow, kRecordTime},
        {plain, kK410FNM0, 1, kNow, kNow},
        {swapped, kK410F7M0, 0x3412, kSwappedTime, kSwappedTime},
        {digital, kK410F7M0, 0x5678, kNow, kNow},
        {digital, kK410GigE, 0x5678, kNow, kNow},
        {Bytes(3000), kK410F7M0, 0, kFails, kFails},
        {Bytes(3000), kK410GigE, 0, kNow, kFails},
        {Bytes(3000), kK410MJLS, 1, kNow, kNow},
        {Bytes(3000), kK410BGR, 1, kNow, kNow},
        {Bytes(3000), rootIRType, 1, kNow, kNow},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        reader.type = c.type;
        before = CDateTime();
        const auto light = reader.Light(c.frame);
        const auto is = [&](const CDateTime& found, i64 expected) {
            return expected == kNow ? IsNow(found) : found.GetTimestamp() == expected;
        };
        EXPECT_TRUE(light.hasPreset && light.preset == 0 && light.presetOfAll == 0);
        EXPECT_TRUE(light.hasTime ? is(light.time, c.time) : c.time == kFails);
        EXPECT_EQ(light.hasCounter, light.hasAll);
        EXPECT_TRUE(light.hasAll ? is(light.timeOfAll, c.basicTime) : c.basicTime == kFails);
        EXPECT_TRUE(!light.hasAll || (light.counter == c.counter && light.counterOfAll == c.counter));
    }
    // 64 bytes behind the pixels are asked for, and where they are not, the frame's end is not looked beyond.
    u64 counter = 0;
    Bytes cut = plain;
    EXPECT_FALSE(filter->ParseFrameCounter(cut.data(), kK410GigE, kWidth, kHeight, 2 * kPixels + 63, counter));
    EXPECT_TRUE(filter->ParseFrameCounter(cut.data(), kK410GigE, kWidth, kHeight, 2 * kPixels + 64, counter));
}

}  // namespace
}  // namespace ovix::reduce
