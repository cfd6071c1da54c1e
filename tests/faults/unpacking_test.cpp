// Compressed raster streams, unpacked by the filter and by CUPS: the same headers, rows and ends, wherever the stream
// is cut and however it arrives.
#include "tests/faults/both_readings.h"
#include "tests/faults/page_header.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using readings::read_by_cups;
using readings::read_by_filter;

struct Shape {
    uint32_t height;
    uint32_t pixels;
    uint32_t pixel_size;
    unsigned bits_per_color;
    cups_cspace_t space;
    bool swapped;
    unsigned spare_bits;  // of a pixel's last byte
};

std::string header_of(const Shape &shape)
{
    cups_page_header2_t header = {};
    header.cupsHeight = shape.height;
    header.cupsWidth = shape.pixels;
    header.cupsBytesPerLine = shape.pixels * shape.pixel_size;
    header.cupsBitsPerColor = shape.bits_per_color;
    header.cupsBitsPerPixel = 8 * shape.pixel_size - shape.spare_bits;
    header.cupsColorSpace = shape.space;
    header.cupsNumColors = 1;
    return page_header_bytes(header, shape.swapped);
}

class Writer {
public:
    explicit Writer(unsigned seed) : random_(seed) {}

    uint32_t below(uint32_t end)
    {
        return static_cast<uint32_t>(random_() % end);
    }

    Shape some_shape()
    {
        static constexpr cups_cspace_t spaces[] = {CUPS_CSPACE_K,    CUPS_CSPACE_W,   CUPS_CSPACE_RGB,
                                                   CUPS_CSPACE_RGBW, CUPS_CSPACE_SW,  CUPS_CSPACE_ADOBERGB,
                                                   CUPS_CSPACE_SRGB, CUPS_CSPACE_CMYK};
        const uint32_t pixel_size = below(3) > 0 ? 1 : 1 + below(largest_pixel);
        const bool wide = pixel_size % 2 == 0 && below(2) == 0;
        return {1 + below(20), 1 + below(40), pixel_size, wide ? 16U : 8U, spaces[below(8)], below(2) == 0, below(8)};
    }

    // Rows of a page: codes as a writer makes them, or now and then longer than the row or the page.
    void put_rows(std::string &out, const Shape &shape, bool repeating = true)
    {
        for (uint32_t rows = 0; rows < shape.height;) {
            const uint32_t repeats = !repeating || below(3) > 0 ? 0 : below(below(20) == 0 ? 256 : shape.height - rows);
            rows += repeats + 1;
            out += static_cast<char>(repeats);
            for (uint32_t done = 0; done < shape.pixels;) {
                done += put_code(out, shape, shape.pixels - done);
            }
        }
    }

private:
    uint32_t put_code(std::string &out, const Shape &shape, uint32_t left)
    {
        const uint32_t most = std::min<uint32_t>(below(30) == 0 ? 128 : left, 128);
        const uint32_t count = 1 + below(most);
        switch (below(8)) {
            case 0:
                out += '\x80';
                return left;
            case 1:
            case 2:
            case 3:
                if (count > 1) {
                    out += static_cast<char>(257 - count);
                    put_bytes(out, std::min(count, left) * shape.pixel_size);
                    return count;
                }
                [[fallthrough]];
            default:
                out += static_cast<char>(count - 1);
                put_bytes(out, shape.pixel_size);
                return count;
        }
    }

    void put_bytes(std::string &out, uint32_t count)
    {
        for (uint32_t i = 0; i < count; ++i) {
            out += static_cast<char>(below(256));
        }
    }

    std::mt19937 random_;
};

std::string stream_of(Writer &writer, uint32_t pages)
{
    std::string stream;
    const bool swapped = writer.below(2) == 0;
    put_stream_word(stream, CUPS_RASTER_SYNCv2, swapped);
    for (uint32_t page = 0; page < pages; ++page) {
        Shape shape = writer.some_shape();
        // CUPS swaps the bytes of 16-bit numbers in whole rows only. Pages of such numbers that end too early differ,
        // and are none for one-bit printers.
        shape.swapped = swapped;
        shape.bits_per_color = swapped ? 8 : shape.bits_per_color;
        shape.spare_bits = swapped && shape.pixel_size == 2 ? 7 : shape.spare_bits;
        stream += header_of(shape);
        writer.put_rows(stream, shape);
    }
    return stream;
}

void expect_same(const std::string &stream, size_t piece_size = 0)
{
    for (const uint32_t rows_at_once : {0U, 1U, 3U}) {
        const std::vector<readings::Page> expected = read_by_cups(stream, rows_at_once);
        const std::vector<readings::Page> actual = read_by_filter(stream, rows_at_once, piece_size);
        SCOPED_TRACE(testing::Message() << "rows at once " << rows_at_once << ", stream of " << stream.size()
                                        << " bytes, pieces of " << piece_size);
        ASSERT_EQ(actual.size(), expected.size());
        for (size_t page = 0; page < expected.size(); ++page) {
            ASSERT_EQ(actual[page].header, expected[page].header) << "page " << page;
            ASSERT_EQ(actual[page].reported, expected[page].reported) << "page " << page;
            const auto [left, right] =
                std::mismatch(actual[page].rows.begin(), actual[page].rows.end(), expected[page].rows.begin());
            ASSERT_EQ(left, actual[page].rows.end()) << "page " << page << " of " << actual[page].rows.size()
                                                     << " bytes differs at " << left - actual[page].rows.begin();
        }
    }
}

TEST(Unpacking, WholeStreamsReadAsCupsReadsThem)
{
    size_t pages = 0;
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        Writer writer(seed);
        const std::string stream = stream_of(writer, 3);
        pages += read_by_cups(stream, 0).size();
        expect_same(stream);
    }
    EXPECT_GT(pages, 700U);
}

TEST(Unpacking, StreamsCutAnywhereReadAsCupsReadsThem)
{
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        Writer writer(seed);
        const std::string stream = stream_of(writer, 1);
        const size_t header_end = 4 + sizeof(cups_page_header2_t);
        for (size_t size = header_end; size < std::min(stream.size(), header_end + 400); ++size) {
            expect_same(stream.substr(0, size));
        }
        for (size_t size = stream.size() - std::min<size_t>(stream.size(), 200); size < stream.size(); ++size) {
            expect_same(stream.substr(0, size));
        }
    }
}

TEST(Unpacking, SinglePixelsAndRowsCutAnywhereReadAsCupsReadsThem)
{
    for (const uint32_t pixel_size : {1U, 2U, 3U, 30U}) {
        for (const char *codes : {"\x01", "\xFE", "\x80"}) {
            std::string stream;
            put_stream_word(stream, CUPS_RASTER_SYNCv2, false);
            stream += header_of({1, 2, pixel_size, 8, CUPS_CSPACE_K, false, 0});
            stream += std::string(1, '\0') + codes + std::string(2 * static_cast<size_t>(pixel_size), 'x');
            for (size_t size = stream.size() - 2 - 2 * static_cast<size_t>(pixel_size); size <= stream.size(); ++size) {
                expect_same(stream.substr(0, size));
            }
        }
    }
}

TEST(Unpacking, PiecesOfAnySizeMakeNoDifference)
{
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        Writer writer(seed);
        const std::string stream = stream_of(writer, 2);
        for (const size_t piece_size : {1U, 2U, 7U, 64U, 1000U}) {
            expect_same(stream, piece_size);
        }
    }
}

// Codes go over the end of what one read brings, and over the place where the input's buffer ends.
TEST(Unpacking, LongStreamsReadAsCupsReadsThem)
{
    for (unsigned seed = 0; seed < 4; ++seed) {
        Writer writer(seed);
        std::string stream;
        put_stream_word(stream, CUPS_RASTER_SYNCv2, false);
        const Shape shape = {3000, 200 + seed, seed < 2 ? 1 : largest_pixel - seed, 8, CUPS_CSPACE_K, false, 0};
        for (int page = 0; page < 2; ++page) {
            stream += header_of(shape);
            writer.put_rows(stream, shape, false);
        }
        ASSERT_GT(stream.size(), 3 * input_chunk);
        for (const size_t piece_size : {4096U, 65536U, 65535U}) {
            expect_same(stream, piece_size);
        }
    }
}

// Rows that are there are printed before the rest of the page arrives.
TEST(Unpacking, NeverWaitsForMoreThanTheRowsThatAreAskedFor)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    static raster_guard guard;
    guard = {};
    start_guard(guard, ends[0], readings::longest_row);
    std::string stream;
    put_stream_word(stream, CUPS_RASTER_SYNCv2, false);
    stream += header_of({4, 3, 1, 8, CUPS_CSPACE_K, false, 0});
    stream += std::string("\x01\x02\x41\x00\xFE\x42\x43", 7);  // two rows, and two bytes of the third
    ASSERT_EQ(write(ends[1], stream.data(), stream.size()), static_cast<ssize_t>(stream.size()));
    cups_raster_t *cups = cupsRasterOpenIO(read_guarded, &guard, CUPS_RASTER_READ);
    cups_page_header_t header;
    ASSERT_NE(read_guarded_header(guard, cups, &header), 0U);
    char rows[7] = "";
    unsigned char *const target = reinterpret_cast<unsigned char *>(rows);
    EXPECT_EQ(cupsRasterReadPixels(cups, target, 6), 6U);
    EXPECT_STREQ(rows, "AAAAAA");
    ASSERT_EQ(write(ends[1], "\x44\x00\x80", 3), 3);
    EXPECT_EQ(cupsRasterReadPixels(cups, target, 6), 6U);
    EXPECT_EQ(std::string(rows, 6), std::string("BCD\0\0\0", 6));
    cupsRasterClose(cups);
    end_guard(guard);
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
