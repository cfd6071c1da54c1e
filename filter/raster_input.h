// The raster stream's bytes, read in large pieces: CUPS's own reader asks the kernel for every single row.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

struct raster_input {
    int descriptor;
    bool failed;      // a read went wrong; CUPS takes that for the end of the stream
    size_t position;  // first byte not yet handed on
    size_t filled;
    uint8_t bytes[4096 + 65536];  // what a full pipe holds, behind a header's beginning
};

// The bytes that wait, once there are at least size of them, which must fit the buffer; never waits for more. Null when
// the stream ends before, or a read fails. An interrupted read is tried again, and a non-blocking one that finds
// nothing waits.
uint8_t *gather(raster_input &input, size_t size);

// Hand on bytes that wait, length of them at most. Returns their number, -1 once a read has failed.
ssize_t take(raster_input &input, uint8_t *buffer, size_t length);
