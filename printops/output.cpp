// The output channel. Bytes wait until they are flushed, and their trace reaches its file before they leave.
#include "printops/output.h"

#include "diag/trace.h"

#include <string.h>
#include <unistd.h>

namespace {

// In place of standard output's own buffer, whose bookkeeping would cost a band more than its bytes do. A band leaves
// with one write.
constexpr size_t waiting_size = 65536;
uint8_t waiting[waiting_size];
size_t waiting_length = 0;
bool write_failed = false;

// Behind bytes that were lost all others would be garbage to the printer.
void send(const uint8_t *bytes, size_t size)
{
    while (size > 0 && !write_failed) {
        const ssize_t count = write(STDOUT_FILENO, bytes, size);
        if (count <= 0) {
            write_failed = true;
            return;
        }
        bytes += count;
        size -= static_cast<size_t>(count);
    }
}

// Returns the number of items that fwrite() counts for one block.
int32_t put(const uint8_t *bytes, size_t size)
{
    if (size > waiting_size - waiting_length) {
        flush_output();
    }
    if (size > waiting_size) {
        send(bytes, size);
        return write_failed ? 0 : 1;
    }
    memcpy(waiting + waiting_length, bytes, size);
    waiting_length += size;
    return size > 0 ? 1 : 0;
}

}  // namespace

bool output_failed()
{
    return write_failed;
}

void write_bytes(const uint8_t *buffer, int32_t size)
{
    const size_t bytes = size > 0 ? static_cast<size_t>(size) : 0;
    if (!trace_is_open()) {
        put(buffer, bytes);
        return;
    }
    trace_put("+write_bytes start(data_size:", size, "):\n");
    trace_hex(buffer, bytes);
    trace_put("\n");
    const int32_t items = put(buffer, bytes);
    trace_put("-write_bytes finished(writed:", items, ").\n");
}

int32_t write_string(const char *text)
{
    const size_t bytes = strlen(text);
    const uint8_t *const buffer = reinterpret_cast<const uint8_t *>(text);
    trace_put("+write_string start(data_size:", static_cast<int32_t>(bytes), ").\n");
    trace_put("\tText:", text, ".\n\tHex:");
    trace_hex(buffer, bytes);
    trace_put("\n");
    trace_flush();
    const int32_t items = put(buffer, bytes);
    if (!trace_is_open()) {
        return items;
    }
    trace_put("-write_string finished(writed:", items, ").\n");
    trace_flush();
    return 0;
}

void send_output()
{
    send(waiting, waiting_length);
    waiting_length = 0;
}

void flush_output()
{
    trace_flush();
    send_output();
}
