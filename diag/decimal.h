// A signed number in decimal digits, without printf.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

constexpr size_t longest_decimal = 11;

// Put the number at out, which has room for longest_decimal characters. Returns the end; adds no terminator.
inline char *put_decimal(char *out, int32_t number)
{
    // Twice as long as needed, so that the copy has one size: it is then two moves, and no call.
    char digits[2 * longest_decimal] = {};
    char *const end = digits + longest_decimal;
    char *first = end;
    uint32_t rest = number < 0 ? 0U - static_cast<uint32_t>(number) : static_cast<uint32_t>(number);
    do {
        *--first = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest > 0);
    if (number < 0) {
        *--first = '-';
    }
    memcpy(out, first, longest_decimal);
    return out + (end - first);
}
