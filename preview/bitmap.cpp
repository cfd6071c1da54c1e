// Small pictures: from command data, scaled, turned.
#include "preview/bitmap.h"

#include <algorithm>

namespace preview {

Bitmap make_bitmap(uint32_t width, uint32_t height)
{
    Bitmap bitmap{width, height, {}};
    bitmap.bits.resize(bitmap.stride() * height);
    return bitmap;
}

Bitmap bitmap_from_rows(uint32_t width, uint32_t height, Bytes data)
{
    Bitmap bitmap = make_bitmap(width, height);
    std::copy_n(data.begin(), std::min(data.size(), bitmap.bits.size()), bitmap.bits.begin());
    return bitmap;
}

Bitmap bitmap_from_columns(uint32_t width, uint32_t height, Bytes data)
{
    Bitmap bitmap = make_bitmap(width, height);
    const size_t column_bytes = (height + 7U) / 8;
    for (uint32_t x = 0; x < width; ++x) {
        for (uint32_t y = 0; y < height; ++y) {
            const size_t index = x * column_bytes + y / 8;
            if (index < data.size() && (data[index] >> (7 - y % 8) & 1) != 0) {
                bitmap.set(x, y);
            }
        }
    }
    return bitmap;
}

Bitmap scaled(const Bitmap &source, uint32_t horizontal, uint32_t vertical)
{
    if (horizontal == 1 && vertical == 1) {
        return source;
    }
    Bitmap bitmap = make_bitmap(source.width * horizontal, source.height * vertical);
    const auto row_bytes = static_cast<std::ptrdiff_t>(bitmap.stride());
    for (uint32_t y = 0; y < source.height; ++y) {
        const uint32_t top = y * vertical;
        for (uint32_t x = 0; x < bitmap.width; ++x) {
            if (source.dot(x / horizontal, y)) {
                bitmap.set(x, top);
            }
        }
        const auto drawn = bitmap.bits.begin() + row_bytes * top;
        for (uint32_t copy = 1; copy < vertical; ++copy) {
            std::copy_n(drawn, row_bytes, drawn + row_bytes * copy);
        }
    }
    return bitmap;
}

Bitmap turned(const Bitmap &source)
{
    Bitmap bitmap = make_bitmap(source.height, source.width);
    for (uint32_t y = 0; y < source.height; ++y) {
        for (uint32_t x = 0; x < source.width; ++x) {
            if (source.dot(x, y)) {
                bitmap.set(source.height - 1 - y, x);
            }
        }
    }
    return bitmap;
}

}  // namespace preview
