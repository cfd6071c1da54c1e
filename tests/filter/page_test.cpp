// Pages: strips, runs of ink and blank rows, copies, what is withheld at the bottom.
#include "filter/page.h"

#include "tests/filter/page_stream.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>

#include <random>

using namespace kit;

namespace {

constexpr unsigned width = 2;

// Strips of 14 rows of two bytes.
struct PageDevice : Device {
    PageDevice()
    {
        options.printer_width = width;
        make_buffers();
    }
};

const std::string ink_row = bytes("80 01");

std::string ink(size_t rows)
{
    std::string block;
    for (size_t i = 0; i < rows; ++i) {
        block += ink_row;
    }
    return block;
}

std::string blank(size_t rows)
{
    return std::string(rows * width, '\0');
}

std::string printed(size_t rows)
{
    return raster(0, width, rows, ink(rows));
}

Seen process(Device &device, const StreamPage &page)
{
    PageStream stream({page});
    EXPECT_TRUE(stream.next());
    return observe([&] { process_page(&device.dev, &stream.header, stream.stream); });
}

size_t times_in(const std::string &text, const std::string &what)
{
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        count += 1;
    }
    return count;
}

TEST(Page, RunsOfInkAndBlankRowsAcrossStrips)
{
    PageDevice device;
    const Seen seen = process(device, {width, blank(10) + ink(10) + blank(10)});
    EXPECT_EQ(hex(seen.out), hex(feed(10) + printed(4) + printed(6)));
    EXPECT_EQ(device.state.lastStripBlanksHeight, 10);
}

TEST(Page, OnlyBlankRowsAreWithheld)
{
    PageDevice device;
    const Seen seen = process(device, {width, blank(30)});
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace.find("+print_"), std::string::npos) << seen.trace;
    EXPECT_EQ(device.state.lastStripBlanksHeight, 30);
}

TEST(Page, BottomBlanksThatAreNotSavedAreFedStripByStrip)
{
    PageDevice device;
    device.options.papersavebottom = 0;
    const Seen seen = process(device, {width, blank(33)});
    EXPECT_EQ(hex(seen.out), hex(feed(14) + feed(14) + feed(5)));
    EXPECT_EQ(device.state.lastStripBlanksHeight, 0);
}

TEST(Page, AnyValueButZeroSavesTheBottom)
{
    for (const int32_t value : {-1, 1, 2, INT32_MIN}) {
        PageDevice device;
        device.options.papersavebottom = value;
        EXPECT_EQ(process(device, {width, blank(3)}).out, "");
        EXPECT_EQ(device.state.lastStripBlanksHeight, 3);
    }
}

TEST(Page, ABlankRunAcrossStripsIsFedInOnePiece)
{
    PageDevice device;
    const Seen seen = process(device, {width, ink(1) + blank(40) + ink(1)});
    EXPECT_EQ(hex(seen.out), hex(printed(1) + feed(40) + printed(1)));
    EXPECT_EQ(device.state.lastStripBlanksHeight, 0);
}

TEST(Page, AStripThatStartsWithInkFlushesTheCarriedRun)
{
    PageDevice device;
    const Seen seen = process(device, {width, blank(14) + ink(2)});
    EXPECT_EQ(hex(seen.out), hex(feed(14) + printed(2)));
}

TEST(Page, AnInkedRunNeverCrossesAStrip)
{
    PageDevice device;
    const Seen seen = process(device, {width, ink(30)});
    EXPECT_EQ(hex(seen.out), hex(printed(14) + printed(14) + printed(2)));
}

// Fed with the strip, but not when ink ends the strip.
TEST(Page, UnsavedBlanksInFrontOfAStripsEndAreFedBeforeTheNextStrip)
{
    PageDevice device;
    device.options.papersavebottom = 0;
    const Seen seen = process(device, {width, ink(10) + blank(10) + ink(10)});
    EXPECT_EQ(hex(seen.out), hex(printed(10) + feed(4) + feed(6) + printed(8) + printed(2)));
}

TEST(Page, LeadingBlankRowsAreFedLikeAnyOthers)
{
    PageDevice device;
    EXPECT_EQ(hex(process(device, {width, blank(3) + ink(1)}).out), hex(feed(3) + printed(1)));
}

TEST(Page, EveryByteOfARowCanMakeItInked)
{
    for (size_t at = 0; at < 40; ++at) {
        Device device;
        std::string row(40, '\0');
        row[at] = 1;
        EXPECT_EQ(hex(process(device, {40, row}).out), hex(raster(0, at + 1, 1, row.substr(0, at + 1))));
    }
}

TEST(Page, IsFramedByPageStartAndEnd)
{
    PageDevice device;
    device.options.papertype = 1;
    device.options.postprintaction = 3;
    device.options.cutdistance = 1;
    device.options.finalcut = 1;
    const Seen seen = process(device, {width, ink(1)});
    EXPECT_EQ(hex(seen.out), hex(printed(1) + "\x0C" + feed(7) + bytes("1D 56 42 00")));
    EXPECT_EQ(times_in(seen.trace, "+start_page start.\n"), 1U);
    EXPECT_EQ(times_in(seen.trace, "+end_page start.\n"), 1U);
}

TEST(Page, ReportsItsStartAndWhatItWithheld)
{
    PageDevice device;
    const Seen seen = process(device, {width, blank(10)});
    const std::string cups = fatal_line("").substr(std::string("ERROR:Raster(, ").size());
    EXPECT_EQ(seen.err, "DEBUG: process_page start.\n (" + cups + "DEBUG: \tlastStripBlanksHeight:10. (" + cups);
    EXPECT_EQ(seen.trace,
              "DEBUG: process_page start.\n\n"
              "+start_page start.\n-start_page finished.\n"
              "+end_page start.\n-end_page finished.\n"
              "DEBUG: \tlastStripBlanksHeight:10.\n"
              "-process_page finished(0).\n");
}

// The rows that the page before withheld are not this page's.
TEST(Page, ForgetsWhatThePageBeforeWithheld)
{
    PageDevice device;
    device.state.lastStripBlanksHeight = 99;
    EXPECT_EQ(hex(process(device, {width, blank(2) + ink(1)}).out), hex(feed(2) + printed(1)));
    EXPECT_EQ(device.state.lastStripBlanksHeight, 0);
}

TEST(Page, LeavesTheStreamAtTheNextPage)
{
    for (const unsigned copies : {1U, 3U}) {
        PageDevice device;
        PageStream stream({{width, ink(5), copies}, {width, ink(6)}});
        ASSERT_TRUE(stream.next());
        observe_untraced([&] { process_page(&device.dev, &stream.header, stream.stream); });
        ASSERT_TRUE(stream.next());
        const Seen seen = observe_untraced([&] { process_page(&device.dev, &stream.header, stream.stream); });
        EXPECT_EQ(hex(seen.out), hex(printed(6)));
        EXPECT_FALSE(stream.next());
    }
}

// ---- Copies ----

TEST(PageCopies, AreIdenticalAndTheStreamIsReadOnce)
{
    PageDevice device;
    device.options.papertype = 1;
    const std::string rows = blank(3) + ink(20) + blank(4);
    const std::string copy = feed(3) + printed(11) + printed(9) + "\x0C";
    for (const unsigned copies : {2U, 3U, 7U}) {
        const Seen seen = process(device, {width, rows, copies});
        std::string expected;
        for (unsigned i = 0; i < copies; ++i) {
            expected += copy;
        }
        EXPECT_EQ(hex(seen.out), hex(expected));
        EXPECT_EQ(times_in(seen.trace, "+start_page start.\n"), copies);
        EXPECT_EQ(times_in(seen.trace, "+end_page start.\n"), copies);
        EXPECT_EQ(times_in(seen.trace, "dataSize (54) dHeight (27) wBytes (2).\n"), 1U);
        EXPECT_EQ(device.state.lastStripBlanksHeight, 4);
    }
}

TEST(PageCopies, OneCopyIsNotBuffered)
{
    PageDevice device;
    EXPECT_EQ(process(device, {width, ink(3), 1}).trace.find("dataSize"), std::string::npos);
}

TEST(PageCopies, NoneReadsAndPrintsNothing)
{
    PageDevice device;
    device.state.lastStripBlanksHeight = 5;
    PageStream stream({{width, ink(5), 0}});
    ASSERT_TRUE(stream.next());
    const Seen seen = observe([&] { process_page(&device.dev, &stream.header, stream.stream); });
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace,
              "DEBUG: process_page start.\n\nDEBUG: \tlastStripBlanksHeight:5.\n-process_page finished(0).\n");
    EXPECT_EQ(device.state.lastStripBlanksHeight, 5);
    std::string pixels(10, '\0');
    EXPECT_EQ(cupsRasterReadPixels(stream.stream, reinterpret_cast<unsigned char *>(pixels.data()), 10), 10U);
    EXPECT_EQ(pixels, ink(5));
}

TEST(PageCopies, TheMissingTailOfABufferedPageIsBlank)
{
    PageDevice device;
    const Seen seen = process(device, {width, ink(5), 2, 20});
    // libcups may bring the rows that came, and tells 0 for the whole request.
    EXPECT_NE(seen.trace.find(" dHeight (20) wBytes (2).\n"), std::string::npos);
    EXPECT_EQ(hex(seen.out), hex(printed(5) + printed(5)));
    EXPECT_EQ(device.state.lastStripBlanksHeight, 15);
}

// ---- What ends the job ----

TEST(PageFatal, AStreamThatEndsInAPage)
{
    PageDevice device;
    const Ended ended = run_to_end([&] {
        PageStream stream({{width, ink(20), 1, 40}});
        stream.next();
        process_page(&device.dev, &stream.header, stream.stream);
    });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(hex(ended.out), hex(printed(14)));
    EXPECT_EQ(ended.err.substr(ended.err.rfind("ERROR:")), fatal_line("cupsRasterReadPixels did not read enough data"));
}

TEST(PageFatal, ARowThatDoesNotFitTheStripBuffer)
{
    for (const unsigned copies : {1U, 2U}) {
        PageDevice device;
        const Ended ended = run_to_end([&] {
            PageStream stream({{29, std::string(29, 'x'), copies}});
            stream.next();
            process_page(&device.dev, &stream.header, stream.stream);
        });
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.out, "");
        EXPECT_EQ(ended.err.substr(ended.err.rfind("ERROR:")), fatal_line("Raster line does not fit the strip buffer"));
        EXPECT_EQ(ended.trace, "DEBUG: process_page start.\n\n");
    }
}

TEST(PageFatal, ARowOfNoBytes)
{
    PageDevice device;
    const Ended ended = run_to_end([&] {
        PageStream stream({{width, ink(1)}});
        stream.next();
        stream.header.cupsBytesPerLine = 0;
        process_page(&device.dev, &stream.header, stream.stream);
    });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.out, "");
}

TEST(PageFatal, NothingFailsWhenNothingIsToBePrinted)
{
    for (const unsigned bytes_a_line : {0U, 29U}) {
        PageDevice device;
        PageStream stream({{width, ink(1)}});
        ASSERT_TRUE(stream.next());
        stream.header.cupsBytesPerLine = bytes_a_line;
        stream.header.NumCopies = 0;
        observe_untraced([&] { process_page(&device.dev, &stream.header, stream.stream); });
        stream.header.NumCopies = 1;
        stream.header.cupsHeight = 0;
        const Seen seen = observe([&] { process_page(&device.dev, &stream.header, stream.stream); });
        EXPECT_EQ(seen.out, "");
        EXPECT_EQ(times_in(seen.trace, "+start_page start.\n"), 1U);
    }
}

TEST(PageFatal, ARowThatFillsTheStripBufferIsPrinted)
{
    PageDevice device;
    device.options.printer_width = 28;
    const std::string row(28, 'x');
    EXPECT_EQ(hex(process(device, {28, row + row}).out), hex(raster(0, 28, 1, row) + raster(0, 28, 1, row)));
}

// ---- The paper has the page's picture ----

// Reads the raster commands back as rows of a page.
std::string picture(std::string_view commands, size_t page_width)
{
    std::string page;
    for (size_t at = 0; at < commands.size();) {
        EXPECT_EQ(hex(commands.substr(at, 4)), "1D 76 30 00");
        const auto number = [&](size_t index) { return static_cast<unsigned char>(commands[at + index]); };
        const size_t row_width = number(4) + number(5) * 256U;
        const size_t rows = number(6) + number(7) * 256U;
        at += 8;
        for (size_t row = 0; row < rows; ++row, at += row_width) {
            page += commands.substr(at, row_width);
            page.append(page_width - row_width, '\0');
        }
    }
    return page;
}

TEST(PageProperty, EveryRowComesOutOnceAndInItsPlace)
{
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        Device device;
        const auto page_width = static_cast<unsigned>(1 + random() % 48);
        device.options.max_render_height = static_cast<int32_t>(1 + random() % 20);
        device.options.papersavebottom = static_cast<int32_t>(random() % 2);
        device.make_buffers();
        std::string rows;
        for (size_t row = 1 + random() % 120; row > 0; --row) {
            std::string line(page_width, '\0');
            if (random() % 3 == 0) {
                line[random() % page_width] = static_cast<char>(random());
            }
            rows += line;
        }
        const Seen seen = process(device, {page_width, rows});
        const auto withheld = static_cast<size_t>(device.state.lastStripBlanksHeight);
        ASSERT_EQ(hex(picture(seen.out, page_width)), hex(rows.substr(0, rows.size() - withheld * page_width)));
        ASSERT_EQ(rows.find_first_not_of('\0', rows.size() - withheld * page_width), std::string::npos);
    }
}

}  // namespace
