// The guard between the raster stream and CUPS.
//
// A header is what CUPS reads first when it is asked for one, provided that it holds no bytes back. It reads ahead only
// in compressed streams; there it is given no byte beyond the page.
#include "filter/raster_guard.h"

#include <stddef.h>
#include <string.h>

namespace {

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

void expect_page(raster_guard &guard, const unsigned char *header)
{
    const bool chunked =
        header_field(guard, header, offsetof(cups_page_header_t, cupsColorOrder)) == CUPS_ORDER_CHUNKED;
    const uint32_t bits = header_field(
        guard, header,
        chunked ? offsetof(cups_page_header_t, cupsBitsPerPixel) : offsetof(cups_page_header_t, cupsBitsPerColor));
    guard.page = {};
    guard.page.rows_left = header_field(guard, header, offsetof(cups_page_header_t, cupsHeight));
    guard.page.row_size = header_field(guard, header, offsetof(cups_page_header_t, cupsBytesPerLine));
    guard.page.pixel_size = bits > 8 ? (bits - 1) / 8 + 1 : 1;
    guard.page_bytes = 0;
}

ssize_t read_header_bytes(raster_guard &guard, unsigned char *buffer, size_t length)
{
    const ssize_t count = read_whole(guard.input, buffer, length);
    guard.at_header = false;
    if (count == static_cast<ssize_t>(length)) {
        hide_forged_row(guard, buffer);
        expect_page(guard, buffer);
    }
    return count;
}

// Rows of a compressed page. CUPS asks for no more of them when the page has ended; should it do so all the same, it
// knows better.
ssize_t read_page_bytes(raster_guard &guard, unsigned char *buffer, size_t length)
{
    if (guard.page_bytes == 0) {
        const ssize_t waiting = fill_input(&guard.input);
        if (waiting <= 0) {
            return waiting;
        }
        guard.page_bytes =
            walk_page(guard.page, guard.input.bytes + guard.input.position, static_cast<size_t>(waiting));
    }
    const size_t known = guard.page_bytes > 0 ? guard.page_bytes : 1;
    const ssize_t count = read_raster(&guard.input, buffer, length < known ? length : known);
    guard.page_bytes -= guard.page_bytes > 0 && count > 0 ? static_cast<size_t>(count) : 0;
    return count;
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
        return read_header_bytes(state, buffer, length);
    }
    return state.compressed ? read_page_bytes(state, buffer, length) : read_raster(&state.input, buffer, length);
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
