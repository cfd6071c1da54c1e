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

ssize_t fill_input(raster_input *input)
{
    if (input->position == input->filled) {
        const ssize_t count = read_some(*input, input->bytes, sizeof input->bytes);
        if (count <= 0) {
            return count;
        }
        input->position = 0;
        input->filled = static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(input->filled - input->position);
}

ssize_t read_raster(void *input, unsigned char *buffer, size_t length)
{
    raster_input &source = *static_cast<raster_input *>(input);
    if (source.position == source.filled && length >= sizeof source.bytes) {
        return read_some(source, buffer, length);
    }
    const ssize_t available = fill_input(&source);
    if (available <= 0) {
        return available;
    }
    const size_t count = length < static_cast<size_t>(available) ? length : static_cast<size_t>(available);
    memcpy(buffer, source.bytes + source.position, count);
    source.position += count;
    return static_cast<ssize_t>(count);
}
