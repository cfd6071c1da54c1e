// What commands do to the paper: images, feeds, margins, justification, cuts, text, page mode, events.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "preview/reader.h"

namespace {

using Stream = std::vector<uint8_t>;

Stream operator+(Stream head, const Stream &tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

Stream text(const std::string &characters)
{
    return {characters.begin(), characters.end()};
}

// A plain raster image; its rows one after another.
Stream raster(uint8_t mode, uint8_t width, uint8_t rows, const Stream &data)
{
    return Stream{0x1D, 0x76, 0x30, mode, width, 0, rows, 0} + data;
}

struct Printed {
    explicit Printed(const Stream &stream, preview::Options options = {.width = 64}) : reader(options)
    {
        reader.feed(stream);
        complete = reader.finish();
    }
    std::string row(uint64_t index) const
    {
        std::string dots;
        for (uint32_t x = 0; x < reader.options().width; ++x) {
            dots += reader.dot(index, x) ? '#' : '.';
        }
        return dots;
    }
    uint32_t first_dot() const
    {
        return reader.ink() ? reader.ink()->first_dot : UINT32_MAX;
    }

    preview::Reader reader;
    bool complete = false;
};

std::string padded(std::string dots)
{
    dots.resize(64, '.');
    return dots;
}

std::vector<std::string> event_texts(const preview::Reader &reader)
{
    std::vector<std::string> texts;
    for (const preview::Event &event : reader.events()) {
        texts.push_back(std::to_string(event.row) + ' ' + event.text);
    }
    return texts;
}

}  // namespace

TEST(PaperRaster, PlainRowsAppearDotForDot)
{
    const Printed paper(raster(0, 2, 2, {0x80, 0x01, 0xFF, 0x00}));
    EXPECT_EQ(paper.reader.paper().rows(), 2U);
    EXPECT_EQ(paper.row(0), padded("#..............#"));
    EXPECT_EQ(paper.row(1), padded("########........"));
}

TEST(PaperRaster, ModesOneToThreeDoubleTheDots)
{
    EXPECT_EQ(Printed(raster(1, 1, 1, {0xA1})).row(0), padded("##..##........##"));
    const Printed high(raster(2, 1, 1, {0x80}));
    EXPECT_EQ(high.reader.paper().rows(), 2U);
    EXPECT_EQ(high.row(1), padded("#"));
    const Printed both(raster(51, 1, 1, {0x80}));
    EXPECT_EQ(both.reader.paper().rows(), 2U);
    EXPECT_EQ(both.row(1), padded("##"));
}

TEST(PaperRaster, RandomImagesEqualTheirInput)
{
    std::mt19937 random(9);
    for (int round = 0; round < 50; ++round) {
        const auto width = static_cast<uint8_t>(1 + random() % 72);
        const auto rows = static_cast<uint8_t>(1 + random() % 200);
        Stream data(size_t{width} * rows);
        for (uint8_t &byte : data) {
            byte = static_cast<uint8_t>(random() % 4 == 0 ? random() : 0);
        }
        const Printed paper(raster(0, width, rows, data), {.width = width * 8U});
        ASSERT_EQ(paper.reader.paper().rows(), rows);
        for (uint32_t i = 0; i < data.size() * 8; ++i) {
            ASSERT_EQ(paper.reader.dot(i / (width * 8U), i % (width * 8U)), (data[i / 8] >> (7 - i % 8) & 1) != 0);
        }
    }
}

TEST(PaperRaster, AnImageWiderThanThePaperIsCutAndTold)
{
    const Printed paper(raster(0, 10, 1, Stream(10, 0xFF)));
    EXPECT_EQ(paper.row(0), std::string(64, '#'));
    EXPECT_EQ(paper.reader.warnings().size(), 1U);
}

TEST(PaperFeed, BlankRastersAndDotFeedsAddTheirRows)
{
    EXPECT_EQ(Printed(raster(0, 1, 255, Stream(255))).reader.paper().rows(), 255U);
    EXPECT_EQ(Printed({0x1B, 0x4A, 0x64}).reader.paper().rows(), 100U);
    EXPECT_EQ(Printed({0x1B, 0x4A, 0x00}).reader.paper().rows(), 0U);
    EXPECT_FALSE(Printed({0x1B, 0x4A, 0x64}).reader.ink().has_value());
}

TEST(PaperFeed, LineSpacingIsWhatALineFeedFeeds)
{
    EXPECT_EQ(Printed({0x1B, 0x33, 50, 0x0A, 0x0A}).reader.paper().rows(), 100U);
    EXPECT_EQ(Printed({0x1B, 0x33, 50, 0x1B, 0x64, 3}).reader.paper().rows(), 150U);
    EXPECT_EQ(Printed({0x1B, 0x33, 50, 0x1B, 0x32, 0x0A}).reader.paper().rows(), 203U / 6);
}

TEST(PaperFeed, AReverseFeedPrintsOverWhatIsThere)
{
    const Printed paper(raster(0, 1, 2, {0xF0, 0xF0}) + Stream{0x1B, 0x4B, 2} + raster(0, 1, 1, {0x0F}));
    EXPECT_EQ(paper.reader.paper().rows(), 2U);
    EXPECT_EQ(paper.row(0), padded("########"));
    EXPECT_EQ(paper.row(1), padded("####"));
}

TEST(PaperFeed, MotionUnitsAreTurnedIntoDots)
{
    // 180 units an inch at 203 dots an inch: 90 units are half an inch.
    EXPECT_EQ(Printed({0x1D, 0x50, 180, 180, 0x1B, 0x4A, 90}).reader.paper().rows(), 101U);
}

TEST(PaperLayout, TheLeftMarginMovesImages)
{
    EXPECT_EQ(Printed(Stream{0x1D, 0x4C, 8, 0} + raster(0, 1, 1, {0x80})).first_dot(), 8U);
    EXPECT_EQ(Printed(Stream{0x1D, 0x4C, 3, 0} + raster(0, 1, 1, {0xFF})).row(0), padded("...########"));
    // Printers whose margin counts bytes.
    EXPECT_EQ(Printed(Stream{0x1D, 0x4C, 3, 0} + raster(0, 1, 1, {0x80}), {.width = 64, .margin_unit = 8}).first_dot(),
              24U);
}

TEST(PaperLayout, JustificationMovesImages)
{
    EXPECT_EQ(Printed(Stream{0x1B, 0x61, 1} + raster(0, 2, 1, {0x80, 0})).first_dot(), 24U);
    EXPECT_EQ(Printed(Stream{0x1B, 0x61, 50} + raster(0, 2, 1, {0x80, 0})).first_dot(), 48U);
    EXPECT_EQ(Printed(Stream{0x1B, 0x61, 2, 0x1B, 0x40} + raster(0, 2, 1, {0x80, 0})).first_dot(), 0U);
}

TEST(PaperLayout, ThePrintAreaCutsAtItsRightEdge)
{
    EXPECT_EQ(Printed(Stream{0x1D, 0x57, 4, 0} + raster(0, 1, 1, {0xFF})).row(0), padded("####"));
}

TEST(PaperCut, CutsAreListedWithTheirRows)
{
    const Printed paper(
        Stream{0x1B, 0x4A, 40, 0x1D, 0x56, 66, 0, 0x1B, 0x4A, 10, 0x1D, 0x56, 65, 5, 0x1B, 0x69, 0x1D, 0x56, 0});
    ASSERT_EQ(paper.reader.cuts().size(), 4U);
    const std::pair<uint64_t, bool> expected[] = {{40, true}, {55, false}, {55, true}, {55, false}};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(paper.reader.cuts()[i].row, expected[i].first) << i;
        EXPECT_EQ(paper.reader.cuts()[i].partial, expected[i].second) << i;
    }
    EXPECT_EQ(paper.reader.paper().rows(), 55U);
}

TEST(PaperEvents, DrawerBuzzerLogoTicketAndCutAreListedInOrder)
{
    const Printed paper(
        Stream{0x1B, 0x70, 0, 80, 80, 0x1B, 0x70, 1, 80, 80, 0x1B, 0x28, 0x41, 5, 0, 0x61, 0x64, 3, 2, 1} +
        Stream{0x1D, 0x28, 0x4C, 6, 0, 0x30, 0x45, 0x30, 0x31, 1, 1, 0x1B, 0x4A, 7, 0x0C, 0x1D, 0x56, 66, 0});
    EXPECT_EQ(event_texts(paper.reader),
              (std::vector<std::string>{"0 drawer 1, pulse 80/80", "0 drawer 2, pulse 80/80", "0 buzzer x3",
                                        "0 logo \"01\"", "7 next ticket", "7 partial cut"}));
    EXPECT_EQ(paper.reader.paper().rows(), 7U);
}

TEST(PaperLogo, ALogoDefinedInTheStreamIsDrawn)
{
    const Stream define = {0x1D, 0x28, 0x4C, 13, 0, 0x30, 0x43, 0x30, 0x30, 0x30, 1, 8, 0, 2, 0, 0x31, 0xF0, 0x0F};
    const Stream print = {0x1D, 0x28, 0x4C, 6, 0, 0x30, 0x45, 0x30, 0x30, 2, 1};
    const Printed paper(define + print);
    EXPECT_EQ(paper.reader.paper().rows(), 2U);
    EXPECT_EQ(paper.row(0), padded("########"));
    EXPECT_EQ(paper.row(1), padded("........########"));
}

TEST(PaperText, CharactersFillTheirCells)
{
    const Printed paper(text("I") + Stream{0x0A}, {.width = 576});
    ASSERT_TRUE(paper.reader.ink());
    EXPECT_LT(paper.reader.ink()->last_dot, 12U);
    EXPECT_LT(paper.reader.ink()->last_row, 24U);
    EXPECT_EQ(paper.reader.paper().rows(), 203U / 6);
}

TEST(PaperText, DoubleSizeDoublesEveryDot)
{
    const Printed plain(text("R") + Stream{0x0A}, {.width = 96});
    const Printed large(Stream{0x1D, 0x21, 0x11} + text("R") + Stream{0x0A}, {.width = 96});
    for (uint64_t y = 0; y < 48; ++y) {
        for (uint32_t x = 0; x < 24; ++x) {
            ASSERT_EQ(large.reader.dot(y, x), plain.reader.dot(y / 2, x / 2)) << y << ' ' << x;
        }
    }
}

TEST(PaperText, ReverseTextIsTheNegative)
{
    const Printed plain(text("R") + Stream{0x0A}, {.width = 96});
    const Printed negative(Stream{0x1D, 0x42, 1} + text("R") + Stream{0x0A}, {.width = 96});
    for (uint64_t y = 0; y < 24; ++y) {
        for (uint32_t x = 0; x < 12; ++x) {
            ASSERT_NE(negative.reader.dot(y, x), plain.reader.dot(y, x));
        }
    }
}

TEST(PaperText, EmphasisAddsInkAndUnderlineALine)
{
    const auto ink = [](const Printed &paper) {
        size_t count = 0;
        for (uint64_t y = 0; y < paper.reader.paper().rows(); ++y) {
            for (uint32_t x = 0; x < 96; ++x) {
                count += paper.reader.dot(y, x) ? 1U : 0U;
            }
        }
        return count;
    };
    const Printed plain(text("R") + Stream{0x0A}, {.width = 96});
    EXPECT_GT(ink(Printed(Stream{0x1B, 0x45, 1} + text("R") + Stream{0x0A}, {.width = 96})), ink(plain));
    EXPECT_EQ(ink(Printed(Stream{0x1B, 0x2D, 2} + text("R") + Stream{0x0A}, {.width = 96})), ink(plain) + 24);
}

TEST(PaperText, LongLinesWrapAtTheAreasEdge)
{
    // Five cells of 12 dots fit into 64 dots.
    const Printed paper(Stream{0x1B, 0x33, 30} + text("MMMMMMM") + Stream{0x0A});
    EXPECT_EQ(paper.reader.paper().rows(), 60U);
    EXPECT_TRUE(paper.reader.ink()->last_row >= 30);
}

TEST(PaperText, TextLeftInTheLineIsPrintedAtTheEnd)
{
    EXPECT_TRUE(Printed(text("M")).reader.ink().has_value());
}

TEST(PaperText, ABitImageStandsInTheLine)
{
    const Printed paper(Stream{0x1B, 0x2A, 33, 2, 0} + Stream(12, 0xFF) + Stream{0x0A});
    EXPECT_EQ(paper.row(0), padded("####"));
    EXPECT_EQ(paper.row(23), padded("####"));
    EXPECT_EQ(paper.row(24), padded(""));
}

TEST(PaperPageMode, ThePageIsPrintedWhenItIsAskedFor)
{
    const Stream area = {0x1B, 0x4C, 0x1B, 0x57, 8, 0, 10, 0, 40, 0, 50, 0};
    const Stream drawn = area + raster(0, 1, 1, {0xFF});
    EXPECT_EQ(Printed(drawn + Stream{0x18, 0x1B, 0x53}).reader.paper().rows(), 0U);
    const Printed paper(drawn + Stream{0x0C});
    EXPECT_EQ(paper.reader.paper().rows(), 11U);
    EXPECT_EQ(paper.row(10), padded("........########"));
    EXPECT_EQ(event_texts(paper.reader), (std::vector<std::string>{"0 page mode", "11 page printed"}));
}

TEST(PaperLimit, ThePaperEndsAtItsLimitAndSaysSo)
{
    Stream stream;
    for (int i = 0; i < 100; ++i) {
        stream = stream + Stream{0x1B, 0x4A, 255};
    }
    const Printed paper(stream, {.width = 64, .max_rows = 1000});
    EXPECT_FALSE(paper.complete);
    EXPECT_EQ(paper.reader.paper().rows(), 1000U);
    ASSERT_TRUE(paper.reader.problem());
    EXPECT_EQ(paper.reader.problem()->offset, 9U);
    EXPECT_NE(paper.reader.problem()->text.find("limit of 1000 rows"), std::string::npos);
}

TEST(PaperLimit, ListsEndAtTheirLimit)
{
    Stream stream;
    for (int i = 0; i < 500; ++i) {
        stream = stream + Stream{0x1B, 0x69, 0x01};
    }
    const Printed paper(stream, {.width = 64, .max_events = 100});
    EXPECT_EQ(paper.reader.commands().size(), 100U);
    EXPECT_EQ(paper.reader.cuts().size(), 100U);
    EXPECT_EQ(paper.reader.events().size(), 101U);
    EXPECT_EQ(paper.reader.warnings().size(), 100U);
}
