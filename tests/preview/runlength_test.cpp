// Compressed raster images: the reader against a plain encoder, over many rows, and the consequences that the code has.
#include "preview/runlength.h"

#include <gtest/gtest.h>

#include <random>

#include "preview/reader.h"
#include "rows_encoder.h"

namespace {

using test::Row;

std::vector<uint8_t> image_stream(const std::vector<Row> &rows)
{
    const size_t width = rows[0].size();
    std::vector<uint8_t> stream = {0x1D, 0x76, 0x30, 32};
    for (const size_t number : {width, rows.size()}) {
        stream.push_back(static_cast<uint8_t>(number));
        stream.push_back(static_cast<uint8_t>(number >> 8));
    }
    for (const Row &row : rows) {
        test::encode_row(row, stream);
    }
    return stream;
}

// Rows as printing makes them: long runs of few values, mixed with noise.
Row random_row(std::mt19937 &random, size_t width)
{
    Row row;
    while (row.size() < width) {
        const auto value = static_cast<uint8_t>(random() % 3 == 0 ? random() : random() % 2 * 255);
        const size_t longest = random() % 3 == 0 ? width : 4;
        row.insert(row.end(), 1 + random() % longest, value);
    }
    row.resize(width);
    return row;
}

// Reads the rows back through the whole reader, and checks that it is in step afterwards.
void expect_round_trip(const std::vector<Row> &rows, bool blank = false)
{
    std::vector<uint8_t> stream = image_stream(rows);
    stream.insert(stream.end(), {0x1B, 0x40});
    const auto width = static_cast<uint32_t>(rows[0].size());
    preview::Reader reader({.width = width * 8});
    reader.feed(stream);
    ASSERT_TRUE(reader.finish()) << "width " << width;
    ASSERT_EQ(reader.commands().size(), 2U) << "width " << width << ": out of step";
    EXPECT_EQ(reader.commands()[1].name, "initialize_printer");
    ASSERT_EQ(reader.paper().rows(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        const preview::Bytes bits = reader.paper().row(i);
        const Row read = bits.empty() ? Row(width, 0) : Row(bits.begin(), bits.end());
        const Row expected = blank ? Row(width, 0) : test::after_the_code(rows[i]);
        ASSERT_EQ(read, expected) << "width " << width << " row " << i;
    }
}

Row decode(std::vector<uint8_t> code, uint32_t width)
{
    preview::RowDecoder decoder;
    preview::start_rows(decoder, width);
    EXPECT_EQ(preview::read_row(decoder, code), code.size());
    EXPECT_TRUE(preview::row_complete(decoder));
    return decoder.row;
}

}  // namespace

TEST(RunLength, PlainEncoderGivesTheKnownCodes)
{
    struct Example {
        Row row;
        std::vector<uint8_t> code;
    };
    const Example examples[] = {
        {{0x41, 0x42, 0x43, 0x44}, {0x03, 0x41, 0x42, 0x43, 0x44}},
        {{0x41, 0x41, 0x41, 0x41}, {0xFD, 0x41}},
        {{0x41, 0x42, 0x42, 0x42}, {0x00, 0x41, 0xFE, 0x42}},
        {{0x41, 0x42, 0x43, 0x43, 0x43, 0x44, 0x45}, {0x01, 0x41, 0x42, 0xFE, 0x43, 0x01, 0x44, 0x45}},
        {{0x41, 0x41, 0x42, 0x41}, {0xFF, 0x41, 0x01, 0x42, 0x41}},
        {{0x41, 0x41, 0x41, 0x42}, {0x00, 0x41, 0xFE, 0x41}},
        {{0x41, 0x42, 0x42, 0x43}, {0x00, 0x41, 0x00, 0x42, 0xFF, 0x42}},
        {Row(128, 0), {0x81, 0x00}},
        {Row(129, 0), {0x81, 0x00, 0xFF, 0x00}},
        {Row(200, 0), {0x81, 0x00, 0xB8, 0x00}},
    };
    for (const Example &example : examples) {
        std::vector<uint8_t> code;
        test::encode_row(example.row, code);
        EXPECT_EQ(code, example.code);
    }
}

TEST(RunLength, LastByteBehindARunIsReplaced)
{
    EXPECT_EQ(decode({0x00, 0x41, 0xFE, 0x41}, 4), (Row{0x41, 0x41, 0x41, 0x41}));
    EXPECT_EQ(decode({0x00, 0x41, 0x00, 0x42, 0xFF, 0x42}, 4), (Row{0x41, 0x42, 0x42, 0x42}));
}

TEST(RunLength, LongRunOvershootsByOneByteAndIsCutAtTheRowsEnd)
{
    preview::RowDecoder decoder;
    preview::start_rows(decoder, 200);
    const std::vector<uint8_t> code = {0x81, 0xAA, 0xB8, 0xAA};
    EXPECT_EQ(preview::read_row(decoder, code), 4U);
    EXPECT_TRUE(preview::row_complete(decoder));
    EXPECT_EQ(decoder.produced, 201U);
    EXPECT_EQ(decoder.row, Row(200, 0xAA));
    EXPECT_TRUE(decoder.overshot);
}

TEST(RunLength, RowsOfOneByteCarryNothing)
{
    std::vector<Row> rows(300, Row{0xFF});
    EXPECT_EQ(image_stream(rows).size(), 8U);
    expect_round_trip(rows, true);
}

TEST(RunLength, RandomRowsOfEveryWidthUpTo256StayInStep)
{
    std::mt19937 random(20);
    for (size_t width = 2; width <= 256; ++width) {
        std::vector<Row> rows;
        for (int i = 0; i < 60; ++i) {
            rows.push_back(random_row(random, width));
        }
        expect_round_trip(rows);
    }
}

// Every pattern of short runs, which is where the code has its odd corners.
TEST(RunLength, EveryRowOfTwoValuesUpToTwelveBytesStaysInStep)
{
    for (size_t width = 2; width <= 12; ++width) {
        std::vector<Row> rows;
        for (uint32_t pattern = 0; pattern < 1U << width; ++pattern) {
            Row row(width);
            for (size_t i = 0; i < width; ++i) {
                row[i] = (pattern >> i & 1) != 0 ? 0x55 : 0xF0;
            }
            rows.push_back(row);
        }
        expect_round_trip(rows);
    }
}

// One long run anywhere in a row: every length at every place.
TEST(RunLength, EveryLongRunUpTo256BytesStaysInStep)
{
    for (const size_t width : {129U, 130U, 131U, 200U, 254U, 255U, 256U}) {
        std::vector<Row> rows;
        for (size_t length = 126; length <= width; ++length) {
            for (size_t start = 0; start + length <= width; start += start < 3 ? 1 : 17) {
                Row row(width);
                for (size_t i = 0; i < width; ++i) {
                    row[i] = i >= start && i < start + length ? 0xEE : static_cast<uint8_t>(i % 200);
                }
                rows.push_back(row);
            }
        }
        rows.emplace_back(width, uint8_t{7});
        expect_round_trip(rows);
    }
}

namespace {

std::vector<preview::Warning> warnings_of(const std::vector<Row> &rows)
{
    preview::Reader reader(preview::Options{.width = static_cast<uint32_t>(rows[0].size()) * 8});
    reader.feed(image_stream(rows));
    reader.finish();
    return reader.warnings();
}

}  // namespace

TEST(RunLength, RowsUpTo128BytesNeedNoWarning)
{
    EXPECT_TRUE(warnings_of({Row(128, 1), Row(128, 2), Row(128, 3)}).empty());
}

TEST(RunLength, AnOvershootIsToldOnceAnImage)
{
    const std::vector<preview::Warning> warnings = warnings_of({Row(200, 1), Row(200, 2), Row(200, 3)});
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_NE(warnings[0].text.find("byte too many"), std::string::npos);
}

TEST(RunLength, ARowWhoseEndIsAmbiguousIsToldOnceAnImage)
{
    const std::vector<preview::Warning> warnings = warnings_of({Row(256, 1), Row(256, 2)});
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_NE(warnings[0].text.find("ambiguous"), std::string::npos);
    ASSERT_FALSE(warnings_of({Row(300, 1)}).empty());
}

TEST(RunLength, TheCountByte128MeansNothingAndIsTold)
{
    preview::Reader reader({.width = 32});
    const std::vector<uint8_t> stream = {0x1D, 0x76, 0x30, 32, 4, 0, 1, 0, 128, 0xFD, 0x41};
    reader.feed(stream);
    EXPECT_TRUE(reader.finish());
    EXPECT_EQ(reader.warnings().size(), 1U);
    EXPECT_EQ(reader.paper().row(0)[3], 0x41);
}
