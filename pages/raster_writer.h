// Pages of the roll as CUPS raster: version 3, 1 bit a dot, black set, the leftmost dot in the highest bit.
#ifndef KLOV_PAGES_RASTER_WRITER_H
#define KLOV_PAGES_RASTER_WRITER_H

#include <cups/raster.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pages {

struct RollPage {
    unsigned width = 0;         // dots: the print head's width
    unsigned height = 0;        // rows
    unsigned resolution = 203;  // dots per inch
    unsigned copies = 1;        // of this page, made by the printer's filter
    std::string media;          // keyword of the page size
};

class RasterWriter {
public:
    // The most that is written in one go; rows wait until there is as much, or until the page ends.
    static constexpr std::size_t buffer_size = 65'536;

    explicit RasterWriter(int descriptor);
    ~RasterWriter();
    RasterWriter(const RasterWriter &) = delete;
    RasterWriter &operator=(const RasterWriter &) = delete;

    // Each tells whether the output still takes everything; after a failure nothing more is written. Rows beyond the
    // page's height are left out, and rows that are missing when it ends are blank.
    bool begin_page(const RollPage &page);
    bool put_rows(const std::uint8_t *bits, std::size_t rows);
    bool end_page();

    std::size_t row_bytes() const
    {
        return row_bytes_;
    }
    // Sends what waits, so that the printer can begin.
    bool flush();

private:
    static ssize_t take(void *writer, unsigned char *bytes, std::size_t count);
    bool put_bytes(const std::uint8_t *bytes, std::size_t count);

    int descriptor_;
    std::vector<std::uint8_t> buffer_;
    std::size_t row_bytes_ = 0;
    std::size_t rows_left_ = 0;
    bool works_ = true;
    cups_raster_t *raster_;  // the last: opening it writes the first bytes into the buffer
};

}  // namespace pages

#endif
