// Class bits that say how a printer without the ESC/POS-type command set is asked for its firmware version. The request
// and the parser of its reply choose by the same bits.
#pragma once

#include <stdint.h>

constexpr uint32_t class_version_text = 0x2;     // the text ZZZGETVERSION
constexpr uint32_t class_version_command = 0x4;  // ESC # *
