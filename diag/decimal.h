// A signed number in decimal digits, without printf.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

constexpr size_t longest_decimal = 11;

// Put the number at out, which has room for longest_decimal characters. Returns the end; adds no terminator.
inline char *put_decimal(char *out, int32_t number)
{
    char digits[longest_decimal];
    char *const end = digits + sizeof digits;
    char *first = end;
    uint32_t rest = number < 0 ? 0U - static_cast<uint32_t>(number) : static_cast<uint32_t>(number);
    do {
        *--first = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest > 0);
    if (number < 0) {
        *--first = '-';
    }
    const size_t length = static_cast<size_t>(end - first);
    memcpy(out, first, length);
    return out + length;
}
