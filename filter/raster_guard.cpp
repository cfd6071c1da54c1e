// The guard between the raster stream and CUPS.
//
// Where a header begins is known without decoding the rows: it is what CUPS reads first when it is asked for a header,
// provided that it holds no bytes back. It reads ahead only in compressed streams, a buffer at a time, whenever it
// needs a few bytes; such a request gets one byte.
#include "filter/raster_guard.h"

#include <stddef.h>
#include <string.h>

namespace {

constexpr size_t least_read_ahead = 65536;

// Small, and a whole number of pixels of every depth that is in use.
constexpr uint32_t harmless_row = 5040;

// CUPS goes on asking until it has all of a header, so nobody waits longer for it here.
ssize_t read_whole(raster_input &input, unsigned char *buffer, size_t length)
{
    size_t filled = 0;
    while (filled < length) {
        const ssize_t count = read_raster(&input, buffer + filled, length - filled);
        if (count < 0) {
            return count;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

void note_format(raster_guard &guard, const unsigned char *bytes)
{
    constexpr uint32_t formats[] = {CUPS_RASTER_SYNCv1, CUPS_RASTER_SYNCv2, CUPS_RASTER_SYNC};
    uint32_t word;
    memcpy(&word, bytes, sizeof word);
    const uint32_t swapped_word = __builtin_bswap32(word);
    for (const uint32_t format : formats) {
        if (word == format || swapped_word == format) {
            guard.swapped = word != format;
            guard.compressed = format == CUPS_RASTER_SYNCv2;
            guard.header_size = format == CUPS_RASTER_SYNCv1 ? sizeof(cups_page_header_t) : sizeof(cups_page_header2_t);
        }
    }
}

void hide_forged_row(raster_guard &guard, unsigned char *header)
{
    unsigned char *field = header + offsetof(cups_page_header_t, cupsBytesPerLine);
    uint32_t row;
    memcpy(&row, field, sizeof row);
    row = guard.swapped ? __builtin_bswap32(row) : row;
    if (row > guard.longest_row) {
        guard.real_row = row;
        const uint32_t shown = guard.swapped ? __builtin_bswap32(harmless_row) : harmless_row;
        memcpy(field, &shown, sizeof shown);
    }
}

}  // namespace

void start_guard(raster_guard &guard, int descriptor, uint32_t longest_row)
{
    guard.input.descriptor = descriptor;
    guard.longest_row = longest_row;
    guard.at_format = true;
}

ssize_t read_guarded(void *guard, unsigned char *buffer, size_t length)
{
    raster_guard &state = *static_cast<raster_guard *>(guard);
    if (state.at_format && length == sizeof(uint32_t)) {
        const ssize_t count = read_whole(state.input, buffer, length);
        state.at_format = false;
        if (count == static_cast<ssize_t>(length)) {
            note_format(state, buffer);
        }
        return count;
    }
    if (state.at_header && length == state.header_size) {
        const ssize_t count = read_whole(state.input, buffer, length);
        state.at_header = false;
        if (count == static_cast<ssize_t>(length)) {
            hide_forged_row(state, buffer);
        }
        return count;
    }
    return read_raster(&state.input, buffer, state.compressed && length >= least_read_ahead ? 1 : length);
}

unsigned read_guarded_header(raster_guard &guard, cups_raster_t *stream, cups_page_header_t *header)
{
    guard.at_header = true;
    guard.real_row = 0;
    const unsigned read = cupsRasterReadHeader(stream, header);
    guard.at_header = false;
    if (read != 0 && guard.real_row != 0) {
        header->cupsBytesPerLine = guard.real_row;
    }
    return read;
}
