// What stands between the raster stream and CUPS.
//
// It keeps forged row lengths away from CUPS, which reserves memory for whatever a page header asks before anybody else
// sees the header. CUPS is shown a small number instead; page processing gets the real one and refuses it.
//
// And it unpacks compressed streams, several times as fast as CUPS, which is shown an uncompressed one.
#pragma once

#include "filter/compressed_page.h"
#include "filter/raster_input.h"

#include <cups/raster.h>

struct raster_guard {
    raster_input input;
    uint32_t longest_row;  // bytes; a longer row cannot be printed
    bool at_format;        // the stream's first word has not been read yet
    bool at_header;        // the next bytes are a page header
    bool compressed;
    bool swapped;          // the stream's numbers are in the other byte order
    size_t header_size;    // 0: the format has no header of ours
    uint32_t real_row;     // the row length that CUPS was not shown, 0 when it was
    compressed_page page;  // in a compressed stream: the page that is being read
};

// Get ready for a stream from the descriptor, in a guard that is all zero; and give its memory back.
void start_guard(raster_guard &guard, int descriptor, uint32_t longest_row);
void end_guard(raster_guard &guard);

// Read callback for cupsRasterOpenIO; guard is a raster_guard. See read_raster().
ssize_t read_guarded(void *guard, unsigned char *buffer, size_t length);

// cupsRasterReadHeader() past the guard: the header holds the real row length.
unsigned read_guarded_header(raster_guard &guard, cups_raster_t *stream, cups_page_header_t *header);
