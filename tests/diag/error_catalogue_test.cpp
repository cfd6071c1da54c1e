// Every code has its text, in both languages, to the byte.
#include <gtest/gtest.h>
#include <klov/error.h>

#include <limits>
#include <string>

#include "tests/diag/code_texts.h"
#include "tests/diag/gbk.h"

namespace {

constexpr int32_t english = 0;
constexpr int32_t chinese = 4;

std::string text_of(int32_t code, int32_t language)
{
    char buffer[256] = {};
    int32_t length = -1;
    EXPECT_EQ(format_klov_error(code, buffer, 255, language, &length), 0) << code;
    EXPECT_EQ(length, static_cast<int32_t>(strlen(buffer))) << code;
    return buffer;
}

const code_text *listed(int32_t code)
{
    for (const code_text &row : code_texts) {
        if (row.code == code) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace

TEST(ErrorCatalogue, ListsFiftyFiveCodes)
{
    EXPECT_EQ(std::size(code_texts), 55U);
}

TEST(ErrorCatalogue, EveryCodeHasItsNameAndItsEnglishText)
{
    for (const code_text &row : code_texts) {
        EXPECT_EQ(row.symbol, row.code);
        EXPECT_EQ(text_of(row.code, english), to_gbk(row.english)) << row.code;
    }
}

TEST(ErrorCatalogue, EveryCodeHasItsChineseTextInGbk)
{
    for (const code_text &row : code_texts) {
        EXPECT_EQ(text_of(row.code, chinese), to_gbk(row.chinese)) << row.code;
    }
}

TEST(ErrorCatalogue, EveryOtherCodeHasTheTextOfAnUnknownError)
{
    int unknown = 0;
    for (int32_t code = -1300; code <= 200; ++code) {
        if (listed(code) != nullptr) {
            continue;
        }
        ++unknown;
        ASSERT_EQ(text_of(code, english), unknown_english) << code;
        ASSERT_EQ(text_of(code, chinese), to_gbk(unknown_chinese)) << code;
    }
    EXPECT_EQ(unknown, 1501 - 55);
    EXPECT_EQ(text_of(std::numeric_limits<int32_t>::min(), english), unknown_english);
    EXPECT_EQ(text_of(std::numeric_limits<int32_t>::max(), english), unknown_english);
}

TEST(ErrorCatalogue, CodesInTheGapsAreUnknown)
{
    for (const int32_t code : {-5, 1, -30, -303, -1113, -1198}) {
        EXPECT_EQ(text_of(code, english), unknown_english) << code;
    }
}

TEST(ErrorCatalogue, APrintErrorReadsInBothLanguages)
{
    EXPECT_EQ(text_of(-100, english), "KLOV print error.");
    EXPECT_EQ(text_of(-100, chinese), to_gbk("KLOV 打印错误！"));
    EXPECT_EQ(text_of(-100, chinese), "KLOV \xB4\xF2\xD3\xA1\xB4\xED\xCE\xF3\xA3\xA1");
}

TEST(ErrorCatalogue, TwoEnglishTextsHaveTheFullWidthColon)
{
    EXPECT_EQ(text_of(-1103, english).substr(0, 10), "LIBUSB\xA3\xBAIO");
    EXPECT_EQ(text_of(-1104, english).substr(0, 10), "LIBUSB\xA3\xBANo");
}

TEST(ErrorCatalogue, TheUnknownTextEndsWithTheAsciiExclamationMark)
{
    EXPECT_EQ(text_of(-5, chinese), "\xCE\xB4\xD6\xAA\xB4\xED\xCE\xF3!");
}

TEST(ErrorCatalogue, OnlyTheWholeValueFourIsChinese)
{
    for (const int32_t language : {0, 1, 2, 3, 5, -4, 0x104, 0x10004, 0x40000000}) {
        EXPECT_EQ(text_of(-100, language), "KLOV print error.") << language;
    }
}
