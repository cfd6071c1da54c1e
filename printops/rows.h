// Scans over raster rows: one bit a dot, a set bit black. Eight bytes at a time, since every row of every page comes
// by.
#pragma once

#include <endian.h>
#include <stdint.h>
#include <string.h>

inline uint64_t load_word(const uint8_t *from)
{
    uint64_t word;
    memcpy(&word, from, sizeof word);
    return word;
}

// The same with the first byte lowest on every processor.
inline uint64_t load_ordered(const uint8_t *from)
{
    return le64toh(load_word(from));
}

// Of an ordered word that is not 0.
inline size_t blank_bytes_before_ink(uint64_t word)
{
    return static_cast<size_t>(__builtin_ctzll(word)) / 8;
}

inline uint32_t blank_bytes_behind_ink(uint64_t word)
{
    return static_cast<uint32_t>(__builtin_clzll(word)) / 8;
}

// Rows are looked through in blocks of this many bytes first: a page of text takes a quarter less instructions.
constexpr uint32_t block_size = 64;

// Whether the block from there on is blank. All of its words are loaded, which is faster than to stop at ink.
inline bool is_blank_block(const uint8_t *from)
{
    uint64_t ink = 0;
    for (uint32_t at = 0; at < block_size; at += 8) {
        ink |= load_word(from + at);
    }
    return ink == 0;
}

// Number of bytes before the first ink of a row, or of rows side by side; width when there is none.
inline size_t blank_bytes_at_left(const uint8_t *row, size_t width)
{
    size_t at = 0;
    const size_t end_of_blocks = width - width % block_size;
    while (at < end_of_blocks && is_blank_block(row + at)) {
        at += block_size;
    }
    for (; width - at >= 8; at += 8) {
        const uint64_t word = load_ordered(row + at);
        if (word != 0) {
            return at + blank_bytes_before_ink(word);
        }
    }
    while (at < width && row[at] == 0) {
        at += 1;
    }
    return at;
}

// Number of bytes up to the rightmost ink of rows side by side; 0 when there is none. The rows are laid over each
// other, word by word from the right, so that most of each row is never looked at: a seventh less for a page of text.
inline uint32_t inked_bytes(const uint8_t *rows, uint32_t width, uint32_t count)
{
    const size_t size = static_cast<size_t>(width) * count;
    uint32_t end = width;
    for (; end >= 8; end -= 8) {
        uint64_t ink = 0;
        for (size_t at = end - 8; at < size; at += width) {
            ink |= load_ordered(rows + at);
        }
        if (ink != 0) {
            return end - blank_bytes_behind_ink(ink);
        }
    }
    for (; end > 0; --end) {
        uint8_t ink = 0;
        for (size_t at = end - 1; at < size; at += width) {
            ink |= rows[at];
        }
        if (ink != 0) {
            break;
        }
    }
    return end;
}
