// Grey to dots: what is paper, what is solid, what is shaded, and how.
#include "pages/dots.h"
#include "pages/strokes.h"

#include "tests/pages/dots_reference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

using pages::Dither;
using pages_test::Dots;
using pages_test::dots_of;
using pages_test::Grey;
using pages_test::Kind;

constexpr Dither dithers[] = {Dither::diffusion, Dither::ordered, Dither::threshold};

TEST(Dots, BlackAndWhitePassDotForDotAtEveryWidth)
{
    std::mt19937 random(7);
    for (long width = 1; width <= 140; ++width) {
        Grey grey(width, 20);
        for (std::uint8_t &byte : grey.bytes) {
            byte = random() % 2 != 0 ? 255 : 0;
        }
        for (const Dither dither : dithers) {
            const Dots dots = dots_of(grey, {dither, 3});
            ASSERT_EQ(dots.rows.size(), 20U);
            for (long y = 0; y < 20; ++y) {
                for (long x = 0; x < width; ++x) {
                    ASSERT_EQ(dots.at(x, y), grey.at(x, y) == 0) << width << ": " << x << ", " << y;
                }
            }
        }
    }
}

TEST(Dots, OffWhitePaperPrintsWithoutSnow)
{
    std::mt19937 random(3);
    Grey grey(576, 300);
    for (std::uint8_t &byte : grey.bytes) {
        byte = static_cast<std::uint8_t>(pages::lightest_ink + random() % (256 - pages::lightest_ink));
    }
    for (const Dither dither : dithers) {
        EXPECT_EQ(dots_of(grey, {dither, 3}).count(), 0);
    }
}

TEST(Dots, TheDarkestGreysAreBlack)
{
    const Grey grey(100, 60, pages::darkest_grey);
    for (const Dither dither : dithers) {
        EXPECT_EQ(dots_of(grey, {dither, -3}).count(), 100 * 60);
    }
}

// Every width of stroke, every ink from 35 % on, both ways: solid, with nothing beside it.
TEST(Dots, StrokesUpToFourDotsWideAreSolid)
{
    for (long width = 1; width <= 4; ++width) {
        for (unsigned value = 0; value <= pages::palest_stroke; ++value) {
            Grey grey(60, 60);
            grey.fill(5, 5, width, 50, static_cast<std::uint8_t>(value));
            grey.fill(30, 20, 28, width, static_cast<std::uint8_t>(value));
            const Dots dots = dots_of(grey);
            ASSERT_EQ(dots.count(), width * 50 + 28 * width) << width << " wide, grey " << value;
        }
    }
}

TEST(Dots, SlantedStrokesAreSolid)
{
    for (const double slope : {0.2, 0.5, 1.0, 2.0, 5.0}) {
        Grey grey(80, 80);
        const double length = std::hypot(1, slope);
        long drawn = 0;
        for (long y = 10; y < 70; ++y) {
            for (long x = 10; x < 70; ++x) {
                const double off = std::abs(static_cast<double>(y - 40) - slope * static_cast<double>(x - 40)) / length;
                if (off <= 1.9) {
                    grey.at(x, y) = 140;
                    drawn += 1;
                }
            }
        }
        EXPECT_EQ(dots_of(grey).count(), drawn) << slope;
    }
}

TEST(Dots, StrokesAtTheEdgesOfThePaperAreSolid)
{
    Grey grey(71, 40);
    grey.fill(0, 0, 4, 40, 150);
    grey.fill(67, 0, 4, 40, 150);
    grey.fill(10, 36, 50, 4, 150);
    EXPECT_EQ(dots_of(grey).count(), 4 * 40 * 2 + 50 * 4);
}

TEST(Dots, WiderAreasAreShaded)
{
    for (long width = 5; width <= 9; ++width) {
        Grey grey(40, 100);
        grey.fill(10, 5, width, 90, 128);
        const long count = dots_of(grey).count();
        EXPECT_GT(count, width * 90 / 4) << width;
        EXPECT_LT(count, width * 90 * 3 / 5) << width;
    }
}

TEST(Dots, PaleStrokesAreShaded)
{
    Grey grey(40, 200);
    grey.fill(10, 0, 3, 200, pages::palest_stroke + 1);
    const long count = dots_of(grey).count();
    EXPECT_GT(count, 0);
    EXPECT_LT(count, 300);
}

// The grain of a photo reaches across 35 % of ink everywhere; it must not turn black.
TEST(Dots, GrainOfPicturesIsNoStroke)
{
    std::mt19937 random(5);
    Grey grey(200, 200);
    double ink = 0;
    for (std::uint8_t &byte : grey.bytes) {
        byte = static_cast<std::uint8_t>(140 + random() % 80);
        ink += 255 - byte;
    }
    const double wanted = pages::tone_curve(0)[static_cast<std::size_t>(255 - ink / (200 * 200))] / 4096.0;
    EXPECT_NEAR(static_cast<double>(dots_of(grey).count()) / (200 * 200), wanted, 0.02);
}

TEST(Dots, SoftEdgesOfSolidShapesAreClean)
{
    for (unsigned edge = 21; edge < 235; ++edge) {
        Grey grey(60, 60);
        grey.fill(19, 10, 1, 40, static_cast<std::uint8_t>(edge));
        grey.fill(20, 10, 20, 40, 0);
        const long extra = edge <= pages::half_covered ? 40 : 0;
        ASSERT_EQ(dots_of(grey).count(), 20 * 40 + extra) << edge;
    }
}

TEST(Dots, ASquareOfEveryGreyHasTheDotsThatTheCurveSays)
{
    for (const Dither dither : {Dither::diffusion, Dither::ordered}) {
        for (const int darkness : {-3, 0, 3}) {
            const pages::ToneCurve curve = pages::tone_curve(darkness);
            for (unsigned value = pages::darkest_grey + 1; value < pages::lightest_ink; value += 3) {
                Grey grey(160, 160, static_cast<std::uint8_t>(value));
                const double share = static_cast<double>(dots_of(grey, {dither, darkness}).count()) / (160 * 160);
                ASSERT_NEAR(share, curve[value] / 4096.0, 0.02) << value << " darkness " << darkness;
            }
        }
    }
}

TEST(Dots, ThresholdMakesEveryAreaBlackOrWhite)
{
    for (unsigned value = 0; value < 256; ++value) {
        const long count = dots_of(Grey(64, 64, static_cast<std::uint8_t>(value)), {Dither::threshold, 0}).count();
        EXPECT_EQ(count, value <= pages::half_covered ? 64 * 64 : 0) << value;
    }
}

TEST(Dots, DarknessIsSeenStepByStep)
{
    const Grey grey(128, 128, 120);
    long before = -1;
    for (int darkness = -3; darkness <= 3; ++darkness) {
        const long count = dots_of(grey, {Dither::diffusion, darkness}).count();
        EXPECT_GT(count, before + 300) << darkness;
        before = count;
    }
}

// What the fast way with 64 dots at a time says of every dot.
std::vector<Kind> kinds_of(const Grey &grey)
{
    const auto width = static_cast<std::size_t>(grey.width);
    const std::size_t words = (width + 63) / 64;
    pages::StrokeFinder finder(width);
    pages::BitRow solid(words, 0);
    pages::BitRow shaded(words, 0);
    std::vector<Kind> kinds;
    for (std::size_t y = 0; y < static_cast<std::size_t>(grey.height) + finder.delay; ++y) {
        if (y < static_cast<std::size_t>(grey.height)) {
            finder.push(grey.bytes.data() + y * width);
        } else {
            finder.push_paper();
        }
        if (y < finder.delay) {
            continue;
        }
        const bool paper = finder.classify(solid, shaded) == pages::RowKind::paper;
        for (std::size_t x = 0; x < width; ++x) {
            const bool is_solid = !paper && (solid[x / 64] >> x % 64 & 1) != 0;
            const bool is_shaded = !paper && (shaded[x / 64] >> x % 64 & 1) != 0;
            kinds.push_back(is_solid ? Kind::solid : is_shaded ? Kind::shaded : Kind::paper);
        }
    }
    return kinds;
}

TEST(Dots, KindsAreThoseOfTheRules)
{
    for (unsigned seed = 1; seed <= 300; ++seed) {
        Grey grey = pages_test::random_grey(1 + static_cast<long>(seed * 37 % 150),
                                            1 + static_cast<long>(seed * 11 % 60), seed);
        if (seed % 5 == 0) {
            std::mt19937 random(seed);
            for (std::uint8_t &byte : grey.bytes) {
                byte = static_cast<std::uint8_t>(byte == 255 ? random() % 256 : byte);
            }
        }
        const pages_test::Rules rules(grey);
        const std::vector<Kind> kinds = kinds_of(grey);
        for (long y = 0; y < grey.height; ++y) {
            for (long x = 0; x < grey.width; ++x) {
                ASSERT_EQ(kinds[static_cast<std::size_t>(y * grey.width + x)], rules.kind(x, y))
                    << "seed " << seed << ": " << x << ", " << y;
            }
        }
    }
}

// Error diffusion as the books have it, with rows that alternate and only the shaded dots taking part.
Dots diffused(const Grey &grey)
{
    const pages::ToneCurve curve = pages::tone_curve(0);
    const pages_test::Rules rules(grey);
    Dots result;
    result.width = grey.width;
    const auto width = static_cast<std::size_t>(grey.width);
    std::vector<int> error(width), below(width);
    bool rightwards = true;
    for (long y = 0; y < grey.height; ++y) {
        std::vector<bool> row(width);
        std::vector<Kind> kinds;
        for (long x = 0; x < grey.width; ++x) {
            kinds.push_back(rules.kind(x, y));
        }
        std::fill(below.begin(), below.end(), 0);
        const bool any = std::ranges::find(kinds, Kind::shaded) != kinds.end();
        const auto add = [&](std::vector<int> &to, long x, int share) {
            if (x >= 0 && x < grey.width) {
                to[static_cast<std::size_t>(x)] += share;
            }
        };
        for (long i = 0; i < grey.width; ++i) {
            const long step = rightwards ? 1 : -1;
            const long x = rightwards ? i : grey.width - 1 - i;
            const auto at = static_cast<std::size_t>(x);
            row[at] = kinds[at] == Kind::solid;
            if (kinds[at] != Kind::shaded) {
                continue;
            }
            const int wanted = curve[grey.ink_source(x, y)] + error[at];
            row[at] = wanted >= pages::all_dots / 2;
            const int left = wanted - (row[at] ? pages::all_dots : 0);
            const int onward = left * 7 >> 4, behind = left * 3 >> 4, under = left * 5 >> 4;
            add(error, x + step, onward);
            add(below, x - step, behind);
            add(below, x, under);
            add(below, x + step, left - onward - behind - under);
        }
        if (any) {
            rightwards = !rightwards;
        }
        error = below;
        result.rows.push_back(row);
    }
    return result;
}

TEST(Dots, DiffusionIsThatOfTheBooks)
{
    for (unsigned seed = 1; seed <= 150; ++seed) {
        Grey grey = pages_test::random_grey(1 + static_cast<long>(seed * 29 % 200), 40, seed);
        if (seed % 3 == 0) {
            std::mt19937 random(seed);
            for (std::uint8_t &byte : grey.bytes) {
                byte = static_cast<std::uint8_t>(40 + random() % 190);
            }
        }
        const Dots fast = dots_of(grey);
        const Dots slow = diffused(grey);
        for (std::size_t y = 0; y < fast.rows.size(); ++y) {
            const auto place = std::ranges::mismatch(fast.rows[y], slow.rows[y]).in1 - fast.rows[y].begin();
            ASSERT_EQ(fast.rows[y], slow.rows[y]) << "seed " << seed << ", row " << y << ", dot " << place;
        }
    }
}

TEST(Dots, HowRowsAreHandedOverMakesNoDifference)
{
    const Grey grey = pages_test::random_grey(130, 57, 99);
    const Dots one = dots_of(grey);
    for (const std::size_t piece : {2U, 7U, 8U, 56U, 57U, 100U}) {
        EXPECT_EQ(dots_of(grey, {}, piece).rows, one.rows) << piece;
    }
}

TEST(Dots, PagesOfEveryHeightComeOutWhole)
{
    for (long height = 0; height <= 40; ++height) {
        EXPECT_EQ(dots_of(Grey(9, height, 0)).count(), 9 * height);
    }
}

// A stroke above a long stretch of paper, and another below it.
TEST(Dots, PaperBetweenMakesNoDifference)
{
    for (long gap = 0; gap < 80; ++gap) {
        Grey grey(70, 20 + gap);
        grey.fill(3, 2, 50, 3, 100);
        grey.fill(3, 12 + gap, 50, 3, 100);
        ASSERT_EQ(dots_of(grey).count(), 300) << gap;
    }
}

TEST(Dots, FinishBeginsANewPage)
{
    const Grey grey = pages_test::random_grey(99, 33, 5);
    std::vector<std::vector<std::uint8_t>> rows;
    pages::DotMaker maker(99, {}, [&](const std::uint8_t *bits) { rows.emplace_back(bits, bits + 13); });
    for (int page = 0; page < 2; ++page) {
        maker.put_rows(grey.bytes.data(), 99, 33);
        maker.finish();
    }
    ASSERT_EQ(rows.size(), 66U);
    EXPECT_TRUE(std::equal(rows.begin(), rows.begin() + 33, rows.begin() + 33));
}

TEST(Tone, CurvesRiseFromNoneToAll)
{
    for (int darkness = -3; darkness <= 3; ++darkness) {
        const pages::ToneCurve curve = pages::tone_curve(darkness);
        EXPECT_EQ(curve[0], 4096);
        EXPECT_EQ(curve[255], 0);
        for (std::size_t grey = 1; grey < 256; ++grey) {
            EXPECT_LE(curve[grey], curve[grey - 1]) << darkness << ": " << grey;
        }
    }
}

TEST(Tone, DotsBleedSoTheMiddleIsLighter)
{
    const pages::ToneCurve curve = pages::tone_curve(0);
    for (std::size_t grey = 48; grey < pages::lightest_ink; ++grey) {
        EXPECT_LT(curve[grey] * 255, 4096 * (255 - static_cast<int>(grey))) << grey;
    }
}

TEST(Tone, DarknessBeyondItsEndsIsItsEnds)
{
    EXPECT_EQ(pages::tone_curve(99), pages::tone_curve(3));
    EXPECT_EQ(pages::tone_curve(-99), pages::tone_curve(-3));
}

}  // namespace
