#include "core/date_time.h"

#include <gtest/gtest.h>

#include <climits>
#include <ctime>

namespace ovix {
namespace {

constexpr i64 kSecond = 10'000'000;
constexpr i64 kDay = 86'400 * kSecond;
constexpr i64 kStartOf2024 = 133'485'408'000'000'000;  // 154497 days after the start of 1601

TEST(DateTime, CountsFrom1601) {
    const std::pair<i64, const wchar_t*> cases[] = {
        {0, L"1601-01-01 001:00:00:00.000000"},
        {-1, L"1600-12-31 366:23:59:59.999999"},
        {116'444'736'000'000'000, L"1970-01-01 001:00:00:00.000000"},
        {kStartOf2024, L"2024-01-01 001:00:00:00.000000"},
        {kStartOf2024 + 59 * kDay + 12'345'678, L"2024-02-29 060:00:00:01.234567"},
        {INT64_MAX, L"30828-09-14 258:02:48:05.477580"},
        {INT64_MIN, L"-27627-04-19 109:21:11:54.522419"}};
    for (const auto& [ticks, text] : cases) {
        CDateTime time;
        time.SetTimestamp(ticks, 0);
        EXPECT_EQ(time.GetTimestamp(0), ticks);
        EXPECT_STREQ(time.Format(L"%Y-%m-%d %j:%(irig)").GetUTF8(), CString(text).GetUTF8());
    }
    EXPECT_EQ(UnixTimestamp(1'704'067'200, 250), kStartOf2024 + kSecond / 4);
}

TEST(DateTime, IsNowWhenNothingIsSaid) {
    const i64 now = (std::time(nullptr) + 11'644'473'600) * kSecond;
    EXPECT_NEAR(static_cast<double>(CDateTime().GetTimestamp()), static_cast<double>(now), 5e8);
    EXPECT_NEAR(static_cast<double>(CDateTime(L"no time").GetTimestamp()), static_cast<double>(now), 5e8);
}

TEST(DateTime, ReadsDaysOfTheYearAndIso8601) {
    const std::pair<const wchar_t*, i64> cases[] = {// and the time after the start of 2024
                                                    {L"60:1:02:03", 59 * kDay + 3723 * kSecond},
                                                    {L"366:23:59:59.9999999", 366 * kDay - 1},
                                                    {L"366:23:59:59.99999999999999999999999", 366 * kDay - 1},
                                                    {L"367:00:00:00", 366 * kDay},
                                                    {L"000:12:00:00,5", -kDay / 2 + kSecond / 2},
                                                    {L"001:24:00:00", kDay},
                                                    {L"001:23:59:60", kDay},
                                                    {L"2024-02-29", 59 * kDay},
                                                    {L"2024-01-01 01:00:00.25", 3600 * kSecond + kSecond / 4},
                                                    {L"2024-01-01T01:30:00+01:30", 0},
                                                    {L"2023-12-31t19:00:00-0500", 0}};
    for (const auto& [text, expected] : cases) {
        CDateTime time;
        time.SetTimestamp(kStartOf2024);
        EXPECT_TRUE(time.Set(text)) << CString(text).GetUTF8();
        EXPECT_EQ(time.GetTimestamp() - kStartOf2024, expected) << CString(text).GetUTF8();
    }
    const wchar_t* const none[] = {L"",
                                   L"001:00:00",
                                   L"001:25:00:00",
                                   L"001:24:00:01",
                                   L"001:00:60:00",
                                   L"001:00:00:00.",
                                   L"001:00:00:00 ",
                                   L"1000:00:00:00",
                                   L"2023-02-29",
                                   L"2024-13-01",
                                   L"2024-01-01T",
                                   L"2024-01-01T00:00+25:00",
                                   nullptr};
    CDateTime time;
    time.SetTimestamp(kStartOf2024 + 1);
    for (const wchar_t* text : none)
        EXPECT_TRUE(!time.Set(text) && time.GetTimestamp() == kStartOf2024 + 1) << CString(text).GetUTF8();
}

TEST(DateTime, SetsFromDaysOfTheYear) {
    CDateTime time;
    time.SetYYDHMS(2024, 60, 1, 2, 3, 4, 5);
    EXPECT_EQ(time.GetTimestamp(), kStartOf2024 + 59 * kDay + 3723 * kSecond + 40'050);
    time.SetYDHMS(367, 0, 0, 0, 0, 0);
    EXPECT_STREQ(time.Format(L"%Y-%m-%d"), L"2025-01-01");
    time.SetYDHMS(0, 23, 59, 59, 999, 999);
    EXPECT_STREQ(time.Format(L"%Y-%m-%d %H:%M:%S.%f"), L"2024-12-31 23:59:59.999999");

    const std::tuple<int, int, int, int> days[] = {{2024, 60, 2, 29},  {2023, 60, 3, 1},  {2000, 366, 12, 31},
                                                   {1900, 366, 1, 1},  {2024, 0, 12, 31}, {2024, -366, 12, 30},
                                                   {INT_MAX, 1, 1, 1}, {INT_MIN, 1, 1, 1}};
    for (const auto& [year, dayOfYear, expectedMonth, expectedDay] : days) {
        int month = 0, day = 0;
        CDateTime::GetDayInMonth(month, day, year, dayOfYear);
        EXPECT_EQ(month, expectedMonth) << year << " " << dayOfYear;
        EXPECT_EQ(day, expectedDay) << year << " " << dayOfYear;
    }
}

TEST(DateTime, WrapsBeyondItsRange) {
    CDateTime time;
    for (const int extreme : {INT_MIN, INT_MAX}) {
        time.SetYYDHMS(extreme, extreme, extreme, extreme, extreme, extreme, extreme);
        EXPECT_FALSE(time.Format(L"%j:%(irig)").IsEmpty());
        int month = 0, day = 0;
        CDateTime::GetDayInMonth(month, day, extreme, extreme);
        EXPECT_TRUE(month >= 1 && month <= 12 && day >= 1 && day <= 31);
    }
    // The 30,000 years beyond the range are whole turns of 2^64 ticks and a rest, which this sum takes another way.
    time.SetYYDHMS(60'001, 1, 0, 0, 0, 0, 0);
    const u64 days = u64{146} * 146'097;  // 58,400 years after 1601
    EXPECT_EQ(static_cast<u64>(time.GetTimestamp()), days * static_cast<u64>(kDay));
    time.SetTimestamp(INT64_MAX);
    EXPECT_TRUE(time.Set(L"999:23:59:60.9999999"));
}

TEST(DateTime, LeavesUnknownFormatCodes) {
    CDateTime time;
    time.SetTimestamp(kStartOf2024);
    EXPECT_STREQ(time.Format(L"%% %q %( %(irig %"), L"% %q %( %(irig %");
}

}  // namespace
}  // namespace ovix
