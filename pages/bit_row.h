// A row of dots as bits, 64 at a time: dot x is bit x % 64 of word x / 64, so that a shift to the right looks at dots
// further right. One word stands on each side of the row for what lies outside of it.
#ifndef KLOV_PAGES_BIT_ROW_H
#define KLOV_PAGES_BIT_ROW_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace pages {

using Word = std::uint64_t;
constexpr unsigned word_bits = 64;

class BitRow {
public:
    BitRow(std::size_t words, Word everywhere) : bits_(words + 2, everywhere) {}

    Word &operator[](std::size_t i)
    {
        return bits_[i + 1];
    }
    Word operator[](std::size_t i) const
    {
        return bits_[i + 1];
    }

    // For each dot of word i, the dot `distance` (1 to 63) further right or left.
    Word right(std::size_t i, unsigned distance) const
    {
        return bits_[i + 1] >> distance | bits_[i + 2] << (word_bits - distance);
    }
    Word left(std::size_t i, unsigned distance) const
    {
        return bits_[i + 1] << distance | bits_[i] >> (word_bits - distance);
    }

    // The 64 dots to the left of the row.
    Word &left_side()
    {
        return bits_.front();
    }

    // Everything inside the row; what lies outside stays.
    void fill(Word everywhere)
    {
        std::fill(bits_.begin() + 1, bits_.end() - 1, everywhere);
    }

private:
    std::vector<Word> bits_;
};

}  // namespace pages

#endif
