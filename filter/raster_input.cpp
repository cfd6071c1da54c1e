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

size_t waiting_bytes(const raster_input &input)
{
    return input.filled - input.position;
}

// One more read behind the bytes that wait; false when it brought nothing. It may take as long as whoever feeds the
// stream likes, so the trace is brought up to date first.
bool read_more(raster_input &input)
{
    trace_flush();
    const size_t waiting = waiting_bytes(input);
    memmove(input.bytes, input.bytes + input.position, waiting);
    input.position = 0;
    input.filled = waiting;
    ssize_t count;
    do {
        count = read(input.descriptor, input.bytes + waiting, sizeof input.bytes - waiting);
    } while (count < 0 && may_try_again(input.descriptor));
    if (count < 0) {
        input.failed = true;
        return false;
    }
    input.filled += static_cast<size_t>(count);
    return count > 0;
}

}  // namespace

uint8_t *gather(raster_input &input, size_t size)
{
    while (waiting_bytes(input) < size) {
        if (input.failed || !read_more(input)) {
            return nullptr;
        }
    }
    return input.bytes + input.position;
}

ssize_t take(raster_input &input, uint8_t *buffer, size_t length)
{
    if (input.failed) {
        return -1;
    }
    const size_t waiting = waiting_bytes(input);
    const size_t count = length < waiting ? length : waiting;
    memcpy(buffer, input.bytes + input.position, count);
    input.position += count;
    return static_cast<ssize_t>(count);
}
