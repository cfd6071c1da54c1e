// Scans over raster rows: one bit a dot, a set bit black. Eight bytes at a time, since every row of every page comes
// by.
#pragma once

#include <stdint.h>
#include <string.h>

inline uint64_t load_word(const uint8_t *from)
{
    uint64_t word;
    memcpy(&word, from, sizeof word);
    return word;
}

// Number of bytes before the row's first ink; width for a blank row.
inline uint32_t blank_bytes_at_left(const uint8_t *row, uint32_t width)
{
    uint32_t at = 0;
    while (width - at >= 8 && load_word(row + at) == 0) {
        at += 8;
    }
    while (at < width && row[at] == 0) {
        at += 1;
    }
    return at;
}

inline bool row_is_blank(const uint8_t *row, uint32_t width)
{
    return blank_bytes_at_left(row, width) == width;
}

// Index of the row's last ink byte + 1, or floor when there is no ink at or behind floor.
inline uint32_t inked_bytes(const uint8_t *row, uint32_t width, uint32_t floor)
{
    uint32_t end = width;
    while (end - floor >= 8 && load_word(row + end - 8) == 0) {
        end -= 8;
    }
    while (end > floor && row[end - 1] == 0) {
        end -= 1;
    }
    return end;
}
