#include "reduce/objects/frame_info_reduce_object.h"

#include <gtest/gtest.h>

#include "support/text.h"

namespace ovix::reduce {
namespace {

using test::Text;

std::string Row(const CFrameInfoReduceObject::SEntry& e) {
    EXPECT_STREQ(e, e.value);
    return Text(e.name, e.value, e.unit, e.type, e.exists);
}

TEST(FrameInfo, FixedRowsStandForFields) {
    CFrameInfoReduceObject info;
    info.time.SetYYDHMS(2024, 32, 13, 4, 5, 6, 7);
    info.frameNumber = ~u64{0} - 1;
    info.preset = 255;
    const struct {
        const wchar_t* name;
        const char* row;
    } rows[] = {{L"tIME", "Time 032:13:04:05.006007 IRIG ascii 1 "},
                {L"framenumber", "FrameNumber 18446744073709551614 counter int 1 "},
                {L"PRESET", "Preset -1 counter int 1 "}};
    EXPECT_EQ(info.NumEntries(), 3u);
    for (u32 i = 0; i < 3; ++i) {
        EXPECT_EQ(Row(info.GetAt(i)), rows[i].row);
        EXPECT_EQ(Row(info.Get(rows[i].name)), rows[i].row);
    }
    for (const u32 none : {3u, 0xFFFFFFFFu}) EXPECT_EQ(Row(info.GetAt(none)), "    0 ");
}

TEST(FrameInfo, OtherRowsComeFromTheExtras) {
    CFrameInfoReduceObject info;
    info.extra.Add(L"Gain", L"12", L"Counter", L"int");
    info.extra.SetClass(L"Gain", L"group");
    EXPECT_EQ(Row(info.GetAt(3)), "Gain 12 Counter int 1 ");
    EXPECT_EQ(Row(info.Get(L"gAIN")), "gAIN 12 Counter int 1 ");  // the name asked for
    EXPECT_EQ(Row(info.Get(L"Other")), "Other    0 ");
    EXPECT_EQ(info.NumEntries(), 4u);
    EXPECT_EQ(Text(info.GetValueAt(3), info.GetNameAt(3), info.GetUnit(L"gain"), info.GetTypeAt(1)),
              "12 Gain Counter int ");
}

TEST(FrameInfo, SetValueWritesThrough) {
    CFrameInfoReduceObject info;
    const int year = info.time.GetYear();
    info.SetValue(L"TIME", L"032:13:04:05.006007");
    info.SetValue(L"frameNUMBER", L"18446744073709551614");
    info.SetValue(L"preset", L"-1");
    EXPECT_EQ(Text(info.GetValueAt(0), info.frameNumber, info.preset, info.NumEntries()),
              "032:13:04:05.006007 18446744073709551614 255 3 ");
    EXPECT_NEAR(info.time.GetYear(), year, 1);
    info.extra.Add(L"Gain", L"1", L"Counter", L"int");
    info.SetValue(L"GAIN", L"2");
    EXPECT_EQ(Row(info.GetAt(3)), "Gain 2  int 1 ");  // a set clears the unit
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
    EXPECT_EQ(Text(info.valid, info.frameFilled, info.frameNumber, info.preset, info.NumEntries()), "1 1 7 2 3 ");
    EXPECT_NE(info.time.GetTimestamp(), 0);
    EXPECT_EQ(Text(copy->valid, copy->frameFilled, copy->time.GetTimestamp(), copy->GetValue(L"a")), "0 0 0 1 ");
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
    EXPECT_EQ(
        Text(extra.GetAt(0).name, extra.GetValue(L"b"), extra.GetUnit(L"b"), extra.GetType(L"b"), extra.GetClass(L"b")),
        "b 2 x int  ");
    EXPECT_EQ(Text(extra.FindValue(L"C"), extra.GetValue(L"c"), extra.GetType(L"none")), "2   ");
    extra.Remove(L"none");
    extra.Remove(L"A");
    EXPECT_TRUE(extra.FindValue(L"c") == 1 && extra.FindValue(L"a") == -1);
    const u32 capacity = extra.GetCapacity();
    extra.Clear();
    EXPECT_TRUE(extra.nValues() == 0 && extra.GetCapacity() == capacity);
}

TEST(FrameInfoExtra, HandlesReadAndWrite) {
    CFrameInfoExtra extra;
    extra.Add(L"n", L"-12.75", L"unit", L"float");
    CFrameInfoExtra::CEntry entry = extra[0];
    EXPECT_EQ(Text(entry.Exists(), static_cast<int>(entry), static_cast<double>(entry), static_cast<i64>(entry),
                   static_cast<const wchar_t*>(entry)),
              "1 -12 -12.75 -12 -12.75 ");
    EXPECT_STREQ(entry.setValue(L"3"), L"3");
    EXPECT_EQ(Text(entry.getUnit(), entry.getType()), " float ");  // the unit is cleared
    EXPECT_EQ(Text(entry.setUnit(L"K"), entry.setType(L"t"), entry.setClass(L"c")), "K t c ");
    EXPECT_EQ(Text(extra.GetUnit(L"n"), entry.getType(), entry.getClass()), "K t c ");

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
        EXPECT_EQ(Text(extra[index].Exists(), extra[index].getValue(), static_cast<int>(extra[index])), "0  0 ");
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
    EXPECT_TRUE(header.headerData.size() == 0 && header.headerData.GetCapacity() == capacity);
    EXPECT_TRUE(copy->headerData.size() == 3 && copy->headerData.GetAt(2) == 3);
    EXPECT_EQ(copy->headerType, "{01020304-0506-0708-090A-0B0C0D0E0F10}"_guid);
}

}  // namespace
}  // namespace ovix::reduce
