#include "core/string.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <thread>

#include "core/typed_data.h"

namespace ovix {
namespace {

TEST(String, TakesAnyBytesAsUtf8AndAnyCodesToIt) {
    const std::tuple<const char*, std::u32string, const char*> cases[] = {
        {"", U"", ""},
        {"K410", U"K410", "K410"},
        {"\xC2\xB0\x43", U"\u00B0C", "\xC2\xB0\x43"},
        {"\xE2\x82\xAC", U"\u20AC", "\xE2\x82\xAC"},
        {"\xF0\x9F\x8C\xA1", U"\U0001F321", "\xF0\x9F\x8C\xA1"},
        {"a\xFFz", U"a\uFFFDz", "a\xEF\xBF\xBDz"},     // no UTF-8 byte
        {"a\xC2", U"a\uFFFD", "a\xEF\xBF\xBD"},        // cut off
        {"\xB0\x43", U"\uFFFDC", "\xEF\xBF\xBD\x43"},  // another encoding's degree sign
    };
    for (const auto& [bytes, wide, utf8] : cases) {
        const CString text(bytes);
        EXPECT_EQ(std::u32string(text.c_str(), text.c_str() + text.length()), wide) << bytes;
        EXPECT_STREQ(text.GetUTF8(), utf8);
        CStringMB narrow;
        narrow.Copy(bytes);
        EXPECT_STREQ(narrow, utf8);
        EXPECT_EQ(narrow.length(), static_cast<int>(std::strlen(utf8)));
    }
    const wchar_t codes[] = {L'a', static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000),
                             static_cast<wchar_t>(-1), 0};
    EXPECT_STREQ(CString(codes).GetUTF8(), "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_STREQ(CStringMB(codes), "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(String, KeepsTextAndUtf8InStepThroughChanges) {
    CString text(L"abcdef", 3);
    EXPECT_STREQ(text.GetUTF8(), "abc");
    text = text.c_str() + 1;  // of its own
    EXPECT_STREQ(text.GetUTF8(), "bc");
    text = text + L"d";
    EXPECT_STREQ(text.GetUTF8(), "bcd");

    std::wcscpy(text.GetBuffer(10), L"buffer");
    text.ReleaseBuffer();
    EXPECT_EQ(std::string(text.GetUTF8(), static_cast<u32>(text.length())), "buffer");
    text.GetBuffer(3);  // shorter than the text, and not released before it is copied
    EXPECT_STREQ(CString(text).GetUTF8(), "buf");

    CString taken(std::move(text));
    EXPECT_STREQ(taken.GetUTF8(), "buf");
    text = static_cast<const wchar_t*>(nullptr);
    EXPECT_STREQ(text, L"");
    EXPECT_STREQ(text.GetUTF8(), "");
}

TEST(String, GivesUtf8ToSeveralThreads) {
    const CString text(L"\u00B0C");
    std::jthread threads[4];
    for (std::jthread& thread : threads) thread = std::jthread([&] { EXPECT_STREQ(text.GetUTF8(), "\xC2\xB0\x43"); });
}

TEST(String, ComparesLatinLettersWithoutCase) {
    const CString text(L"table.MVG");
    EXPECT_TRUE(text.EqualsNoCase(L"TABLE.mvg") && text.EndsWithNoCase(L".mvg"));
    EXPECT_FALSE(text.EqualsNoCase(L"table.mv") || text.Equals(L"table.mvg"));
    EXPECT_FALSE(text.EndsWithNoCase(L".mvo") || text.EndsWithNoCase(L"a table.mvg"));
    EXPECT_FALSE(EqualsNoCase(L"[", L"{") || EqualsNoCase(L"@", L"`")) << "the neighbours of the letters";
}

TEST(String, FormatsInEveryLocaleAndWithBadDirectives) {
    const char* const before = std::setlocale(LC_ALL, nullptr);
    const std::string saved(before ? before : "C");
    std::setlocale(LC_ALL, "de_DE.UTF-8");  // where it is installed
    const std::pair<CString, const char*> cases[] = {
        {CString::FromFormat(L"%s|%10s|%-4s|%.2s", L"\u00B0C", L"wide", L"x", L"cut"),
         "\xC2\xB0\x43|      wide|x   |cu"},
        {CString::FromFormat(L"%S", "\xC2\xB0"), "\xC2\xB0"},
        {CString::FromFormat(L"%hs %ls", "narrow", L"wide"), "narrow wide"},
        {CString::FromFormat(L"%I64d %I64u", INT64_MIN, UINT64_MAX), "-9223372036854775808 18446744073709551615"},
        {CString::FromFormat(L"%08X-%04x %c %d%%", 0xBEEFu, 0xAu, L'c', -5), "0000BEEF-000a c -5%"},
        {CString::FromFormat(L"%.2f %g %*d", 1234.5, 0.5, 4, 7), "1234.50 0.5    7"},
        {CString::FromFormat(L"%y %-5 %d", 1), "%y %-5 1"},
        {CString::FromFormat(L"%n 100%"), "%n 100%"}};
    for (const auto& [text, expected] : cases) EXPECT_STREQ(text.GetUTF8(), expected);
    EXPECT_EQ(CString::FromFormat(L"%s", std::wstring(5000, L'x').c_str()).length(), 5000);
    std::setlocale(LC_ALL, saved.c_str());
}

TEST(String, CopiesCutAndChangesExtensions) {
    char dest[8];
    const std::pair<int, const char*> cuts[] = {{8, "abcd"}, {5, "abcd"}, {3, "ab"}, {1, ""}, {0, "###"}, {-1, "###"}};
    for (const auto& [size, expected] : cuts) {
        std::strcpy(dest, "###");
        StrCpy(dest, "abcd", size);
        EXPECT_STREQ(dest, expected) << size;
    }
    const wchar_t* const paths[][3] = {
        {L"a/b.mvg", L".mvo", L"a/b.mvo"}, {L"a/b", L".mvo", L"a/b.mvo"}, {L"a.dir/b", L".mvo", L"a.dir/b.mvo"},
        {L"b.x.mvg", L"mvb", L"b.x.mvb"},  {L"b.mvg", L"", L"b"},         {L"", L".mvg", L".mvg"}};
    for (const auto& [path, extension, expected] : paths)
        EXPECT_STREQ(path::ChangeExtension(path, extension), expected);
}

TEST(Numbers, HaveDecimalTexts) {
    const std::pair<CString, const char*> cases[] = {
        {CInt32::ToString(INT32_MIN), "-2147483648"},
        {CUInt8::ToString(255), "255"},
        {CUInt16::ToString(65535), "65535"},
        {CUInt32::ToString(CUInt32::Max), "4294967295"},
        {CUInt64::ToString(CUInt64::Max), "18446744073709551615"},
        {CFlt32::ToString(0.1f), "0.1"},
        {CFlt32::ToString(273.15f), "273.15"},
        {CFlt32::ToString(16777216.0f), "16777216"},
        {CFlt32::ToString(std::numeric_limits<float>::infinity()), "inf"},
        {CFlt32::ToString(-std::numeric_limits<float>::quiet_NaN()), "nan"}};
    for (const auto& [text, expected] : cases) EXPECT_STREQ(text.GetUTF8(), expected);

    wchar_t dest[5] = L"####";
    ltotcs(-12, dest, std::size(dest));
    EXPECT_STREQ(dest, L"-12");
    ltotcs(-12345, dest, std::size(dest));
    EXPECT_STREQ(dest, L"-123");
    ltotcs(7, dest, 0);
    EXPECT_STREQ(dest, L"-123");
}

TEST(Numbers, AreReadUpToTheFirstOtherCharacter) {
    const struct {
        const wchar_t* text;
        u64 unsigned64;
        i8 signed8;
        i32 signed32;
        i64 signed64;
        double real;
    } cases[] = {{L"", 0, 0, 0, 0, 0},
                 {L" \t12.5x", 12, 12, 12, 12, 12.5},
                 {L"+-5", 0, 0, 0, 0, 0},
                 {L"-1", CUInt64::Max, -1, -1, -1, -1},
                 {L"255", 255, -1, 255, 255, 255},
                 {L"3000000000", 3000000000, 0, INT32_MAX, 3000000000, 3e9},
                 {L"-3000000000", u64{0} - 3000000000, 0, INT32_MIN, -3000000000, -3e9},
                 {L"18446744073709551615", CUInt64::Max, -1, INT32_MAX, INT64_MAX, 18446744073709551615.0},
                 {L"18446744073709551616", CUInt64::Max, -1, INT32_MAX, INT64_MAX, 18446744073709551616.0},
                 {L"1e3", 1, 1, 1, 1, 1000},
                 {L"1,5", 1, 1, 1, 1, 1}};
    for (const auto& c : cases) {
        const CVariant variant(c.text);
        EXPECT_EQ(variant.ToUInt64(), c.unsigned64) << CString(c.text).GetUTF8();
        EXPECT_EQ(variant.ToInt8(), c.signed8) << CString(c.text).GetUTF8();
        EXPECT_EQ(TextToInt32(c.text), c.signed32) << CString(c.text).GetUTF8();
        EXPECT_EQ(TextToInt64(c.text), c.signed64) << CString(c.text).GetUTF8();
        EXPECT_EQ(TextToDouble(c.text), c.real) << CString(c.text).GetUTF8();
    }
}

}  // namespace
}  // namespace ovix
