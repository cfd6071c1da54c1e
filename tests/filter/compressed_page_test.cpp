// Compressed rows, code by code. What CUPS makes of whole streams is in tests/faults/unpacking_test.cpp.
#include "filter/compressed_page.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class CompressedPage : public testing::Test {
protected:
    ~CompressedPage() override
    {
        free_rows(page_);
    }

    // Bytes behind the codes are there to be looked at, and must not count.
    size_t unpack(std::string codes, const std::string &behind = "")
    {
        const size_t size = codes.size();
        codes += behind + std::string(unpacking_step, '\x80');
        return unpack_row(page_, reinterpret_cast<const uint8_t *>(codes.data()), size);
    }
    std::string take(size_t size)
    {
        std::string out(size + 1, '#');
        const size_t count = take_rows(page_, reinterpret_cast<uint8_t *>(out.data()), size);
        EXPECT_EQ(out[count], '#') << "more was put down than was asked for";
        return out.substr(0, count);
    }
    bool end(const std::string &codes)
    {
        return end_rows(page_, reinterpret_cast<const uint8_t *>(codes.data()), codes.size());
    }

    compressed_page page_ = {};
};

const std::string three_times("\x02\x01\x41\xFF\x62\x63", 6);  // "AAbc" and two repeats

TEST_F(CompressedPage, ARowIsTakenInPiecesOfAnySize)
{
    for (size_t piece = 1; piece <= 13; ++piece) {
        ASSERT_TRUE(expect_rows(page_, 3, 4, 1, 0));
        EXPECT_EQ(unpack(three_times), three_times.size());
        std::string rows;
        for (std::string part; !(part = take(piece)).empty();) {
            rows += part;
        }
        EXPECT_EQ(rows, "AAbcAAbcAAbc") << piece;
        EXPECT_FALSE(rows_to_come(page_));
    }
}

TEST_F(CompressedPage, CodesAreUsedUpWhole)
{
    for (size_t size = 0; size <= three_times.size(); ++size) {
        ASSERT_TRUE(expect_rows(page_, 3, 4, 1, 0));
        const size_t used = unpack(three_times.substr(0, size), three_times.substr(size));
        const size_t ends_of_codes[] = {0, 1, 1, 3, 3, 3, 6};
        EXPECT_EQ(used, ends_of_codes[size]) << size;
        EXPECT_EQ(take(4), size == three_times.size() ? "AAbc" : "") << size;
        EXPECT_EQ(unpack(three_times.substr(used)), three_times.size() - used);
        EXPECT_EQ(take(12).size(), size == three_times.size() ? 8U : 12U);
    }
}

TEST_F(CompressedPage, WhatLiesBehindTheCodesIsNoCode)
{
    ASSERT_TRUE(expect_rows(page_, 1, 4, 1, 0));
    EXPECT_EQ(unpack(std::string("\x00\x00\x41", 3), "\x80"), 3U);
    EXPECT_EQ(take(4), "");
}

TEST_F(CompressedPage, NothingIsUsedBehindThePage)
{
    ASSERT_TRUE(expect_rows(page_, 1, 1, 1, 0));
    EXPECT_EQ(unpack(std::string("\x00\x80\x00\x80", 4)), 2U);
    EXPECT_EQ(take(2), std::string(1, '\0'));
    EXPECT_EQ(unpack(std::string("\x00\x80", 2)), 0U);
}

TEST_F(CompressedPage, OnlyTheBeginningOfTheVeryLastRowIsKept)
{
    struct Case {
        uint32_t rows;
        std::string codes;
        std::string kept;
    };
    const Case cases[] = {
        {1, std::string("\x00\xFD\x61\x62", 4), "ab"},  // literals cut short
        {1, std::string("\x00\x00\x61\x02", 4), "a"},   // a pixel that is missing
        {1, std::string("\x00", 1), ""},                // no code at all
        {2, std::string("\x00\xFD\x61\x62", 4), ""},    // not the last row
        {2, std::string("\x01\xFD\x61\x62", 4), ""},    // the last two
        {1, std::string("\x05\xFD\x61\x62", 4), ""},    // more repeats than rows
    };
    for (const Case &one : cases) {
        ASSERT_TRUE(expect_rows(page_, one.rows, 4, 1, 0));
        const size_t used = unpack(one.codes);
        EXPECT_EQ(end(one.codes.substr(used)), !one.kept.empty());
        EXPECT_EQ(take(4), one.kept);
        EXPECT_FALSE(rows_to_come(page_));
    }
}

TEST_F(CompressedPage, ThePageAfterTheMemoryWasGivenBackGetsItsOwn)
{
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(expect_rows(page_, 1, 100, 1, 0xFF));
        EXPECT_EQ(unpack(std::string("\x00\x80", 2)), 2U);
        EXPECT_EQ(take(100), std::string(100, '\xFF'));
        free_rows(page_);
    }
}

}  // namespace
