// Cuts what a printer says into answers, byte by byte.
//
// Three kinds of answer come on one line without any frame. Their fixed bits tell them apart: a real-time status is one
// byte, an automatic status four, an ordered status one byte that looks like the last three of an automatic status.
// Line noise must not pass for the ordered answer, because it says that the paper is out of the printer: behind bytes
// that fit nowhere an ordered answer is marked as doubtful.
#pragma once

#include <stdint.h>

namespace talk {

// What every parser and encoder of the library asks for: a printer with the ESC/POS-type command set.
constexpr uint32_t any_printer = 0x1;

enum class reply_kind : uint8_t { nothing, real_time, automatic, ordered };

struct reply {
    reply_kind kind;
    bool doubtful;     // an ordered answer that may be the rest of a damaged automatic status
    uint8_t bytes[4];  // one byte, or the four of an automatic status
};

struct reply_reader {
    uint8_t automatic[4] = {};
    uint8_t held = 0;             // bytes of an automatic status that have come so far
    uint8_t doubtful = 0;         // so many ordered answers are in doubt
    uint8_t clear_answer = 0;     // bytes of the answer to a buffer clear that have come so far
    bool expects_clear = false;   // a buffer clear was sent and its answer has not come
    bool lost_something = false;  // an answer may have been lost among noise; the caller resets it
    int64_t last_ms = 0;
};

reply read_reply_byte(reply_reader &reader, uint8_t byte, int64_t now_ms);

}  // namespace talk
