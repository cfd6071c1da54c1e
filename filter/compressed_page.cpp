// The walk over a page's row codes. A row begins with the number of its repeats; then come a code and a pixel to
// repeat, or a code and literal pixels, until the row is full.
#include "filter/compressed_page.h"

namespace {

constexpr uint8_t rest_is_blank = 128;

uint32_t smaller(uint32_t a, uint32_t b)
{
    return a < b ? a : b;
}

void begin_row(compressed_page &page, uint8_t repeats)
{
    page.rows_left -= smaller(page.rows_left, repeats + 1U);
    page.row_bytes_left = page.row_size;
}

void apply_code(compressed_page &page, uint8_t code)
{
    if (code == rest_is_blank) {
        page.row_bytes_left = 0;
        return;
    }
    const bool literal = code > rest_is_blank;
    const uint32_t pixels = literal ? 257U - code : code + 1U;
    const uint32_t unpacked = smaller(pixels * page.pixel_size, page.row_bytes_left);
    page.pass = literal ? unpacked : smaller(page.pixel_size, unpacked);
    page.row_bytes_left -= unpacked;
}

}  // namespace

size_t walk_page(compressed_page &page, const uint8_t *bytes, size_t size)
{
    size_t at = 0;
    while (at < size) {
        if (page.pass > 0) {
            const size_t left = size - at;
            const uint32_t passed = page.pass < left ? page.pass : static_cast<uint32_t>(left);
            page.pass -= passed;
            at += passed;
        } else if (page.row_bytes_left > 0) {
            apply_code(page, bytes[at++]);
        } else if (page.rows_left > 0) {
            begin_row(page, bytes[at++]);
        } else {
            break;
        }
    }
    return at;
}
