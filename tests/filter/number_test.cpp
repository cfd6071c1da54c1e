// Numbers as the options give them.
#include "filter/number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(Number, TextsAreReadAsFarAsTheirDigitsGo)
{
    struct {
        const char *text;
        int32_t value;
    } const table[] = {{"0", 0},    {"7", 7},   {"203dpi", 203}, {"300x600dpi", 300},
                       {"007", 7},  {"-1", -1}, {"+5", 5},       {"  \t\n\v\f\r42", 42},
                       {"- 1", 0},  {"--1", 0}, {"", 0},         {"   ", 0},
                       {"None", 0}, {"x12", 0}, {"0x10", 0},     {"1.9", 1},
                       {"1e3", 1},  {"True", 0}};
    for (const auto &row : table) {
        EXPECT_EQ(parse_number(row.text), row.value) << '"' << row.text << '"';
    }
}

TEST(Number, TextsBeyondThirtyTwoBitsGiveTheNearestEnd)
{
    EXPECT_EQ(parse_number("2147483647"), INT32_MAX);
    EXPECT_EQ(parse_number("2147483648"), INT32_MAX);
    EXPECT_EQ(parse_number("4294967296"), INT32_MAX);
    EXPECT_EQ(parse_number("99999999999999999999999"), INT32_MAX);
    EXPECT_EQ(parse_number("-2147483648"), INT32_MIN);
    EXPECT_EQ(parse_number("-2147483649"), INT32_MIN);
    EXPECT_EQ(parse_number("-99999999999999999999999"), INT32_MIN);
}

TEST(Number, WholeNumbersAreTruncatedTowardZero)
{
    EXPECT_EQ(whole_number(0.0), 0);
    EXPECT_EQ(whole_number(79.92), 79);
    EXPECT_EQ(whole_number(-7.99), -7);
    EXPECT_EQ(whole_number(-0.9), 0);
    EXPECT_EQ(whole_number(2147483647.9), INT32_MAX);
    EXPECT_EQ(whole_number(-2147483648.9), INT32_MIN);
}

TEST(Number, WhatDoesNotFitIsTheSmallestNumber)
{
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {2147483648.0, 1e300, infinity, -2147483649.0, -1e300, -infinity, std::nan("")}) {
        EXPECT_EQ(whole_number(value), INT32_MIN) << value;
    }
}

}  // namespace
