// The guard between the raster stream and CUPS: sound streams pass unchanged, a forged row length reaches page
// processing as it stands in the stream, and CUPS never reserves memory for it.
#include "filter/raster_guard.h"
#include "tests/faults/page_header.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <memory>

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

// Two rows of three bytes; in version 2 with a literal, a repeat, and one byte short of CUPS's own read-ahead.
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
        end_guard(*guard_);
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
    for (const uint32_t row : {strip_size + 1, 1U << 20, 1U << 30, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
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

}  // namespace
