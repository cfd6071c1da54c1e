// Conversions between wide and multibyte text.
#include <gtest/gtest.h>
#include <klov/text.h>

#include <string>
#include <vector>

#include "tests/diag/chinese_locale.h"

namespace {

constexpr int32_t untouched = -777;

std::wstring widened(const std::string &ascii)
{
    return std::wstring(ascii.begin(), ascii.end());
}

std::string all_ascii()
{
    std::string text;
    for (char c = 1; c < 127; ++c) {
        text += c;
    }
    return text + '\x7F';
}

// Tests that need the Chinese locale; without a locale to stand in for it they are skipped.
class ChineseText : public testing::Test {
protected:
    void SetUp() override
    {
        if (!LocaleFolder::has_chinese()) {
            GTEST_SKIP() << "no UTF-8 locale to stand in for zh_CN.utf8";
        }
    }

private:
    LocaleFolder locales_{LocaleFolder::Chinese::installed};
};

}  // namespace

TEST(Text, AsciiConvertsBothWaysWithTheCountEqualToItsLength)
{
    const std::string all = all_ascii();
    for (size_t length = 0; length <= all.size(); ++length) {
        const std::string text = all.substr(0, length);
        const int32_t size = static_cast<int32_t>(length) + 1;
        std::vector<wchar_t> wide(length + 1, L'#');
        std::vector<char> narrow(length + 1, '#');
        int32_t count = untouched;
        ASSERT_EQ(a2w(wide.data(), size, text.c_str(), 0, 0, &count), KLOV_OK) << length;
        ASSERT_EQ(count, size - 1);
        ASSERT_EQ(std::wstring(wide.data()), widened(text));
        count = untouched;
        ASSERT_EQ(w2a(narrow.data(), size, wide.data(), 0, 0, &count), KLOV_OK) << length;
        ASSERT_EQ(count, size - 1);
        ASSERT_EQ(std::string(narrow.data()), text);
    }
}

TEST(Text, ADestinationOneUnitShortIsRefusedAndLeftAlone)
{
    for (const int32_t size : {-2147483647 - 1, -1, 0, 1, 3}) {
        wchar_t wide[5] = {L'#', L'#', L'#', L'#', L'#'};
        char narrow[5] = {'#', '#', '#', '#', '#'};
        int32_t count = untouched;
        EXPECT_EQ(a2w(wide, size, "abc", 3, 0, &count), KLOV_E_BUFFER_TOO_SMALL) << size;
        EXPECT_EQ(w2a(narrow, size, L"abc", 3, 0, &count), KLOV_E_BUFFER_TOO_SMALL) << size;
        EXPECT_EQ(std::wstring(wide, 5), L"#####");
        EXPECT_EQ(std::string(narrow, 5), "#####");
        EXPECT_EQ(count, untouched);
    }
}

TEST(Text, NothingIsWrittenBehindTheTerminator)
{
    wchar_t wide[8] = {L'#', L'#', L'#', L'#', L'#', L'#', L'#', L'#'};
    char narrow[8] = {'#', '#', '#', '#', '#', '#', '#', '#'};
    int32_t count = untouched;
    EXPECT_EQ(a2w(wide, 8, "abc", 3, 0, &count), KLOV_OK);
    EXPECT_EQ(w2a(narrow, 8, L"abc", 3, 0, &count), KLOV_OK);
    EXPECT_EQ(std::wstring(wide, 8), std::wstring(L"abc\0####", 8));
    EXPECT_EQ(std::string(narrow, 8), std::string("abc\0####", 8));
}

TEST(Text, TheSourcesLengthIsItsTerminatorsPlaceWhateverTheCallerSays)
{
    for (const int32_t src_len : {-1, 0, 1, 3, 1000}) {
        wchar_t wide[8] = {};
        char narrow[8] = {};
        int32_t count = untouched;
        EXPECT_EQ(a2w(wide, 8, "abc", src_len, 0, &count), KLOV_OK);
        EXPECT_EQ(std::wstring(wide), L"abc");
        EXPECT_EQ(w2a(narrow, 8, L"abc", src_len, 0, &count), KLOV_OK);
        EXPECT_STREQ(narrow, "abc");
    }
}

TEST(Text, ASourceThatDoesNotConvertIsRefusedBeforeTheSizeIsLookedAt)
{
    for (const int32_t size : {0, 100}) {
        wchar_t wide[100] = {L'#'};
        char narrow[100] = {'#'};
        int32_t count = untouched;
        EXPECT_EQ(a2w(wide, size, "ab\xFF", 3, 0, &count), KLOV_E_PARAMETER);
        EXPECT_EQ(w2a(narrow, size, L"ab\x6253", 3, 0, &count), KLOV_E_PARAMETER);
        EXPECT_EQ(wide[0], L'#');
        EXPECT_EQ(narrow[0], '#');
        EXPECT_EQ(count, untouched);
    }
}

TEST(Text, CodePageFourWithoutTheLocaleConvertsInTheCurrentOne)
{
    const LocaleFolder locales(LocaleFolder::Chinese::missing);
    wchar_t wide[8] = {};
    int32_t count = untouched;
    EXPECT_EQ(a2w(wide, 8, "abc", 3, 4, &count), KLOV_OK);
    EXPECT_EQ(std::wstring(wide), L"abc");
    EXPECT_EQ(a2w(wide, 8, "\xE6\x89\x93", 3, 4, &count), KLOV_E_PARAMETER);
    EXPECT_EQ(current_locale(), "C");
}

TEST_F(ChineseText, CodePageFourLeavesTheLocaleSwitchedWhateverTheResult)
{
    const struct {
        const char *source;
        int32_t size;
        int32_t result;
    } calls[] = {{"abc", 4, KLOV_OK}, {"abc", 3, KLOV_E_BUFFER_TOO_SMALL}, {"\xFF", 4, KLOV_E_PARAMETER}};
    for (const auto &call : calls) {
        setlocale(LC_ALL, "C");
        wchar_t wide[4] = {};
        int32_t count = untouched;
        EXPECT_EQ(a2w(wide, call.size, call.source, 0, 4, &count), call.result);
        EXPECT_EQ(current_locale(), "zh_CN.utf8") << call.source;
    }
    const struct {
        const wchar_t *source;
        int32_t size;
        int32_t result;
    } wide_calls[] = {{L"abc", 4, KLOV_OK}, {L"abc", 3, KLOV_E_BUFFER_TOO_SMALL}, {L"\xD800", 4, KLOV_E_PARAMETER}};
    for (const auto &call : wide_calls) {
        setlocale(LC_ALL, "C");
        char narrow[4] = {};
        int32_t count = untouched;
        EXPECT_EQ(w2a(narrow, call.size, call.source, 0, 4, &count), call.result);
        EXPECT_EQ(current_locale(), "zh_CN.utf8");
    }
}

TEST_F(ChineseText, OtherCodePagesLeaveTheLocaleAlone)
{
    for (const int32_t code_page : {0, 1, 3, 5, 936, -4, 0x104, 0x10004}) {
        wchar_t wide[4] = {};
        char narrow[4] = {};
        int32_t count = untouched;
        EXPECT_EQ(a2w(wide, 4, "abc", 3, code_page, &count), KLOV_OK);
        EXPECT_EQ(w2a(narrow, 4, L"abc", 3, code_page, &count), KLOV_OK);
        EXPECT_EQ(current_locale(), "C") << code_page;
    }
}

TEST_F(ChineseText, MultibyteTextBecomesWideWithTheCountInCharacters)
{
    wchar_t wide[8] = {L'#', L'#', L'#', L'#', L'#', L'#', L'#', L'#'};
    int32_t count = untouched;
    EXPECT_EQ(a2w(wide, 3, "\xE6\x89\x93\xE5\x8D\xB0", 6, 4, &count), KLOV_OK);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::wstring(wide, 8), std::wstring(L"\x6253\x5370\0#####", 8));
    EXPECT_EQ(a2w(wide, 2, "\xE6\x89\x93\xE5\x8D\xB0", 6, 4, &count), KLOV_E_BUFFER_TOO_SMALL);
}

TEST_F(ChineseText, WideTextIsTruncatedToItsOwnLengthPlusOneInBytes)
{
    // Four characters, twelve bytes: the limit of five bytes leaves room for one whole character.
    const wchar_t *source = L"\x64CD\x4F5C\x6210\x529F";
    char narrow[16];
    memset(narrow, '#', sizeof narrow);
    int32_t count = untouched;
    EXPECT_EQ(w2a(narrow, 12, source, 4, 4, &count), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(count, untouched);
    EXPECT_EQ(w2a(narrow, 13, source, 4, 4, &count), KLOV_OK);
    EXPECT_EQ(count, 3);
    // Nothing behind the whole characters, not even a terminator.
    EXPECT_EQ(std::string(narrow, 16), "\xE6\x93\x8D#############");
}

TEST_F(ChineseText, EveryMixOfNarrowAndWideCharactersIsCutAtAWholeCharacter)
{
    const struct {
        wchar_t wide;
        std::string utf8;
    } alphabet[] = {{L'a', "a"}, {L'\x00E9', "\xC3\xA9"}, {L'\x6253', "\xE6\x89\x93"}};
    const size_t length = 5;
    const size_t limit = length + 1;
    setlocale(LC_ALL, "zh_CN.utf8");
    for (int mix = 0; mix < 3 * 3 * 3 * 3 * 3; ++mix) {
        std::wstring source;
        std::string whole;
        std::string expected;
        bool cut = false;
        for (int digits = mix, i = 0; i < 5; ++i, digits /= 3) {
            const auto &letter = alphabet[digits % 3];
            source += letter.wide;
            whole += letter.utf8;
            cut = cut || expected.size() + letter.utf8.size() > limit;
            expected += cut ? "" : letter.utf8;
        }
        std::vector<char> narrow(whole.size() + 1, '#');
        const int32_t size = static_cast<int32_t>(narrow.size());
        int32_t count = untouched;
        ASSERT_EQ(w2a(narrow.data(), size, source.c_str(), 5, 0, &count), KLOV_OK) << mix;
        ASSERT_EQ(count, static_cast<int32_t>(expected.size())) << mix;
        ASSERT_EQ(std::string(narrow.data(), expected.size()), expected) << mix;
        if (expected.size() < narrow.size()) {
            // The terminator is written where the limit has room for it.
            const bool terminated = !cut && expected.size() < limit;
            ASSERT_EQ(narrow[expected.size()], terminated ? '\0' : '#') << mix;
        }
    }
}
