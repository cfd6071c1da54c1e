// The rows of a page in a compressed raster stream. A row begins with the number of its repeats; then come a code and a
// pixel to repeat, or a code and literal pixels, until the row is full.
#pragma once

#include <stddef.h>
#include <stdint.h>

// CUPS prints no deeper pixels; so a code and what follows it take up at most this many bytes.
constexpr uint32_t largest_pixel = 30;
constexpr size_t longest_code = 1 + 128 * largest_pixel;

// Rows are unpacked in steps of this many bytes. So many bytes behind the codes must be readable.
constexpr size_t unpacking_step = 16;

struct compressed_page {
    uint32_t rows_left;   // behind the row in progress
    uint32_t row_size;    // bytes of an unpacked row
    uint32_t pixel_size;  // bytes of a pixel
    uint8_t blank;        // what fills the rest of a row that ends early
    bool in_row;          // a row's number of repeats has been read, not all of its repeats were taken
    bool repeated;        // the stream has the row more than once
    uint32_t repeats;     // of the row in progress, still to be taken
    uint32_t taken;       // bytes of the current repeat
    uint32_t unpacked;    // bytes of the row that are there
    uint8_t *row;
    size_t row_room;
};

// Get ready for a page's rows. The row's memory is kept from page to page; false when there is none.
bool expect_rows(compressed_page &page, uint32_t rows, uint32_t row_size, uint32_t pixel_size, uint8_t blank);

// Whether any row has not been taken yet.
inline bool rows_to_come(const compressed_page &page)
{
    return page.in_row || page.rows_left > 0;
}

// Go on with the row in progress, or begin the next one while there is one. Returns how many bytes were used up: codes
// that are not there in full are left, and so is all that follows the row.
size_t unpack_row(compressed_page &page, const uint8_t *codes, size_t size);

// Take bytes of the row in progress, once it is unpacked, and of its repeats. Returns how many there were.
size_t take_rows(compressed_page &page, uint8_t *out, size_t size);

// The stream ends within a row, whose last code is cut short. CUPS keeps the beginning of a page's very last row.
// Returns whether there is something to take.
bool end_rows(compressed_page &page, const uint8_t *codes, size_t size);

void free_rows(compressed_page &page);
