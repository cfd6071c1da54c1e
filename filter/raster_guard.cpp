// The guard between the raster stream and CUPS.
//
// It has to know where headers begin, so CUPS must never hold bytes back when it asks for one. Of an uncompressed
// stream it reads what it needs. Of a compressed one it would read ahead, but a read may bring as little as it likes:
// with one byte at a time nothing is left over, whatever CUPS does with it.
#include "filter/raster_guard.h"

#include <endian.h>
#include <string.h>

namespace {

// Apple's raster, which CUPS reads too, has a header of its own: bits of a pixel in byte 0, pixels of a row in bytes 12
// to 15, big-endian in either byte order.
constexpr size_t apple_header_size = 32;

uint32_t in_host_order(const raster_guard &guard, uint32_t value)
{
    return guard.swapped ? __builtin_bswap32(value) : value;
}

uint32_t load_word(const raster_guard &guard, const uint8_t *from)
{
    uint32_t value;
    memcpy(&value, from, sizeof value);
    return in_host_order(guard, value);
}

void note_format(raster_guard &guard, const uint8_t *word)
{
    struct format {
        uint32_t word;
        bool compressed;
        size_t header_size;
    };
    static constexpr format formats[] = {
        {CUPS_RASTER_SYNCv1, false, sizeof(cups_page_header_t)},
        {CUPS_RASTER_SYNCv2, true, sizeof(cups_page_header2_t)},
        {CUPS_RASTER_SYNC, false, sizeof(cups_page_header2_t)},
        {CUPS_RASTER_SYNCapple, true, apple_header_size},
    };
    const uint32_t value = load_word(guard, word);
    for (const format &known : formats) {
        if (value == known.word || value == __builtin_bswap32(known.word)) {
            guard.swapped = value != known.word;
            guard.compressed = known.compressed;
            guard.header_size = known.header_size;
        }
    }
}

// CUPS takes a row that is a whole number of pixels, or of one colour's numbers where colours come apart. What it is
// shown instead of the real row is as good or as bad. Only the size counts for nothing: CUPS would take a header with a
// row of 2 GiB for the end of the stream, and the page would vanish without a word.
uint32_t row_to_show(const raster_guard &guard, const uint8_t *header, uint32_t row)
{
    const uint32_t order = load_word(guard, header + offsetof(cups_page_header_t, cupsColorOrder));
    const size_t depth = order == CUPS_ORDER_CHUNKED ? offsetof(cups_page_header_t, cupsBitsPerPixel)
                                                     : offsetof(cups_page_header_t, cupsBitsPerColor);
    const uint32_t bits = load_word(guard, header + depth);
    constexpr uint32_t deepest = 240;  // CUPS refuses more bits, whatever the row
    const uint32_t unit = bits > 8 && bits <= deepest ? (bits + 7) / 8 : 1;
    return unit + row % unit;
}

void hide_long_row(raster_guard &guard, uint8_t *header)
{
    uint8_t *const field = header + offsetof(cups_page_header_t, cupsBytesPerLine);
    const uint32_t row = load_word(guard, field);
    if (row > guard.longest_row) {
        guard.real_row = row;
        const uint32_t shown = in_host_order(guard, row_to_show(guard, header, row));
        memcpy(field, &shown, sizeof shown);
    }
}

// Apple's headers ask for no copies, so nothing of their pages is ever printed: one that is too wide ends the stream.
void refuse_wide_page(raster_guard &guard, const uint8_t *header)
{
    uint32_t pixels;
    memcpy(&pixels, header + 12, sizeof pixels);
    guard.input.failed = uint64_t{be32toh(pixels)} * header[0] / 8 > guard.longest_row;
}

void look_at_header(raster_guard &guard, uint8_t *header)
{
    if (guard.header_size == apple_header_size) {
        refuse_wide_page(guard, header);
    } else {
        hide_long_row(guard, header);
    }
}

}  // namespace

void start_guard(raster_guard &guard, int descriptor, uint32_t longest_row)
{
    guard.input.descriptor = descriptor;
    guard.longest_row = longest_row;
}

ssize_t read_guarded(void *guard, unsigned char *buffer, size_t length)
{
    raster_guard &state = *static_cast<raster_guard *>(guard);
    size_t most = state.compressed ? 1 : length;
    if (!state.opened) {
        state.opened = true;
        most = sizeof(uint32_t);
        if (const uint8_t *const word = gather(state.input, most)) {
            note_format(state, word);
        }
    } else if (state.at_header) {
        state.at_header = false;
        most = state.header_size;
        if (uint8_t *const header = gather(state.input, most)) {
            look_at_header(state, header);
        }
    } else {
        gather(state.input, 1);
    }
    return take(state.input, buffer, length < most ? length : most);
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
