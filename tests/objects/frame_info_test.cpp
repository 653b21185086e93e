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

TEST(FrameInfoExtra, ReservedNamesAreIgnored) {
    CFrameInfoExtra extra;
    for (const wchar_t* name : {L"Time", L"tIMe", L"FRAMENUMBER", L"preset"}) {
        extra.Add(name, L"1", L"2", L"3");
        extra.AddPlaceholder(name, L"2", L"3");
        extra.SetUnit(name, L"2");
        extra.SetType(name, L"3");
        extra.SetClass(name, L"4");
        extra[name] = L"1";
        EXPECT_FALSE(extra[name].Exists());
    }
    EXPECT_EQ(extra.nValues(), 0u);
    extra.Add(L"Preset2", L"1", L"", nullptr);
    EXPECT_EQ(extra.nValues(), 1u);
}

TEST(FrameInfoExtra, AddingFindsByNameOrAppends) {
    CFrameInfoExtra extra;
    extra.AddPlaceholder(L"b", L"u", L"int");
    extra.Add(L"a", L"1", L"v", nullptr);
    extra.Add(L"B", L"2", L"w", nullptr);       // keeps name and type
    extra.AddPlaceholder(L"b", L"x", nullptr);  // keeps the value
    extra.SetType(L"c", L"float");
    ASSERT_EQ(extra.nValues(), 3u);
    EXPECT_STREQ(extra.GetAt(0).name, L"b");
    EXPECT_STREQ(extra.GetValue(L"b"), L"2");
    EXPECT_STREQ(extra.GetUnit(L"b"), L"x");
    EXPECT_STREQ(extra.GetType(L"b"), L"int");
    EXPECT_STREQ(extra.GetClass(L"b"), L"");
    EXPECT_EQ(extra.FindValue(L"C"), 2);
    EXPECT_STREQ(extra.GetValue(L"c"), L"");
    EXPECT_STREQ(extra.GetType(L"none"), L"");
    extra.Remove(L"none");
    extra.Remove(L"A");
    EXPECT_EQ(extra.FindValue(L"c"), 1);
    EXPECT_EQ(extra.FindValue(L"a"), -1);
    const u32 capacity = extra.GetCapacity();
    extra.Clear();
    EXPECT_EQ(extra.nValues(), 0u);
    EXPECT_EQ(extra.GetCapacity(), capacity);
}

TEST(FrameInfoExtra, HandlesReadAndWrite) {
    CFrameInfoExtra extra;
    extra.Add(L"n", L"-12.75", L"unit", L"float");
    CFrameInfoExtra::CEntry entry = extra[0];
    EXPECT_TRUE(entry.Exists());
    EXPECT_EQ(static_cast<int>(entry), -12);
    EXPECT_EQ(static_cast<double>(entry), -12.75);
    EXPECT_EQ(static_cast<i64>(entry), -12);
    EXPECT_STREQ(static_cast<const wchar_t*>(entry), L"-12.75");
    EXPECT_STREQ(entry.setValue(L"3"), L"3");
    EXPECT_STREQ(entry.getUnit(), L"");  // cleared
    EXPECT_STREQ(entry.getType(), L"float");
    EXPECT_STREQ(entry.setUnit(L"K"), L"K");
    EXPECT_STREQ(entry.setType(L"t"), L"t");
    EXPECT_STREQ(entry.setClass(L"c"), L"c");
    EXPECT_STREQ(extra.GetUnit(L"n"), L"K");
    EXPECT_STREQ(entry.getType(), L"t");
    EXPECT_STREQ(entry.getClass(), L"c");

    extra[L"i"] = -5;
    EXPECT_STREQ(extra[L"i"].getValue(), L"-5");
    extra[L"i"] = i64{-9'000'000'000};
    EXPECT_STREQ(extra[L"I"].getValue(), L"-9000000000");
    extra[L"i"] = 0.5;
    EXPECT_STREQ(extra[L"i"].getValue(), L"0.500000");
    EXPECT_EQ(extra.nValues(), 2u);

    const CString unnamed = extra[0u];  // of the first entry, by an index of any type
    CString named(extra[L"N"]);
    EXPECT_STREQ(unnamed, L"3");
    EXPECT_TRUE(named == extra[0]);
    named = extra[L"i"];
    EXPECT_STREQ(named, L"0.500000");

    for (const int index : {-1, 2}) {
        EXPECT_FALSE(extra[index].Exists());
        EXPECT_STREQ(extra[index].getValue(), L"");
        EXPECT_EQ(static_cast<int>(extra[index]), 0);
    }
}

TEST(FrameHeader, DuplicateOwnsItsBytesAndDefaultKeepsTheCapacity) {
    CFrameHeaderReduceObject header;
    header.headerType = "{01020304-0506-0708-090A-0B0C0D0E0F10}"_guid;
    header.headerData = {1, 2, 3};
    const auto copy = header.Duplicate().Cast<CFrameHeaderReduceObject>();
    const u32 capacity = header.headerData.GetCapacity();
    header.Default();
    EXPECT_EQ(header.headerType, CGUID::Empty);
    EXPECT_EQ(header.headerData.size(), 0u);
    EXPECT_EQ(header.headerData.GetCapacity(), capacity);
    ASSERT_EQ(copy->headerData.size(), 3u);
    EXPECT_EQ(copy->headerData.GetAt(2), 3);
    EXPECT_EQ(copy->headerType, "{01020304-0506-0708-090A-0B0C0D0E0F10}"_guid);
}

}  // namespace
}  // namespace ovix::reduce
