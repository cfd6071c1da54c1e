// Bar codes and symbols on the paper.
#include <gtest/gtest.h>

#include <string>

#include "preview/reader.h"

namespace {

using Stream = std::vector<uint8_t>;

Stream operator+(Stream head, const Stream &tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

Stream bar_code(uint8_t m, const std::string &data)
{
    return Stream{0x1D, 0x68, 40, 0x1D, 0x77, 2, 0x1D, 0x6B, m, static_cast<uint8_t>(data.size())} +
           Stream(data.begin(), data.end());
}

struct Printed {
    explicit Printed(const Stream &stream, preview::SymbolEncoder encoder = preview::encode_symbol)
        : reader({.symbols = encoder})
    {
        reader.feed(stream);
        EXPECT_TRUE(reader.finish());
    }
    // Widths of the bars and gaps of a row, from the first bar to the last.
    std::vector<uint32_t> bars(uint64_t row) const
    {
        std::vector<uint32_t> widths;
        uint32_t run = 1;
        for (uint32_t x = 1; x < reader.options().width; ++x, ++run) {
            if (reader.dot(row, x) != reader.dot(row, x - 1)) {
                widths.push_back(run);
                run = 0;
            }
        }
        if (!reader.dot(row, 0) && !widths.empty()) {
            widths.erase(widths.begin());
        }
        return widths;
    }
    preview::Reader reader;
};

}  // namespace

TEST(Symbols, EverySystemOfBarCodesIsDrawn)
{
    const std::pair<uint8_t, const char *> codes[] = {
        {65, "01234567890"}, {66, "01234500006"}, {67, "400638133393"}, {68, "9638507"},   {69, "KLOV 39"},
        {70, "12345678"},    {71, "A40156B"},     {72, "KLOV93"},       {73, "{BKlov128"},
    };
    for (const auto &[m, data] : codes) {
        const Printed paper(bar_code(m, data));
        EXPECT_TRUE(paper.reader.warnings().empty()) << int{m} << ' ' << data;
        EXPECT_EQ(paper.reader.paper().rows(), 40U) << int{m};
        EXPECT_GE(paper.bars(20).size(), 20U) << int{m};
    }
}

// EAN-13 has 95 modules; guard bars 1-1-1 at both ends.
TEST(Symbols, AnEan13HasItsGuardBarsAndItsWidth)
{
    const Printed paper(bar_code(67, "400638133393"));
    const std::vector<uint32_t> bars = paper.bars(0);
    ASSERT_EQ(bars.size(), 59U);
    uint32_t total = 0;
    for (const uint32_t width : bars) {
        total += width;
    }
    EXPECT_EQ(total, 95U * 2);
    EXPECT_EQ(bars[0], 2U);
    EXPECT_EQ(bars[1], 2U);
    EXPECT_EQ(bars[2], 2U);
    EXPECT_EQ(bars[58], 2U);
}

// CODE128 in set C carries pairs of digits as numbers.
TEST(Symbols, Code128NumbersBecomeDigits)
{
    const Printed numbers(bar_code(73, std::string("{C") + char(12) + char(34)));
    const Printed digits(bar_code(73, "{B1234"));
    EXPECT_EQ(numbers.bars(0), digits.bars(0));
}

TEST(Symbols, TheReadableLineStandsWhereItIsWanted)
{
    const Stream code = bar_code(69, "AB");
    EXPECT_EQ(Printed(Stream{0x1D, 0x48, 0} + code).reader.paper().rows(), 40U);
    EXPECT_EQ(Printed(Stream{0x1D, 0x48, 2} + code).reader.paper().rows(), 64U);
    EXPECT_EQ(Printed(Stream{0x1D, 0x48, 51} + code).reader.paper().rows(), 88U);
    EXPECT_EQ(Printed(Stream{0x1D, 0x66, 1, 0x1D, 0x48, 1} + code).reader.paper().rows(), 57U);
}

TEST(Symbols, AQrCodeHasItsFinderPattern)
{
    const Printed paper(
        Stream{0x1D, 0x28, 0x6B, 3, 0, 0x31, 0x43, 4, 0x1D, 0x28, 0x6B, 6, 0, 0x31, 0x50, 0x30, 'a', 'b', 'c'} +
        Stream{0x1D, 0x28, 0x6B, 3, 0, 0x31, 0x51, 0x30});
    EXPECT_EQ(paper.reader.paper().rows(), 21U * 4);
    const char *finder[] = {"#######", "#.....#", "#.###.#", "#.###.#", "#.###.#", "#.....#", "#######"};
    for (uint32_t y = 0; y < 28; ++y) {
        for (uint32_t x = 0; x < 28; ++x) {
            ASSERT_EQ(paper.reader.dot(y, x), finder[y / 4][x / 4] == '#');
        }
    }
}

TEST(Symbols, APdf417BeginsWithItsStartPattern)
{
    const Printed paper(
        Stream{0x1D, 0x28, 0x6B, 6, 0, 0x30, 0x50, 0x30, 'a', 'b', 'c', 0x1D, 0x28, 0x6B, 3, 0, 0x30, 0x51, 0x30});
    const std::vector<uint32_t> bars = paper.bars(0);
    const uint32_t start[] = {8, 1, 1, 1, 1, 1, 1, 3};
    ASSERT_GT(bars.size(), 8U);
    for (size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(bars[i], start[i] * 3) << i;
    }
}

TEST(Symbols, DataThatNoSymbolTakesIsABoxAndAWarning)
{
    const Printed paper(bar_code(67, "letters"));
    EXPECT_EQ(paper.reader.warnings().size(), 1U);
    EXPECT_TRUE(paper.reader.ink().has_value());
}

TEST(Symbols, WithoutAnEncoderTheyAreBoxes)
{
    const Printed paper(bar_code(67, "400638133393"), nullptr);
    EXPECT_EQ(paper.reader.warnings().size(), 1U);
    EXPECT_EQ(paper.reader.paper().rows(), 40U);
}

TEST(Symbols, AUpcENumberMayBeGivenInFull)
{
    const std::pair<const char *, const char *> numbers[] = {
        {"01200000345", "123450"}, {"01230000045", "123453"}, {"01234000005", "123454"}, {"01234500006", "123456"}};
    for (const auto &[in_full, digits] : numbers) {
        EXPECT_EQ(Printed(bar_code(66, in_full)).bars(0), Printed(bar_code(66, digits)).bars(0)) << in_full;
    }
}
