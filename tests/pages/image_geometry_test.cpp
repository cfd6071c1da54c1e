// Pictures on the paper: how large, which way round, where; and how their size is changed.
#include "pages/image_layout.h"
#include "pages/image_scaler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using pages::ImageInfo;
using pages::ImageLayout;
using pages::Job;
using pages::PaperType;
using pages::Place;
using pages::Scaling;
using pages::Turn;
using pages::Turning;

ImageInfo picture(std::size_t width, std::size_t height, double ppi = 0)
{
    ImageInfo info;
    info.width = width;
    info.height = height;
    info.ppi_x = info.ppi_y = ppi;
    return info;
}

ImageLayout laid(const ImageInfo &info, const Job &job = {})
{
    const auto result = pages::lay_out_image(info, job);
    const auto *layout = std::get_if<ImageLayout>(&result);
    if (layout == nullptr) {
        ADD_FAILURE() << std::get<pages::Failure>(result).text;
        return {};
    }
    return *layout;
}

struct Case {
    const char *what;
    std::size_t width, height;
    double ppi;
    std::size_t dots, rows;
};

// On a head of 576 dots, 8 a millimetre.
constexpr Case sizes[] = {
    {"no resolution: dot for dot", 301, 77, 0, 301, 77},
    {"as wide as the head", 576, 100, 0, 576, 100},
    {"a single pixel", 1, 1, 0, 1, 1},
    {"72 dpi that nobody meant", 300, 100, 72, 300, 100},
    {"96 dpi that nobody meant", 300, 100, 96, 300, 100},
    {"just below what is meant", 300, 100, 149.9, 300, 100},
    {"150 dpi", 300, 150, 150, 406, 203},
    {"150 dpi too wide by it", 576, 100, 150, 576, 100},
    {"the head's own 203 dpi", 576, 100, 203, 576, 100},
    {"8 dots a millimetre", 576, 100, 203.2, 576, 100},
    {"204 dpi", 576, 100, 204, 576, 100},
    {"300 dpi", 300, 300, 300, 203, 203},
    {"60 mm at 300 dpi are 480 dots", 709, 100, 300, 480, 68},
    {"a scan that is wider than the head at its resolution", 945, 2000, 300, 576, 1219},
    {"one dot too wide", 577, 1000, 0, 576, 998},
    {"a camera's picture", 4000, 3000, 72, 576, 432},
    {"a camera's picture that says 300 dpi", 4000, 3000, 300, 576, 432},
    {"very flat", 50000, 1, 0, 576, 1},
};

TEST(ImageLayout, SizesOnTheRoll)
{
    for (const Case &c : sizes) {
        const ImageLayout layout = laid(picture(c.width, c.height, c.ppi));
        EXPECT_EQ(layout.width, c.dots) << c.what;
        EXPECT_EQ(layout.height, c.rows) << c.what;
        EXPECT_EQ(layout.page_height, c.rows) << c.what;
        EXPECT_EQ(layout.top, 0) << c.what;
        EXPECT_EQ(layout.left, (576 - static_cast<long>(c.dots)) / 2) << c.what;
        EXPECT_EQ(layout.turning, Turning{}) << c.what;
    }
}

TEST(ImageLayout, APictureLongerThanFiftyMetresIsRefused)
{
    const std::size_t longest = pages::most_rows(Job{}.paper);
    EXPECT_EQ(longest, 400'000U);
    EXPECT_EQ(laid(picture(10, longest)).height, longest);
    EXPECT_TRUE(std::holds_alternative<pages::Failure>(pages::lay_out_image(picture(10, longest + 1), {})));
}

struct Asked {
    const char *what;
    void (*ask)(Job &);
    std::size_t dots, rows;
};

// A picture of 400 x 200 pixels at 300 dpi: 271 x 135 dots.
constexpr Asked wishes[] = {
    {"auto", [](Job &) {}, 271, 135},
    {"auto-fit", [](Job &job) { job.scaling = Scaling::auto_fit; }, 271, 135},
    {"none", [](Job &job) { job.scaling = Scaling::none; }, 271, 135},
    {"fit", [](Job &job) { job.scaling = Scaling::fit; }, 576, 288},
    {"fill", [](Job &job) { job.scaling = Scaling::fill; }, 576, 288},
    {"scaling=50", [](Job &job) { job.page_percent = 50; }, 288, 144},
    {"scaling=200 stays on the head", [](Job &job) { job.page_percent = 200; }, 576, 288},
    {"natural-scaling=50", [](Job &job) { job.natural_percent = 50; }, 135, 68},
    {"natural-scaling=1000 stays on the head", [](Job &job) { job.natural_percent = 1000; }, 576, 288},
    {"ppi=203", [](Job &job) { job.ppi = 203; }, 400, 200},
    {"ppi=406.4", [](Job &job) { job.ppi = 406.4; }, 200, 100},
    {"ppi=72 stays on the head", [](Job &job) { job.ppi = 72; }, 576, 288},
    {"a quarter turn", [](Job &job) { job.orientation = Turn::quarter; }, 135, 271},
};

TEST(ImageLayout, WhatAJobAsksFor)
{
    for (const Asked &asked : wishes) {
        Job job;
        asked.ask(job);
        const ImageLayout layout = laid(picture(400, 200, 300), job);
        EXPECT_EQ(layout.width, asked.dots) << asked.what;
        EXPECT_EQ(layout.height, asked.rows) << asked.what;
    }
}

TEST(ImageLayout, OneToOneCutsBothSides)
{
    Job job;
    job.scaling = Scaling::none;
    const ImageLayout layout = laid(picture(1000, 10), job);
    EXPECT_EQ(layout.width, 1000U);
    EXPECT_EQ(layout.left, -212);
}

TEST(ImageLayout, PositionsAcross)
{
    Job job;
    job.across = Place::start;
    EXPECT_EQ(laid(picture(100, 10), job).left, 0);
    job.across = Place::end;
    EXPECT_EQ(laid(picture(100, 10), job).left, 476);
}

Job label(double width_mm, double length_mm)
{
    Job job;
    job.paper.type = PaperType::label;
    job.paper.page_width = width_mm / 25.4 * 72;
    job.paper.page_length = length_mm / 25.4 * 72;
    return job;
}

TEST(ImageLayout, ALabelIsAsLongAsItIs)
{
    const ImageLayout layout = laid(picture(300, 200), label(72, 40));
    EXPECT_EQ(layout.page_height, 320U);
    EXPECT_EQ(layout.width, 300U);
    EXPECT_EQ(layout.height, 200U);
    EXPECT_EQ(layout.left, 138);
    EXPECT_EQ(layout.top, 60);
}

TEST(ImageLayout, ALabelTurnsWhatLiesAcrossIt)
{
    const ImageLayout layout = laid(picture(200, 300), label(72, 40));
    EXPECT_TRUE(layout.turning.transposed);
    EXPECT_EQ(layout.width, 300U);
    EXPECT_EQ(layout.height, 200U);
    Job job = label(72, 40);
    job.auto_rotate = false;
    EXPECT_FALSE(laid(picture(200, 300), job).turning.transposed);
    EXPECT_EQ(laid(picture(200, 300), job).height, 300U);
    job = label(72, 40);
    job.orientation = Turn::none;
    EXPECT_FALSE(laid(picture(200, 300), job).turning.transposed);
}

TEST(ImageLayout, ALabelShrinksWhatIsTooLarge)
{
    const ImageLayout layout = laid(picture(1000, 1000), label(50, 40));
    EXPECT_EQ(layout.width, 320U);
    EXPECT_EQ(layout.height, 320U);
    EXPECT_EQ(layout.left, 40);
}

// Every corner of a picture, wherever it goes.
struct Point {
    std::size_t x, y;
    bool operator==(const Point &) const = default;
};

Point source_of(const Turning &turning, Point at, std::size_t width, std::size_t height)
{
    const Point point = turning.transposed ? Point{at.y, at.x} : at;
    return {turning.mirrored_x ? width - 1 - point.x : point.x, turning.mirrored_y ? height - 1 - point.y : point.y};
}

TEST(ImageTurning, OneTurningAfterAnotherIsOneTurning)
{
    for (unsigned first = 1; first <= 8; ++first) {
        for (unsigned second = 1; second <= 8; ++second) {
            const Turning one = pages::turning_of_tag(first);
            const Turning two = pages::turning_of_tag(second);
            const Turning both = pages::then(one, two);
            const std::size_t width = 3, height = 5;
            const std::size_t middle_width = one.transposed ? height : width;
            const std::size_t middle_height = one.transposed ? width : height;
            const std::size_t last_width = two.transposed ? middle_height : middle_width;
            const std::size_t last_height = two.transposed ? middle_width : middle_height;
            for (std::size_t y = 0; y < last_height; ++y) {
                for (std::size_t x = 0; x < last_width; ++x) {
                    const Point step =
                        source_of(one, source_of(two, {x, y}, middle_width, middle_height), width, height);
                    ASSERT_EQ(source_of(both, {x, y}, width, height), step) << first << " then " << second;
                }
            }
        }
    }
}

TEST(ImageTurning, QuarterTurnsAreCounterClockwise)
{
    // The upper right corner of 3 x 5 comes to the upper left.
    EXPECT_EQ(source_of(pages::turning_of(Turn::quarter), {0, 0}, 3, 5), (Point{2, 0}));
    EXPECT_EQ(source_of(pages::turning_of(Turn::half), {0, 0}, 3, 5), (Point{2, 4}));
    EXPECT_EQ(source_of(pages::turning_of(Turn::three_quarters), {0, 0}, 3, 5), (Point{0, 4}));
    EXPECT_EQ(pages::turning_of_tag(0), Turning{});
    EXPECT_EQ(pages::turning_of_tag(9), Turning{});
}

double covered(std::size_t i, std::size_t from, std::size_t to, std::size_t at)
{
    const double begin = static_cast<double>(at * from) / static_cast<double>(to);
    const double end = static_cast<double>((at + 1) * from) / static_cast<double>(to);
    return std::max(0.0, std::min(end, static_cast<double>(i + 1)) - std::max(begin, static_cast<double>(i)));
}

TEST(ImageScaler, EveryPixelIsTheMeanOfWhatItCovers)
{
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round) {
        const std::size_t from_width = 1 + random() % 40, from_height = 1 + random() % 40;
        const std::size_t to_width = 1 + random() % 50, to_height = 1 + random() % 50;
        std::vector<std::uint8_t> grey(from_width * from_height);
        for (std::uint8_t &byte : grey) {
            byte = static_cast<std::uint8_t>(random());
        }
        std::vector<std::uint8_t> result;
        pages::ImageScaler scaler(from_width, from_height, to_width, to_height,
                                  [&](const std::uint8_t *row) { result.insert(result.end(), row, row + to_width); });
        for (std::size_t y = 0; y < from_height; ++y) {
            scaler.put_row(grey.data() + y * from_width);
        }
        ASSERT_EQ(result.size(), to_width * to_height);
        for (std::size_t y = 0; y < to_height; ++y) {
            for (std::size_t x = 0; x < to_width; ++x) {
                double sum = 0;
                double area = 0;
                for (std::size_t v = 0; v < from_height; ++v) {
                    for (std::size_t u = 0; u < from_width; ++u) {
                        const double share =
                            covered(u, from_width, to_width, x) * covered(v, from_height, to_height, y);
                        sum += share * grey[v * from_width + u];
                        area += share;
                    }
                }
                ASSERT_NEAR(result[y * to_width + x], sum / area, 0.5 + 1e-6);
            }
        }
    }
}

TEST(ImageScaler, TheLargestPicturesDoNotOverflow)
{
    const std::vector<std::uint8_t> white(100'000, 255);
    std::vector<std::uint8_t> result;
    pages::ImageScaler scaler(100'000, 4000, 576, 23, [&](const std::uint8_t *row) { result.assign(row, row + 576); });
    for (int y = 0; y < 4000; ++y) {
        scaler.put_row(white.data());
    }
    EXPECT_EQ(result, std::vector<std::uint8_t>(576, 255));
}

}  // namespace
