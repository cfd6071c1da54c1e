// The trace channel: opening, closing, lines and byte dumps.
//
// Every job is traced and every printer byte shows up in the trace, so this is a hot path: lines are gathered in one
// large buffer, which a flush hands to the system in one write, and bytes are put into words by a table.
#include "diag/trace.h"

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

FILE *klov_trace_handle = nullptr;
FILE *closed_trace = nullptr;

namespace {

// Lines that wait for their flush. The dump of a whole print band fits. The stream itself has no buffer, so that
// nothing is copied twice.
constexpr size_t pending_size = 65536;
char pending[pending_size];
size_t pending_length = 0;

// The trace that was opened here, and its descriptor: bytes go to it without a detour through the stream, which a
// flush a band would pay thousands of times. Others are standard output, or a stream of the caller's.
FILE *own_trace = nullptr;
int own_descriptor = -1;

void write_out(const char *bytes, size_t size)
{
    if (klov_trace_handle != own_trace) {
        fwrite_unlocked(bytes, 1, size, klov_trace_handle);
        return;
    }
    while (size > 0) {
        const ssize_t written = write(own_descriptor, bytes, size);
        if (written > 0) {
            bytes += written;
            size -= static_cast<size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            return;
        }
    }
}

void send_pending()
{
    if (pending_length > 0) {
        write_out(pending, pending_length);
        pending_length = 0;
    }
}

// Closes the stream but keeps the FILE object: opening the empty name always fails, after the old file was closed.
void close_trace()
{
    const int saved_errno = errno;
    fflush(klov_trace_handle);
    // cppcheck-suppress leakReturnValNotUsed ; it is the same stream, or null
    if (freopen("", "w", klov_trace_handle) == nullptr) {
        closed_trace = klov_trace_handle;
    }
    own_trace = nullptr;
    errno = saved_errno;
}

void forget_closed_trace()
{
    const int saved_errno = errno;
    if (closed_trace != nullptr) {
        fclose(closed_trace);
        closed_trace = nullptr;
    }
    errno = saved_errno;
}

// A job must not hang on its trace: neither the opening waits (for a named pipe's reader, for a modem's carrier) nor,
// on a named pipe, a write. Everywhere else a write may wait, so that no part of a line is lost.
int open_target(const char *target)
{
    const int fd = open(target, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
    if (fd < 0) {
        return -1;
    }
    struct stat info;
    if (fstat(fd, &info) == 0 && !S_ISFIFO(info.st_mode)) {
        fcntl(fd, F_SETFL, 0);
    }
    return fd;
}

FILE *open_trace(const char *target)
{
    const int fd = open_target(target);
    if (fd < 0) {
        return nullptr;
    }
    FILE *stream = fdopen(fd, "wb");
    if (stream == nullptr) {
        const int saved_errno = errno;
        close(fd);
        errno = saved_errno;
        return nullptr;
    }
    setvbuf(stream, nullptr, _IONBF, 0);
    own_trace = stream;
    own_descriptor = fd;
    return stream;
}

// One byte in words: "0x0 " to "0xff ". Eight bytes without alignment, so that a byte's text is copied with one load
// and one store.
struct hex_word {
    char text[7];
    uint8_t length;
};

struct hex_table {
    hex_word words[256];
};

constexpr char hex_digits[] = "0123456789abcdef";
constexpr size_t longest_word = 5;

constexpr hex_table make_hex_table()
{
    hex_table table = {};
    for (unsigned value = 0; value < 256; ++value) {
        hex_word &word = table.words[value];
        word.text[word.length++] = '0';
        word.text[word.length++] = 'x';
        if (value >= 16) {
            word.text[word.length++] = hex_digits[value >> 4];
        }
        word.text[word.length++] = hex_digits[value & 0xF];
        word.text[word.length++] = ' ';
    }
    return table;
}

constexpr hex_table hex = make_hex_table();
static_assert(sizeof(hex_word) == 8);

// Eight bytes in words: a step of the loop below, and what it can repeat.
struct hex_step {
    char text[8 * longest_word];
};

inline char *put_hex_word(char *out, uint8_t byte)
{
    const hex_word &word = hex.words[byte];
    *reinterpret_cast<hex_word *>(out) = word;
    return out + word.length;
}

// Eight bytes, spelt out: a loop's own steps would be a third of its work.
inline char *put_hex_step(char *out, const uint8_t *bytes)
{
    out = put_hex_word(out, bytes[0]);
    out = put_hex_word(out, bytes[1]);
    out = put_hex_word(out, bytes[2]);
    out = put_hex_word(out, bytes[3]);
    out = put_hex_word(out, bytes[4]);
    out = put_hex_word(out, bytes[5]);
    out = put_hex_word(out, bytes[6]);
    return put_hex_word(out, bytes[7]);
}

uint64_t load_step(const uint8_t *bytes)
{
    uint64_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
}

// Puts the bytes' words to out, which has room for a whole step behind the last one. Returns the end. White, black and
// patterned areas repeat the same bytes: their words are put again as long as they come.
char *put_hex(char *out, const uint8_t *bytes, uint32_t size)
{
    uint32_t at = 0;
    while (size - at >= 8) {
        const uint64_t word = load_step(bytes + at);
        const char *start = out;
        out = put_hex_step(out, bytes + at);
        at += 8;
        if (size - at < 8 || load_step(bytes + at) != word) {
            continue;
        }
        const ptrdiff_t length = out - start;
        const hex_step step = *reinterpret_cast<const hex_step *>(start);
        do {
            *reinterpret_cast<hex_step *>(out) = step;
            out += length;
            at += 8;
        } while (size - at >= 8 && load_step(bytes + at) == word);
    }
    for (; at < size; ++at) {
        out = put_hex_word(out, bytes[at]);
    }
    return out;
}

// Appends to the pending lines; a text that is longer than all of them goes out by itself.
void append_format(const char *format, va_list args)
{
    va_list again;
    va_copy(again, args);
    const size_t room = pending_size - pending_length;
    const int length = vsnprintf(pending + pending_length, room, format, args);
    if (length >= 0 && static_cast<size_t>(length) < room) {
        pending_length += static_cast<size_t>(length);
    } else {
        send_pending();
        vfprintf(klov_trace_handle, format, again);
    }
    va_end(again);
}

void append_text(const char *text, size_t length)
{
    if (length > pending_size - pending_length) {
        send_pending();
    }
    if (length > pending_size) {
        write_out(text, length);
        return;
    }
    memcpy(pending + pending_length, text, length);
    pending_length += length;
}

// To the trace's pending lines, or to a stream of the caller's own.
void put_text(FILE *stream, const char *text)
{
    if (stream == klov_trace_handle) {
        append_text(text, strlen(text));
    } else {
        fputs(text, stream);
    }
}

}  // namespace

int32_t klov_trace_init(const char *target)
{
    klov_trace_exit();
    klov_trace_handle = nullptr;
    forget_closed_trace();
    klov_trace_handle = strcmp(target, "stdout") == 0 ? stdout : open_trace(target);
    return errno;
}

void klov_trace_exit(void)
{
    if (!trace_is_open()) {
        return;
    }
    send_pending();
    if (klov_trace_handle != stdout) {
        close_trace();
    }
}

void klov_trace_dump(FILE *stream, const uint8_t *bytes, int32_t count)
{
    if (stream == nullptr || stream == closed_trace) {
        return;
    }
    char opening[24];
    snprintf(opening, sizeof opening, "[DUMP(%d):", count);
    put_text(stream, opening);
    for (int32_t i = 0; i < count; ++i) {
        const char word[] = {'0', 'x', hex_digits[bytes[i] >> 4], hex_digits[bytes[i] & 0xF], ' ', '\0'};
        put_text(stream, word);
    }
    put_text(stream, "].\r\n");
    trace_flush();
}

void trace_text(const char *format, ...)
{
    if (!trace_is_open()) {
        return;
    }
    va_list args;
    va_start(args, format);
    append_format(format, args);
    va_end(args);
}

void trace_line(const char *format, ...)
{
    if (!trace_is_open()) {
        return;
    }
    va_list args;
    va_start(args, format);
    append_format(format, args);
    va_end(args);
    trace_flush();
}

void trace_piece(const char *text, size_t length)
{
    append_text(text, length);
}

char *trace_room(size_t size)
{
    if (size > pending_size - pending_length) {
        send_pending();
    }
    return pending + pending_length;
}

void trace_grow(const char *end)
{
    pending_length = static_cast<size_t>(end - pending);
}

void trace_hex(const uint8_t *bytes, uint32_t size)
{
    if (!trace_is_open()) {
        return;
    }
    while (size > 0) {
        const size_t room = pending_size - pending_length;
        const size_t fitting = room > sizeof(hex_step) ? (room - sizeof(hex_step)) / longest_word : 0;
        const uint32_t count = size < fitting ? size : static_cast<uint32_t>(fitting);
        const char *end = put_hex(pending + pending_length, bytes, count);
        pending_length = static_cast<size_t>(end - pending);
        bytes += count;
        size -= count;
        if (size > 0) {
            send_pending();
        }
    }
}

void put_finished(const char *operation, int32_t status)
{
    trace_put("-");
    append_text(operation, strlen(operation));
    if (status == 0) {
        trace_put(" finished(", status, ") success.\n");
    } else {
        trace_put(" finished(", status, ") fail!\n");
    }
}

void send_trace()
{
    send_pending();
    if (klov_trace_handle != own_trace) {
        fflush(klov_trace_handle);
    }
}
