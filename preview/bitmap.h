// A small picture of its own: a character, a symbol, a stored logo. 1 bit a dot, most significant bit leftmost, set is
// black.
#ifndef KLOV_PREVIEW_BITMAP_H
#define KLOV_PREVIEW_BITMAP_H

#include "preview/command.h"

namespace preview {

struct Bitmap {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> bits;

    size_t stride() const
    {
        return (width + 7U) / 8;
    }
    Bytes row(uint32_t y) const
    {
        return Bytes(bits).subspan(y * stride(), stride());
    }
    bool dot(uint32_t x, uint32_t y) const
    {
        return (bits[y * stride() + x / 8] >> (7 - x % 8) & 1) != 0;
    }
    void set(uint32_t x, uint32_t y)
    {
        bits[y * stride() + x / 8] |= static_cast<uint8_t>(0x80 >> (x % 8));
    }
};

Bitmap make_bitmap(uint32_t width, uint32_t height);

// Rows of `width` dots as they stand in a command.
Bitmap bitmap_from_rows(uint32_t width, uint32_t height, Bytes data);

// Columns of (height + 7) / 8 bytes, top first, as they stand in a command.
Bitmap bitmap_from_columns(uint32_t width, uint32_t height, Bytes data);

Bitmap scaled(const Bitmap &source, uint32_t horizontal, uint32_t vertical);

// A quarter turn clockwise.
Bitmap turned(const Bitmap &source);

}  // namespace preview

#endif
