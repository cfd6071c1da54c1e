// Buffered reading of the raster stream.
#include "filter/raster_input.h"

#include <errno.h>
#include <string.h>
#include <unistd.h>

namespace {

ssize_t read_some(int descriptor, uint8_t *buffer, size_t length)
{
    ssize_t count;
    do {
        count = read(descriptor, buffer, length);
    } while (count < 0 && errno == EINTR);
    return count;
}

}  // namespace

ssize_t read_raster(void *input, unsigned char *buffer, size_t length)
{
    raster_input &source = *static_cast<raster_input *>(input);
    if (source.position == source.filled) {
        if (length >= sizeof source.bytes) {
            return read_some(source.descriptor, buffer, length);
        }
        const ssize_t count = read_some(source.descriptor, source.bytes, sizeof source.bytes);
        if (count <= 0) {
            return count;
        }
        source.position = 0;
        source.filled = static_cast<size_t>(count);
    }
    const size_t available = source.filled - source.position;
    const size_t count = length < available ? length : available;
    memcpy(buffer, source.bytes + source.position, count);
    source.position += count;
    return static_cast<ssize_t>(count);
}
