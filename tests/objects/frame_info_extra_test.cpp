#include "reduce/objects/frame_info_reduce_object.h"

#include <gtest/gtest.h>

namespace ovix::reduce {
namespace {

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

}  // namespace
}  // namespace ovix::reduce
