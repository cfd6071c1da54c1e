// The output channel. A trace line reaches its file before the bytes that it announces leave; the line that follows a
// write is flushed with the next line or before the next flush of standard output, whichever comes first.
#include "printops/output.h"

#include "diag/trace.h"

#include <klov/trace.h>
#include <stdio.h>
#include <string.h>

void write_bytes(const uint8_t *buffer, int32_t size)
{
    const size_t bytes = size > 0 ? static_cast<size_t>(size) : 0;
    const bool traced = trace_is_open();
    if (traced) {
        trace_text("+write_bytes start(data_size:%d):\n", size);
        trace_hex(buffer, static_cast<uint32_t>(bytes));
        trace_line("\n");
    }
    const size_t items = fwrite(buffer, bytes, 1, stdout);
    if (traced) {
        trace_text("-write_bytes finished(writed:%d).\n", static_cast<int>(items));
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
        trace_line("\n");
    }
    const size_t items = fwrite(text, bytes, 1, stdout);
    if (!traced) {
        return static_cast<int32_t>(items);
    }
    trace_text("-write_string finished(writed:%d).\n", static_cast<int>(items));
    return fflush(klov_trace_handle);
}

void flush_output()
{
    trace_flush();
    fflush(stdout);
}
