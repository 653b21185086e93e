#include "reduce/objects/frame_info_reduce_object.h"

#include <gtest/gtest.h>

namespace ovix::reduce {
namespace {

void ExpectEntry(const CFrameInfoReduceObject::SEntry& entry, const wchar_t* name, const wchar_t* value,
                 const wchar_t* unit, const wchar_t* type, bool exists = true) {
    EXPECT_STREQ(entry.name, name);
    EXPECT_STREQ(entry.value, value);
    EXPECT_STREQ(entry, value);
    EXPECT_STREQ(entry.unit, unit);
    EXPECT_STREQ(entry.type, type);
    EXPECT_EQ(entry.exists, exists);
}

TEST(FrameInfo, FixedRowsStandForFields) {
    CFrameInfoReduceObject info;
    EXPECT_EQ(info.NumEntries(), 3u);
    info.time.SetYYDHMS(2024, 32, 13, 4, 5, 6, 7);
    info.frameNumber = ~u64{0} - 1;
    info.preset = 255;
    ExpectEntry(info.GetAt(0), L"Time", L"032:13:04:05.006007", L"IRIG", L"ascii");
    ExpectEntry(info.Get(L"tIME"), L"Time", L"032:13:04:05.006007", L"IRIG", L"ascii");
    ExpectEntry(info.GetAt(1), L"FrameNumber", L"18446744073709551614", L"counter", L"int");
    ExpectEntry(info.Get(L"framenumber"), L"FrameNumber", L"18446744073709551614", L"counter", L"int");
    ExpectEntry(info.GetAt(2), L"Preset", L"-1", L"counter", L"int");
    ExpectEntry(info.Get(L"PRESET"), L"Preset", L"-1", L"counter", L"int");
    ExpectEntry(info.GetAt(3), L"", L"", L"", L"", false);
    ExpectEntry(info.GetAt(0xFFFFFFFF), L"", L"", L"", L"", false);
}

TEST(FrameInfo, OtherRowsComeFromTheExtras) {
    CFrameInfoReduceObject info;
    info.extra.Add(L"Gain", L"12", L"Counter", L"int");
    info.extra.SetClass(L"Gain", L"group");
    EXPECT_EQ(info.NumEntries(), 4u);
    ExpectEntry(info.GetAt(3), L"Gain", L"12", L"Counter", L"int");
    ExpectEntry(info.Get(L"gAIN"), L"gAIN", L"12", L"Counter", L"int");  // the name asked for
    ExpectEntry(info.Get(L"Other"), L"Other", L"", L"", L"", false);
    EXPECT_EQ(info.NumEntries(), 4u);
    EXPECT_STREQ(info.GetValueAt(3), L"12");
    EXPECT_STREQ(info.GetNameAt(3), L"Gain");
    EXPECT_STREQ(info.GetUnit(L"gain"), L"Counter");
    EXPECT_STREQ(info.GetTypeAt(1), L"int");
}

TEST(FrameInfo, SetValueWritesThrough) {
    CFrameInfoReduceObject info;
    const int year = info.time.GetYear();
    info.SetValue(L"TIME", L"032:13:04:05.006007");
    EXPECT_STREQ(info.GetValueAt(0), L"032:13:04:05.006007");
    EXPECT_NEAR(info.time.GetYear(), year, 1);
    info.SetValue(L"frameNUMBER", L"18446744073709551614");
    EXPECT_EQ(info.frameNumber, 18446744073709551614u);
    info.SetValue(L"preset", L"-1");
    EXPECT_EQ(info.preset, 255);
    EXPECT_EQ(info.NumEntries(), 3u);
    info.extra.Add(L"Gain", L"1", L"Counter", L"int");
    info.SetValue(L"GAIN", L"2");
    ExpectEntry(info.GetAt(3), L"Gain", L"2", L"", L"int");  // a set clears the unit
}

TEST(FrameInfo, DefaultKeepsThePlaceAndDuplicateTakesTheEntries) {
    CFrameInfoReduceObject info;
    info.valid = info.frameFilled = false;
    info.frameNumber = 7;
    info.preset = 2;
    info.time.SetTimestamp(0);
    info.extra.Add(L"a", L"1", L"", nullptr);
    const auto copy = info.Duplicate().Cast<CFrameInfoReduceObject>();
    info.Default();
    EXPECT_TRUE(info.valid && info.frameFilled);
    EXPECT_EQ(info.frameNumber, 7u);
    EXPECT_EQ(info.preset, 2);
    EXPECT_NE(info.time.GetTimestamp(), 0);
    EXPECT_EQ(info.NumEntries(), 3u);
    EXPECT_FALSE(copy->valid || copy->frameFilled);
    EXPECT_EQ(copy->time.GetTimestamp(), 0);
    EXPECT_STREQ(copy->GetValue(L"a"), L"1");
}

}  // namespace
}  // namespace ovix::reduce
