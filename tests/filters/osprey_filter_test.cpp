#include "reduce/filters/osprey_filter.h"

#include <gtest/gtest.h>

#include <cstring>

#include "reduce/convert/factory_calibrations.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "support/header_line_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

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
        EXPECT_EQ(tern->frontPanelTemp, 300.493744f);
        EXPECT_EQ(tern->airGapTemp, 223.149994f);
        EXPECT_EQ(tern->dewarTemp, 463.150024f);
        EXPECT_EQ(tern->preset, 2);
        EXPECT_FALSE(tern->valid);
        const auto raw = objects.GetAt(2).Cast<COspreyFrameInfoReduceObject>();
        EXPECT_TRUE(raw->valid && !raw->persist);
        EXPECT_EQ(raw->preset, 2);
        EXPECT_EQ(raw->frameNumber, 4660u);
        EXPECT_EQ(raw->headerWords, width);
        EXPECT_EQ(std::memcmp(raw->header, line.data(), 192), 0);
    }
}

TEST(OspreyFilter, OnlyBitsAreMasked) {
    Bytes line = OspreyHeader(100);
    for (std::size_t i = 1; i < line.size(); i += 2) line[i] = 0x01;
    COspreyFilter::SHeader header;
    ASSERT_TRUE(COspreyFilter::ParseHeader(header, line.data(), 100));
    EXPECT_EQ(header.preset, 2);
    EXPECT_EQ(header.integrationTime, 0x0101614Bu);  // 0x100, 0x100, 0x161, 0x14B, each a byte on from the one before
    EXPECT_EQ(header.frameCounter, 0x11334u);        // 0x112, 0x134
    EXPECT_EQ(header.saturationFlag, 0x80);
    EXPECT_EQ(header.saturation, 0xB1334u);  // the four bits of 0x1FA, then 0x112, 0x134
    EXPECT_EQ(header.day, 123);
    EXPECT_EQ(header.milliseconds, 789);
    EXPECT_EQ(header.microseconds, 12);
    EXPECT_FLOAT_EQ(header.airGapTemp, (256 * 2.4f / 1024 - 0.5f) * 100);  // 0x100, and no bit of 0x1F0
}

TEST(OspreyFilter, TimesOutOfRange) {
    const struct {
        int high, low;
        int day;
    } cases[] = {{0x03, 0x66, 366}, {0x12, 0x33, 999}, {0x12, 0x34, 1},   {0x16, 0x00, 367},
                 {0x20, 0x00, 767}, {0x99, 0x99, 999}, {0xFF, 0xFF, 999}, {0x00, 0x0F, 15}};
    CDateTime time;
    Bytes line = OspreyHeader(100), good = line;
    for (const auto& c : cases) {
        PutLow(line, 75, {c.low, c.high});
        ASSERT_TRUE(COspreyFilter().ParseTime(line.data(), kOsprey, 100, 0, 200, time));
        CDateTime expected;  // in the present year, from which long days lead away
        expected.SetYDHMS(c.day, 14, 25, 36, 789, 12);
        EXPECT_EQ(time, expected) << c.day;
    }
    // 110 hours: the light operations count them through, the frame info keeps the time of the frame before.
    PutLow(line, 74, {0xAA, 0x01, 0x00});
    ASSERT_TRUE(COspreyFilter().ParseTime(line.data(), kOsprey, 100, 0, 200, time));
    CDateTime expected;
    expected.SetYDHMS(1, 110, 25, 36, 789, 12);
    EXPECT_EQ(time, expected);
    CReduceObjectArray objects;
    u8 preset = 0;
    for (Bytes* each : {&good, &line})
        COspreyFilter().ParseReduceObjects(each->data(), kOspreyHeader, 100, 9, 192, objects, preset);
    EXPECT_STREQ(objects.GetFrameInfo(2, false)->time.Format(L"%j:%(irig)").GetUTF8(), "123:14:25:36.789012");
}

TEST(OspreyFilter, EncodedHeaderByteByByte) {
    COspreyFilter::SHeader header{.preset = 16,
                                  .integrationTime = 0x01020304,
                                  .frameCounter = 0x54321,
                                  .saturationFlag = 1,
                                  .saturation = 0x0A1234,
                                  .fpaControlWord = 0x8042A107,
                                  .fpaWindowWord = 0x02800200,
                                  .resolution = 0x0F0E,
                                  .day = 366,
                                  .hours = 23,
                                  .minutes = 59,
                                  .seconds = 58,
                                  .milliseconds = 987,
                                  .microseconds = 654,
                                  .airGapTemp = 31,
                                  .dewarTemp = -50,
                                  .frontPanelTemp = 27.5f};
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

}  // namespace
}  // namespace ovix::reduce
