// The one way to the printer: every byte that the filter prints goes through here and is mirrored in the trace.
#pragma once

#include <stdint.h>

// Whether bytes could not be written to standard output. The entry asks after every page; what the functions below
// return does not tell.
bool output_failed();

// Write size bytes to standard output. They leave with the next flush at the latest.
void write_bytes(const uint8_t *buffer, int32_t size);

// Write a text without its terminator.
int32_t write_string(const char *text);

// Hand what was written to the backend. The trace is complete on disk before that.
void flush_output();

// The same without a look at the trace, for the end of a process whose trace is closed.
void send_output();
