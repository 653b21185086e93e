#include "reduce/filters/osprey_filter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "core/pixel_types.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "support/frame_reader.h"
#include "support/header_line_frames.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// What comes of a header; the caller may have prepared the source.
struct SParsed {
    explicit SParsed(bool fixedPreset = false) {
        if (fixedPreset) objects.GetSourceInfo(true)->fixedPreset = true;
    }
    SParsed& Parse(const wchar_t* filter, GUID type, Bytes header = LORHeader()) {
        EXPECT_TRUE(
            filterFactory()->Create(filter)->ParseReduceObjects(header.data(), type, 60, 0, 120, objects, preset));
        return *this;
    }
    std::string Text(const wchar_t* name) { return objects.GetFrameInfo(preset, false)->GetValue(name).GetUTF8(); }

    CReduceObjectArray objects;
    u8 preset = 9;
};

TEST(LORFilter, YearOfTheCallerAndHoursInTwoPlaces) {
    Bytes header = LORHeader();
    Patch(header, 2, 366 << 2 | 1, 2);  // two bits for 16 hours and more
    Patch(header, 4, 7 << 12 | 59 << 6 | 58, 2);
    CDateTime time, expected;
    time.SetYYDHMS(2000, 1, 0, 0, 0, 0, 0);
    ASSERT_TRUE(filterFactory()->Create(L"LOR-RA")->ParseTime(header.data(), kLORRA, 640, 512, 120, time));
    expected.SetYYDHMS(2000, 366, 23, 59, 58, 789, 12);
    EXPECT_EQ(time, expected);
}

TEST(LORFilter, SomeDetectorsShowDegrees) {
    for (const auto& [type, subType, shown] :
         {std::tuple{3, 4, "-196.15"}, {3, 5, "-196.15"}, {3, 3, "77.00"}, {3, 6, "77.00"}, {2, 4, "77.00"}}) {
        Bytes header = LORHeader();
        header[60] = static_cast<u8>(type);
        header[61] = static_cast<u8>(subType);
        EXPECT_EQ(SParsed().Parse(L"LOR-RA", kLORRA, header).Text(L"FPATemp"), "77.00");
        EXPECT_EQ(SParsed().Parse(L"LOR-SB", kLORSB, header).Text(L"FPATemp"), shown) << type << ' ' << subType;
    }
}

TEST(LORFilter, LensBlockByItsLowestThreeBits) {
    for (const int state : {1, 9, 0x81, 0xFF01, 0, 2, 3, 5}) {
        const bool there = (state & 7) == 1;
        Bytes header = LORHeader();
        Patch(header, 96, static_cast<u64>(state), 2);
        SParsed sb;
        EXPECT_EQ(!sb.Parse(L"LOR-SB", kLORSBHeader, header).Text(L"IHFOV").empty(), there) << state;
        const auto view = sb.objects.GetFOV(false);
        ASSERT_EQ(static_cast<bool>(view), there) << state;
        if (!there) continue;
        EXPECT_NEAR(view->IHFOV, 280, 1e-4);
        EXPECT_TRUE(view->valid && view->IVFOV == view->IHFOV);
    }
    Bytes header = LORHeader();
    Patch(header, 98, 0, 4);
    SParsed sb;
    EXPECT_EQ(sb.Parse(L"LOR-SB", kLORSB, header).Text(L"IVFOV"), "inf");
    EXPECT_TRUE(std::isinf(sb.objects.GetFOV(false)->IHFOV));
    EXPECT_FALSE(SParsed().Parse(L"LOR-RA", kLORRA).objects.GetFOV(false));
}

TEST(LORFilter, SourceFixesThePresetOfOneKindOfHeader) {
    SParsed fixed(true);
    EXPECT_EQ(fixed.Parse(L"LOR-SB", kLORSBHeader).preset, 0);
    EXPECT_EQ(fixed.objects.GetFrameInfo(0, false)->preset, 0);
    EXPECT_EQ(fixed.Text(L"ActivePreset"), "2");  // the header's own
    for (const GUID& type : {kLORSB, rootIRType}) EXPECT_EQ(fixed.Parse(L"LOR-SB", type).preset, 2);
    EXPECT_EQ(fixed.Parse(L"LOR-RA", kLORRAHeader).preset, 2);
    SParsed free;
    free.objects.GetSourceInfo(true);
    EXPECT_EQ(free.Parse(L"LOR-SB", kLORSBHeader).preset, 2);
}

TEST(LORFilter, Triggers) {
    for (const auto& [name, type, fields] : {std::tuple{L"LOR-RA", kLORRA, 1u}, {L"LOR-SB", kLORSB, 2u}}) {
        const auto filter = filterFactory()->Create(name);
        TArray<CString> names{L"left over"};
        EXPECT_TRUE(filter->GetTriggerFields(CGUID::Empty, names));
        ASSERT_EQ(names.size(), fields);
        EXPECT_TRUE(names[0] == L"Trigger" && (fields == 1 || names[1] == L"RecordStart"));
        bool triggered = false;
        u16 index = 9;
        Bytes header = LORHeader();
        for (const u32 inputs : {0x0000u, 0x4000u, 0x8000u, 0xC000u}) {
            Patch(header, 10, inputs, 2);
            for (u8 field = 0; field < 3; ++field) {
                ASSERT_EQ(filter->CheckForTrigger(header.data(), 96, type, 640, 512, 1, field, triggered, index),
                          field < fields);
                EXPECT_EQ(triggered, field < fields && (inputs & 0x8000u >> field) != 0) << inputs;
                EXPECT_EQ(index, 0);
            }
        }
        EXPECT_FALSE(filter->CheckForTrigger(header.data(), 95, type, 640, 512, 1, 0, triggered, index));
        EXPECT_FALSE(filter->CheckForTrigger(header.data(), 96, kOsprey, 640, 512, 1, 0, triggered, index));
    }
}

TEST(OspreyFilter, ObjectsOfItsOwn) {
    for (const u16 width : {u16{95}, u16{96}}) {
        Bytes line = OspreyHeader(width);
        CReduceObjectArray objects;
        u8 preset = 9;
        for (const EDataType refused : {Flt32, Int16, Opaque}) {
            EXPECT_FALSE(COspreyFilter().ParseFrame(line.data(), kOspreyHeader, width, 1, 192, {nullptr, refused},
                                                    objects, preset));
        }
        EXPECT_EQ(objects.GetSize(), 0u);
        ASSERT_TRUE(COspreyFilter().ParseReduceObjects(line.data(), kOspreyHeader, width, 1, 192, objects, preset));
        ASSERT_EQ(objects.GetSize(), 3u);
        EXPECT_EQ(objects.GetAt(1)->GetTypeID(), CFrameInfoReduceObject::typeID);
        const auto tern = objects.GetAt(0).Cast<CTernFactoryCalReduceObject>();
        EXPECT_TRUE(tern->frontPanelTemp == 300.493744f && tern->airGapTemp == 223.149994f);
        EXPECT_TRUE(tern->dewarTemp == 463.150024f && tern->preset == 2 && !tern->valid);
        const auto raw = objects.GetAt(2).Cast<COspreyFrameInfoReduceObject>();
        EXPECT_EQ(Text(raw->valid, raw->persist, raw->preset, raw->frameNumber, raw->headerWords),
                  Text(1, 0, 2, 4660, width));
        EXPECT_EQ(std::memcmp(raw->header, line.data(), 192), 0);
    }
}

TEST(OspreyFilter, OnlyBitsAreMasked) {
    Bytes line = OspreyHeader(100);
    for (std::size_t i = 1; i < line.size(); i += 2) line[i] = 0x01;
    COspreyFilter::SHeader header;
    ASSERT_TRUE(COspreyFilter::ParseHeader(header, line.data(), 100));
    EXPECT_EQ(header.integrationTime, 0x0101614Bu);  // 0x100, 0x100, 0x161, 0x14B, each a byte on from the one before
    EXPECT_EQ(header.frameCounter, 0x11334u);        // 0x112, 0x134
    EXPECT_EQ(header.saturation, 0xB1334u);          // the four bits of 0x1FA, then 0x112, 0x134
    EXPECT_EQ(Text(header.preset, header.saturationFlag, header.day, header.milliseconds, header.microseconds),
              "2 128 123 789 12 ");
    EXPECT_FLOAT_EQ(header.airGapTemp, (256 * 2.4f / 1024 - 0.5f) * 100);  // 0x100, and no bit of 0x1F0
}

TEST(OspreyFilter, TimesOutOfRange) {
    Bytes line = OspreyHeader(100), good = line;
    const auto expect = [&](int day, int hours) {
        CDateTime time, expected;  // in the present year, from which long days lead away
        expected.SetYDHMS(day, hours, 25, 36, 789, 12);
        EXPECT_TRUE(COspreyFilter().ParseTime(line.data(), kOsprey, 100, 0, 200, time));
        EXPECT_EQ(time, expected) << day;
    };
    const std::tuple<int, int, int> days[] = {{0x03, 0x66, 366}, {0x12, 0x33, 999}, {0x12, 0x34, 1},
                                              {0x16, 0x00, 367}, {0x20, 0x00, 767}, {0x99, 0x99, 999},
                                              {0xFF, 0xFF, 999}, {0x00, 0x0F, 15}};
    for (const auto& [high, low, day] : days) {
        PutLow(line, 75, {low, high});
        expect(day, 14);
    }
    // 110 hours: the light operations count them through, the frame info keeps the time of the frame before.
    PutLow(line, 74, {0xAA, 0x01, 0x00});
    expect(1, 110);
    CReduceObjectArray objects;
    u8 preset = 0;
    for (Bytes* each : {&good, &line})
        COspreyFilter().ParseReduceObjects(each->data(), kOspreyHeader, 100, 9, 192, objects, preset);
    EXPECT_STREQ(objects.GetFrameInfo(2, false)->time.Format(L"%j:%(irig)").GetUTF8(), "123:14:25:36.789012");
}

TEST(OspreyFilter, EncodedHeaderByteByByte) {
    COspreyFilter::SHeader header;
    header.preset = 16, header.integrationTime = 0x01020304, header.frameCounter = 0x54321;
    header.saturationFlag = 1, header.saturation = 0x0A1234, header.resolution = 0x0F0E;
    header.fpaControlWord = 0x8042A107, header.fpaWindowWord = 0x02800200;
    header.day = 366, header.hours = 23, header.minutes = 59, header.seconds = 58;
    header.milliseconds = 987, header.microseconds = 654;
    header.airGapTemp = 31, header.dewarTemp = -50, header.frontPanelTemp = 27.5f;
    for (const u16 width : {u16{95}, u16{96}}) {
        Bytes line(192, 0xE0), expected = line, clean(192);
        ASSERT_TRUE(COspreyFilter::EncodeHeader(header, line.data(), width));
        PutLow(expected, 1, {0x10, 1, 2, 3, 4, 0x80, 0x42, 0xA1, 0x07, 2, 0x80, 2, 0});
        PutLow(expected, 18, {0x43, 0x21});
        Patch(expected, 40, 0xEF0E, 2);
        PutLow(expected, 21, {0x8A, 0x12, 0x34});
        const std::size_t block = width == 95 ? 24 : 69;
        const u16 clock[] = {0x54, 0x76, 0x98, 0x58, 0x59, 0x23, 0x66, 0x03};
        for (std::size_t i = 0; i < 8; ++i) Patch(expected, 2 * (block + i), clock[i], 2);
        PutLow(expected, block + 8, {0, 0, 0, 0xC0, 0x0D});
        PutLow(expected, block + 19, {0x4A, 0x01, 0x59, 0x01, 0, 0});
        EXPECT_EQ(line, expected) << width;

        COspreyFilter::SHeader read;
        COspreyFilter::EncodeHeader(header, clean.data(), width);
        COspreyFilter::ParseHeader(read, clean.data(), width);
        EXPECT_EQ(read.preset, 1);  // goes out unshifted
    }
}

TEST(OspreyFrameInfo, DuplicateTakesWordsForBytes) {
    COspreyFrameInfoReduceObject object;
    for (u16 i = 0; i < 96; ++i) object.header[i] = static_cast<u16>(0x101 * (i + 1));
    for (const u16 words : {u16{0}, u16{50}, u16{96}, u16{500}}) {
        object.headerWords = words;
        const auto copy = object.Duplicate().Cast<COspreyFrameInfoReduceObject>();
        EXPECT_EQ(copy->headerWords, words);
        for (int i = 0; i < 96; ++i) EXPECT_EQ(copy->header[i], i < std::min<int>(words, 96) / 2 ? 0x101 * (i + 1) : 0);
    }
    const COspreyFrameInfoReduceObject assigned = object;
    EXPECT_EQ(assigned.header[95], 0x101 * 96);
    object.Default();
    EXPECT_EQ(object.header[0] + object.headerWords, 0);
}

TEST(MVFalconFilter, PresetAndDayWithoutTheirLimits) {
    const auto filter = filterFactory()->Create(L"MVFalcon");
    const std::tuple<int, int, int> cases[] = {
        {0x03, 0x65, 365}, {0x12, 0x33, 1233}, {0x12, 0x34, 1}, {0x20, 0x00, 767}};
    for (const auto& [high, low, day] : cases) {
        Bytes header = MVFalconHeader(130);
        PutLow(header, 30, {low, high});
        u8 preset = 0;
        u64 counter = 0;
        CDateTime time, expected;
        ASSERT_TRUE(filter->ParseBasicInfo(header.data(), kMVFalconHeader, 130, 9, 256, preset, counter, time));
        EXPECT_EQ(preset, 6);  // the whole byte, of which `ParseFrame` takes two bits
        expected.SetYDHMS(day, 14, 25, 36, 789, 12);
        EXPECT_EQ(time, expected);
        CReduceObjectArray objects;
        ASSERT_TRUE(filter->ParseReduceObjects(header.data(), kMVFalconHeader, 130, 9, 256, objects, preset));
        EXPECT_EQ(preset, 2);
        EXPECT_EQ(objects.GetFrameInfo(2, false)->time, expected);
    }
}

}  // namespace
}  // namespace ovix::reduce
