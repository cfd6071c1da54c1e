// The floor that no filter can go below: opens the PPD, marks its defaults, reads every row through libcups in strips,
// and writes a job's bytes in the flushes in which rastertoklov writes them. No decisions, no trace, no messages.
//
// The bytes come from a recording made beforehand, which FLOOR_BYTES names: every flush as its length (a native 32-bit
// word) and its bytes. Fetching them costs one read a 64 KiB, about what it costs to put them together in a buffer.
#include <cups/ppd.h>
#include <cups/raster.h>
#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr size_t chunk = 65536;

// A descriptor read in chunks. The buffer takes what is left of the last chunk and a new one.
struct source {
    int descriptor;
    size_t position;
    size_t filled;
    uint8_t bytes[2 * chunk];
};

source stream;
source recording;
uint8_t strip[1024];

[[noreturn]] void fail(const char *what)
{
    perror(what);
    exit(1);
}

// False at the end. Only called when less than a chunk is left.
bool refill(source &from)
{
    memmove(from.bytes, from.bytes + from.position, from.filled - from.position);
    from.filled -= from.position;
    from.position = 0;
    const ssize_t count = read(from.descriptor, from.bytes + from.filled, chunk);
    if (count < 0) {
        fail("read");
    }
    from.filled += static_cast<size_t>(count);
    return count > 0;
}

ssize_t read_stream(void *, unsigned char *buffer, size_t length)
{
    if (stream.position == stream.filled && !refill(stream)) {
        return 0;
    }
    const size_t available = stream.filled - stream.position;
    const size_t count = length < available ? length : available;
    memcpy(buffer, stream.bytes + stream.position, count);
    stream.position += count;
    return static_cast<ssize_t>(count);
}

bool have(source &from, size_t length)
{
    while (from.filled - from.position < length) {
        if (!refill(from)) {
            return false;
        }
    }
    return true;
}

// Writes the next flush of the recording; false when there is none.
bool write_flush()
{
    uint32_t length;
    if (!have(recording, sizeof length)) {
        return false;
    }
    memcpy(&length, recording.bytes + recording.position, sizeof length);
    recording.position += sizeof length;
    if (length > chunk || !have(recording, length)) {
        errno = EINVAL;
        fail("recording");
    }
    if (write(STDOUT_FILENO, recording.bytes + recording.position, length) != static_cast<ssize_t>(length)) {
        fail("write");
    }
    recording.position += length;
    return true;
}

void read_ppd()
{
    ppd_file_t *ppd = ppdOpenFile(getenv("PPD"));
    if (ppd == nullptr) {
        fail("PPD");
    }
    ppdMarkDefaults(ppd);
    ppdClose(ppd);
}

// One page, strip by strip as the filter reads it, a flush after each strip.
void pass_page(cups_raster_t *raster, const cups_page_header_t &header)
{
    const uint32_t width = header.cupsBytesPerLine;
    const uint32_t rows = width > 0 ? static_cast<uint32_t>(sizeof strip) / width : 0;
    if (rows == 0) {
        errno = EINVAL;
        fail("page");
    }
    for (uint32_t done = 0; done < header.cupsHeight;) {
        const uint32_t left = header.cupsHeight - done;
        const uint32_t count = left < rows ? left : rows;
        if (cupsRasterReadPixels(raster, strip, count * width) != count * width) {
            fail("rows");
        }
        write_flush();
        done += count;
    }
}

}  // namespace

int main()
{
    const char *bytes = getenv("FLOOR_BYTES");
    recording.descriptor = open(bytes != nullptr ? bytes : "", O_RDONLY | O_CLOEXEC);
    if (recording.descriptor < 0) {
        fail("FLOOR_BYTES");
    }
    read_ppd();
    cups_raster_t *raster = cupsRasterOpenIO(read_stream, nullptr, CUPS_RASTER_READ);
    if (raster == nullptr) {
        fail("stream");
    }
    cups_page_header_t header;
    while (cupsRasterReadHeader(raster, &header) != 0) {
        pass_page(raster, header);
    }
    while (write_flush()) {
    }
    cupsRasterClose(raster);
    return 0;
}
