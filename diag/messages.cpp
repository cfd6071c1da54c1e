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

// Lines held back so that they reach the scheduler together.
char held[8192];
size_t held_length = 0;
bool holding = false;

void send_held()
{
    if (held_length > 0) {
        fwrite(held, 1, held_length, stderr);
        held_length = 0;
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

const char *level_word(int32_t level)
{
    switch (level) {
        case level_info:
            return "INFO";
        case level_debug:
        case level_dump:
            return "DEBUG";
        case level_fatal:
            return "ERROR";
        case level_output:
            return "OUTPUT";
        default:
            return nullptr;
    }
}

}  // namespace

void log_text(const char *text, size_t length)
{
    if (holding && length <= sizeof held - held_length) {
        memcpy(held + held_length, text, length);
        held_length += length;
        return;
    }
    send_held();
    fwrite(text, 1, length, stderr);
}

void log_line(const char *format, ...)
{
    va_list arguments;
    if (holding) {
        const size_t room = sizeof held - held_length;
        va_start(arguments, format);
        const int length = vsnprintf(held + held_length, room, format, arguments);
        va_end(arguments);
        if (length >= 0 && static_cast<size_t>(length) < room) {
            held_length += static_cast<size_t>(length);
            return;
        }
        send_held();
    }
    va_start(arguments, format);
    vfprintf(stderr, format, arguments);
    va_end(arguments);
}

void hold_messages()
{
    holding = true;
}

void release_messages()
{
    holding = false;
    trace_flush();
    send_held();
}

void msg(int32_t level, const char *text)
{
    const char *word = level_word(level);
    if (word != nullptr) {
        trace_text("%s: %s\n", word, text);
        if (!holding) {
            trace_flush();
        }
    }
    switch (level) {
        case level_info:
            info(text);
            break;
        case level_debug:
            debug(text);
            break;
        case level_dump:
            dump(text);
            break;
        case level_output:
            write_string(text);
            break;
        case level_fatal:
            klov_trace_exit();
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
    static char text[message_size];
    if (code == 0) {
        return 0;
    }
    format_message(text, "error(%i):%s", code, error_text(code));
    msg(level, text);
    return code;
}

int32_t msgerrno2(int32_t level, int32_t code, const char *prefix)
{
    static char text[message_size];
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
