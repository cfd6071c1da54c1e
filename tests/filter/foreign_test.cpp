// Texts from outside, as log and trace show them.
#include "diag/foreign.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string seen(const std::string &text)
{
    return shown(text.c_str()).text;
}

std::string times(size_t count, const std::string &text)
{
    std::string all;
    while (count-- > 0) {
        all += text;
    }
    return all;
}

TEST(ForeignText, EveryByteIsItselfOrSpeltOut)
{
    for (unsigned value = 1; value < 256; ++value) {
        const std::string text(1, static_cast<char>(value));
        char escape[8];
        snprintf(escape, sizeof escape, "\\x%02x", value);
        EXPECT_EQ(seen(text), value < 32 || value == 127 ? escape : text) << value;
    }
}

TEST(ForeignText, OrdinaryTextsStayByteForByte)
{
    for (const char *text : {"", "Roll", "100%s%n", "\\x0a",
                             "Gr\xC3\xB6\xC3\x9F"
                             "e",
                             "\xFF\x80"}) {
        EXPECT_EQ(seen(text), text);
    }
}

TEST(ForeignText, AsManyBytesAreShownAsFit)
{
    for (size_t length = 990; length <= 1000; ++length) {
        EXPECT_EQ(seen(std::string(length, 'a')), std::string(length, 'a'));
    }
    for (const size_t length : {1001U, 1002U, 5000U}) {
        EXPECT_EQ(seen(std::string(length, 'a')), std::string(1000, 'a') + "...");
    }
}

TEST(ForeignText, EscapesCountAsTheyAreWritten)
{
    EXPECT_EQ(seen(std::string(250, '\n')), times(250, "\\x0a"));
    EXPECT_EQ(seen(std::string(251, '\n')), times(250, "\\x0a") + "...");
}

TEST(ForeignText, EscapesAreNeverCut)
{
    for (size_t before = 990; before <= 1000; ++before) {
        const std::string text(before, 'a');
        EXPECT_EQ(seen(text + "\n"), text + (before <= 996 ? "\\x0a" : "...")) << before;
        EXPECT_EQ(seen(text + "\nb"), text + (before < 996 ? "\\x0ab" : before == 996 ? "\\x0a..." : "...")) << before;
    }
}

// What comes behind an escape that does not fit is left out, though it would fit.
TEST(ForeignText, NothingFollowsTheDots)
{
    EXPECT_EQ(seen(std::string(999, 'a') + "\n" + "b"), std::string(999, 'a') + "...");
}

TEST(ForeignText, BytesOfLongCharactersCountSingly)
{
    EXPECT_EQ(seen(std::string(999, 'a') + "\xC3\xB6"), std::string(999, 'a') + "\xC3...");
}

TEST(ForeignText, AFieldMayHaveNoEnd)
{
    const char field[4] = {'a', 'b', '\n', 'c'};
    EXPECT_STREQ(shown(field, 4).text, "ab\\x0ac");
    EXPECT_STREQ(shown(field, 2).text, "ab");
    EXPECT_STREQ(shown(field, 0).text, "");
}

TEST(ForeignText, NoTextReadsAsPrintfPutsIt)
{
    EXPECT_STREQ(shown(nullptr).text, "(null)");
}

}  // namespace
