// The raster stream's bytes, read in large pieces: CUPS's own reader asks the kernel for every single row.
#pragma once

#include <stdint.h>
#include <sys/types.h>

struct raster_input {
    int descriptor;
    bool failed;      // a read went wrong; CUPS takes that for the end of the stream
    size_t position;  // first byte not yet handed on
    size_t filled;
    uint8_t bytes[65536];
};

// Read when nothing waits. Returns the number of bytes that wait, 0 at the end of the stream, -1 on an error.
ssize_t fill_input(raster_input *input);

// Read callback for cupsRasterOpenIO; input is a raster_input. Returns at most length bytes and never waits for more
// than one read brought; 0 at the end of the stream, -1 on an error. An interrupted read is tried again, and a
// non-blocking one that finds nothing waits.
ssize_t read_raster(void *input, unsigned char *buffer, size_t length);
