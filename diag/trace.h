// Writing to the trace from inside the program. All of it does nothing while no trace is open.
//
// Lines gather in memory, and a flush hands them to the system in one write. Flush before the process does anything
// that can wait, fail or be seen from outside: bytes leave, the stream is read, a message is logged. So the trace tells
// the truth whenever the process is looked at or killed, and a crash sends what is left.
#pragma once

#include <klov/trace.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

// What klov_trace_handle pointed to when the trace was closed.
extern FILE *closed_trace;

// Whether there is a trace to write to. A trace that was closed is none, though klov_trace_handle keeps its value.
inline bool trace_is_open()
{
    return klov_trace_handle != nullptr && klov_trace_handle != closed_trace;
}

// Lines that wait for their flush. The dump of a whole print band fits.
struct trace_lines {
    size_t length;
    char text[65536];
};
extern trace_lines waiting_lines;

// For trace_put(). A literal's length is known here, so that it is copied without a call.
void trace_append_long(const char *text, size_t length);
void trace_append(int32_t number);

inline void trace_append(const char *text)
{
    const size_t length = strlen(text);
    if (length > sizeof waiting_lines.text - waiting_lines.length) {
        trace_append_long(text, length);
        return;
    }
    __builtin_memcpy(waiting_lines.text + waiting_lines.length, text, length);
    waiting_lines.length += length;
}

// Append texts and numbers, which make a line together or with what comes before and behind them. Not by printf: three
// lines and their write take 0.45 us for 0.9 (block_lines and block_lines_by_printf in bench/micro.cpp), and 50 pages
// of text have 50,000 lines.
template <typename... Piece>
inline void trace_put(const Piece &...piece)
{
    if (trace_is_open()) {
        (trace_append(piece), ...);
    }
}

// Append "0x1b " for every byte: lower case, no leading zeros, a blank after each.
void trace_hex(const uint8_t *bytes, size_t size);

// Append the line that closes a printer operation: its name and result.
void trace_finished(const char *operation, int32_t status);

void trace_flush();

// From the handler of a signal that ends the process: one write of what waits, and nothing else.
void trace_rescue();
