// The guard between the raster stream and CUPS: sound streams pass unchanged, a forged row length reaches page
// processing as it stands in the stream, and CUPS never reserves memory for it.
#include "filter/raster_guard.h"
#include "tests/faults/page_header.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr unsigned strip_size = 1008;

enum class Format { v1, v2, v3 };

struct Stream {
    std::string bytes;
    bool swapped = false;
    size_t header_size = sizeof(cups_page_header2_t);
};

Stream new_stream(Format format, bool swapped)
{
    constexpr uint32_t words[] = {CUPS_RASTER_SYNCv1, CUPS_RASTER_SYNCv2, CUPS_RASTER_SYNC};
    Stream stream;
    stream.swapped = swapped;
    put_stream_word(stream.bytes, words[static_cast<int>(format)], swapped);
    stream.header_size = format == Format::v1 ? sizeof(cups_page_header_t) : sizeof(cups_page_header2_t);
    return stream;
}

void put_header(Stream &stream, uint32_t row, uint32_t height, uint32_t copies = 1)
{
    cups_page_header2_t header = {};
    header.NumCopies = copies;
    header.cupsHeight = height;
    header.cupsWidth = 8;
    header.cupsBytesPerLine = row;
    header.cupsBitsPerColor = 1;
    header.cupsBitsPerPixel = 1;
    header.cupsColorSpace = CUPS_CSPACE_K;
    header.cupsNumColors = 1;
    stream.bytes.append(page_header_bytes(header, stream.swapped), 0, stream.header_size);
}

// Two rows of three bytes; in version 2 a literal and a repeat.
void put_rows(Stream &stream, Format format)
{
    if (format == Format::v2) {
        stream.bytes.append("\x00\xfe\x01\x02\x03\x00\x02\x07", 8);
    } else {
        stream.bytes.append("\x01\x02\x03\x07\x07\x07", 6);
    }
}

const std::string two_rows("\x01\x02\x03\x07\x07\x07", 6);

class Reading {
public:
    explicit Reading(const std::string &bytes) : file_(bytes), guard_(std::make_unique<raster_guard>())
    {
        lseek(file_.descriptor(), 0, SEEK_SET);
        start_guard(*guard_, file_.descriptor(), strip_size);
        stream = cupsRasterOpenIO(read_guarded, guard_.get(), CUPS_RASTER_READ);
    }
    ~Reading()
    {
        cupsRasterClose(stream);
    }
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    bool next()
    {
        return read_guarded_header(*guard_, stream, &header) != 0;
    }
    std::string rows(unsigned size)
    {
        std::string bytes(size, '\0');
        bytes.resize(cupsRasterReadPixels(stream, reinterpret_cast<unsigned char *>(bytes.data()), size));
        return bytes;
    }

    bool failed() const
    {
        return guard_->input.failed;
    }

    cups_page_header_t header = {};
    cups_raster_t *stream = nullptr;

private:
    kit::MemoryFile file_;
    std::unique_ptr<raster_guard> guard_;
};

class EveryFormat : public testing::TestWithParam<std::tuple<Format, bool>> {};

INSTANTIATE_TEST_SUITE_P(RasterGuard, EveryFormat,
                         testing::Combine(testing::Values(Format::v1, Format::v2, Format::v3), testing::Bool()));

TEST_P(EveryFormat, SoundPagesPassUnchanged)
{
    const auto [format, swapped] = GetParam();
    Stream stream = new_stream(format, swapped);
    for (int page = 0; page < 3; ++page) {
        put_header(stream, 3, 2);
        put_rows(stream, format);
    }
    Reading reading(stream.bytes);
    ASSERT_NE(reading.stream, nullptr);
    for (int page = 0; page < 3; ++page) {
        ASSERT_TRUE(reading.next());
        EXPECT_EQ(reading.header.cupsBytesPerLine, 3U);
        EXPECT_EQ(reading.header.cupsHeight, 2U);
        EXPECT_EQ(reading.rows(6), two_rows);
    }
    EXPECT_FALSE(reading.next());
}

TEST_P(EveryFormat, ForgedRowLengthIsHiddenFromCupsAndSeenByThePage)
{
    const auto [format, swapped] = GetParam();
    for (const uint32_t row : {strip_size + 1, 1U << 20, 1U << 30, 0x7FFFFFFFU}) {
        for (const uint32_t copies : {0U, 1U, 2U}) {
            Stream stream = new_stream(format, swapped);
            put_header(stream, 3, 2);
            put_rows(stream, format);
            put_header(stream, row, 2, copies);
            Reading reading(stream.bytes);
            ASSERT_TRUE(reading.next());
            ASSERT_EQ(reading.rows(6), two_rows);
            const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
            ASSERT_TRUE(reading.next()) << row;
            const size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
            EXPECT_EQ(reading.header.cupsBytesPerLine, row);
            EXPECT_EQ(reading.header.NumCopies, copies);
            EXPECT_LE(after, before + 65536);
        }
    }
}

TEST_P(EveryFormat, RowsAsLongAsTheStripBufferAreNotTouched)
{
    const auto [format, swapped] = GetParam();
    Stream stream = new_stream(format, swapped);
    put_header(stream, strip_size, 2);
    Reading reading(stream.bytes);
    ASSERT_TRUE(reading.next());
    EXPECT_EQ(reading.header.cupsBytesPerLine, strip_size);
}

TEST_P(EveryFormat, HeaderCutShortEndsTheStream)
{
    const auto [format, swapped] = GetParam();
    Stream stream = new_stream(format, swapped);
    put_header(stream, 0xFFFFFFFF, 2);
    for (size_t size = 4; size < stream.bytes.size(); ++size) {
        Reading reading(stream.bytes.substr(0, size));
        ASSERT_NE(reading.stream, nullptr);
        EXPECT_FALSE(reading.next()) << size;
    }
}

TEST(RasterGuard, ForeignFirstWordsAreLeftToCups)
{
    for (const std::string &bytes :
         {std::string(), std::string("RaS"), std::string(5000, '\0'), std::string("%PDF-1.4 something else")}) {
        EXPECT_EQ(Reading(bytes).stream, nullptr);
    }
}

// What CUPS says to a header by itself. Uncompressed, so that it reserves nothing.
struct Headers {
    std::string bytes;
    size_t at;
};

ssize_t read_headers(void *context, unsigned char *buffer, size_t length)
{
    Headers &headers = *static_cast<Headers *>(context);
    const size_t count = std::min(length, headers.bytes.size() - headers.at);
    memcpy(buffer, headers.bytes.data() + headers.at, count);
    headers.at += count;
    return static_cast<ssize_t>(count);
}

class Verdict {
public:
    Verdict(Format format, bool swapped)
        : stream_(new_stream(format == Format::v2 ? Format::v3 : format, swapped)), headers_{stream_.bytes, 0}
    {
        cups_ = cupsRasterOpenIO(read_headers, &headers_, CUPS_RASTER_READ);
    }
    ~Verdict()
    {
        cupsRasterClose(cups_);
    }
    Verdict(const Verdict &) = delete;
    Verdict &operator=(const Verdict &) = delete;

    bool accepts(const std::string &header)
    {
        headers_ = {header, 0};
        cups_page_header_t read;
        return cupsRasterReadHeader(cups_, &read) != 0;
    }

private:
    Stream stream_;
    Headers headers_;
    cups_raster_t *cups_;
};

// Headers past the guard, without a file to read them from.
class Guarded {
public:
    Guarded(Format format, bool swapped) : guard_(std::make_unique<raster_guard>())
    {
        start_guard(*guard_, -1, strip_size);
        put(new_stream(format, swapped).bytes);
        cups_ = cupsRasterOpenIO(read_guarded, guard_.get(), CUPS_RASTER_READ);
    }
    ~Guarded()
    {
        cupsRasterClose(cups_);
    }
    Guarded(const Guarded &) = delete;
    Guarded &operator=(const Guarded &) = delete;

    bool accepts(const std::string &header)
    {
        put(header);
        return read_guarded_header(*guard_, cups_, &read) != 0;
    }

    cups_page_header_t read = {};

private:
    void put(const std::string &bytes)
    {
        memcpy(guard_->input.bytes, bytes.data(), bytes.size());
        guard_->input.position = 0;
        guard_->input.filled = bytes.size();
    }

    std::unique_ptr<raster_guard> guard_;
    cups_raster_t *cups_ = nullptr;
};

struct Depth {
    unsigned order;
    unsigned bits_per_pixel;
    unsigned bits_per_color;
};

// Every depth of whole pixels; every depth of single colours, in both orders that CUPS has for them and one that it
// does not have; and what it refuses.
std::vector<Depth> all_depths()
{
    std::vector<Depth> depths;
    for (unsigned bits = 0; bits <= 241; ++bits) {
        depths.push_back({CUPS_ORDER_CHUNKED, bits, 8});
    }
    for (const unsigned order : {1U, 2U, 3U}) {
        for (unsigned bits = 0; bits <= 17; ++bits) {
            depths.push_back({order, 88, bits});
        }
    }
    depths.push_back({CUPS_ORDER_CHUNKED, 0xFFFFFFFF, 8});
    depths.push_back({CUPS_ORDER_PLANAR, 88, 0xFFFFFFFF});
    return depths;
}

std::string header_of(const Stream &stream, const Depth &depth, uint32_t row)
{
    cups_page_header2_t header = {};
    header.NumCopies = 1;
    header.cupsHeight = 2;
    header.cupsWidth = 8;
    header.cupsBytesPerLine = row;
    header.cupsColorOrder = static_cast<cups_order_t>(depth.order);
    header.cupsBitsPerColor = depth.bits_per_color;
    header.cupsBitsPerPixel = depth.bits_per_pixel;
    header.cupsColorSpace = CUPS_CSPACE_K;
    header.cupsNumColors = 1;
    return page_header_bytes(header, stream.swapped).substr(0, stream.header_size);
}

// 10,000 lengths of all magnitudes, each with every depth; the formats take turns.
TEST(RasterGuard, RowsOfAnyLengthAreAsGoodToCupsBehindTheGuardAsTheyAreInTruth)
{
    const std::vector<Depth> depths = all_depths();
    std::mt19937 random(11);
    int accepted = 0;
    int refused = 0;
    int hidden = 0;
    for (int turn = 0; turn < 6; ++turn) {
        const Format format = static_cast<Format>(turn % 3);
        const Stream stream = new_stream(format, turn >= 3);
        Verdict truth(format, turn >= 3);
        Guarded guarded(format, turn >= 3);
        for (int length = turn; length < 10000; length += 6) {
            const uint32_t row = static_cast<uint32_t>(random()) >> (1 + random() % 31);
            for (const Depth &depth : depths) {
                const std::string header = header_of(stream, depth, row);
                const bool expected = truth.accepts(header);
                ASSERT_EQ(guarded.accepts(header), expected)
                    << "row of " << row << " bytes, " << depth.bits_per_pixel << " bits a pixel, "
                    << depth.bits_per_color << " a colour, order " << depth.order << ", format " << turn;
                if (expected) {
                    ASSERT_EQ(guarded.read.cupsBytesPerLine, row);
                }
                accepted += expected ? 1 : 0;
                refused += expected ? 0 : 1;
                hidden += expected && row > strip_size ? 1 : 0;
            }
        }
    }
    EXPECT_GT(accepted, 500000);
    EXPECT_GT(refused, 500000);
    EXPECT_GT(hidden, 300000);
}

// By itself CUPS takes such a header for the end of the stream. The page is to end the job with a message instead.
TEST(RasterGuard, RowsOfTwoGigabytesAndMoreReachThePage)
{
    Guarded guarded(Format::v3, false);
    const Stream stream = new_stream(Format::v3, false);
    for (const uint32_t row : {0x80000000U, 0x80000001U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(guarded.accepts(header_of(stream, {CUPS_ORDER_CHUNKED, 1, 1}, row))) << row;
        EXPECT_EQ(guarded.read.cupsBytesPerLine, row);
    }
    EXPECT_FALSE(guarded.accepts(header_of(stream, {CUPS_ORDER_CHUNKED, 24, 8}, 0x80000000U))) << "no whole pixels";
    EXPECT_FALSE(guarded.accepts(header_of(stream, {CUPS_ORDER_CHUNKED, 1, 1}, 0)));
}

// Any codes that fill the rows of a page, and the bytes that they stand for.
void put_random_page(Stream &stream, uint32_t width, uint32_t height, std::mt19937 &random, std::string &rows)
{
    put_header(stream, width, height);
    for (uint32_t row = 0; row < height; ++row) {
        std::string plain;
        stream.bytes += '\0';
        while (plain.size() < width) {
            const size_t count = 2 + random() % std::min<size_t>(width, 127);
            const size_t used = std::min(count, width - plain.size());
            if (random() % 2 == 0) {
                const char byte = static_cast<char>(random());
                (stream.bytes += static_cast<char>(count - 1)) += byte;
                plain.append(used, byte);
            } else {
                std::string bytes(used, '\0');
                for (char &byte : bytes) {
                    byte = static_cast<char>(random());
                }
                (stream.bytes += static_cast<char>(257 - count)) += bytes;
                plain += bytes;
            }
        }
        rows += plain;
    }
}

// CUPS reads compressed streams ahead, a header included. Whatever the rows before a forged header are made of, and
// however much of them CUPS would like to have at once, the header is found.
TEST(RasterGuard, ForgedHeaderBehindAnyCompressedPageIsFound)
{
    std::mt19937 random(5);
    for (int turn = 0; turn < 2000; ++turn) {
        Stream stream = new_stream(Format::v2, turn % 2 == 0);
        const uint32_t width = 1 + static_cast<uint32_t>(random() % 300);
        const uint32_t height = 1 + static_cast<uint32_t>(random() % 8);
        std::string rows;
        put_random_page(stream, width, height, random, rows);
        put_header(stream, 1U << 30, 2, 0);
        std::string last;
        put_random_page(stream, width, height, random, last);
        Reading reading(stream.bytes);
        ASSERT_TRUE(reading.next());
        ASSERT_EQ(reading.rows(width * height), rows) << turn;
        const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        ASSERT_TRUE(reading.next()) << turn;
        EXPECT_LE(mallinfo2().uordblks + mallinfo2().hblkhd, before + 65536);
        ASSERT_EQ(reading.header.cupsBytesPerLine, 1U << 30);
        ASSERT_TRUE(reading.next()) << turn;
        ASSERT_EQ(reading.rows(width * height), last);
        ASSERT_FALSE(reading.next());
    }
}

// Another libcups may ask for other amounts: it never gets more than the piece that it is about to look at.
TEST(RasterGuard, NothingIsHandedOnBeyondTheWordTheHeaderOrOneCompressedByte)
{
    Stream stream = new_stream(Format::v2, false);
    put_header(stream, 1U << 30, 2);
    put_rows(stream, Format::v2);
    kit::MemoryFile file(stream.bytes);
    lseek(file.descriptor(), 0, SEEK_SET);
    const auto guard = std::make_unique<raster_guard>();
    start_guard(*guard, file.descriptor(), strip_size);
    unsigned char bytes[65536];
    EXPECT_EQ(read_guarded(guard.get(), bytes, sizeof bytes), 4);
    guard->at_header = true;
    EXPECT_EQ(read_guarded(guard.get(), bytes, sizeof bytes), static_cast<ssize_t>(stream.header_size));
    EXPECT_EQ(guard->real_row, 1U << 30);
    EXPECT_EQ(read_guarded(guard.get(), bytes, sizeof bytes), 1);
}

TEST(RasterGuard, HeaderAskedForInPiecesIsTheSame)
{
    Stream stream = new_stream(Format::v3, false);
    put_header(stream, 1U << 30, 2);
    kit::MemoryFile file(stream.bytes);
    lseek(file.descriptor(), 0, SEEK_SET);
    const auto guard = std::make_unique<raster_guard>();
    start_guard(*guard, file.descriptor(), strip_size);
    std::string header(stream.header_size, '\0');
    unsigned char *const bytes = reinterpret_cast<unsigned char *>(header.data());
    EXPECT_EQ(read_guarded(guard.get(), bytes, 4), 4);
    guard->at_header = true;
    EXPECT_EQ(read_guarded(guard.get(), bytes, 100), 100);
    EXPECT_EQ(read_guarded(guard.get(), bytes + 100, header.size() - 100), static_cast<ssize_t>(header.size()) - 100);
    uint32_t shown;
    memcpy(&shown, header.data() + offsetof(cups_page_header_t, cupsBytesPerLine), sizeof shown);
    EXPECT_EQ(shown, 1U);
}

// Apple's raster: a word, "ST", a count of pages; a header of 32 bytes has bits and pixels where they belong.
std::string apple_stream(unsigned char bits, uint32_t width)
{
    std::string header(32, '\0');
    header[0] = static_cast<char>(bits);
    header[15] = static_cast<char>(width);
    header[14] = static_cast<char>(width >> 8);
    header[13] = static_cast<char>(width >> 16);
    header[12] = static_cast<char>(width >> 24);
    header[19] = 1;
    return std::string("UNIRAST\0\0\0\0\1", 12) + header;
}

TEST(RasterGuard, ApplePagesPassUnlessTheyAreTooWide)
{
    for (const auto &[bits, width] :
         {std::pair<unsigned char, uint32_t>{8, strip_size}, {1, 8 * strip_size}, {16, 9}}) {
        Reading reading(apple_stream(bits, width));
        ASSERT_TRUE(reading.next()) << width;
        EXPECT_EQ(reading.header.cupsBytesPerLine, width * bits / 8);
        EXPECT_EQ(reading.header.NumCopies, 0U);
        EXPECT_FALSE(reading.failed());
    }
    for (const auto &[bits, width] : {std::pair<unsigned char, uint32_t>{8, strip_size + 1},
                                      {8, 0x10000000},
                                      {255, 0xFFFFFFFF},
                                      {16, 0x80000001}}) {
        Reading reading(apple_stream(bits, width));
        const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        EXPECT_FALSE(reading.next()) << width;
        EXPECT_LE(mallinfo2().uordblks + mallinfo2().hblkhd, before + 65536 + 32);
        EXPECT_TRUE(reading.failed());
    }
}

// Rows that are there are printed before the rest of the page arrives.
TEST(RasterGuard, NeverWaitsForMoreThanTheRowsThatAreAskedFor)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const auto guard = std::make_unique<raster_guard>();
    start_guard(*guard, ends[0], strip_size);
    Stream stream = new_stream(Format::v2, false);
    put_header(stream, 3, 4);
    stream.bytes.append("\x01\x02\x41\x00\xFE\x42\x43", 7);  // two rows, and two bytes of the third
    ASSERT_EQ(write(ends[1], stream.bytes.data(), stream.bytes.size()), static_cast<ssize_t>(stream.bytes.size()));
    cups_raster_t *const cups = cupsRasterOpenIO(read_guarded, guard.get(), CUPS_RASTER_READ);
    cups_page_header_t header;
    ASSERT_NE(read_guarded_header(*guard, cups, &header), 0U);
    char rows[7] = "";
    unsigned char *const target = reinterpret_cast<unsigned char *>(rows);
    EXPECT_EQ(cupsRasterReadPixels(cups, target, 6), 6U);
    EXPECT_STREQ(rows, "AAAAAA");
    ASSERT_EQ(write(ends[1], "\x44\x00\x80", 3), 3);
    EXPECT_EQ(cupsRasterReadPixels(cups, target, 6), 6U);
    EXPECT_EQ(std::string(rows, 6), std::string("BCD\0\0\0", 6));
    cupsRasterClose(cups);
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
