// Writing to the trace from inside the program. All of it does nothing while no trace is open.
//
// What is written is gathered in a buffer in front of the stream; a flush, the next opening or the closing hands it to
// the system in one write. A line is to be flushed before the process does anything that can wait, fail or be seen from
// outside: bytes leave, the stream is read, a message is logged. So the trace still tells the truth when the process
// dies, however it dies; no more is lost than lines about steps within memory.
#pragma once

#include "diag/decimal.h"

#include <klov/trace.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

// What klov_trace_handle pointed to when the trace was closed. The FILE object is kept until the next trace is opened:
// were its memory given back, the next stream that anybody opens would sit at the same address and look closed.
extern FILE *closed_trace;

// Whether there is a trace to write to. A trace that klov_trace_exit() has closed is none, though the handle stays.
inline bool trace_is_open()
{
    return klov_trace_handle != nullptr && klov_trace_handle != closed_trace;
}

// Append a piece of a line, printf style, without a flush.
__attribute__((format(printf, 1, 2))) void trace_text(const char *format, ...);

// Append the end of a line, or a whole line with its own line end, and flush.
__attribute__((format(printf, 1, 2))) void trace_line(const char *format, ...);

// Append "0x1b " for every byte: lower case, no leading zeros, a blank after each. No flush.
void trace_hex(const uint8_t *bytes, uint32_t size);

// Hand an open trace's gathered lines to the system.
void send_trace();

inline void trace_flush()
{
    if (trace_is_open()) {
        send_trace();
    }
}

void put_finished(const char *operation, int32_t status);

// The line that closes a printer operation: its name and result. No flush: it goes with the next line, or before the
// next read.
inline void trace_finished(const char *operation, int32_t status)
{
    if (trace_is_open()) {
        put_finished(operation, status);
    }
}

// Append a text that may be long to an open trace.
void trace_piece(const char *text, size_t length);

// Room for so many more bytes behind the gathered ones, at most 4096; trace_grow() tells where what was put there ends.
char *trace_room(size_t size);
void trace_grow(const char *end);

// The most that a piece takes up, its terminator included.
template <size_t size>
constexpr size_t longest_piece(const char (&/*text*/)[size])
{
    return size;
}

constexpr size_t longest_piece(int32_t /*number*/)
{
    return longest_decimal;
}

template <size_t size>
inline char *put_piece(char *out, const char (&text)[size])
{
    memcpy(out, text, size);
    return out + size - 1;
}

inline char *put_piece(char *out, int32_t number)
{
    return put_decimal(out, number);
}

// Append literal texts and numbers without a flush: the same as trace_text() at a fraction of its cost, for the lines
// that every band writes.
template <typename... Piece>
inline void trace_put(const Piece &...piece)
{
    if (trace_is_open()) {
        char *out = trace_room((longest_piece(piece) + ...));
        ((out = put_piece(out, piece)), ...);
        trace_grow(out);
    }
}
