// The one way to the printer: every byte that the filter prints goes through here and is mirrored in the trace.
#pragma once

#include <stdint.h>

// Write size bytes to standard output. A failure shows in the stream's error state, which the entry looks at after
// every page.
void write_bytes(const uint8_t *buffer, int32_t size);

// Write a text without its terminator.
int32_t write_string(const char *text);

// Hand what was written to the backend. The trace is complete on disk before that.
void flush_output();
