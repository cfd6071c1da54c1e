// Run-length compression of raster rows.
#include "printops/compression.h"

#include "printops/rows.h"

namespace {

constexpr uint64_t every_byte = 0x0101010101010101;

// Of an ordered word: the lowest bit that is set stands in its first zero byte; 0 when there is none.
uint64_t mark_zero_bytes(uint64_t word)
{
    return (word - every_byte) & ~word & (every_byte << 7);
}

// First index from at on whose byte equals the one before it; width when there is none.
uint32_t find_pair(const uint8_t *row, uint32_t at, uint32_t width)
{
    for (; width - at >= 8; at += 8) {
        const uint64_t pairs = mark_zero_bytes(load_ordered(row + at) ^ load_ordered(row + at - 1));
        if (pairs != 0) {
            return at + static_cast<uint32_t>(blank_bytes_before_ink(pairs));
        }
    }
    while (at < width && row[at] != row[at - 1]) {
        at += 1;
    }
    return at;
}

// First index from at on whose byte is not the given one; width when there is none.
uint32_t find_other(const uint8_t *row, uint32_t at, uint32_t width, uint8_t byte)
{
    for (; width - at >= 8; at += 8) {
        const uint64_t difference = load_ordered(row + at) ^ (every_byte * byte);
        if (difference != 0) {
            return at + static_cast<uint32_t>(blank_bytes_before_ink(difference));
        }
    }
    while (at < width && row[at] == byte) {
        at += 1;
    }
    return at;
}

// One row on its way out: start is the first byte not yet emitted.
struct row_coder {
    const uint8_t *row;
    uint32_t start;
    uint8_t *out;
};

// Literal bytes, count less one given.
void emit_literals(row_coder &coder, uint32_t count)
{
    while (count > 127) {
        *coder.out++ = 127;
        memcpy(coder.out, coder.row + coder.start, 128);
        coder.out += 128;
        coder.start += 128;
        count -= 128;
    }
    *coder.out++ = static_cast<uint8_t>(count);
    memcpy(coder.out, coder.row + coder.start, count + 1);
    coder.out += count + 1;
    coder.start += count + 1;
}

// A repeated byte, count less one given. A full chunk repeats 128 times but takes only 127 off.
void emit_run(row_coder &coder, uint16_t count, uint8_t byte)
{
    coder.start += count + 1U;
    while (count > 127) {
        *coder.out++ = 0x81;
        *coder.out++ = byte;
        count = static_cast<uint16_t>(count - 127);
    }
    *coder.out++ = static_cast<uint8_t>(-count);
    *coder.out++ = byte;
}

// Bytes before a run that begins at at - 1, less one, as the printers' counting has it.
uint32_t literals_before(uint32_t start, uint32_t at)
{
    return (at - start - 2) & 0xFF;
}

uint8_t *compress_row(const uint8_t *row, uint32_t width, uint8_t *out)
{
    if (width < 2) {
        return out;
    }
    const uint32_t last = width - 1;
    row_coder coder = {row, 0, out};
    uint32_t at = 1;
    for (;;) {
        at = find_pair(row, at, width);
        if (at == width) {
            emit_literals(coder, (last - coder.start) & 0xFF);
            return coder.out;
        }
        if (at > coder.start + 1) {
            // A run that is only the row's last two bytes stays with the literals before it.
            const uint32_t count = literals_before(coder.start, at);
            emit_literals(coder, at == last ? count + 2 : count);
            if (at == last) {
                return coder.out;
            }
        }
        const uint8_t byte = row[at];
        at = find_other(row, at, width, byte);
        if (at == width) {
            emit_run(coder, static_cast<uint16_t>(last - coder.start), byte);
            return coder.out;
        }
        const uint32_t run = at - coder.start - 1;
        if (at == last) {
            emit_literals(coder, 0);
            emit_run(coder, static_cast<uint16_t>(run), byte);
            return coder.out;
        }
        emit_run(coder, static_cast<uint16_t>(run), byte);
        at += 1;
    }
}

}  // namespace

int32_t tiff_compression(const uint8_t *src, uint32_t width, uint32_t rows, uint8_t *dst, uint32_t *out_len)
{
    uint8_t *out = dst;
    for (uint32_t row = 0; row < rows; ++row) {
        out = compress_row(src + static_cast<size_t>(row) * width, width, out);
    }
    *out_len = static_cast<uint32_t>(out - dst);
    return 0;
}
