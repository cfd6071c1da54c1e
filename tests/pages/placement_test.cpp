#include "pages/placement.h"

#include <gtest/gtest.h>
#include <cmath>
#include <ostream>

namespace pages {
namespace {

constexpr double points_per_mm = 72 / 25.4;
constexpr long dots_per_mm = 8;

// A head of 72 mm, 8 dots a millimetre.
Job roll()
{
    Job job;
    job.paper = {.head_dots = 576,
                 .dpi = 203.2,
                 .resolution = 203,
                 .paper_width = 82,
                 .type = PaperType::roll,
                 .page_width = 72 * points_per_mm,
                 .page_length = 210 * points_per_mm,
                 .size_name = ""};
    return job;
}

Job label(double width, double length)
{
    Job job = roll();
    job.paper.type = PaperType::label;
    job.paper.head_dots = static_cast<unsigned>(width * dots_per_mm);
    job.paper.page_width = width * points_per_mm;
    job.paper.page_length = length * points_per_mm;
    return job;
}

Size page_mm(double width, double height)
{
    return {width * points_per_mm, height * points_per_mm};
}

Ink ink_mm(double left, double top, double right, double bottom)
{
    const Box box{left * points_per_mm, top * points_per_mm, right * points_per_mm, bottom * points_per_mm};
    return {box, box};
}

struct RollCase {
    const char *what;
    Size page;
    std::optional<Ink> ink;
    double scale;
    long left;
    long top;
    unsigned height;
};

std::ostream &operator<<(std::ostream &out, const RollCase &wanted)
{
    return out << wanted.what;
}

class OnRoll : public testing::TestWithParam<RollCase> {};

TEST_P(OnRoll, IsPlaced)
{
    const RollCase &wanted = GetParam();
    const Placement placement = place(roll(), wanted.page, wanted.ink);
    EXPECT_NEAR(placement.scale, wanted.scale, 0.001);
    EXPECT_NEAR(static_cast<double>(placement.left), static_cast<double>(wanted.left), 1);
    EXPECT_NEAR(static_cast<double>(placement.top), static_cast<double>(wanted.top), 1);
    EXPECT_NEAR(placement.height, wanted.height, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, OnRoll,
    testing::Values(
        RollCase{"as wide as the head", page_mm(72, 100), {}, 1, 0, 0, 800},
        RollCase{"wider than long is not turned", page_mm(72, 50), {}, 1, 0, 0, 400},
        RollCase{"10 mm long", page_mm(72, 10), {}, 1, 0, 0, 80},
        RollCase{"30 m long", page_mm(72, 30000), {}, 1, 0, 0, 240000},
        RollCase{"narrow pages are centred", page_mm(50, 30), {}, 1, 88, 0, 240},
        RollCase{"the paper's margins fall off", page_mm(80, 100), ink_mm(6, 5, 74, 90), 1, -32, 0, 800},
        RollCase{"shifted right for ink at the left edge", page_mm(80, 100), ink_mm(1, 5, 60, 90), 1, -8, 0, 800},
        RollCase{"shifted left for ink at the right edge", page_mm(80, 100), ink_mm(20, 5, 78, 90), 1, -48, 0, 800},
        RollCase{"shrunk when its ink is wider than the head", page_mm(80, 100), ink_mm(0, 5, 80, 90), 0.9, 0, 0, 720},
        RollCase{"a blank page of the paper's width", page_mm(80, 100), {}, 1, -32, 0, 800},
        RollCase{"A4 shrinks until its ink fits, trimmed to 3 mm", page_mm(210, 297), ink_mm(20, 20, 190, 120),
                 72.0 / 170, -68, -44, 387},
        RollCase{"A4 with little ink keeps its size", page_mm(210, 297), ink_mm(90, 50, 130, 80), 1, -552, -376, 288},
        RollCase{"A4 with little ink in a corner is shifted", page_mm(210, 297), ink_mm(10, 50, 60, 80), 1, -80, -376,
                 288},
        RollCase{"A4 keeps a top that is less than 3 mm", page_mm(210, 297), ink_mm(20, 2, 190, 295), 72.0 / 170, -68,
                 0, 1006},
        RollCase{"a blank A4 page", page_mm(210, 297), {}, 72.0 / 210, 0, 0, 24}));

TEST(OnRollWithWords, ScalingIsWhatTheWordSays)
{
    struct Case {
        Scaling scaling;
        double page_mm;
        double scale;
    };
    for (const Case &wanted :
         {Case{Scaling::none, 210, 1}, Case{Scaling::fit, 210, 72.0 / 210}, Case{Scaling::fit, 36, 2},
          Case{Scaling::fill, 41, 2}, Case{Scaling::fill, 210, 82.0 / 210}, Case{Scaling::auto_fit, 210, 72.0 / 210},
          Case{Scaling::auto_fit, 36, 1}}) {
        Job job = roll();
        job.scaling = wanted.scaling;
        const Placement placement = place(job, page_mm(wanted.page_mm, 100), std::nullopt);
        EXPECT_NEAR(placement.scale, wanted.scale, 0.001) << static_cast<int>(wanted.scaling);
        EXPECT_NEAR(placement.height, 800 * wanted.scale, 1);
    }
}

TEST(OnRollWithWords, PercentsAreOfTheHeadOrOfThePage)
{
    Job job = roll();
    job.page_percent = 50;
    EXPECT_NEAR(place(job, page_mm(144, 100), std::nullopt).scale, 0.25, 0.001);
    job.page_percent.reset();
    job.natural_percent = 50;
    EXPECT_NEAR(place(job, page_mm(144, 100), std::nullopt).scale, 0.5, 0.001);
}

TEST(OnRollWithWords, PositionMovesAcrossButAddsNoPaper)
{
    Job job = roll();
    job.across = Place::start;
    job.along = Place::end;
    EXPECT_EQ(place(job, page_mm(50, 30), std::nullopt).left, 0);
    job.across = Place::end;
    const Placement placement = place(job, page_mm(50, 30), std::nullopt);
    EXPECT_NEAR(static_cast<double>(placement.left), 176, 1);
    EXPECT_EQ(placement.top, 0);
    EXPECT_EQ(placement.height, 240U);
}

TEST(OnRollWithWords, PagesOfOneSizeShareTheirScale)
{
    Ink narrow = ink_mm(50, 20, 100, 40);
    narrow.across = unite(narrow.own, ink_mm(10, 100, 190, 200).own);
    const Placement placement = place(roll(), page_mm(210, 297), narrow);
    EXPECT_NEAR(placement.scale, 72.0 / 180, 0.001);
    EXPECT_NEAR(placement.height, 20 * 8 * 0.4 + 48, 1);
}

TEST(OnRollWithWords, OnlyAnOrderTurns)
{
    Job job = roll();
    EXPECT_EQ(choose_turn(job, page_mm(297, 210)), Turn::none);
    job.orientation = Turn::quarter;
    EXPECT_EQ(choose_turn(job, page_mm(297, 210)), Turn::quarter);
}

TEST(OnRoll, InkIsLookedForOnlyWhereItMatters)
{
    EXPECT_FALSE(needs_ink(roll(), page_mm(72.1, 100)));
    EXPECT_FALSE(needs_ink(roll(), page_mm(30, 100)));
    EXPECT_TRUE(needs_ink(roll(), page_mm(80, 100)));
    EXPECT_TRUE(needs_ink(roll(), page_mm(210, 297)));
    EXPECT_FALSE(needs_ink(label(50, 30), page_mm(210, 297)));
}

// Whatever the page and wherever its ink: no ink is lost, nothing grows, nothing comes before the page.
TEST(OnRoll, NoInkIsEverLost)
{
    for (double width = 5; width < 400; width *= 1.13) {
        for (double left = 0; left < width; left += width / 7) {
            for (double right = left + width / 9; right <= width; right += width / 5) {
                const Ink ink = ink_mm(left, 10, right, 20);
                const Placement placement = place(roll(), page_mm(width, 100), ink);
                const double scale = placement.scale * dots_per_mm;
                EXPECT_LE(placement.scale, 1);
                EXPECT_GE(left * scale + static_cast<double>(placement.left), -2.5) << width << ' ' << left;
                EXPECT_LE(right * scale + static_cast<double>(placement.left), 578.5) << width << ' ' << right;
                EXPECT_LE(placement.top, 0);
                EXPECT_GE(static_cast<double>(placement.height) - static_cast<double>(placement.top), 20 * scale - 1);
            }
        }
    }
}

struct LabelCase {
    const char *what;
    Size label;
    Size page;
    Turn turn;
    double scale;
    long left;
    long top;
};

std::ostream &operator<<(std::ostream &out, const LabelCase &wanted)
{
    return out << wanted.what;
}

class OnLabel : public testing::TestWithParam<LabelCase> {};

TEST_P(OnLabel, IsPlaced)
{
    const LabelCase &wanted = GetParam();
    const Job job = label(wanted.label.width, wanted.label.height);
    const Turn turn = choose_turn(job, wanted.page);
    EXPECT_EQ(turn, wanted.turn);
    const Placement placement = place(job, turned(wanted.page, turn), std::nullopt);
    EXPECT_NEAR(placement.scale, wanted.scale, 0.001);
    EXPECT_NEAR(static_cast<double>(placement.left), static_cast<double>(wanted.left), 1);
    EXPECT_NEAR(static_cast<double>(placement.top), static_cast<double>(wanted.top), 1);
    EXPECT_EQ(placement.height, static_cast<unsigned>(wanted.label.height * dots_per_mm));
}

INSTANTIATE_TEST_SUITE_P(
    Pages, OnLabel,
    testing::Values(LabelCase{"as large as the label", {50, 30}, page_mm(50, 30), Turn::none, 1, 0, 0},
                    LabelCase{"smaller, centred", {50, 30}, page_mm(40, 20), Turn::none, 1, 40, 40},
                    LabelCase{"larger, fitted", {50, 30}, page_mm(100, 40), Turn::none, 0.5, 0, 40},
                    LabelCase{"lies across and is turned", {50, 80}, page_mm(80, 50), Turn::quarter, 1, 0, 0},
                    LabelCase{"a square is not turned", {50, 80}, page_mm(60, 60), Turn::none, 50.0 / 60, 0, 120},
                    LabelCase{"nothing is turned on a square", {50, 50}, page_mm(100, 50), Turn::none, 0.5, 0, 100},
                    LabelCase{
                        "a rounded size is no larger size", {50, 30}, page_mm(50.2, 30.1), Turn::none, 1, -1, 0}));

TEST(OnLabelWithWords, AnOrderOrAWordStopsTurning)
{
    Job job = label(50, 80);
    job.orientation = Turn::none;
    EXPECT_EQ(choose_turn(job, page_mm(80, 50)), Turn::none);
    job.orientation.reset();
    job.auto_rotate = false;
    EXPECT_EQ(choose_turn(job, page_mm(80, 50)), Turn::none);
}

TEST(OnLabelWithWords, ScalingAndPosition)
{
    Job job = label(50, 30);
    job.scaling = Scaling::fit;
    EXPECT_NEAR(place(job, page_mm(25, 10), std::nullopt).scale, 2, 0.001);
    job.scaling = Scaling::fill;
    EXPECT_NEAR(place(job, page_mm(25, 10), std::nullopt).scale, 3, 0.001);
    job.scaling = Scaling::none;
    job.across = Place::end;
    job.along = Place::start;
    const Placement placement = place(job, page_mm(100, 10), std::nullopt);
    EXPECT_EQ(placement.scale, 1);
    EXPECT_NEAR(static_cast<double>(placement.left), -400, 1);
    EXPECT_EQ(placement.top, 0);
}

}  // namespace
}  // namespace pages
