// Buffered reading of the raster stream.
#include "filter/raster_input.h"

#include "diag/trace.h"

#include <errno.h>
#include <poll.h>
#include <string.h>
#include <unistd.h>

namespace {

// Whoever started the filter may have made its input non-blocking; bytes that are not there yet are no error.
bool may_try_again(int descriptor)
{
    if (errno == EAGAIN) {
        pollfd waiting = {descriptor, POLLIN, 0};
        poll(&waiting, 1, -1);
        return true;
    }
    return errno == EINTR;
}

// A read may wait for as long as whoever feeds the stream likes, so the trace is brought up to date first.
ssize_t read_some(raster_input &source, uint8_t *buffer, size_t length)
{
    trace_flush();
    ssize_t count;
    do {
        count = read(source.descriptor, buffer, length);
    } while (count < 0 && may_try_again(source.descriptor));
    source.failed = source.failed || count < 0;
    return count;
}

}  // namespace

ssize_t read_more(raster_input &input)
{
    const size_t waiting = waiting_bytes(input);
    const size_t start = input_kept - waiting;
    memmove(input.bytes + start, input.bytes + input.position, waiting);
    input.position = start;
    input.filled = input_kept;
    const ssize_t count = read_some(input, input.bytes + input_kept, input_chunk);
    input.filled += count > 0 ? static_cast<size_t>(count) : 0;
    return count;
}

ssize_t read_raster(void *input, unsigned char *buffer, size_t length)
{
    raster_input &source = *static_cast<raster_input *>(input);
    if (waiting_bytes(source) == 0) {
        const ssize_t read = length >= input_chunk ? read_some(source, buffer, length) : read_more(source);
        if (read <= 0 || length >= input_chunk) {
            return read;
        }
    }
    const size_t waiting = waiting_bytes(source);
    const size_t count = length < waiting ? length : waiting;
    memcpy(buffer, source.bytes + source.position, count);
    source.position += count;
    return static_cast<ssize_t>(count);
}
