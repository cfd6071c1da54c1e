// Writing to the trace from inside the program. All of it does nothing while no trace is open.
//
// What is written is gathered in a buffer in front of the stream; a flush, the next opening or the closing hands it to
// the system in one write. A line is to be flushed before the step that it announces, so that the trace still tells the
// truth when the process dies: a process that ends without klov_trace_exit() loses what was gathered.
#pragma once

#include <klov/trace.h>
#include <stddef.h>
#include <stdint.h>

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

void trace_flush();

// The line that closes a printer operation: its name and result. Flushed.
void trace_finished(const char *operation, int32_t status);

// Append a text or a number to an open trace.
void trace_piece(const char *text, size_t length);
void trace_piece(int32_t number);

template <size_t size>
inline void trace_piece(const char (&text)[size])
{
    trace_piece(text, size - 1);
}

// Append literal texts and numbers without a flush: the same as trace_text() at a fraction of its cost, for the lines
// that every band writes.
template <typename... Piece>
inline void trace_put(const Piece &...piece)
{
    if (trace_is_open()) {
        (trace_piece(piece), ...);
    }
}
