// Bitmap compression: the code that the printers know, byte for byte.
#include "printops/compression.h"

#include "tests/printops/kit.h"
#include "tests/printops/reference.h"

#include <gtest/gtest.h>

#include <random>

using namespace kit;

namespace {

// Compress into a buffer of exactly the promised room, with a fence behind it.
std::string compressed(std::string_view rows, size_t width, size_t count)
{
    constexpr uint8_t fence = 0xA5;
    const size_t room = (count * width + 4) * 2;
    std::vector<uint8_t> buffer(room + 64, fence);
    uint32_t length = 0xFFFFFFFF;
    const int32_t status =
        tiff_compression(reinterpret_cast<const uint8_t *>(rows.data()), static_cast<uint32_t>(width),
                         static_cast<uint32_t>(count), buffer.data(), &length);
    EXPECT_EQ(status, 0);
    EXPECT_LE(length, room);
    for (size_t i = room; i < buffer.size(); ++i) {
        EXPECT_EQ(buffer[i], fence) << "written beyond the room";
    }
    return {reinterpret_cast<const char *>(buffer.data()), std::min<size_t>(length, room)};
}

std::string compressed(std::string_view row)
{
    return compressed(row, row.size(), 1);
}

// Bytes of which no two neighbours are alike.
std::string literals(size_t length, unsigned first = 0)
{
    std::string block;
    for (size_t i = 0; i < length; ++i) {
        block += static_cast<char>((first + i * 7) % 251);
    }
    return block;
}

struct Example {
    const char *row;
    const char *code;
};

void PrintTo(const Example &example, std::ostream *out)
{
    *out << example.row;
}

class CompressionExample : public testing::TestWithParam<Example> {};

TEST_P(CompressionExample, IsCodedByteForByte)
{
    EXPECT_EQ(hex(compressed(bytes(GetParam().row))), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(Rows, CompressionExample,
                         testing::Values(Example{"41 42 43 44", "03 41 42 43 44"},                                //
                                         Example{"41 41 41 41", "FD 41"},                                         //
                                         Example{"00 00 00 00 00 00 00 00", "F9 00"}, Example{"41 41", "FF 41"},  //
                                         Example{"41 42", "01 41 42"},                                            //
                                         Example{"41 42 42 42", "00 41 FE 42"},                                   //
                                         Example{"41 41 42 42 43 43", "FF 41 FF 42 FF 43"},
                                         Example{"41 42 43 43 43 44 45", "01 41 42 FE 43 01 44 45"},
                                         Example{"41 41 42 41", "FF 41 01 42 41"},
                                         Example{"41 42 42 43 44", "00 41 FF 42 01 43 44"},
                                         // A run and one different byte at the end: the run's byte takes its place.
                                         Example{"41 41 41 42", "00 41 FE 41"},
                                         Example{"41 42 42 43", "00 41 00 42 FF 42"},
                                         // A run of the last two bytes stays with the literals.
                                         Example{"41 42 43 43", "03 41 42 43 43"}));

TEST(Compression, HundredAndFiftyDifferentBytesTakeTwoChunks)
{
    const std::string row = literals(150);
    EXPECT_EQ(hex(compressed(row)), hex("\x7F" + row.substr(0, 128) + "\x15" + row.substr(128)));
    EXPECT_EQ(compressed(row).size(), 152U);
}

TEST(Compression, RowsFollowEachOtherWithoutASeparator)
{
    EXPECT_EQ(hex(compressed(bytes("41 41 41 41 41 42 43 44"), 4, 2)), "FD 41 03 41 42 43 44");
}

// A run never reaches from one row into the next.
TEST(Compression, EveryRowStandsForItself)
{
    EXPECT_EQ(hex(compressed(bytes("41 41 41 41 41 41"), 3, 2)), "FE 41 FE 41");
}

TEST(Compression, RowsOfOneByteSendNothing)
{
    for (size_t count = 0; count < 20; ++count) {
        EXPECT_EQ(compressed(std::string(count, 'x'), 1, count), "");
    }
}

TEST(Compression, NoRowsSendNothing)
{
    for (size_t width = 0; width < 100; ++width) {
        EXPECT_EQ(compressed("", width, 0), "");
    }
}

TEST(Compression, EveryChunkOfALongRunRepeatsOneByteTooMany)
{
    EXPECT_EQ(hex(compressed(std::string(128, '\0'))), "81 00");
    EXPECT_EQ(hex(compressed(std::string(129, '\0'))), "81 00 FF 00");
    EXPECT_EQ(hex(compressed(std::string(200, '\0'))), "81 00 B8 00");
    EXPECT_EQ(reference::decode(compressed(std::string(128, '\0'))).size(), 128U);
    EXPECT_EQ(reference::decode(compressed(std::string(129, '\0'))).size(), 130U);
    EXPECT_EQ(reference::decode(compressed(std::string(200, '\0'))).size(), 201U);
}

// The count of literals is one byte: 257 different bytes count as one, 300 as 44.
TEST(Compression, LiteralsAreCountedModulo256)
{
    const std::string row = literals(300);
    EXPECT_EQ(compressed(row.substr(0, 256)).size(), 258U);
    EXPECT_EQ(hex(compressed(row.substr(0, 257))), hex(std::string(1, '\0') + row.substr(0, 1)));
    EXPECT_EQ(hex(compressed(row)), hex("\x2B" + row.substr(0, 44)));
}

void expect_as_reference(std::string_view row)
{
    ASSERT_EQ(hex(compressed(row)), hex(reference::compress_row(row))) << "row " << hex(row);
}

void every_row(size_t width, int alphabet)
{
    std::string row(width, '\0');
    for (;;) {
        if (compressed(row) != reference::compress_row(row)) {
            expect_as_reference(row);
            return;
        }
        size_t at = 0;
        while (at < width && row[at] == alphabet - 1) {
            row[at++] = 0;
        }
        if (at == width) {
            return;
        }
        row[at] = static_cast<char>(row[at] + 1);
    }
}

TEST(Compression, EveryRowOfThreeBytesUpToNineWide)
{
    for (size_t width = 1; width <= 9; ++width) {
        every_row(width, 3);
    }
}

TEST(Compression, EveryRowOfTwoBytesUpToFourteenWide)
{
    for (size_t width = 10; width <= 14; ++width) {
        every_row(width, 2);
    }
}

// Literals, a run, literals: each of every length at which a count changes its form.
TEST(Compression, StretchesOfEveryTellingLength)
{
    const size_t lengths[] = {0,   1,   2,   3,   7,   8,   9,   126, 127, 128, 129, 130,
                              253, 254, 255, 256, 257, 258, 259, 382, 383, 511, 512, 513};
    for (const size_t before : lengths) {
        for (const size_t run : lengths) {
            for (const size_t after : lengths) {
                const std::string row = literals(before) + std::string(run, '\xFE') + literals(after, 3);
                if (compressed(row) != reference::compress_row(row)) {
                    FAIL() << before << " literals, a run of " << run << ", " << after << " literals";
                }
            }
        }
    }
}

TEST(Compression, RandomRowsOfRunsAndLiterals)
{
    std::mt19937 random(7);
    for (size_t width = 1; width <= 1000; ++width) {
        std::string row;
        while (row.size() < width) {
            const size_t length = 1 + random() % (random() % 4 == 0 ? 300 : 12);
            const auto byte = static_cast<unsigned char>(random());
            row += random() % 2 == 0 ? std::string(length, static_cast<char>(byte)) : literals(length, byte);
        }
        expect_as_reference(row.substr(0, width));
    }
}

TEST(Compression, RandomBlocksOfRows)
{
    std::mt19937 random(8);
    for (int round = 0; round < 300; ++round) {
        const size_t width = 1 + random() % 90;
        const size_t count = random() % 30;
        std::string rows;
        for (size_t i = 0; i < width * count; ++i) {
            rows += static_cast<char>(random() % 6 == 0 ? random() % 3 : 0);
        }
        ASSERT_EQ(hex(compressed(rows, width, count)), hex(reference::compress(rows, width)));
    }
}

// What a printer decodes is the row, unless one of the kept departures strikes: runs beyond 128, literals beyond 256,
// a last byte that differs from the run before it.
TEST(Compression, DecodingGivesTheRowBack)
{
    std::mt19937 random(9);
    int decoded = 0;
    for (int round = 0; round < 3000; ++round) {
        const size_t width = 2 + random() % 120;
        std::string row;
        for (size_t i = 0; i < width; ++i) {
            row += static_cast<char>(random() % 3);
        }
        const bool ends_behind_a_run =
            width >= 3 && row[width - 1] != row[width - 2] && row[width - 2] == row[width - 3];
        if (!ends_behind_a_run) {
            ASSERT_EQ(hex(reference::decode(compressed(row))), hex(row));
            decoded += 1;
        }
    }
    EXPECT_GT(decoded, 1000);
}

TEST(Compression, TheLengthIsKeptWhereALastByteIsLost)
{
    for (size_t run = 2; run <= 128; ++run) {
        const std::string row = std::string(run, 'a') + "b";
        EXPECT_EQ(reference::decode(compressed(row)), std::string(run + 1, 'a'));
    }
}

}  // namespace
