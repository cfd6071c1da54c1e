// Texts from outside, made harmless.
#include "diag/foreign.h"

#include <string.h>

namespace {

constexpr size_t escape_length = 4;

bool is_control(uint8_t byte)
{
    return byte < 32 || byte == 127;
}

void put_escape(char *out, uint8_t byte)
{
    constexpr char digits[] = "0123456789abcdef";
    out[0] = '\\';
    out[1] = 'x';
    out[2] = digits[byte >> 4];
    out[3] = digits[byte & 0xF];
}

}  // namespace

foreign_text shown(const char *text, size_t most)
{
    foreign_text result;
    size_t length = 0;
    if (text == nullptr) {
        text = "(null)";
    }
    for (size_t at = 0; at < most && text[at] != '\0'; ++at) {
        const uint8_t byte = static_cast<uint8_t>(text[at]);
        const size_t needed = is_control(byte) ? escape_length : 1;
        if (needed > longest_shown - length) {
            memcpy(result.text + length, "...", sizeof "...");
            return result;
        }
        if (is_control(byte)) {
            put_escape(result.text + length, byte);
        } else {
            result.text[length] = text[at];
        }
        length += needed;
    }
    result.text[length] = '\0';
    return result;
}
