// Bytes in words, as the trace shows them: "0x1b 0x40 ", lower case, no leading zeros, a blank after each. Every
// printer byte passes through here, so a word is copied from a table with one load and one store, which take eight
// bytes whatever the word's length is. (Copies are the compiler's own: memcpy() with the C library's checks is a call.)
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

constexpr size_t longest_hex_word = 5;

// What put_hex() may write behind the last word.
constexpr size_t hex_slack = 8 * longest_hex_word;

struct hex_word {
    char text[7];
    uint8_t length;
};
static_assert(sizeof(hex_word) == 8);

struct hex_table {
    hex_word words[256];
};

constexpr char hex_digits[] = "0123456789abcdef";

constexpr hex_table make_hex_table()
{
    hex_table table = {};
    for (unsigned value = 0; value < 256; ++value) {
        hex_word &word = table.words[value];
        word.text[word.length++] = '0';
        word.text[word.length++] = 'x';
        if (value >= 16) {
            word.text[word.length++] = hex_digits[value >> 4];
        }
        word.text[word.length++] = hex_digits[value & 0xF];
        word.text[word.length++] = ' ';
    }
    return table;
}

constexpr hex_table hex = make_hex_table();

inline char *put_hex_word(char *out, uint8_t byte)
{
    const hex_word &word = hex.words[byte];
    __builtin_memcpy(out, &word, sizeof word);
    return out + word.length;
}

inline char *put_hex_words(char *out, const uint8_t *bytes, size_t size)
{
    for (size_t at = 0; at < size; ++at) {
        out = put_hex_word(out, bytes[at]);
    }
    return out;
}

// Bytes whose words are put again as long as the same bytes come: white, black and patterned areas. A black band costs
// 0.6 us with its write for the 1.8 of noise (hex_dump in bench/micro.cpp), and 50 black pages have 7,150 of them.
constexpr size_t hex_step = 8;

inline bool is_same_step(const uint8_t *one, const uint8_t *other)
{
    return memcmp(one, other, hex_step) == 0;
}

// Put the words of size bytes to out, which has room for hex_slack bytes more. Returns the end.
inline char *put_hex(char *out, const uint8_t *bytes, size_t size)
{
    const uint8_t *const end = bytes + size;
    while (end - bytes >= static_cast<ptrdiff_t>(2 * hex_step)) {
        char *const words = out;
        out = put_hex_words(words, bytes, hex_step);
        bytes += hex_step;
        if (!is_same_step(bytes, bytes - hex_step)) {
            continue;
        }
        char again[hex_step * longest_hex_word];
        __builtin_memcpy(again, words, sizeof again);
        const ptrdiff_t length = out - words;
        do {
            __builtin_memcpy(out, again, sizeof again);
            out += length;
            bytes += hex_step;
        } while (end - bytes >= static_cast<ptrdiff_t>(hex_step) && is_same_step(bytes, bytes - hex_step));
    }
    return put_hex_words(out, bytes, static_cast<size_t>(end - bytes));
}
