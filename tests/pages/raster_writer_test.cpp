// What CUPS reads of the pages that are written.
#include "pages/raster_writer.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

namespace {

using pages::RasterWriter;
using pages::RollPage;

class MemoryFile {
public:
    MemoryFile() : descriptor_(memfd_create("raster", 0)) {}
    ~MemoryFile()
    {
        close(descriptor_);
    }
    int descriptor() const
    {
        return descriptor_;
    }
    void rewind() const
    {
        lseek(descriptor_, 0, SEEK_SET);
    }
    std::size_t size() const
    {
        return static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END));
    }

private:
    int descriptor_;
};

std::vector<std::uint8_t> some_rows(std::size_t count)
{
    std::vector<std::uint8_t> rows(count);
    for (std::size_t i = 0; i < count; ++i) {
        rows[i] = static_cast<std::uint8_t>(i * 37 + i / 256);
    }
    return rows;
}

TEST(RasterWriter, CupsReadsThePageThatWasWritten)
{
    const MemoryFile file;
    const auto rows = some_rows(72 * 2000);
    {
        RasterWriter writer(file.descriptor());
        ASSERT_TRUE(writer.begin_page({576, 2000, 203, 3, "72x210"}));
        EXPECT_EQ(writer.row_bytes(), 72U);
        ASSERT_TRUE(writer.put_rows(rows.data(), 1));
        ASSERT_TRUE(writer.put_rows(rows.data() + 72, 1999));
        ASSERT_TRUE(writer.end_page());
    }
    file.rewind();
    cups_raster_t *raster = cupsRasterOpen(file.descriptor(), CUPS_RASTER_READ);
    cups_page_header2_t header;
    ASSERT_EQ(cupsRasterReadHeader2(raster, &header), 1U);
    EXPECT_EQ(header.cupsWidth, 576U);
    EXPECT_EQ(header.cupsHeight, 2000U);
    EXPECT_EQ(header.cupsBytesPerLine, 72U);
    EXPECT_EQ(header.cupsBitsPerColor, 1U);
    EXPECT_EQ(header.cupsBitsPerPixel, 1U);
    EXPECT_EQ(header.cupsColorSpace, CUPS_CSPACE_K);
    EXPECT_EQ(header.cupsNumColors, 1U);
    EXPECT_EQ(header.HWResolution[0], 203U);
    EXPECT_EQ(header.HWResolution[1], 203U);
    EXPECT_EQ(header.NumCopies, 3U);
    EXPECT_EQ(header.PageSize[0], 204U);
    EXPECT_EQ(header.PageSize[1], 709U);
    EXPECT_STREQ(header.cupsPageSizeName, "72x210");
    std::vector<std::uint8_t> read(rows.size());
    EXPECT_EQ(cupsRasterReadPixels(raster, read.data(), static_cast<unsigned>(read.size())), read.size());
    EXPECT_EQ(read, rows);
    EXPECT_EQ(cupsRasterReadHeader2(raster, &header), 0U);
    cupsRasterClose(raster);
}

TEST(RasterWriter, TheStreamIsVersionThreeUncompressed)
{
    const MemoryFile file;
    {
        RasterWriter writer(file.descriptor());
        const auto rows = some_rows(3 * 10);
        writer.begin_page({20, 10, 203, 1, ""});
        writer.put_rows(rows.data(), 10);
        writer.end_page();
    }
    EXPECT_EQ(file.size(), 4 + sizeof(cups_page_header2_t) + 3 * 10);
    file.rewind();
    unsigned word = 0;
    ASSERT_EQ(read(file.descriptor(), &word, 4), 4);
    EXPECT_EQ(word, CUPS_RASTER_SYNC);
}

TEST(RasterWriter, MissingRowsAreBlankAndRowsTooManyAreLeftOut)
{
    const MemoryFile file;
    const std::vector<std::uint8_t> black(8 * 30, 0xFF);
    {
        RasterWriter writer(file.descriptor());
        writer.begin_page({64, 20, 203, 1, ""});
        EXPECT_TRUE(writer.put_rows(black.data(), 5));
        EXPECT_TRUE(writer.end_page());
        writer.begin_page({64, 20, 203, 1, ""});
        EXPECT_TRUE(writer.put_rows(black.data(), 30));
        EXPECT_TRUE(writer.put_rows(black.data(), 1));
        EXPECT_TRUE(writer.end_page());
    }
    file.rewind();
    cups_raster_t *raster = cupsRasterOpen(file.descriptor(), CUPS_RASTER_READ);
    for (const std::size_t filled : {5U, 20U}) {
        cups_page_header2_t header;
        ASSERT_EQ(cupsRasterReadHeader2(raster, &header), 1U);
        std::vector<std::uint8_t> rows(8 * 20);
        ASSERT_EQ(cupsRasterReadPixels(raster, rows.data(), 8 * 20), 8U * 20);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            ASSERT_EQ(rows[i], i < 8 * filled ? 0xFF : 0x00);
        }
    }
    cupsRasterClose(raster);
}

TEST(RasterWriter, ALongNameOfTheSizeIsCut)
{
    const MemoryFile file;
    {
        RasterWriter writer(file.descriptor());
        writer.begin_page({64, 1, 203, 1, std::string(500, 'x')});
        writer.end_page();
    }
    file.rewind();
    cups_raster_t *raster = cupsRasterOpen(file.descriptor(), CUPS_RASTER_READ);
    cups_page_header2_t header;
    ASSERT_EQ(cupsRasterReadHeader2(raster, &header), 1U);
    EXPECT_EQ(std::strlen(header.cupsPageSizeName), 63U);
    cupsRasterClose(raster);
}

TEST(RasterWriter, AReaderThatIsGoneShowsAsAFailure)
{
    std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    RasterWriter writer(ends[1]);
    const auto rows = some_rows(72 * 4000);
    writer.begin_page({576, 4000, 203, 1, ""});
    EXPECT_FALSE(writer.put_rows(rows.data(), 4000));
    EXPECT_FALSE(writer.end_page());
    EXPECT_FALSE(writer.begin_page({576, 1, 203, 1, ""}));
    close(ends[1]);
}

// The printer can begin before the page is complete.
TEST(RasterWriter, RowsLeaveBeforeThePageEnds)
{
    const MemoryFile file;
    RasterWriter writer(file.descriptor());
    const auto rows = some_rows(72 * 2000);
    writer.begin_page({576, 100'000, 203, 1, ""});
    writer.put_rows(rows.data(), 2000);
    EXPECT_GE(file.size(), 65536U);
    writer.flush();
    EXPECT_EQ(file.size(), 4 + sizeof(cups_page_header2_t) + rows.size());
}

}  // namespace
