#include "pages/coverage.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <random>

namespace pages {
namespace {

constexpr unsigned fine = Coverage::fine_pixels;
constexpr std::uint8_t ink = 0;
constexpr std::uint8_t paper = 255;

// A page of fine pixels that tests draw on.
class Drawing {
public:
    Drawing(std::size_t width, std::size_t height)
        : width_(width), height_(height), pixels_(width * fine * height * fine, paper)
    {
    }
    // In fine pixels, the far edges outside.
    void fill(std::size_t left, std::size_t top, std::size_t right, std::size_t bottom, std::uint8_t grey = ink)
    {
        for (std::size_t y = top; y < bottom; y++) {
            for (std::size_t x = left; x < right; x++) {
                pixels_[y * width_ * fine + x] = grey;
            }
        }
    }
    std::vector<std::vector<std::uint8_t>> dots(std::size_t rows_at_once = 1000) const
    {
        std::vector<std::vector<std::uint8_t>> rows;
        Coverage coverage(width_, [&](const std::uint8_t *grey) { rows.emplace_back(grey, grey + width_); });
        for (std::size_t y = 0; y < height_; y += rows_at_once) {
            const std::size_t count = std::min(rows_at_once, height_ - y);
            coverage.put_rows(pixels_.data() + y * fine * width_ * fine, width_ * fine, count * fine);
        }
        coverage.finish();
        return rows;
    }

private:
    std::size_t width_;
    std::size_t height_;
    std::vector<std::uint8_t> pixels_;
};

std::size_t black_across(const std::vector<std::vector<std::uint8_t>> &dots, std::size_t row)
{
    return static_cast<std::size_t>(std::ranges::count(dots[row], ink));
}

TEST(Coverage, EveryRowLeavesOnce)
{
    for (std::size_t height = 0; height < 12; height++) {
        EXPECT_EQ(Drawing(5, height).dots().size(), height);
        EXPECT_EQ(Drawing(5, height).dots(1).size(), height);
    }
}

TEST(Coverage, PaperStaysPaperAndInkStaysInk)
{
    Drawing drawing(6, 6);
    drawing.fill(2 * fine, 2 * fine, 4 * fine, 5 * fine);
    const auto dots = drawing.dots();
    for (std::size_t y = 0; y < 6; y++) {
        for (std::size_t x = 0; x < 6; x++) {
            EXPECT_EQ(dots[y][x], x >= 2 && x < 4 && y >= 2 && y < 5 ? ink : paper) << x << ' ' << y;
        }
    }
}

// Bars of every width at every place: as wide as drawn, to the nearest dot, and never nothing.
TEST(Coverage, BarsAreAsWideAsDrawn)
{
    for (std::size_t width = 1; width <= 5 * fine; width++) {
        for (std::size_t left = 0; left < fine; left++) {
            Drawing drawing(12, 8);
            drawing.fill(8 + left, 0, 8 + left + width, 8 * fine);
            const auto dots = drawing.dots();
            for (std::size_t y = 0; y < 8; y++) {
                const auto black = static_cast<double>(black_across(dots, y));
                EXPECT_GE(black, 1) << width << " at " << left;
                EXPECT_LE(std::abs(black - static_cast<double>(width) / fine), 1) << width << " at " << left;
            }
        }
    }
}

TEST(Coverage, LevelBarsAreAsWideAsUprightOnes)
{
    for (std::size_t width = 1; width <= 3 * fine; width++) {
        for (std::size_t left = 0; left < fine; left++) {
            Drawing upright(12, 12);
            upright.fill(8 + left, 0, 8 + left + width, 12 * fine);
            Drawing level(12, 12);
            level.fill(0, 8 + left, 12 * fine, 8 + left + width);
            const auto across = upright.dots();
            const auto down = level.dots();
            for (std::size_t y = 0; y < 12; y++) {
                for (std::size_t x = 0; x < 12; x++) {
                    EXPECT_EQ(across[y][x], down[x][y]) << width << " at " << left;
                }
            }
        }
    }
}

TEST(Coverage, AnEdgeBelowEnoughIsNoStroke)
{
    {
        const std::size_t over = 1;
        Drawing drawing(20, 20);
        drawing.fill(4 * fine - over, 4 * fine - over, 12 * fine + over, 12 * fine + over);
        const auto dots = drawing.dots();
        for (std::size_t y = 0; y < 20; y++) {
            EXPECT_EQ(black_across(dots, y), y >= 4 && y < 12 ? 8U : 0U) << y;
        }
    }
}

TEST(Coverage, TheEndOfAStemIsNoStroke)
{
    Drawing drawing(10, 10);
    drawing.fill(4 * fine, 2 * fine, 6 * fine, 6 * fine + 1);
    EXPECT_EQ(black_across(drawing.dots(), 5), 2U);
    EXPECT_EQ(black_across(drawing.dots(), 6), 0U);
}

TEST(Coverage, AThinLineBesideAThickOneIsKept)
{
    Drawing drawing(10, 10);
    drawing.fill(0, 0, 10 * fine, fine);
    drawing.fill(5 * fine + 1, fine, 5 * fine + 2, 10 * fine);
    const auto dots = drawing.dots();
    for (std::size_t y = 1; y < 10; y++) {
        EXPECT_EQ(black_across(dots, y), 1U) << y;
    }
}

TEST(Coverage, DustIsNoStroke)
{
    Drawing drawing(10, 10);
    drawing.fill(22, 22, 23, 23);
    EXPECT_EQ(black_across(drawing.dots(), 5), 0U);
}

TEST(Coverage, DiagonalHairlinesHaveNoGap)
{
    Drawing drawing(30, 30);
    for (std::size_t i = 0; i < 28 * fine; i++) {
        drawing.fill(i, i, i + 1, i + 1);
    }
    const auto dots = drawing.dots();
    for (std::size_t y = 1; y < 27; y++) {
        EXPECT_GE(black_across(dots, y), 1U) << y;
    }
}

TEST(Coverage, GreyOfPicturesIsAveraged)
{
    Drawing drawing(4, 4);
    for (std::size_t x = 0; x < 4 * fine; x++) {
        drawing.fill(x, 0, x + 1, 4 * fine, static_cast<std::uint8_t>(100 + x % 4));
    }
    EXPECT_EQ(drawing.dots()[1][1], 102);
}

TEST(Coverage, GreyShapesKeepTheirGreyUpToTheEdge)
{
    Drawing drawing(6, 6);
    drawing.fill(fine + 1, fine + 1, 4 * fine + 1, 4 * fine + 1, 90);
    const auto dots = drawing.dots();
    for (std::size_t y = 0; y < 6; y++) {
        for (std::size_t x = 0; x < 6; x++) {
            EXPECT_TRUE(dots[y][x] == 90 || dots[y][x] == paper);
        }
    }
    EXPECT_EQ(dots[2][2], 90);
}

TEST(Coverage, SlicesLeaveNoSeam)
{
    std::mt19937 random(7);
    Drawing drawing(40, 40);
    for (int i = 0; i < 60; i++) {
        const std::size_t x = random() % 140;
        const std::size_t y = random() % 140;
        drawing.fill(x, y, x + 1 + random() % 15, y + 1 + random() % 15, random() % 2 ? ink : 120);
    }
    for (const std::size_t rows : {1U, 2U, 3U, 7U, 39U}) {
        EXPECT_EQ(drawing.dots(rows), drawing.dots()) << rows;
    }
}

// A page that is black and white is drawn in bits, with grey in bytes: the dots must be the same.
TEST(Coverage, BitsGiveTheSameDotsAsBytes)
{
    std::mt19937 random(11);
    for (const std::size_t width : {1U, 2U, 7U, 16U, 33U}) {
        const std::size_t row_pixels = width * fine;
        const std::size_t row_bits = (row_pixels + 7) / 8;
        std::vector<std::uint8_t> bytes(row_pixels * 20 * fine, paper);
        for (std::size_t i = 0; i < bytes.size(); i++) {
            // Blank rows, hairlines and noise of several densities.
            const std::size_t row = i / row_pixels / fine;
            if (row % 5 != 4 && random() % 12 < row % 5 * 3) {
                bytes[i] = ink;
            }
        }
        std::vector<std::uint8_t> bits(row_bits * 20 * fine, 0xff);
        for (std::size_t y = 0; y < 20 * fine; y++) {
            for (std::size_t x = 0; x < row_pixels; x++) {
                if (bytes[y * row_pixels + x] == ink) {
                    bits[y * row_bits + x / 8] =
                        static_cast<std::uint8_t>(bits[y * row_bits + x / 8] & ~(0x80 >> x % 8));
                }
            }
        }
        std::vector<std::vector<std::uint8_t>> of_bytes;
        std::vector<std::vector<std::uint8_t>> of_bits;
        Coverage one(width, [&](const std::uint8_t *grey) { of_bytes.emplace_back(grey, grey + width); });
        one.put_rows(bytes.data(), row_pixels, 20 * fine);
        one.finish();
        Coverage other(width, [&](const std::uint8_t *grey) { of_bits.emplace_back(grey, grey + width); });
        other.put_bits(bits.data(), row_bits, 20 * fine);
        other.finish();
        EXPECT_EQ(of_bits, of_bytes) << width;
    }
}

TEST(Coverage, ASecondPageKnowsNothingOfTheFirst)
{
    std::vector<std::vector<std::uint8_t>> rows;
    Coverage coverage(3, [&](const std::uint8_t *grey) { rows.emplace_back(grey, grey + 3); });
    const std::vector<std::uint8_t> black(3 * fine * fine, ink);
    coverage.put_rows(black.data(), 3 * fine, fine);
    coverage.finish();
    rows.clear();
    coverage.put_blank_rows(4 * fine);
    coverage.finish();
    ASSERT_EQ(rows.size(), 4U);
    for (const auto &row : rows) {
        EXPECT_EQ(row, std::vector<std::uint8_t>(3, paper));
    }
}

}  // namespace
}  // namespace pages
