// Wide texts in the caller's buffer.
#include <errno.h>
#include <gtest/gtest.h>
#include <klov/error.h>

#include <string>
#include <vector>

#include "tests/diag/chinese_locale.h"
#include "tests/diag/code_texts.h"

namespace {

constexpr int32_t untouched = -777;

std::wstring widened(const std::string &ascii)
{
    return std::wstring(ascii.begin(), ascii.end());
}

bool is_ascii(const char *text)
{
    for (; *text != '\0'; ++text) {
        if (static_cast<unsigned char>(*text) >= 0x80) {
            return false;
        }
    }
    return true;
}

std::vector<wchar_t> filled(size_t size)
{
    return std::vector<wchar_t>(size, L'#');
}

void expect_every_english_text()
{
    for (const code_text &row : code_texts) {
        wchar_t buffer[256] = {};
        int32_t length = untouched;
        const int32_t result = format_klov_error_wchar(row.code, buffer, 255, 0, &length);
        if (!is_ascii(row.english)) {
            EXPECT_EQ(result, KLOV_E_PARAMETER) << row.code;
            EXPECT_EQ(length, untouched) << row.code;
            continue;
        }
        EXPECT_EQ(result, KLOV_OK) << row.code;
        EXPECT_EQ(std::wstring(buffer), widened(row.english)) << row.code;
        EXPECT_EQ(length, static_cast<int32_t>(strlen(row.english))) << row.code;
    }
}

void expect_every_chinese_text_to_fail()
{
    for (int32_t code = -1300; code <= 200; ++code) {
        std::vector<wchar_t> buffer = filled(255);
        int32_t length = untouched;
        ASSERT_EQ(format_klov_error_wchar(code, buffer.data(), 255, 4, &length), KLOV_E_PARAMETER) << code;
        ASSERT_EQ(buffer, filled(255)) << code;
        ASSERT_EQ(length, untouched) << code;
    }
}

}  // namespace

TEST(FormatErrorWide, EveryEnglishTextConvertsSaveTheTwoWithGbkBytes)
{
    expect_every_english_text();
}

TEST(FormatErrorWide, TheTwoEnglishTextsWithGbkBytesFailInAUtf8LocaleToo)
{
    const LocaleFolder locales(LocaleFolder::Chinese::installed);
    if (!LocaleFolder::has_chinese()) {
        GTEST_SKIP() << "no UTF-8 locale to stand in for zh_CN.utf8";
    }
    setlocale(LC_ALL, "zh_CN.utf8");
    expect_every_english_text();
}

// GBK bytes are not UTF-8, and language 4 has just switched the process to UTF-8.
TEST(FormatErrorWide, EveryChineseTextFails)
{
    const LocaleFolder locales(LocaleFolder::Chinese::installed);
    if (!LocaleFolder::has_chinese()) {
        GTEST_SKIP() << "no UTF-8 locale to stand in for zh_CN.utf8";
    }
    expect_every_chinese_text_to_fail();
    EXPECT_EQ(current_locale(), "zh_CN.utf8");
}

TEST(FormatErrorWide, EveryChineseTextFailsWhereTheLocaleIsNotInstalled)
{
    const LocaleFolder locales(LocaleFolder::Chinese::missing);
    expect_every_chinese_text_to_fail();
    EXPECT_EQ(current_locale(), "C");
}

TEST(FormatErrorWide, TheSizeCountsTheTerminator)
{
    const std::wstring text = L"KLOV print error.";
    for (int32_t size = -1; size <= 19; ++size) {
        std::vector<wchar_t> buffer = filled(20);
        int32_t length = untouched;
        const int32_t result = format_klov_error_wchar(-100, buffer.data(), size, 0, &length);
        if (size < 18) {
            EXPECT_EQ(result, KLOV_E_BUFFER_TOO_SMALL) << size;
            EXPECT_EQ(buffer, filled(20)) << size;
            EXPECT_EQ(length, untouched) << size;
            continue;
        }
        EXPECT_EQ(result, KLOV_OK) << size;
        EXPECT_EQ(std::wstring(buffer.data()), text) << size;
        EXPECT_EQ(length, 17) << size;
        EXPECT_EQ(std::wstring(buffer.data() + 18, 2), L"##") << size;
    }
}

TEST(FormatErrorWide, CodesOfOneAndMoreAreTheSystemsTexts)
{
    wchar_t buffer[256] = {};
    int32_t length = untouched;
    EXPECT_EQ(format_error_wchar(ENOENT, buffer, 255, 0, &length), 0);
    EXPECT_EQ(std::wstring(buffer), widened(strerror(ENOENT)));
    EXPECT_EQ(length, static_cast<int32_t>(strlen(strerror(ENOENT))));
    EXPECT_EQ(format_klov_error_wchar(ENOENT, buffer, 255, 0, &length), 0);
    EXPECT_EQ(std::wstring(buffer), L"Printer Unknown Error!");
    EXPECT_EQ(format_error_wchar(-100, buffer, 255, 0, &length), 0);
    EXPECT_EQ(std::wstring(buffer), L"KLOV print error.");
}

TEST(FormatErrorWide, AFailureOfTheSystemIsHandedOnAndLeavesTheBuffer)
{
    std::vector<wchar_t> buffer = filled(100);
    int32_t length = untouched;
    EXPECT_EQ(format_error_wchar(99999, buffer.data(), 100, 0, &length), EINVAL);
    EXPECT_EQ(format_error_wchar(ENOENT, buffer.data(), 5, 0, &length), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(buffer, filled(100));
    EXPECT_EQ(length, untouched);
}

TEST(FormatErrorWide, AShorterTextShowsNothingOfTheLongerOneBefore)
{
    wchar_t buffer[256] = {};
    int32_t length = 0;
    format_klov_error_wchar(-8, buffer, 255, 0, &length);
    format_klov_error_wchar(-100, buffer, 255, 0, &length);
    EXPECT_EQ(std::wstring(buffer), L"KLOV print error.");
    EXPECT_EQ(length, 17);
}

TEST(FormatErrorWindowWide, CountsBytesAndWritesFromStart)
{
    std::vector<wchar_t> buffer = filled(40);
    EXPECT_EQ(klov_format_error_wchar(-100, 0, buffer.data(), 8, 120), 0);
    EXPECT_EQ(std::wstring(buffer.data(), 2), L"##");
    EXPECT_EQ(std::wstring(buffer.data() + 2), L"KLOV print error.");
    EXPECT_EQ(std::wstring(buffer.data() + 20, 10), std::wstring(10, L'\0'));
    EXPECT_EQ(std::wstring(buffer.data() + 30, 10), std::wstring(10, L'#'));
}

TEST(FormatErrorWindowWide, IsRoundedDownToWholeCharacters)
{
    for (int32_t odd = 0; odd < 4; ++odd) {
        std::vector<wchar_t> buffer = filled(40);
        EXPECT_EQ(klov_format_error_wchar(-100, 0, buffer.data(), 0, 80 + odd), 0);
        EXPECT_EQ(std::wstring(buffer.data()), L"KLOV print error.");
        EXPECT_EQ(std::wstring(buffer.data() + 18, 2), std::wstring(2, L'\0')) << odd;
        EXPECT_EQ(std::wstring(buffer.data() + 20, 20), std::wstring(20, L'#')) << odd;
    }
}

TEST(FormatErrorWindowWide, NeedsRoomForTheTerminator)
{
    for (const int32_t end : {68, 69, 70, 71}) {
        std::vector<wchar_t> buffer = filled(20);
        EXPECT_EQ(klov_format_error_wchar(-100, 0, buffer.data(), 0, end), KLOV_E_BUFFER_TOO_SMALL) << end;
        EXPECT_EQ(std::wstring(buffer.data(), 17), std::wstring(17, L'\0')) << end;
        EXPECT_EQ(std::wstring(buffer.data() + 17, 3), L"###") << end;
    }
    std::vector<wchar_t> buffer = filled(20);
    EXPECT_EQ(klov_format_error_wchar(-100, 0, buffer.data(), 0, 72), 0);
    EXPECT_EQ(std::wstring(buffer.data()), L"KLOV print error.");
}

TEST(FormatErrorWindowWide, AnEmptyOrReversedWindowIsLeftAlone)
{
    for (const int32_t end : {8, 5, 0, -8}) {
        std::vector<wchar_t> buffer = filled(4);
        EXPECT_EQ(klov_format_error_wchar(-100, 0, buffer.data(), 8, end), KLOV_E_BUFFER_TOO_SMALL) << end;
        EXPECT_EQ(buffer, filled(4)) << end;
    }
}
