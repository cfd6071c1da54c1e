// Narrow texts in the caller's buffer, and the last-error slot.
#include <errno.h>
#include <gtest/gtest.h>
#include <klov/error.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/diag/code_texts.h"
#include "tests/diag/gbk.h"

namespace {

constexpr const char *unknown_model = "Unable to identify the printer model. Please correct the printer model.";
constexpr int32_t untouched = -777;

// A heap buffer of exactly this many bytes, so that a byte written or read beyond it is found by the sanitizers.
std::vector<char> filled(int32_t size, char fill)
{
    return std::vector<char>(static_cast<size_t>(size), fill);
}

}  // namespace

TEST(LastError, IsZeroUntilACallerSetsIt)
{
    EXPECT_EQ(klov_last_error, 0);
    EXPECT_EQ(klov_get_last_error(), 0);
    for (const int32_t code : {-8, 5, std::numeric_limits<int32_t>::min(), 0}) {
        EXPECT_EQ(klov_set_last_error(code), code);
        EXPECT_EQ(klov_get_last_error(), code);
        EXPECT_EQ(klov_last_error, code);
    }
}

TEST(LastError, NoFailureSetsIt)
{
    char buffer[4] = {};
    int32_t length = 0;
    EXPECT_EQ(cpystr(buffer, 3, "long text"), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_NE(format_error(99999, buffer, 3, 0, &length), 0);
    EXPECT_EQ(klov_get_last_error(), 0);
}

TEST(CopyText, EverySizeFromTheTextsLengthOnIsAccepted)
{
    const std::string text = "seven b";
    for (int32_t size = -2; size <= 9; ++size) {
        std::vector<char> buffer = filled(12, '#');
        const int32_t result = cpystr(buffer.data(), size, text.c_str());
        if (size < 7) {
            EXPECT_EQ(result, KLOV_E_BUFFER_TOO_SMALL) << size;
            EXPECT_EQ(buffer, filled(12, '#')) << size;
            continue;
        }
        EXPECT_EQ(result, KLOV_OK) << size;
        EXPECT_STREQ(buffer.data(), "seven b") << size;
        EXPECT_EQ(std::string(buffer.data() + 8, 4), "####") << size;
    }
}

TEST(CopyText, AnEmptyTextFitsABufferOfNoSize)
{
    char buffer[2] = {'#', '#'};
    EXPECT_EQ(cpystr(buffer, 0, ""), KLOV_OK);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], '#');
}

TEST(FormatKlovError, EverySizeFromZeroToTwoMoreThanTheTextNeeds)
{
    for (const code_text &row : code_texts) {
        for (const int32_t language : {0, 4}) {
            const std::string text = to_gbk(language == 4 ? row.chinese : row.english);
            const int32_t text_length = static_cast<int32_t>(text.size());
            for (int32_t size = 0; size <= text_length + 2; ++size) {
                // One byte more than the size: an exact fit puts its terminator there.
                std::vector<char> buffer = filled(size + 1, '#');
                int32_t length = untouched;
                ASSERT_EQ(format_klov_error(row.code, buffer.data(), size, language, &length), 0);
                if (size < text_length) {
                    ASSERT_EQ(buffer, filled(size + 1, '#')) << row.code << " in " << size;
                    ASSERT_EQ(length, size);
                } else {
                    ASSERT_STREQ(buffer.data(), text.c_str()) << row.code << " in " << size;
                    ASSERT_EQ(length, text_length);
                }
            }
        }
    }
}

// The caller gets success and finds its own text: half a sentence would be worse.
TEST(FormatKlovError, ATextTooLongForTheBufferLeavesItUnchangedAndReportsWhatItHolds)
{
    ASSERT_EQ(strlen(unknown_model), 71U);
    char buffer[20] = "as it was";
    int32_t length = untouched;
    EXPECT_EQ(format_klov_error(-8, buffer, 20, 0, &length), 0);
    EXPECT_STREQ(buffer, "as it was");
    EXPECT_EQ(length, 9);
}

TEST(FormatKlovError, ANegativeSizeIsNoRoom)
{
    char buffer[80] = "as it was";
    int32_t length = untouched;
    EXPECT_EQ(format_klov_error(-8, buffer, -1, 0, &length), 0);
    EXPECT_STREQ(buffer, "as it was");
    EXPECT_EQ(length, 0);
}

TEST(FormatKlovError, ABufferFullToItsLastByteIsNotReadBeyond)
{
    std::vector<char> buffer = filled(20, 'x');
    int32_t length = untouched;
    EXPECT_EQ(format_klov_error(-8, buffer.data(), 20, 0, &length), 0);
    EXPECT_EQ(buffer, filled(20, 'x'));
    EXPECT_EQ(length, 20);
}

TEST(FormatError, CodeOneIsTheSystemsTextAndNotTheCatalogues)
{
    char buffer[100] = {};
    int32_t length = untouched;
    EXPECT_EQ(format_error(1, buffer, 100, 0, &length), 0);
    EXPECT_STREQ(buffer, strerror(1));
    EXPECT_EQ(length, static_cast<int32_t>(strlen(strerror(1))));
    EXPECT_EQ(format_klov_error(1, buffer, 99, 0, &length), 0);
    EXPECT_STREQ(buffer, unknown_english);
}

TEST(FormatError, EveryErrnoValueReadsAsTheSystemPutsIt)
{
    int known = 0;
    for (int32_t code = 1; code <= 200; ++code) {
        char buffer[256] = {};
        int32_t length = untouched;
        const int32_t result = format_error(code, buffer, 255, code % 2 == 0 ? 4 : 0, &length);
        if (result != 0) {
            EXPECT_EQ(result, EINVAL) << code;
            EXPECT_EQ(length, untouched) << code;
            continue;
        }
        ++known;
        EXPECT_STREQ(buffer, strerror(code));
        EXPECT_EQ(length, static_cast<int32_t>(strlen(buffer)));
    }
    EXPECT_GT(known, 100);
}

TEST(FormatError, ZeroAndBelowAreTheCatalogues)
{
    for (int32_t code = -1300; code <= 0; ++code) {
        char system[256] = {};
        char catalogue[256] = {};
        int32_t system_length = untouched;
        int32_t length = untouched;
        ASSERT_EQ(format_error(code, system, 255, 4, &system_length), 0);
        ASSERT_EQ(format_klov_error(code, catalogue, 255, 4, &length), 0);
        ASSERT_STREQ(system, catalogue) << code;
        ASSERT_EQ(system_length, length) << code;
    }
}

TEST(FormatError, AFailureOfTheSystemIsHandedOnAndLeavesTheLength)
{
    char buffer[100] = {};
    int32_t length = untouched;
    EXPECT_EQ(format_error(99999, buffer, 100, 0, &length), EINVAL);
    EXPECT_EQ(length, untouched);
    EXPECT_EQ(format_error(1, buffer, 5, 0, &length), ERANGE);
    EXPECT_EQ(length, untouched);
    EXPECT_EQ(format_error(1, buffer, 0, 0, &length), ERANGE);
    EXPECT_EQ(format_error(1, buffer, -1, 0, &length), ERANGE);
    EXPECT_EQ(length, untouched);
}

TEST(FormatErrorAnsi, WritesFromStartAndLeavesWhatIsBefore)
{
    std::vector<char> buffer = filled(255, '#');
    EXPECT_EQ(klov_format_error_ansi(-8, 0, buffer.data(), 10, 255), 0);
    EXPECT_EQ(std::string(buffer.data(), 10), "##########");
    EXPECT_STREQ(buffer.data() + 10, unknown_model);
    EXPECT_EQ(std::string(buffer.data() + 81, 174), std::string(174, '\0'));
}

TEST(FormatErrorAnsi, ClearsTheWindowAndNothingBeyondIt)
{
    std::vector<char> buffer = filled(120, '#');
    EXPECT_EQ(klov_format_error_ansi(-8, 0, buffer.data(), 10, 110), 0);
    EXPECT_EQ(std::string(buffer.data() + 81, 29), std::string(29, '\0'));
    EXPECT_EQ(std::string(buffer.data() + 110, 10), "##########");
}

TEST(FormatErrorAnsi, AWindowTooSmallEndsUpEmpty)
{
    std::vector<char> buffer = filled(90, '#');
    EXPECT_EQ(klov_format_error_ansi(-8, 0, buffer.data(), 10, 80), 0);
    EXPECT_EQ(std::string(buffer.data(), 10), "##########");
    EXPECT_EQ(std::string(buffer.data() + 10, 70), std::string(70, '\0'));
    EXPECT_EQ(std::string(buffer.data() + 80, 10), "##########");
}

TEST(FormatErrorAnsi, AWindowOfExactlyTheTextsLengthHasTheTerminatorJustBehindIt)
{
    std::vector<char> buffer = filled(90, '#');
    EXPECT_EQ(klov_format_error_ansi(-8, 0, buffer.data(), 10, 81), 0);
    EXPECT_EQ(std::string(buffer.data() + 10, 71), unknown_model);
    EXPECT_EQ(buffer[81], '\0');
    EXPECT_EQ(std::string(buffer.data() + 82, 8), "########");
}

TEST(FormatErrorAnsi, AnEmptyOrReversedWindowIsLeftAlone)
{
    for (const int32_t end : {10, 9, 0, -5}) {
        std::vector<char> buffer = filled(11, '#');
        EXPECT_EQ(klov_format_error_ansi(-8, 0, buffer.data(), 10, end), 0) << end;
        EXPECT_EQ(buffer, filled(11, '#')) << end;
    }
}

TEST(FormatErrorAnsi, GivesTheSystemsTextsAndChineseToo)
{
    char buffer[1024];
    EXPECT_EQ(klov_format_error_ansi(ENOENT, 0, buffer, 0, 1024), 0);
    EXPECT_STREQ(buffer, strerror(ENOENT));
    EXPECT_EQ(klov_format_error_ansi(-100, 4, buffer, 0, 1024), 0);
    EXPECT_STREQ(buffer, to_gbk("KLOV 打印错误！").c_str());
    EXPECT_EQ(klov_format_error_ansi(99999, 0, buffer, 0, 1024), EINVAL);
}
