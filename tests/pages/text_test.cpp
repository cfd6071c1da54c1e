// Plain text: what is read of the bytes, how lines break, and what a page of it looks like.
#include "pages/text_clean.h"
#include "pages/text_lines.h"
#include "pages/text_page.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <string>

namespace {

using pages::clean_text;
using pages::Job;
using pages::Line;
using pages::LineBreaker;

struct Bytes {
    const char *what;
    std::string bytes;
    const char *language;
    std::string text;
};

TEST(TextClean, WhatIsReadOfBytes)
{
    const Bytes cases[] = {
        {"ASCII", "abc\n", "de", "abc\n"},
        {"UTF-8", "ä€漢😀", "de", "ä€漢😀"},
        {"Windows-1252",
         "Gr\xF6\xDF"
         "e \x80 \x84Zitat\x93",
         "de", "Größe € „Zitat“"},
        {"bytes that Windows-1252 leaves out",
         "a\x81\x8D\x8F\x90\x9D"
         "b",
         "de", "ab"},
        {"one broken byte in UTF-8", "ä\xFFö", "de", "äÿö"},
        {"UTF-8 cut in the middle", "abc\xE2\x82", "de", "abcâ‚"},
        {"GB18030", "\xD6\xD0\xB9\xFA", "zh_CN.UTF-8", "中国"},
        {"GB18030 of four bytes", "\x81\x30\x81\x30 \x94\x39\xFC\x36", "zh", " 😀"},
        {"Chinese UTF-8", "中国", "zh_CN", "中国"},
        {"broken GB18030", "\xD6\xD0\xFF\xB9\xFA", "zh_CN", "中\xEF\xBF\xBD国"},
        {"GB18030 cut in the middle", "\xD6\xD0\xB9", "zh_CN", "中\xEF\xBF\xBD"},
        {"the mark of UTF-8",
         "\xEF\xBB\xBF"
         "a",
         "de", "a"},
        {"UTF-16, low byte first",
         std::string("\xFF\xFE"
                     "a\0\xAC\x20",
                     6),
         "de", "a€"},
        {"UTF-16, high byte first", std::string("\xFE\xFF\0a\x20\xAC", 6), "de", "a€"},
        {"line ends of all kinds", "a\r\nb\rc\nd", "de", "a\nb\nc\nd"},
        {"control bytes",
         std::string("a\0b\x07"
                     "c\x1F"
                     "d\x7F"
                     "e",
                     9),
         "de", "abcde"},
        {"control characters beyond ASCII",
         "a\xC2\x85"
         "b",
         "de", "ab"},
        {"tabs and form feeds stay", "a\tb\fc", "de", "a\tb\fc"},
        {"bold in manual pages", "N\bNA\bA", "en", "NA"},
        {"bold beyond ASCII", "ä\bä", "en", "ä"},
        {"underlined in manual pages", "_\bf_\bo f\b_", "en", "fo f"},
        {"other backspaces", "a\bb\b", "en", "ab"},
        {"a backspace at the front", "\b\ba", "en", "a"},
        {"colours of terminals", "\x1B[1;31mred\x1B[0m", "en", "red"},
        {"other escapes", "\x1B@a\x1B[", "en", "@a["},
        {"soft hyphens, marks of direction",
         "a\xC2\xAD"
         "b\xE2\x80\x8E"
         "c\xEF\xBB\xBF",
         "en", "abc"},
        {"surrogates are no UTF-8", "\xED\xA0\x80", "en", "í\xC2\xA0€"},
        {"overlong forms are no UTF-8", "\xC0\xAF", "en", "À¯"},
        {"empty", "", "zh", ""},
    };
    for (const Bytes &c : cases) {
        EXPECT_EQ(clean_text(c.bytes, c.language), c.text) << c.what;
    }
}

TEST(TextClean, WhateverComesBecomesCleanUtf8)
{
    std::mt19937 random(3);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes;
        for (auto left = random() % 60; left > 0; --left) {
            bytes += static_cast<char>(random() % 4 == 0 ? random() % 32 : random());
        }
        const std::string text = clean_text(bytes, round % 2 == 0 ? "de" : "zh_CN");
        for (std::string_view left = text; !left.empty();) {
            const pages::Character next = pages::front_character(left);
            ASSERT_GT(next.size, 0U);
            const bool control = next.code < 32 || (next.code >= 127 && next.code < 160);
            ASSERT_TRUE(!control || next.code == '\n' || next.code == '\t' || next.code == '\f')
                << static_cast<unsigned>(next.code);
            left.remove_prefix(next.size);
        }
    }
}

unsigned letters_of(std::string_view word)
{
    unsigned count = 0;
    while (!word.empty()) {
        word.remove_prefix(std::max(pages::front_character(word).size, 1U));
        count += 1;
    }
    return count;
}

// Lines joined by "|", form feeds as "^".
std::string lines_of(std::string_view text, unsigned columns, bool wrap = true)
{
    LineBreaker breaker(text, columns, wrap, letters_of);
    std::string result;
    Line line;
    while (breaker.next(line)) {
        for (const pages::Cell &cell : line.cells) {
            result += cell.text;
        }
        result += line.ends_page ? "^" : "|";
    }
    return result;
}

struct Broken {
    const char *what;
    const char *text;
    const char *lines;
};

// Ten columns.
constexpr Broken breaks[] = {
    {"nothing", "", ""},
    {"one line", "abc", "abc|"},
    {"a line end at the end", "abc\n", "abc|"},
    {"blank lines", "\n\na", "||a|"},
    {"exactly full", "0123456789\nx", "0123456789|x|"},
    {"full, then a blank", "0123456789 \nx", "0123456789|x|"},
    {"full, then blanks and more", "0123456789   abc", "0123456789|abc|"},
    {"between words", "hello big world", "hello big|world|"},
    {"a word that just fits", "hello worlds", "hello|worlds|"},
    {"a word that is too long", "Donaudampfschiff", "Donaudampf|schiff|"},
    {"a long word behind a short one", "a Donaudampfschiff", "a|Donaudampf|schiff|"},
    {"an indented word that is too long", "  Donaudampfschiff", "  Donaudam|pfschiff|"},
    {"blanks at the front stay", "   a", "   a|"},
    {"blanks at the end go", "a    \nb", "a|b|"},
    {"only blanks", "            ", "|"},
    {"tabs", "a\tb", "a       b|"},
    {"a tab beyond the edge", "0123456\t\tb", "0123456|b|"},
    {"form feed", "a\fb", "a^b|"},
    {"form feed at the end", "a\f", "a^"},
    {"wide characters break anywhere", "漢字漢字漢字", "漢字漢字漢|字|"},
    {"a wide one does not fit in half", "123456789漢", "123456789|漢|"},
    {"marks stay with their letters",
     "e\xCC\x81"
     "0123456789",
     "e\xCC\x81"
     "012345678|9|"},
    {"Hebrew from the right", "שלום עולם", " עולם שלום|"},
    {"Hebrew within a line", "ab שלום גד 12.5", "ab גד שלום|12.5|"},
    {"numbers in Hebrew keep their order", "של 12.5 גד", "גד 12.5 של|"},
};

TEST(TextLines, WhereLinesBreak)
{
    for (const Broken &c : breaks) {
        EXPECT_EQ(lines_of(c.text, 10), c.lines) << c.what;
    }
}

TEST(TextLines, WithoutWrappingTheRestIsCutOff)
{
    EXPECT_EQ(lines_of("0123456789abc def\nx", 10, false), "0123456789|x|");
    EXPECT_EQ(lines_of("0123456789abc\fx", 10, false), "0123456789^x|");
}

// No line is wider than the paper, nothing but blanks gets lost, and it always ends.
TEST(TextLines, EveryTextEndsWithinItsColumns)
{
    std::mt19937 random(9);
    constexpr const char *pieces[] = {"a",  "b ", "  ",        "\n", "\t", "漢",      "שם",
                                      "नम", "1",  "e\xCC\x81", "-",  "\f", "\xCC\x81"};
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (auto left = random() % 80; left > 0; --left) {
            text += pieces[random() % std::size(pieces)];
        }
        const unsigned columns = 1 + static_cast<unsigned>(random() % 12);
        LineBreaker breaker(text, columns, true, letters_of);
        Line line;
        std::size_t letters = 0;
        for (std::size_t lines = 0; breaker.next(line); ++lines) {
            ASSERT_LE(lines, text.size());
            unsigned width = 0;
            for (const pages::Cell &cell : line.cells) {
                width += cell.columns;
                letters += cell.text == " " ? 0 : cell.text.size();
            }
            ASSERT_LE(width, columns);
        }
        const auto blanks =
            std::ranges::count_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\f'; });
        ASSERT_EQ(letters, text.size() - static_cast<std::size_t>(blanks)) << text;
    }
}

TEST(TextLines, ALineOfTenMillionLettersEnds)
{
    std::string text;
    text.resize(10'000'000, 'x');
    LineBreaker breaker(text, 48, true, letters_of);
    Line line;
    std::size_t lines = 0;
    while (breaker.next(line)) {
        lines += 1;
    }
    EXPECT_EQ(lines, (10'000'000U + 47) / 48);
}

// Blanks alone, and marks without a letter, which a slip would go over again and again.
TEST(TextLines, LongRunsOfTheSameEnd)
{
    for (const char *piece : {" ", "\t", "\xCC\x81", "\xE0\xA4\xA8", "\xD7\xA9", "\f", "\xE6\xBC\xA2"}) {
        std::string text;
        while (text.size() < 300'000) {
            text += piece;
        }
        LineBreaker breaker(text, 48, true, letters_of);
        Line line;
        std::size_t lines = 0;
        while (breaker.next(line)) {
            lines += 1;
        }
        EXPECT_GT(lines, 0U);
        EXPECT_LE(lines, text.size());
    }
}

pages::TextLayout laid(const Job &job)
{
    const auto result = pages::lay_out_text(job);
    return std::holds_alternative<pages::TextLayout>(result) ? std::get<pages::TextLayout>(result)
                                                             : pages::TextLayout{};
}

TEST(TextLayout, AsManyColumnsAsTheHeadHasCellsOfTwelveDots)
{
    for (const unsigned head : {384U, 576U, 640U, 832U, 12U}) {
        Job job;
        job.paper.head_dots = head;
        EXPECT_EQ(laid(job).columns, head / 12);
        EXPECT_EQ(laid(job).cell_height, 24U);
    }
}

TEST(TextLayout, CharactersAndLinesAnInch)
{
    Job job;
    job.cpi = 10;
    EXPECT_EQ(laid(job).columns, 28U);
    job.lpi = 6;
    EXPECT_EQ(laid(job).cell_height, 34U);
    job.cpi = 100;
    EXPECT_EQ(laid(job).cell_width, 2U);
}

TEST(TextLayout, MarginsTakeColumnsAway)
{
    Job job;
    job.left_margin = job.right_margin = 72.0 * 24 / 203.2;
    EXPECT_EQ(laid(job).columns, 44U);
    EXPECT_EQ(laid(job).left, 24U);
    job.right_margin = 72.0 * 600 / 203.2;
    EXPECT_TRUE(std::holds_alternative<pages::Failure>(pages::lay_out_text(job)));
}

TEST(TextLayout, ALabelHoldsTheLinesThatFit)
{
    Job job;
    job.paper.type = pages::PaperType::label;
    job.paper.page_width = 50 / 25.4 * 72;
    job.paper.page_length = 40 / 25.4 * 72;
    EXPECT_EQ(laid(job).columns, 33U);
    EXPECT_EQ(laid(job).most_lines, 13U);
    EXPECT_EQ(laid(job).page_rows, 320U);
}

TEST(TextLayout, TurnedTextRunsAlongThePaper)
{
    Job job;
    job.orientation = pages::Turn::quarter;
    job.paper.page_length = 210 / 25.4 * 72;
    EXPECT_EQ(laid(job).columns, 140U);
    EXPECT_EQ(laid(job).most_lines, 24U);
}

struct Page {
    unsigned copies = 0;
    std::size_t height = 0;
    std::vector<std::uint8_t> bits;

    bool at(std::size_t x, std::size_t y) const
    {
        return (bits[y * 72 + x / 8] >> (7 - x % 8) & 1) != 0;
    }
    std::size_t ink(std::size_t left, std::size_t top, std::size_t columns, std::size_t rows) const
    {
        std::size_t sum = 0;
        for (std::size_t y = top; y < top + rows; ++y) {
            for (std::size_t x = left; x < left + columns; ++x) {
                sum += at(x, y) ? 1 : 0;
            }
        }
        return sum;
    }
};

struct Printed {
    std::string failure;
    std::vector<Page> pages;
};

Printed printed(const std::string &text, const Job &job = {})
{
    Printed result;
    const int file = memfd_create("raster", 0);
    {
        pages::RasterWriter writer(file);
        if (const auto failure = pages::print_text(text, job, writer)) {
            result.failure = failure->text;
        }
    }
    lseek(file, 0, SEEK_SET);
    cups_raster_t *raster = cupsRasterOpen(file, CUPS_RASTER_READ);
    cups_page_header2_t header;
    while (cupsRasterReadHeader2(raster, &header) != 0) {
        Page page{header.NumCopies, header.cupsHeight, {}};
        page.bits.resize(static_cast<std::size_t>(header.cupsHeight) * header.cupsBytesPerLine);
        EXPECT_EQ(cupsRasterReadPixels(raster, page.bits.data(), static_cast<unsigned>(page.bits.size())),
                  page.bits.size());
        result.pages.push_back(page);
    }
    cupsRasterClose(raster);
    close(file);
    return result;
}

TEST(TextPage, OneLongPage)
{
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += "line " + std::to_string(i) + "\n";
    }
    const Printed result = printed(text);
    ASSERT_EQ(result.failure, "");
    ASSERT_EQ(result.pages.size(), 1U);
    EXPECT_EQ(result.pages[0].height, 24'000U);
    EXPECT_GT(result.pages[0].ink(0, 23'976, 96, 24), 100U);
}

// Every cell of 48 columns has its letter, and none reaches into its neighbours' middle.
TEST(TextPage, FortyEightLettersFillTheHead)
{
    const Printed result = printed(std::string(48, 'l') + "\n" + std::string(48, 'l'));
    ASSERT_EQ(result.pages.size(), 1U);
    ASSERT_EQ(result.pages[0].height, 48U);
    for (std::size_t column = 0; column < 48; ++column) {
        for (std::size_t y = 0; y < 24; ++y) {
            for (std::size_t x = 0; x < 12; ++x) {
                ASSERT_EQ(result.pages[0].at(column * 12 + x, y), result.pages[0].at(x, y)) << column;
            }
        }
    }
    EXPECT_GT(result.pages[0].ink(0, 0, 12, 24), 20U);
}

// A stem is two whole dots, on all of its height.
TEST(TextPage, StemsAreWholeDots)
{
    const Printed result = printed("|");
    std::size_t columns = 0;
    for (std::size_t x = 0; x < 12; ++x) {
        const std::size_t ink = result.pages[0].ink(x, 0, 1, 24);
        EXPECT_TRUE(ink == 0 || ink >= 20) << x << ": " << ink;
        columns += ink > 0 ? 1 : 0;
    }
    EXPECT_EQ(columns, 2U);
}

TEST(TextPage, BoxesOfLinesJoin)
{
    const Printed result = printed("│\n│\n│");
    std::size_t x = 0;
    while (x < 12 && !result.pages[0].at(x, 5)) {
        ++x;
    }
    EXPECT_EQ(result.pages[0].ink(x, 0, 1, 72), 72U);
}

TEST(TextPage, CharactersOfEveryKindHaveInk)
{
    const Printed result = printed("€äΩЖ");
    for (std::size_t column = 0; column < 4; ++column) {
        EXPECT_GT(result.pages[0].ink(column * 12, 0, 12, 24), 20U) << column;
    }
}

TEST(TextPage, PagesCopiesAndOrder)
{
    const std::string text = "a\nb\f\nc\fd";
    Printed result = printed(text);
    ASSERT_EQ(result.pages.size(), 3U);
    EXPECT_EQ(result.pages[0].height, 48U);
    Job job;
    job.copies = 3;
    result = printed(text, job);
    ASSERT_EQ(result.pages.size(), 3U);
    EXPECT_EQ(result.pages[2].copies, 3U);
    job.collate = true;
    result = printed(text, job);
    ASSERT_EQ(result.pages.size(), 9U);
    EXPECT_EQ(result.pages[8].copies, 1U);
    EXPECT_EQ(result.pages[8].bits, result.pages[2].bits);
    job = {};
    job.reverse = true;
    const Printed reversed = printed(text, job);
    EXPECT_EQ(reversed.pages[0].bits, result.pages[2].bits);
    EXPECT_EQ(reversed.pages[2].bits, result.pages[0].bits);
    job = {};
    job.ranges = {{2, 2}};
    EXPECT_EQ(printed(text, job).pages.size(), 1U);
    job.ranges = {{7, 9}};
    EXPECT_NE(printed(text, job).failure, "");
}

TEST(TextPage, AnEmptyDocumentIsAFailure)
{
    EXPECT_EQ(printed("").failure, "The document is empty.");
}

TEST(TextPage, UpsideDownIsTheSameFromTheOtherEnd)
{
    const Printed upright = printed("Quittung\n12,34");
    Job job;
    job.orientation = pages::Turn::half;
    const Printed turned = printed("Quittung\n12,34", job);
    ASSERT_EQ(turned.pages.size(), 1U);
    ASSERT_EQ(turned.pages[0].height, 48U);
    job = {};
    job.mirror = true;
    const Printed mirrored = printed("Quittung\n12,34", job);
    for (std::size_t y = 0; y < 48; ++y) {
        for (std::size_t x = 0; x < 576; ++x) {
            ASSERT_EQ(turned.pages[0].at(575 - x, 47 - y), upright.pages[0].at(x, y));
            ASSERT_EQ(mirrored.pages[0].at(575 - x, y), upright.pages[0].at(x, y));
        }
    }
}

TEST(TextPage, TurnedAQuarterTheFirstLetterIsAtTheBottomLeft)
{
    Job job;
    job.orientation = pages::Turn::quarter;
    job.paper.page_length = 1200 / 203.2 * 72;
    const Printed turned = printed("l", job);
    const Printed upright = printed("l");
    ASSERT_EQ(turned.pages[0].height, 1200U);
    for (std::size_t y = 0; y < 24; ++y) {
        for (std::size_t x = 0; x < 12; ++x) {
            ASSERT_EQ(turned.pages[0].at(y, 1199 - x), upright.pages[0].at(x, y));
        }
    }
}

}  // namespace
