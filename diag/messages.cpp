// The scheduler's log: the dispatcher, its writers, and the one fatal way out.
#include "diag/messages.h"

#include "diag/trace.h"
#include "printops/output.h"

#include <cups/cups.h>
#include <klov/error.h>
#include <klov/trace.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

char info_buf[info_buf_size];

namespace {

// The scheduler splits lines of more than 2,047 bytes, and would take what follows for a line of its own.
constexpr size_t longest_line = 1999;

// Lines on their way. Every write wakes the scheduler, so those that belong together share one.
char waiting[8192];
size_t waiting_length = 0;
bool holding = false;

// What is logged is in the trace before.
void send_lines()
{
    trace_flush();
    if (waiting_length > 0) {
        fwrite(waiting, 1, waiting_length, stderr);
        waiting_length = 0;
    }
}

const char *cups_error_text()
{
    return ippErrorString(cupsLastError());
}

// A code in English, in the shared buffer.
const char *error_text(int32_t code)
{
    klov_format_error_ansi(code, 0, info_buf, 0, info_buf_size);
    return info_buf;
}

constexpr size_t message_size = 255;

// Texts that are too long are cut.
__attribute__((format(printf, 2, 3))) void format_message(char (&text)[message_size], const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
}

}  // namespace

void log_text(const char *text, size_t length)
{
    if (length > sizeof waiting - waiting_length) {
        send_lines();
    }
    const size_t fitting = length < sizeof waiting ? length : sizeof waiting;
    memcpy(waiting + waiting_length, text, fitting);
    waiting_length += fitting;
    if (!holding) {
        send_lines();
    }
}

void log_line(const char *format, ...)
{
    char line[longest_line + 1];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return;
    }
    if (length > static_cast<int>(longest_line)) {
        constexpr char cut[] = "...\n";
        memcpy(line + sizeof line - sizeof cut, cut, sizeof cut);
    }
    log_text(line, strlen(line));
}

void hold_messages()
{
    holding = true;
}

void release_messages()
{
    holding = false;
    send_lines();
}

void msg(int32_t level, const char *text)
{
    switch (level) {
        case level_info:
            trace_put("INFO: ", text, "\n");
            info(text);
            break;
        case level_debug:
            trace_put("DEBUG: ", text, "\n");
            debug(text);
            break;
        case level_dump:
            trace_put("DEBUG: ", text, "\n");
            dump(text);
            break;
        case level_output:
            trace_put("OUTPUT: ", text, "\n");
            write_string(text);
            break;
        case level_fatal:
            trace_put("ERROR: ", text, "\n");
            error(text);
        default:
            break;
    }
    if (text == info_buf) {
        memset(info_buf, 0, sizeof info_buf);
    }
}

int32_t msgerrno(int32_t level, int32_t code)
{
    char text[message_size];
    if (code == 0) {
        return 0;
    }
    format_message(text, "error(%i):%s", code, error_text(code));
    msg(level, text);
    return code;
}

int32_t msgerrno2(int32_t level, int32_t code, const char *prefix)
{
    char text[message_size];
    if (code == 0) {
        return 0;
    }
    format_message(text, "%s error(%i):%s.\n", prefix, code, error_text(code));
    msg(level, text);
    return code;
}

void info(const char *text)
{
    log_line("INFO: %s \n", text);
}

void dump(const char *text)
{
    log_line("DEBUG: %s \n", text);
}

void debug(const char *text)
{
    log_line("DEBUG: %s (cups:%s)\n", text, cups_error_text());
}

void error(const char *text)
{
    klov_trace_exit();
    log_line("ERROR:Raster(%s, cups:%s)\n", text, cups_error_text());
    release_messages();
    send_output();
    exit(1);
}

int32_t dump_args(int32_t count, char **vector)
{
    (void)vector;
    return count;
}

void page_message(int32_t number, uint32_t copies)
{
    log_line("PAGE: %d %d\n", number, static_cast<int32_t>(copies));
}
