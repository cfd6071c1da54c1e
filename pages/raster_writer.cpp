#include "pages/raster_writer.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace pages {
namespace {

constexpr double points_an_inch = 72;

void copy_text(char (&field)[64], const std::string &text)
{
    const std::size_t length = std::min(text.size(), sizeof field - 1);
    std::memcpy(field, text.data(), length);
}

cups_page_header2_t header_of(const RollPage &page)
{
    cups_page_header2_t header;
    std::memset(&header, 0, sizeof header);
    const double points_a_dot = points_an_inch / page.resolution;
    header.HWResolution[0] = page.resolution;
    header.HWResolution[1] = page.resolution;
    header.NumCopies = page.copies;
    header.cupsPageSize[0] = static_cast<float>(page.width * points_a_dot);
    header.cupsPageSize[1] = static_cast<float>(page.height * points_a_dot);
    header.PageSize[0] = static_cast<unsigned>(std::lround(page.width * points_a_dot));
    header.PageSize[1] = static_cast<unsigned>(std::lround(page.height * points_a_dot));
    header.ImagingBoundingBox[2] = header.PageSize[0];
    header.ImagingBoundingBox[3] = header.PageSize[1];
    header.cupsImagingBBox[2] = header.cupsPageSize[0];
    header.cupsImagingBBox[3] = header.cupsPageSize[1];
    header.cupsWidth = page.width;
    header.cupsHeight = page.height;
    header.cupsBitsPerColor = 1;
    header.cupsBitsPerPixel = 1;
    header.cupsBytesPerLine = (page.width + 7) / 8;
    header.cupsColorOrder = CUPS_ORDER_CHUNKED;
    header.cupsColorSpace = CUPS_CSPACE_K;
    header.cupsNumColors = 1;
    copy_text(header.cupsPageSizeName, page.media);
    return header;
}

}  // namespace

RasterWriter::RasterWriter(int descriptor)
    : descriptor_(descriptor), raster_(cupsRasterOpenIO(take, this, CUPS_RASTER_WRITE))
{
    works_ = works_ && raster_ != nullptr;
    buffer_.reserve(buffer_size);
}

RasterWriter::~RasterWriter()
{
    flush();
    cupsRasterClose(raster_);
}

// Called by CUPS with headers and rows.
ssize_t RasterWriter::take(void *writer, unsigned char *bytes, std::size_t count)
{
    return static_cast<RasterWriter *>(writer)->put_bytes(bytes, count) ? static_cast<ssize_t>(count) : -1;
}

bool RasterWriter::put_bytes(const std::uint8_t *bytes, std::size_t count)
{
    while (count > 0 && works_) {
        const std::size_t part = std::min(count, buffer_size - buffer_.size());
        buffer_.insert(buffer_.end(), bytes, bytes + part);
        bytes += part;
        count -= part;
        if (buffer_.size() == buffer_size) {
            flush();
        }
    }
    return works_;
}

bool RasterWriter::flush()
{
    std::size_t sent = 0;
    while (works_ && sent < buffer_.size()) {
        const ssize_t count = write(descriptor_, buffer_.data() + sent, buffer_.size() - sent);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            works_ = false;
        }
    }
    buffer_.clear();
    return works_;
}

bool RasterWriter::begin_page(const RollPage &page)
{
    cups_page_header2_t header = header_of(page);
    row_bytes_ = header.cupsBytesPerLine;
    rows_left_ = page.height;
    works_ = works_ && cupsRasterWriteHeader2(raster_, &header) != 0;
    return works_;
}

bool RasterWriter::put_rows(const std::uint8_t *bits, std::size_t rows)
{
    rows = std::min(rows, rows_left_);
    rows_left_ -= rows;
    // CUPS counts the bytes of one call in 32 bits; it does not write to them.
    constexpr std::size_t most_bytes = 1 << 30;
    const std::size_t most_rows = most_bytes / std::max<std::size_t>(row_bytes_, 1);
    while (rows > 0 && works_) {
        const std::size_t part = std::min(rows, most_rows);
        const auto count = static_cast<unsigned>(part * row_bytes_);
        works_ = cupsRasterWritePixels(raster_, const_cast<std::uint8_t *>(bits), count) == count;
        bits += count;
        rows -= part;
    }
    return works_;
}

bool RasterWriter::end_page()
{
    const std::vector<std::uint8_t> blank(row_bytes_);
    while (works_ && rows_left_ > 0) {
        put_rows(blank.data(), 1);
    }
    return flush();
}

}  // namespace pages
