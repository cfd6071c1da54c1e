// Where a page of a compressed raster stream ends: its row codes are walked, not unpacked.
#pragma once

#include <stddef.h>
#include <stdint.h>

struct compressed_page {
    uint32_t rows_left;       // not yet begun
    uint32_t row_size;        // bytes of an unpacked row
    uint32_t pixel_size;      // bytes of a pixel
    uint32_t row_bytes_left;  // of the unpacked row in progress
    uint32_t pass;            // bytes that follow the last code as they are
};

// How many of the bytes that come next in the stream belong to the page.
size_t walk_page(compressed_page &page, const uint8_t *bytes, size_t size);
