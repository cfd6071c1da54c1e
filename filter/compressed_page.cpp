// Unpacking a page's rows. They are short runs for the most part, so bytes are put down in steps of a fixed size; what
// a step puts behind the run is overwritten by what follows.
#include "filter/compressed_page.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr uint8_t rest_is_blank = 128;

uint32_t smaller(uint32_t a, uint32_t b)
{
    return a < b ? a : b;
}

void copy_in_steps(uint8_t *out, const uint8_t *from, size_t size)
{
    for (size_t at = 0; at < size; at += unpacking_step) {
        memcpy(out + at, from + at, unpacking_step);
    }
}

void fill_in_steps(uint8_t *out, uint8_t value, size_t size)
{
    for (size_t at = 0; at < size; at += unpacking_step) {
        memset(out + at, value, unpacking_step);
    }
}

void repeat_pixel(uint8_t *out, const uint8_t *pixel, uint32_t pixel_size, uint32_t size)
{
    if (pixel_size == 1) {
        fill_in_steps(out, *pixel, size);
        return;
    }
    for (uint32_t at = 0; at < size; at += pixel_size) {
        memcpy(out + at, pixel, smaller(pixel_size, size - at));
    }
}

void begin_row(compressed_page &page, uint8_t repeats)
{
    page.in_row = true;
    page.repeated = repeats > 0;
    page.repeats = smaller(page.rows_left, repeats + 1U);
    page.rows_left -= page.repeats;
    page.taken = 0;
    page.unpacked = 0;
}

struct code_sizes {
    uint32_t unpacked;  // bytes that the code fills
    uint32_t packed;    // bytes that follow it
    bool literal;
};

code_sizes sizes_of(uint8_t code, uint32_t pixel_size, uint32_t row_left)
{
    const bool literal = code > rest_is_blank;
    const uint32_t pixels = literal ? 257U - code : code + 1U;
    const uint32_t unpacked = smaller(pixels * pixel_size, row_left);
    return {unpacked, literal ? unpacked : smaller(pixel_size, unpacked), literal};
}

}  // namespace

bool expect_rows(compressed_page &page, uint32_t rows, uint32_t row_size, uint32_t pixel_size, uint8_t blank)
{
    page.rows_left = rows;
    page.row_size = row_size;
    page.pixel_size = smaller(pixel_size, largest_pixel);
    page.blank = blank;
    page.in_row = false;
    const size_t room = static_cast<size_t>(row_size) + unpacking_step;
    if (room > page.row_room) {
        free(page.row);
        page.row = static_cast<uint8_t *>(calloc(1, room));
        page.row_room = page.row != nullptr ? room : 0;
    }
    return page.row != nullptr;
}

size_t unpack_row(compressed_page &page, const uint8_t *codes, size_t size)
{
    size_t at = 0;
    if (!page.in_row) {
        if (size == 0 || page.rows_left == 0) {
            return 0;
        }
        begin_row(page, codes[at++]);
    }
    uint32_t done = page.unpacked;
    while (done < page.row_size && at < size) {
        const uint8_t code = codes[at];
        uint8_t *const out = page.row + done;
        if (code == rest_is_blank) {
            memset(out, page.blank, page.row_size - done);
            done = page.row_size;
            at += 1;
            break;
        }
        const code_sizes sizes = sizes_of(code, page.pixel_size, page.row_size - done);
        if (size - at <= sizes.packed) {
            break;
        }
        const uint8_t *const pixels = codes + at + 1;
        if (sizes.literal) {
            copy_in_steps(out, pixels, sizes.unpacked);
        } else {
            repeat_pixel(out, pixels, page.pixel_size, sizes.unpacked);
        }
        done += sizes.unpacked;
        at += 1 + sizes.packed;
    }
    page.unpacked = done;
    return at;
}

size_t take_rows(compressed_page &page, uint8_t *out, size_t size)
{
    size_t done = 0;
    while (page.in_row && page.unpacked == page.row_size && done < size) {
        const uint32_t row_left = page.row_size - page.taken;
        const uint32_t count = size - done < row_left ? static_cast<uint32_t>(size - done) : row_left;
        memcpy(out + done, page.row + page.taken, count);
        done += count;
        page.taken += count;
        if (page.taken == page.row_size) {
            page.taken = 0;
            page.repeats -= 1;
            page.in_row = page.repeats > 0;
        }
    }
    return done;
}

bool end_rows(compressed_page &page, const uint8_t *codes, size_t size)
{
    const bool last = page.in_row && page.rows_left == 0 && !page.repeated;
    if (last && size > 0) {
        const uint32_t rest = smaller(static_cast<uint32_t>(size - 1), page.row_size - page.unpacked);
        memcpy(page.row + page.unpacked, codes + 1, rest);
        page.unpacked += rest;
    }
    page.rows_left = 0;
    page.in_row = last && page.unpacked > 0;
    page.row_size = page.unpacked;
    return page.in_row;
}

void free_rows(compressed_page &page)
{
    free(page.row);
    page.row = nullptr;
    page.row_room = 0;
}
