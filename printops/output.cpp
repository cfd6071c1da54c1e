// The output channel. The filter has one thread, so its streams need no locks. A trace line reaches its file before the
// bytes that it announces leave the process: lines gather until standard output is flushed, or until its buffer is
// about to overflow.
#include "printops/output.h"

#include "diag/trace.h"

#include <klov/trace.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <string.h>

namespace {

// Standard output's buffer gives bytes away by itself when this many more do not fit. A trace on standard output keeps
// its place among the bytes.
void trace_before_overflow(size_t bytes)
{
    if (klov_trace_handle == stdout || __fpending(stdout) + bytes >= __fbufsize(stdout)) {
        trace_flush();
    }
}

}  // namespace

void write_bytes(const uint8_t *buffer, int32_t size)
{
    const size_t bytes = size > 0 ? static_cast<size_t>(size) : 0;
    const bool traced = trace_is_open();
    if (traced) {
        trace_put("+write_bytes start(data_size:", size, "):\n");
        trace_hex(buffer, static_cast<uint32_t>(bytes));
        trace_put("\n");
        trace_before_overflow(bytes);
    }
    const size_t items = fwrite_unlocked(buffer, bytes, 1, stdout);
    if (traced) {
        trace_put("-write_bytes finished(writed:", static_cast<int32_t>(items), ").\n");
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
        trace_before_overflow(bytes);
    }
    const size_t items = fwrite_unlocked(text, bytes, 1, stdout);
    if (!traced) {
        return static_cast<int32_t>(items);
    }
    trace_text("-write_string finished(writed:%d).\n", static_cast<int>(items));
    return fflush(klov_trace_handle);
}

void flush_output()
{
    trace_flush();
    fflush_unlocked(stdout);
}
