// Decodes one row of a compressed raster image. The image has no length field, so where a row ends is known only from
// the bytes that its codes have produced.
//
// A count byte of 0 to 127 is followed by count + 1 literal bytes, a count byte of 129 to 255 by one byte that is
// repeated 257 - count times. The encoder splits a run of more than 128 bytes into chunks of 128 (count 0x81) but takes
// only 127 off what is left for each of them, so every chunk but the last repeats one byte too many. What is produced
// beyond the row's width is cut.
//
// Up to 128 bytes a row has no such chunk. From 129 to 255 bytes a row holds at most one, and its last code always
// contributes two bytes or more, so a row is complete exactly when its width has been produced. From 256 bytes on a row
// can be full before its last code: there the decoder counts a 0x81 chunk that is continued by a run of the same byte
// as the 127 bytes that the encoder took off. Nothing can be done about rows of more than 256 bytes that end in more
// than 256 literals: the encoder drops some of those.
#ifndef KLOV_PREVIEW_RUNLENGTH_H
#define KLOV_PREVIEW_RUNLENGTH_H

#include "preview/command.h"

namespace preview {

// From this width on, where a row ends can depend on how long runs are counted.
constexpr uint32_t ambiguous_width = 256;

struct RowDecoder {
    std::vector<uint8_t> row;  // `width` bytes, those produced so far; the rest zero
    uint32_t width = 0;
    uint64_t produced = 0;      // bytes that the codes stand for
    uint64_t accounted = 0;     // bytes that the encoder took off the row
    bool overshot = false;      // some row had a run that repeats a byte too many
    bool unused_count = false;  // the count byte 128, which means nothing, has been seen
    // The code that is being read.
    uint32_t literals_left = 0;
    int count = -1;          // a repeat count that waits for its byte
    int long_run_byte = -1;  // the last code of this row was 0x81 with this byte
};

void start_rows(RowDecoder &decoder, uint32_t width);
void start_row(RowDecoder &decoder);
bool row_complete(const RowDecoder &decoder);

// Reads bytes until the row is complete or the bytes are used up; returns how many were read.
size_t read_row(RowDecoder &decoder, Bytes bytes);

}  // namespace preview

#endif
