// The word-wise scans over rows, held to plain loops.
#include "printops/rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Row = std::vector<uint8_t>;

uint32_t plain_blank_bytes_at_left(const uint8_t *row, uint32_t width)
{
    uint32_t at = 0;
    while (at < width && row[at] == 0) {
        at += 1;
    }
    return at;
}

uint32_t plain_inked_bytes(const uint8_t *row, uint32_t width)
{
    uint32_t end = width;
    while (end > 0 && row[end - 1] == 0) {
        end -= 1;
    }
    return end;
}

// Rows start at any address; what lies beside them is ink, which a scan that leaves the row would find.
void check(const Row &row)
{
    const auto width = static_cast<uint32_t>(row.size());
    for (const uint32_t offset : {0U, 1U, 5U}) {
        Row memory(offset, 0xFF);
        memory.insert(memory.end(), row.begin(), row.end());
        memory.insert(memory.end(), 8, 0xFF);
        const uint8_t *start = memory.data() + offset;
        const uint32_t left = plain_blank_bytes_at_left(start, width);
        ASSERT_EQ(blank_bytes_at_left(start, width), left) << "width " << width;
        ASSERT_EQ(inked_bytes(start, width, 1), plain_inked_bytes(start, width)) << "width " << width;
    }
}

TEST(Rows, BlankRowsOfEveryWidth)
{
    for (size_t width = 0; width <= 80; ++width) {
        check(Row(width, 0));
    }
}

TEST(Rows, FullRowsOfEveryWidth)
{
    for (size_t width = 0; width <= 80; ++width) {
        check(Row(width, 0xFF));
    }
}

TEST(Rows, OneDotAtEveryPlaceOfEveryWidth)
{
    for (size_t width = 1; width <= 80; ++width) {
        for (size_t dot = 0; dot < width * 8; ++dot) {
            Row row(width, 0);
            row[dot / 8] = static_cast<uint8_t>(0x80 >> (dot % 8));
            check(row);
        }
    }
}

TEST(Rows, RandomSparseRows)
{
    std::mt19937 random(1);
    for (int round = 0; round < 4000; ++round) {
        Row row(random() % 300, 0);
        for (size_t dots = row.empty() ? 0 : random() % 4; dots > 0; --dots) {
            row[random() % row.size()] = static_cast<uint8_t>(random());
        }
        check(row);
    }
}

TEST(Rows, TheRightmostInkOfSeveralRows)
{
    std::mt19937 random(2);
    for (int round = 0; round < 4000; ++round) {
        const auto width = static_cast<uint32_t>(1 + random() % 100);
        const auto count = static_cast<uint32_t>(1 + random() % 20);
        Row rows(static_cast<size_t>(width) * count, 0);
        for (size_t dots = random() % 6; dots > 0; --dots) {
            rows[random() % rows.size()] = static_cast<uint8_t>(random());
        }
        uint32_t expected = 0;
        for (uint32_t row = 0; row < count; ++row) {
            expected = std::max(expected, plain_inked_bytes(rows.data() + static_cast<size_t>(row) * width, width));
        }
        ASSERT_EQ(inked_bytes(rows.data(), width, count), expected) << "width " << width << " rows " << count;
    }
}

// A row that ends where its memory ends: an overlong load is a fault under the sanitizers.
TEST(Rows, ScansStayInsideTheRow)
{
    for (uint32_t width = 1; width <= 40; ++width) {
        const Row row(width, 0);
        EXPECT_EQ(blank_bytes_at_left(row.data(), width), width);
        EXPECT_EQ(inked_bytes(row.data(), width, 1), 0U);
    }
}

}  // namespace
