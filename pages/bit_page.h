// A whole page of dots, to be turned: 8 dots a byte, the leftmost in the highest bit.
#ifndef KLOV_PAGES_BIT_PAGE_H
#define KLOV_PAGES_BIT_PAGE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace pages {

struct BitPage {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint8_t> bits;

    BitPage(std::size_t columns, std::size_t rows) : width(columns), height(rows), bits(row_bytes() * rows) {}

    std::size_t row_bytes() const
    {
        return (width + 7) / 8;
    }
    bool at(std::size_t x, std::size_t y) const
    {
        return (bits[y * row_bytes() + x / 8] >> (7 - x % 8) & 1) != 0;
    }
    void set(std::size_t x, std::size_t y)
    {
        bits[y * row_bytes() + x / 8] |= static_cast<std::uint8_t>(0x80U >> x % 8);
    }
};

}  // namespace pages

#endif
