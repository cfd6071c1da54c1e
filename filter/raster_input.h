// The raster stream's bytes, read in large pieces: CUPS's own reader asks the kernel for every single row.
#pragma once

#include <stdint.h>
#include <sys/types.h>

constexpr size_t input_chunk = 65536;
// So many bytes can be kept when more are read.
constexpr size_t input_kept = 4096;

struct raster_input {
    int descriptor;
    bool failed;      // a read went wrong; CUPS takes that for the end of the stream
    size_t position;  // first byte not yet handed on
    size_t filled;
    uint8_t bytes[input_kept + input_chunk + 16];  // what has been read, and some bytes to look ahead into
};

// Number of bytes that wait.
inline size_t waiting_bytes(const raster_input &input)
{
    return input.filled - input.position;
}

// One more read behind the bytes that wait, at most input_kept of them. Returns how many came, 0 at the end of the
// stream, -1 on an error.
ssize_t read_more(raster_input &input);

// Read callback for cupsRasterOpenIO; input is a raster_input. Returns at most length bytes and never waits for more
// than one read brought; 0 at the end of the stream, -1 on an error. An interrupted read is tried again, and a
// non-blocking one that finds nothing waits.
ssize_t read_raster(void *input, unsigned char *buffer, size_t length);
