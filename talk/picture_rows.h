// A small picture in memory: rows of dots as the printer takes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace talk {

class Rows {
public:
    Rows(int width, int height)
        : stride_(static_cast<size_t>(width / 8)), height_(height), bits_(stride_ * static_cast<size_t>(height))
    {
    }

    void set(int x, int y)
    {
        const auto column = static_cast<size_t>(x);
        if (x >= 0 && y >= 0 && y < height_ && column < stride_ * 8) {
            bits_[static_cast<size_t>(y) * stride_ + column / 8] |= static_cast<uint8_t>(0x80U >> column % 8);
        }
    }

    void fill(int x, int y, int width, int height)
    {
        for (int row = y; row < y + height; row++) {
            for (int column = x; column < x + width; column++) {
                set(column, row);
            }
        }
    }

    int stride() const
    {
        return static_cast<int>(stride_);
    }

    int height() const
    {
        return height_;
    }

    const std::vector<uint8_t> &bits() const
    {
        return bits_;
    }

private:
    size_t stride_;
    int height_;
    std::vector<uint8_t> bits_;
};

}  // namespace talk
