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

// Whether the 32 bytes from there on are blank.
inline bool are_blank_32(const uint8_t *from)
{
    return (load_word(from) | load_word(from + 8) | load_word(from + 16) | load_word(from + 24)) == 0;
}

// Number of bytes before the first ink of a row, or of rows side by side; width when there is none.
inline size_t blank_bytes_at_left(const uint8_t *row, size_t width)
{
    size_t at = 0;
    while (width - at >= 32 && are_blank_32(row + at)) {
        at += 32;
    }
    while (width - at >= 8 && load_word(row + at) == 0) {
        at += 8;
    }
    while (at < width && row[at] == 0) {
        at += 1;
    }
    return at;
}

// Whether there is no ink at all; where it begins is not asked.
inline bool row_is_blank(const uint8_t *row, uint32_t width)
{
    uint32_t at = 0;
    for (; width - at >= 32; at += 32) {
        if (!are_blank_32(row + at)) {
            return false;
        }
    }
    for (; width - at >= 8; at += 8) {
        if (load_word(row + at) != 0) {
            return false;
        }
    }
    uint8_t rest = 0;
    for (; at < width; ++at) {
        rest |= row[at];
    }
    return rest == 0;
}

// Index of the row's last ink byte + 1, or floor when there is no ink at or behind floor.
inline uint32_t inked_bytes(const uint8_t *row, uint32_t width, uint32_t floor)
{
    uint32_t end = width;
    while (end - floor >= 32 && are_blank_32(row + end - 32)) {
        end -= 32;
    }
    while (end - floor >= 8 && load_word(row + end - 8) == 0) {
        end -= 8;
    }
    while (end > floor && row[end - 1] == 0) {
        end -= 1;
    }
    return end;
}
