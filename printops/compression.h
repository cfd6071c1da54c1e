// Run-length code of raster mode 32: a PackBits relative with habits of its own, which the printers were built against.
#pragma once

#include <stdint.h>

// Compress rows of width bytes, each by itself, one after another into dst, which has room for (rows * width + 4) * 2
// bytes. Stores the number of bytes written; returns 0.
//
// A count byte 0 to 127 precedes that many + 1 literal bytes; 129 to 255 repeats the byte behind it 257 - count times.
// Kept, because the printers' decoders expect it: a literal's length is counted modulo 256; every chunk 0x81 of a long
// run repeats one byte more than it takes off; a row that ends with a run and one different byte repeats the run's byte
// in that byte's place; rows of one byte send nothing.
int32_t tiff_compression(const uint8_t *src, uint32_t width, uint32_t rows, uint8_t *dst, uint32_t *out_len);
