// Messages to the CUPS scheduler: lines on standard error with a level prefix, copied to the trace. Texts that are not
// our own go through shown() first.
#pragma once

#include <cups/raster.h>
#include <stdint.h>

constexpr int32_t level_info = 0;
constexpr int32_t level_debug = 1;    // with the text of the last CUPS error
constexpr int32_t level_fatal = 2;    // ends the process
constexpr int32_t level_output = 32;  // text to the printer
constexpr int32_t level_dump = 64;

// Shared buffer in which callers may format a message; msg() clears it after use.
constexpr int32_t info_buf_size = 1024;
extern char info_buf[info_buf_size];

// Send text at one of the levels above; any other level writes nothing.
void msg(int32_t level, const char *text);

// Send "error(code):text" with the catalogue's English text. Code 0 sends nothing. Returns the code.
int32_t msgerrno(int32_t level, int32_t code);

// The same behind a text of the caller's.
int32_t msgerrno2(int32_t level, int32_t code, const char *prefix);

void info(const char *text);
void dump(const char *text);
void debug(const char *text);

// Close the trace, report the text and the last CUPS error, end the process with status 1.
[[noreturn]] void error(const char *text);

// The hook at which a job would list its arguments. Returns count.
int32_t dump_args(int32_t count, char **vector);

// The scheduler's page accounting: "PAGE: number copies".
void page_message(int32_t number, uint32_t copies);

// List a page header, 40 lines.
void dump_header(cups_page_header_t header);

// Every write to standard error wakes the scheduler. Messages between these two calls are sent with one write.
void hold_messages();
void release_messages();

// Append whole lines to the scheduler's log as they are, at most 8,192 bytes.
void log_text(const char *text, size_t length);

// Append one formatted line to the scheduler's log. A line that the scheduler would split is cut.
__attribute__((format(printf, 1, 2))) void log_line(const char *format, ...);
