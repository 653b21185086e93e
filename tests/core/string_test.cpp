#include "core/string.h"

#include <gtest/gtest.h>

#include <clocale>
#include <thread>

#include "core/array.h"

namespace ovix {
namespace {

TEST(String, TakesAnyBytesAsUtf8AndAnyCodesToIt) {
    const struct {
        const char* bytes;
        std::u32string wide;
        const char* utf8;
    } cases[] = {
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

TEST(String, SurvivesBeingMovedBytewise) {
    TArray<CString> texts;
    for (u32 i = 0; i < 100; ++i) {
        texts.Add(CString::FromFormat(L"%u", i));
        texts[i].GetUTF8();
    }
    for (u32 i = 0; i < 100; ++i) EXPECT_EQ(std::to_string(i), texts[i].GetUTF8());
}

TEST(String, GivesUtf8ToSeveralThreads) {
    const CString text(L"\u00B0C");
    std::thread threads[4];
    for (std::thread& thread : threads) thread = std::thread([&] { EXPECT_STREQ(text.GetUTF8(), "\xC2\xB0\x43"); });
    for (std::thread& thread : threads) thread.join();
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
    const struct {
        CString text;
        const char* expected;
    } cases[] = {
        {CString::FromFormat(L"%s|%10s|%-4s|%.2s", L"\u00B0C", L"wide", L"x", L"cut"),
         "\xC2\xB0\x43|      wide|x   |cu"},
        {CString::FromFormat(L"%S", "\xC2\xB0"), "\xC2\xB0"},
        {CString::FromFormat(L"%hs %ls", "narrow", L"wide"), "narrow wide"},
        {CString::FromFormat(L"%I64d %I64u", INT64_MIN, UINT64_MAX), "-9223372036854775808 18446744073709551615"},
        {CString::FromFormat(L"%08X-%04x %c %d%%", 0xBEEFu, 0xAu, L'c', -5), "0000BEEF-000a c -5%"},
        {CString::FromFormat(L"%.2f %g %*d", 1234.5, 0.5, 4, 7), "1234.50 0.5    7"},
        {CString::FromFormat(L"%y %-5 %d", 1), "%y %-5 1"},
        {CString::FromFormat(L"%n 100%"), "%n 100%"},
    };
    for (const auto& [text, expected] : cases) EXPECT_STREQ(text.GetUTF8(), expected);
    EXPECT_EQ(CString::FromFormat(L"%s", std::wstring(5000, L'x').c_str()).length(), 5000);
    std::setlocale(LC_ALL, saved.c_str());
}

TEST(String, CopiesCutAndChangesExtensions) {
    char dest[8];
    const struct {
        int size;
        const char* expected;
    } cuts[] = {{8, "abcd"}, {5, "abcd"}, {3, "ab"}, {1, ""}, {0, "###"}, {-1, "###"}};
    for (const auto& [size, expected] : cuts) {
        std::strcpy(dest, "###");
        StrCpy(dest, "abcd", size);
        EXPECT_STREQ(dest, expected) << size;
    }
    const wchar_t* const paths[][3] = {
        {L"a/b.mvg", L".mvo", L"a/b.mvo"}, {L"a/b", L".mvo", L"a/b.mvo"}, {L"a.dir/b", L".mvo", L"a.dir/b.mvo"},
        {L"b.x.mvg", L"mvb", L"b.x.mvb"},  {L"b.mvg", L"", L"b"},         {L"", L".mvg", L".mvg"},
    };
    for (const auto& [path, extension, expected] : paths) {
        EXPECT_STREQ(path::ChangeExtension(path, extension), expected);
    }
}

}  // namespace
}  // namespace ovix
