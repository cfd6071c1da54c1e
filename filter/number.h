// Numbers as the options give them, safe for any text and any result.
#pragma once

#include <stdint.h>
#include <stdlib.h>

// The meaning of atoi(): leading blanks, a sign, decimal digits, 0 without any; beyond 32 bits the nearest end counts.
inline int32_t parse_number(const char *text)
{
    const long long value = strtoll(text, nullptr, 10);
    if (value > INT32_MAX) {
        return INT32_MAX;
    }
    return value < INT32_MIN ? INT32_MIN : static_cast<int32_t>(value);
}

// Truncate toward zero. What does not fit 32 bits, infinities and NaN included, counts as INT32_MIN.
inline int32_t whole_number(double value)
{
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<int32_t>(value) : INT32_MIN;
}
