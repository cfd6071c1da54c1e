// The row decoder of compressed raster images.
#include "preview/runlength.h"

#include <algorithm>

namespace preview {
namespace {

constexpr int long_run_count = 0x81;
constexpr int no_count = 128;

void produce(RowDecoder &decoder, uint8_t value, uint64_t times)
{
    const uint64_t room = decoder.produced < decoder.width ? decoder.width - decoder.produced : 0;
    const auto first = decoder.row.begin() + static_cast<std::ptrdiff_t>(decoder.width - room);
    std::fill_n(first, std::min(room, times), value);
    decoder.produced += times;
    decoder.accounted += times;
}

void repeat(RowDecoder &decoder, uint8_t value)
{
    const bool continues = decoder.long_run_byte == value;
    if (continues) {
        decoder.overshot = true;
        --decoder.accounted;
    }
    produce(decoder, value, static_cast<uint64_t>(257 - decoder.count));
    decoder.long_run_byte = decoder.count == long_run_count ? value : -1;
    decoder.count = -1;
}

}  // namespace

void start_rows(RowDecoder &decoder, uint32_t width)
{
    decoder = RowDecoder{};
    decoder.width = width;
    start_row(decoder);
}

void start_row(RowDecoder &decoder)
{
    decoder.row.assign(decoder.width, 0);
    decoder.produced = 0;
    decoder.accounted = 0;
    decoder.literals_left = 0;
    decoder.count = -1;
    decoder.long_run_byte = -1;
}

bool row_complete(const RowDecoder &decoder)
{
    // A row of one byte is never coded at all.
    if (decoder.width <= 1) {
        return true;
    }
    // Literals beyond the width are cut, but they are there to be read.
    if (decoder.literals_left > 0 || decoder.count >= 0) {
        return false;
    }
    return (decoder.width < ambiguous_width ? decoder.produced : decoder.accounted) >= decoder.width;
}

size_t read_row(RowDecoder &decoder, Bytes bytes)
{
    size_t position = 0;
    while (position < bytes.size() && !row_complete(decoder)) {
        const uint8_t byte = bytes[position++];
        if (decoder.literals_left > 0) {
            produce(decoder, byte, 1);
            --decoder.literals_left;
        } else if (decoder.count >= 0) {
            repeat(decoder, byte);
        } else if (byte < no_count) {
            decoder.literals_left = byte + 1U;
            decoder.long_run_byte = -1;
        } else if (byte == no_count) {
            decoder.unused_count = true;
        } else {
            decoder.count = byte;
        }
    }
    return position;
}

}  // namespace preview
