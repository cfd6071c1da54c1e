// The trace channel: opening, closing, lines and byte dumps.
#include "diag/trace.h"

#include "diag/hex.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FILE *klov_trace_handle = nullptr;
FILE *closed_trace = nullptr;
trace_lines waiting_lines;

namespace {

// What a trace file may grow to: a job without an end is not to fill /tmp.
constexpr uint64_t longest_trace = 256 << 20;
constexpr char last_line[] = "trace is full.\n";
constexpr size_t last_line_length = sizeof last_line - 1;

// The file behind file_stream.
int descriptor = -1;
uint64_t written = 0;
bool within_line = false;

// Stands for every trace file in turn and is never freed. A closed stream's memory would go to the next stream that the
// program opens, which then could not be told from the closed trace.
FILE *file_stream = nullptr;

void close_file()
{
    if (descriptor >= 0) {
        close(descriptor);
    }
    descriptor = -1;
}

// What the system does not take is lost: a trace stops nobody.
void write_all(const char *bytes, size_t size)
{
    while (size > 0) {
        const ssize_t count = write(descriptor, bytes, size);
        if (count > 0) {
            bytes += count;
            size -= static_cast<size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            return;
        }
    }
}

// The whole lines that still fit, and a last one.
void write_end(const char *bytes, size_t size)
{
    const uint64_t room = longest_trace - last_line_length - written;
    size_t fitting = size < room ? size : static_cast<size_t>(room);
    while (fitting > 0 && bytes[fitting - 1] != '\n') {
        fitting -= 1;
    }
    write_all(bytes, fitting);
    if (fitting == 0 && within_line) {
        write_all("\n", 1);
    }
    write_all(last_line, last_line_length);
}

// Whatever is put to file_stream comes here. Nothing but system calls, so that a crash can come here too.
ssize_t write_file(void *, const char *bytes, size_t size)
{
    if (descriptor < 0 || size == 0) {
        return 0;
    }
    // One byte is left for the end of a line that is cut.
    if (size >= longest_trace - last_line_length - written) {
        write_end(bytes, size);
        close_file();
        closed_trace = file_stream;
    } else {
        write_all(bytes, size);
        written += size;
        within_line = bytes[size - 1] != '\n';
    }
    return static_cast<ssize_t>(size);
}

// A job must not hang on its trace: neither the opening waits (for a named pipe's reader, for a modem's carrier) nor,
// on a named pipe, a write. Everywhere else a write may wait, so that no part of a line is lost. Appending keeps the
// traces of two jobs at once free of holes.
int open_target(const char *target)
{
    const int fd = open(target, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
    if (fd < 0) {
        return -1;
    }
    struct stat info;
    if (fstat(fd, &info) == 0 && !S_ISFIFO(info.st_mode)) {
        fcntl(fd, F_SETFL, O_APPEND);
    }
    return fd;
}

FILE *make_stream()
{
    cookie_io_functions_t functions = {};
    functions.write = write_file;
    FILE *const stream = fopencookie(nullptr, "w", functions);
    if (stream != nullptr) {
        setvbuf(stream, nullptr, _IONBF, 0);
    }
    return stream;
}

FILE *open_file(const char *target)
{
    descriptor = open_target(target);
    written = 0;
    within_line = false;
    if (descriptor >= 0 && file_stream == nullptr) {
        file_stream = make_stream();
    }
    if (file_stream == nullptr) {
        close_file();
    }
    return descriptor >= 0 ? file_stream : nullptr;
}

void send_lines()
{
    if (waiting_lines.length > 0) {
        fwrite_unlocked(waiting_lines.text, 1, waiting_lines.length, klov_trace_handle);
        waiting_lines.length = 0;
    }
}

// Room for so many more bytes behind the lines that wait.
char *make_room(size_t size)
{
    if (size > sizeof waiting_lines.text - waiting_lines.length) {
        send_lines();
    }
    return waiting_lines.text + waiting_lines.length;
}

void grow_to(const char *end)
{
    waiting_lines.length = static_cast<size_t>(end - waiting_lines.text);
}

// To the lines that wait, or to a stream of the caller's own.
void put_text(FILE *stream, const char *text)
{
    if (stream == klov_trace_handle) {
        trace_append(text);
    } else {
        fputs(text, stream);
    }
}

}  // namespace

int32_t klov_trace_init(const char *target)
{
    klov_trace_exit();
    waiting_lines.length = 0;
    klov_trace_handle = strcmp(target, "stdout") == 0 ? stdout : open_file(target);
    closed_trace = nullptr;
    return errno;
}

void klov_trace_exit(void)
{
    trace_flush();
    close_file();
    closed_trace = klov_trace_handle != stdout ? klov_trace_handle : nullptr;
}

void klov_trace_dump(FILE *stream, const uint8_t *bytes, int32_t count)
{
    if (stream == nullptr || (stream == klov_trace_handle && !trace_is_open())) {
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

void trace_append_long(const char *text, size_t length)
{
    while (length > 0) {
        char *const room = make_room(1);
        const size_t most = static_cast<size_t>(waiting_lines.text + sizeof waiting_lines.text - room);
        const size_t count = length < most ? length : most;
        memcpy(room, text, count);
        grow_to(room + count);
        text += count;
        length -= count;
    }
}

void trace_append(int32_t number)
{
    char digits[11];
    char *const end = digits + sizeof digits;
    char *first = end;
    uint32_t rest = number < 0 ? 0U - static_cast<uint32_t>(number) : static_cast<uint32_t>(number);
    do {
        *--first = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest > 0);
    if (number < 0) {
        *--first = '-';
    }
    const size_t length = static_cast<size_t>(end - first);
    char *const room = make_room(length);
    memcpy(room, first, length);
    grow_to(room + length);
}

void trace_hex(const uint8_t *bytes, size_t size)
{
    constexpr size_t most_at_once = 4096;
    if (!trace_is_open()) {
        return;
    }
    while (size > 0) {
        const size_t count = size < most_at_once ? size : most_at_once;
        grow_to(put_hex(make_room(count * longest_hex_word + hex_slack), bytes, count));
        bytes += count;
        size -= count;
    }
}

void trace_finished(const char *operation, int32_t status)
{
    trace_put("-", operation, " finished(", status, status == 0 ? ") success.\n" : ") fail!\n");
}

void trace_flush()
{
    if (trace_is_open()) {
        send_lines();
        fflush_unlocked(klov_trace_handle);
    }
}

void trace_rescue()
{
    if (trace_is_open()) {
        write_file(nullptr, waiting_lines.text, waiting_lines.length);
    }
}
