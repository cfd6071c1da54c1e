// What stands between the raster stream and CUPS, which reserves memory for whatever row length a page header asks
// before anybody else sees the header. A row that cannot be printed is shown to CUPS as a short one; page processing
// gets the real number and refuses it.
#pragma once

#include "filter/raster_input.h"

#include <cups/raster.h>

struct raster_guard {
    raster_input input;
    uint32_t longest_row;  // bytes; a longer row cannot be printed
    bool opened;           // the stream's first word has been read
    bool at_header;        // the next bytes are a page header
    bool compressed;
    bool swapped;        // the stream's numbers are in the other byte order
    size_t header_size;  // 0: no format that CUPS knows
    uint32_t real_row;   // the row length that CUPS was not shown, 0 when it was
};

// Get ready for a stream from the descriptor, in a guard that is all zero.
void start_guard(raster_guard &guard, int descriptor, uint32_t longest_row);

// Read callback for cupsRasterOpenIO; guard is a raster_guard. Never waits for more than the next byte of a page's
// rows, or for more than a header. Returns the number of bytes, 0 at the end of the stream, -1 when a read failed.
ssize_t read_guarded(void *guard, unsigned char *buffer, size_t length);

// cupsRasterReadHeader() past the guard: the header holds the real row length.
unsigned read_guarded_header(raster_guard &guard, cups_raster_t *stream, cups_page_header_t *header);
