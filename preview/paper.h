// The paper: rows of 1 bit a dot. A row that was never printed on costs four bytes; one with ink costs its width.
#ifndef KLOV_PREVIEW_PAPER_H
#define KLOV_PREVIEW_PAPER_H

#include <memory>

#include "preview/bitmap.h"

namespace preview {

class Paper {
public:
    Paper(uint32_t width_dots, uint64_t max_rows);

    uint32_t width() const
    {
        return width_;
    }
    uint64_t rows() const
    {
        return slots_.size();
    }
    // Makes the paper at least so many rows long; false when that is more than the limit (it is then as long as
    // allowed).
    bool extend(uint64_t rows);

    // The row's bytes, or an empty span when it is blank.
    Bytes row(uint64_t index) const;

    // Blackens the set bits of the first `dots` dots of `bits` at column x of a row, which is added when it is missing.
    // Dots outside the columns `left` to `right` - 1 are cut; rows beyond the limit are dropped.
    void print(uint64_t row, int64_t x, Bytes bits, uint32_t dots, uint32_t left, uint32_t right);
    void print(int64_t x, uint64_t y, const Bitmap &bitmap, uint32_t left, uint32_t right);

    // A new sheet. The blocks stay: a page is begun and thrown away by two bytes.
    void clear();

private:
    uint8_t *slot_bytes(uint32_t number) const;
    uint8_t *slot_of(size_t row);

    uint32_t width_;
    size_t stride_;
    uint64_t max_rows_;
    std::vector<uint32_t> slots_;  // per row: 0 blank, else 1 + its place among the inked rows
    std::vector<std::unique_ptr<uint8_t[]>> blocks_;
    uint32_t used_slots_ = 0;
};

}  // namespace preview

#endif
