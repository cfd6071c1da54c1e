// What the printers were built against, written down as plainly as it can be: every fast path is held to these.
#pragma once

#include "printops/device.h"

#include <stdint.h>

#include <string>
#include <string_view>

namespace reference {

// The run-length code of one row, a state machine that looks at one byte after the other.
std::string compress_row(std::string_view row);

// All rows of a block, each by itself.
std::string compress(std::string_view rows, size_t width);

// What a decoder makes of the code.
std::string decode(std::string_view code);

// The bytes of a band of rows.
std::string band(const dev_options &options, size_t buffer_size, std::string_view rows, size_t width);

}  // namespace reference
