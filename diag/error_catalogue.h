// The message catalogue: what a result code means, in words.
#pragma once

#include <stdint.h>

// The language selector's value for Chinese; every other value is English.
constexpr int32_t language_chinese = 4;

// The text of exactly this code; a code that the catalogue does not list has the text of an unknown error.
const char *error_text(int32_t code, int32_t language);
