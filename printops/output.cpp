// The output channel. Bytes wait until they are flushed, and a trace line reaches its file before the bytes that it
// announces leave the process.
#include "printops/output.h"

#include "diag/trace.h"

#include <klov/trace.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <string.h>
#include <unistd.h>

namespace {

// In front of standard output, whose own bookkeeping would cost a band more than its bytes do. A band leaves with one
// write.
constexpr size_t waiting_size = 65536;
uint8_t waiting[waiting_size];
size_t waiting_length = 0;
bool write_failed = false;

void write_to_descriptor(const uint8_t *bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(STDOUT_FILENO, bytes, size);
        if (written <= 0) {
            write_failed = true;
            return;
        }
        bytes += written;
        size -= static_cast<size_t>(written);
    }
}

// A stream that has taken standard output's place.
void write_to_stream(const uint8_t *bytes, size_t size)
{
    fwrite_unlocked(bytes, size, 1, stdout);
    fflush_unlocked(stdout);
}

inline bool fits(size_t size)
{
    return size <= waiting_size - waiting_length;
}

inline size_t keep(const uint8_t *bytes, size_t size)
{
    memcpy(waiting + waiting_length, bytes, size);
    waiting_length += size;
    return 1;
}

// No bytes, more than there is room for, or bytes among the lines of a trace that goes to standard output as well.
__attribute__((noinline)) size_t put_unusual_bytes(const uint8_t *bytes, size_t size)
{
    const bool mixed = klov_trace_handle == stdout;
    if (mixed || !fits(size)) {
        flush_output();
    }
    if (mixed || size > waiting_size) {
        return output_failed() ? 0 : fwrite_unlocked(bytes, size, 1, stdout);
    }
    return size > 0 ? keep(bytes, size) : 0;
}

// Returns the number of items that fwrite() counts.
inline size_t put_bytes(const uint8_t *bytes, size_t size)
{
    if (size == 0 || !fits(size) || klov_trace_handle == stdout) {
        return put_unusual_bytes(bytes, size);
    }
    return keep(bytes, size);
}

__attribute__((noinline)) void write_traced(const uint8_t *buffer, size_t bytes, int32_t size)
{
    trace_put("+write_bytes start(data_size:", size, "):\n");
    trace_hex(buffer, static_cast<uint32_t>(bytes));
    trace_put("\n");
    const size_t items = put_bytes(buffer, bytes);
    trace_put("-write_bytes finished(writed:", static_cast<int32_t>(items), ").\n");
}

}  // namespace

bool output_failed()
{
    return write_failed || ferror(stdout) != 0;
}

void send_output()
{
    if (__fpending(stdout) > 0) {
        fflush_unlocked(stdout);  // it came before
    }
    // Behind bytes that were lost all others would be garbage to the printer.
    if (waiting_length > 0 && !output_failed()) {
        if (fileno_unlocked(stdout) == STDOUT_FILENO) {
            write_to_descriptor(waiting, waiting_length);
        } else {
            write_to_stream(waiting, waiting_length);
        }
    }
    waiting_length = 0;
}

void write_bytes(const uint8_t *buffer, int32_t size)
{
    const size_t bytes = size > 0 ? static_cast<size_t>(size) : 0;
    if (trace_is_open()) {
        write_traced(buffer, bytes, size);
    } else {
        put_bytes(buffer, bytes);
    }
}

int32_t write_string(const char *text)
{
    const size_t bytes = strlen(text);
    const bool traced = trace_is_open();
    if (traced) {
        trace_text("+write_string start(data_size:%d).\n", static_cast<int>(bytes));
        trace_text("\tText:%s.\n", text);
        trace_text("\tHex:");
        trace_hex(reinterpret_cast<const uint8_t *>(text), static_cast<uint32_t>(bytes));
        trace_put("\n");
    }
    const size_t items = put_bytes(reinterpret_cast<const uint8_t *>(text), bytes);
    if (!traced) {
        return static_cast<int32_t>(items);
    }
    trace_text("-write_string finished(writed:%d).\n", static_cast<int>(items));
    return fflush(klov_trace_handle);
}

void flush_output()
{
    trace_flush();
    send_output();
}
