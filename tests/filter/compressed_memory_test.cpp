// A compressed stream whose rows do not fit into memory.
#include "filter/raster_guard.h"
#include "tests/faults/page_header.h"
#include "tests/filter/wrapped_memory.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

std::string stream_of(uint32_t width, int pages)
{
    std::string bytes;
    put_stream_word(bytes, CUPS_RASTER_SYNCv2, false);
    cups_page_header2_t header = {};
    header.cupsHeight = 1;
    header.cupsBytesPerLine = width;
    header.cupsBitsPerColor = 1;
    header.cupsBitsPerPixel = 1;
    header.cupsColorSpace = CUPS_CSPACE_K;
    header.cupsNumColors = 1;
    for (int page = 0; page < pages; ++page) {
        bytes += page_header_bytes(header, false);
        bytes.append("\0\x80", 2);  // one row, blank
    }
    return bytes;
}

struct Reading {
    explicit Reading(const std::string &bytes) : file(bytes)
    {
        lseek(file.descriptor(), 0, SEEK_SET);
        start_guard(guard, file.descriptor(), 1000);
        stream = cupsRasterOpenIO(read_guarded, &guard, CUPS_RASTER_READ);
    }
    ~Reading()
    {
        cupsRasterClose(stream);
        end_guard(guard);
    }
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    bool next()
    {
        cups_page_header_t header;
        return read_guarded_header(guard, stream, &header) != 0;
    }
    unsigned row(unsigned width)
    {
        std::string bytes(width, 'x');
        return cupsRasterReadPixels(stream, reinterpret_cast<unsigned char *>(bytes.data()), width);
    }

    kit::MemoryFile file;
    raster_guard guard = {};
    cups_raster_t *stream = nullptr;
};

TEST(CompressedMemory, WithoutMemoryForARowTheStreamHasFailed)
{
    Reading reading(stream_of(9, 1));
    wrapped::start_counting(1);
    const bool read = reading.next();
    wrapped::stop_counting();
    EXPECT_FALSE(read);
    EXPECT_TRUE(reading.guard.input.failed);
}

TEST(CompressedMemory, OneBlockServesAllPagesOfAWidth)
{
    Reading reading(stream_of(9, 3));
    wrapped::start_counting();
    for (int page = 0; page < 3; ++page) {
        ASSERT_TRUE(reading.next());
        ASSERT_EQ(reading.row(9), 9U);
    }
    EXPECT_FALSE(reading.next());
    wrapped::stop_counting();
    EXPECT_EQ(wrapped::blocks_made(), 1);
    EXPECT_FALSE(reading.guard.input.failed);
}

}  // namespace
