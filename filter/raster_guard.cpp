// The guard between the raster stream and CUPS.
//
// A header is what CUPS reads first when it is asked for one, provided that it holds no bytes back. It would read ahead
// in compressed streams only, and never gets to see one.
#include "filter/raster_guard.h"

#include <stddef.h>
#include <string.h>

namespace {

// Small, and a whole number of pixels of every depth that is in use.
constexpr uint32_t harmless_row = 5040;

// A code that is not there in full waits while more is read, and unpacking looks ahead.
static_assert(longest_code <= input_kept);
static_assert(sizeof(raster_input::bytes) >= input_kept + input_chunk + unpacking_step);

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

// CUPS is shown the same format without compression: its headers are the same.
void note_format(raster_guard &guard, unsigned char *bytes)
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
    if (guard.compressed) {
        constexpr uint32_t shown = CUPS_RASTER_SYNC;
        const uint32_t stored = guard.swapped ? __builtin_bswap32(shown) : shown;
        memcpy(bytes, &stored, sizeof stored);
    }
}

uint32_t header_field(const raster_guard &guard, const unsigned char *header, size_t offset)
{
    uint32_t value;
    memcpy(&value, header + offset, sizeof value);
    return guard.swapped ? __builtin_bswap32(value) : value;
}

// The number that CUPS is shown is as good or as bad as the real one in all that CUPS tests.
void hide_forged_row(raster_guard &guard, unsigned char *header)
{
    constexpr size_t offset = offsetof(cups_page_header_t, cupsBytesPerLine);
    const uint32_t row = header_field(guard, header, offset);
    if (row > guard.longest_row) {
        guard.real_row = row;
        const uint32_t shown = harmless_row + row % harmless_row;
        const uint32_t stored = guard.swapped ? __builtin_bswap32(shown) : shown;
        memcpy(header + offset, &stored, sizeof stored);
    }
}

// The colours that have white as their highest number; in all others 0 is white, or no ink.
uint8_t blank_byte(uint32_t color_space)
{
    switch (color_space) {
        case CUPS_CSPACE_W:
        case CUPS_CSPACE_RGB:
        case CUPS_CSPACE_RGBW:
        case CUPS_CSPACE_SW:
        case CUPS_CSPACE_SRGB:
        case CUPS_CSPACE_ADOBERGB:
            return 0xFF;
        default:
            return 0;
    }
}

bool expect_page(raster_guard &guard, const unsigned char *header)
{
    const bool chunked =
        header_field(guard, header, offsetof(cups_page_header_t, cupsColorOrder)) == CUPS_ORDER_CHUNKED;
    const uint32_t bits = header_field(
        guard, header,
        chunked ? offsetof(cups_page_header_t, cupsBitsPerPixel) : offsetof(cups_page_header_t, cupsBitsPerColor));
    return expect_rows(guard.page, header_field(guard, header, offsetof(cups_page_header_t, cupsHeight)),
                       header_field(guard, header, offsetof(cups_page_header_t, cupsBytesPerLine)),
                       bits > 8 ? (bits - 1) / 8 + 1 : 1,
                       blank_byte(header_field(guard, header, offsetof(cups_page_header_t, cupsColorSpace))));
}

ssize_t read_header_bytes(raster_guard &guard, unsigned char *buffer, size_t length)
{
    const ssize_t count = read_whole(guard.input, buffer, length);
    guard.at_header = false;
    if (count == static_cast<ssize_t>(length)) {
        hide_forged_row(guard, buffer);
        if (guard.compressed && !expect_page(guard, buffer)) {
            guard.input.failed = true;
            return -1;
        }
    }
    return count;
}

// Rows of a compressed page. Rows that are there are handed on before more of the stream is waited for.
ssize_t read_rows(raster_guard &guard, unsigned char *buffer, size_t length)
{
    raster_input &input = guard.input;
    size_t done = take_rows(guard.page, buffer, length);
    while (done < length) {
        const uint8_t *codes = input.bytes + input.position;
        const size_t used = unpack_row(guard.page, codes, waiting_bytes(input));
        input.position += used;
        if (used == 0) {
            if (done > 0 || !rows_to_come(guard.page)) {
                break;
            }
            const ssize_t count = read_more(input);
            if (count <= 0 && !end_rows(guard.page, input.bytes + input.position, waiting_bytes(input))) {
                return count;
            }
        }
        done += take_rows(guard.page, buffer + done, length - done);
    }
    return static_cast<ssize_t>(done);
}

}  // namespace

void start_guard(raster_guard &guard, int descriptor, uint32_t longest_row)
{
    guard.input.descriptor = descriptor;
    guard.longest_row = longest_row;
    guard.at_format = true;
}

void end_guard(raster_guard &guard)
{
    free_rows(guard.page);
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
        return read_header_bytes(state, buffer, length);
    }
    return state.compressed ? read_rows(state, buffer, length) : read_raster(&state.input, buffer, length);
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
