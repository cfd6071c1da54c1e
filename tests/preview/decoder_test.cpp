// The streaming decoder: pieces of any size, unknown bytes, input that breaks off, and noise.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "preview/listing.h"
#include "preview/reader.h"

namespace {

using Stream = std::vector<uint8_t>;

Stream operator+(Stream head, const Stream &tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

Stream text(const std::string &characters)
{
    return {characters.begin(), characters.end()};
}

// All that the reader has to say about a stream, for comparing.
std::string report(const preview::Reader &reader)
{
    std::string out = preview::json_summary(reader);
    for (const preview::CommandRecord &record : reader.commands()) {
        out +=
            '\n' + std::to_string(record.offset) + '+' + std::to_string(record.length) + ' ' + std::string(record.name);
        for (const preview::Arg &arg : record.args) {
            out += ' ' + std::to_string(arg.value);
        }
        out += ' ' + std::string(record.head.begin(), record.head.end()) + ' ' +
               std::string(record.data.begin(), record.data.end());
    }
    return out;
}

std::string report_in_pieces(const Stream &stream, size_t piece, std::mt19937 *random = nullptr)
{
    preview::Reader reader({.width = 128, .max_rows = 3000});
    for (size_t at = 0; at < stream.size();) {
        const size_t wanted = random != nullptr ? 1 + (*random)() % piece : piece;
        const size_t size = std::min(wanted, stream.size() - at);
        if (!reader.feed(preview::Bytes(stream).subspan(at, size))) {
            break;
        }
        at += size;
    }
    reader.finish();
    return report(reader);
}

// Every kind of command, with the ones that share their first bytes.
Stream mixed_stream()
{
    return text("Hello ~ ZZTOP ZZZGETVERSION~") + Stream{0x7E, 0x04, 0x7E} +
           Stream{0x1B, 0x40, 0x1B, 0x4E, 0x1B, 0x4E, 0x30} + Stream{0x1D, 0x76, 0x30, 0, 2, 0, 2, 0, 1, 2, 3, 4} +
           Stream{0x1D, 0x76, 0x30, 32, 4, 0, 2, 0, 0xFD, 1, 3, 1, 2, 3, 4} + Stream{0x1D, 0x76, 0x30, 32, 1, 0, 9, 0} +
           Stream{0x00, 0x01, 0x02, 0x1B, 0xFF} + Stream{0x1B, 0x44, 8, 16, 0, 0x1D, 0x6B, 4, 'A', 'B', 0} +
           Stream{0x1D, 0x28, 0x45, 3, 0, 1, 0x49, 0x4E} +
           Stream{0x1D, 0x28, 0x5A, 2, 0, 9, 9, 0x1C, 0x71, 1, 1, 0, 1, 0, 1, 2, 3, 4, 5, 6, 7, 8} +
           Stream{0x1D, 0x28, 0x4C, 6, 0, 0x30, 0x45, 0x30, 0x30, 1, 1, 0x1D, 0x56, 66, 0, 0x1D, 0x56, 0} +
           text("end\n");
}

Stream noise(std::mt19937 &random, size_t size)
{
    // Bytes that begin commands come often, so that the noise gets deep into the table.
    const uint8_t leads[] = {0x1B, 0x1D, 0x1C, 0x10, 0x28, 0x4C, 0x76, 0x30, 32,
                             0,    1,    0x6B, 0x44, 0x57, 0x71, 0x26, 0x2A};
    Stream stream(size);
    for (uint8_t &byte : stream) {
        byte = static_cast<uint8_t>(random() % 2 == 0 ? leads[random() % std::size(leads)] : random());
    }
    return stream;
}

std::vector<std::string> names_of(const Stream &stream)
{
    preview::Reader reader(preview::Options{});
    reader.feed(stream);
    reader.finish();
    std::vector<std::string> names;
    for (const preview::CommandRecord &record : reader.commands()) {
        names.emplace_back(record.name);
    }
    return names;
}

}  // namespace

TEST(Decoder, PiecesOfAnySizeGiveTheSameRecords)
{
    const Stream stream = mixed_stream();
    const std::string whole = report_in_pieces(stream, stream.size());
    for (size_t piece = 1; piece < 40; ++piece) {
        EXPECT_EQ(report_in_pieces(stream, piece), whole) << piece;
    }
}

TEST(Decoder, EveryPrefixGivesTheSameRecordsInPiecesToo)
{
    const Stream stream = mixed_stream();
    for (size_t size = 0; size <= stream.size(); ++size) {
        const Stream prefix(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(report_in_pieces(prefix, 1), report_in_pieces(prefix, 1000)) << size;
    }
}

TEST(Decoder, NoiseInPiecesGivesTheSameRecords)
{
    std::mt19937 random(5);
    for (int round = 0; round < 400; ++round) {
        const Stream stream = noise(random, 1 + random() % 300);
        const std::string whole = report_in_pieces(stream, stream.size());
        EXPECT_EQ(report_in_pieces(stream, 1), whole) << round;
        EXPECT_EQ(report_in_pieces(stream, 20, &random), whole) << round;
    }
}

// Records follow each other without a gap and without an overlap, whatever the bytes.
TEST(Decoder, EveryByteBelongsToOneRecord)
{
    std::mt19937 random(6);
    for (int round = 0; round < 400; ++round) {
        const Stream stream = noise(random, 1 + random() % 2000);
        preview::Reader reader({.width = 64, .max_rows = 100'000'000});
        reader.feed(stream);
        reader.finish();
        uint64_t offset = 0;
        for (const preview::CommandRecord &record : reader.commands()) {
            ASSERT_EQ(record.offset, offset) << round;
            offset += record.length;
        }
        EXPECT_EQ(offset, stream.size()) << round;
        EXPECT_EQ(reader.offset(), stream.size()) << round;
    }
}

TEST(Decoder, UnknownBytesAreShownAndReadingGoesOn)
{
    preview::Reader reader(preview::Options{});
    reader.feed(Stream{0x1B, 0x40, 0x01, 0x02, 0x1B, 0x40});
    EXPECT_TRUE(reader.finish());
    ASSERT_EQ(reader.commands().size(), 3U);
    EXPECT_EQ(reader.commands()[1].kind, preview::Kind::unknown);
    EXPECT_EQ(reader.commands()[1].offset, 2U);
    EXPECT_EQ(reader.commands()[1].length, 2U);
    EXPECT_EQ(reader.commands()[2].name, "initialize_printer");
    ASSERT_EQ(reader.warnings().size(), 1U);
    EXPECT_EQ(reader.warnings()[0].offset, 2U);
}

TEST(Decoder, AnUnknownLeadIsSkippedByOneByteOnly)
{
    EXPECT_EQ(names_of({0x1B, 0x1B, 0x40}), (std::vector<std::string>{"unknown", "initialize_printer"}));
}

TEST(Decoder, AnUnknownFunctionInAKnownFrameIsSkippedByItsLength)
{
    EXPECT_EQ(names_of({0x1D, 0x28, 0x5A, 3, 0, 0x1B, 0x40, 0x0A, 0x0A}),
              (std::vector<std::string>{"unknown_function", "print_and_line_feed"}));
}

TEST(Decoder, TruncatedInputTellsWhereAndInWhat)
{
    preview::Reader reader(preview::Options{});
    reader.feed(Stream{0x0A, 0x1D, 0x76, 0x30, 0, 2, 0, 3, 0, 0xFF, 0xFF, 0xFF});
    EXPECT_FALSE(reader.finish());
    ASSERT_TRUE(reader.problem());
    EXPECT_EQ(reader.problem()->offset, 1U);
    EXPECT_NE(reader.problem()->text.find("print_raster_bit_image"), std::string::npos);
    // The picture so far: the line feed, a whole row and the half one.
    EXPECT_EQ(reader.paper().rows(), reader.options().dpi / 6 + 2);
    EXPECT_TRUE(reader.dot(reader.paper().rows() - 1, 7));
    EXPECT_FALSE(reader.dot(reader.paper().rows() - 1, 8));
}

TEST(Decoder, EveryCutThroughAStreamIsReportedOrComplete)
{
    const Stream stream = mixed_stream();
    for (size_t size = 0; size < stream.size(); ++size) {
        preview::Reader reader(preview::Options{});
        reader.feed(preview::Bytes(stream).first(size));
        const bool complete = reader.finish();
        uint64_t covered = 0;
        for (const preview::CommandRecord &record : reader.commands()) {
            covered += record.length;
        }
        EXPECT_EQ(covered, size);
        EXPECT_EQ(complete, !reader.problem().has_value());
    }
}

// A length of 4 GB in eight bytes must not cost memory; the reader waits for bytes that really come.
TEST(Decoder, AnnouncedLengthsCostNothing)
{
    for (int i = 0; i < 1000; ++i) {
        preview::Reader reader(preview::Options{});
        reader.feed(Stream{0x1D, 0x38, 0x4C, 0xFF, 0xFF, 0xFF, 0xFF, 0x30, 0x99});
        EXPECT_FALSE(reader.finish());
        EXPECT_EQ(reader.problem()->offset, 0U);
    }
}

// 32768 by 16384 blocks are 4 GiB, which must not look like nothing to a machine of 32 bits.
TEST(Decoder, AnImageAsLargeAsAnAddressSpaceIsNeverComplete)
{
    preview::Reader reader(preview::Options{});
    reader.feed(Stream{0x1C, 0x71, 0x01, 0x00, 0x80, 0x00, 0x40, 0x00});
    EXPECT_FALSE(reader.finish());
}

TEST(Decoder, ListLinesNameOffsetBytesAndArguments)
{
    std::vector<std::string> lines;
    preview::Reader reader(preview::Options{});
    reader.watch([&lines](const preview::Command &command) { lines.push_back(preview::list_line(command)); });
    reader.feed(Stream{0x1D, 0x56, 66, 0} + text("A\"b") + Stream{0x1D, 0x76, 0x30, 0, 8, 0, 2, 0} + Stream(16));
    reader.finish();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0],
              "         0  1D 56 42 00                                select_cut_mode_and_feed_paper m=66 n=0");
    EXPECT_EQ(lines[1], "         4  41 22 62                                   text \"A\\\"b\"");
    EXPECT_EQ(lines[2],
              "         7  1D 76 30 00 08 00 02 00 +16                print_raster_bit_image m=0 xBytes=8 yDots=2");
}

TEST(Decoder, JsonEscapesWhatIsNotPlainText)
{
    std::string json;
    preview::Reader reader(preview::Options{});
    reader.watch([&json](const preview::Command &command) { json = preview::json_command(command); });
    reader.feed(Stream{'"', '\\', 0xE9});
    reader.finish();
    EXPECT_EQ(json,
              R"({"offset":0,"length":3,"kind":"text","name":"text","bytes":"225CE9","args":{},"text":"\"\\\u00E9"})");
}
