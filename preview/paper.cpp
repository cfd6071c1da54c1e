// Rows of the paper, kept in blocks so that nothing moves while the roll grows.
#include "preview/paper.h"

#include <algorithm>

namespace preview {
namespace {

constexpr uint32_t rows_per_block = 1024;

}  // namespace

Paper::Paper(uint32_t width_dots, uint64_t max_rows)
    : width_(width_dots), stride_((width_dots + 7U) / 8), max_rows_(std::min<uint64_t>(max_rows, UINT32_MAX - 1))
{
}

void Paper::clear()
{
    slots_.clear();
    blocks_.clear();
    used_slots_ = 0;
}

bool Paper::extend(uint64_t rows)
{
    if (rows > slots_.size()) {
        slots_.resize(static_cast<size_t>(std::min(rows, max_rows_)));
    }
    return rows <= max_rows_;
}

Bytes Paper::row(uint64_t index) const
{
    const size_t at = static_cast<size_t>(index);
    if (index >= slots_.size() || slots_[at] == 0) {
        return {};
    }
    const uint32_t slot = slots_[at] - 1;
    return {blocks_[slot / rows_per_block].get() + slot % rows_per_block * stride_, stride_};
}

uint8_t *Paper::slot_of(size_t row)
{
    if (slots_[row] == 0) {
        if (used_slots_ % rows_per_block == 0) {
            blocks_.push_back(std::make_unique<uint8_t[]>(rows_per_block * stride_));
        }
        slots_[row] = ++used_slots_;
    }
    const uint32_t slot = slots_[row] - 1;
    return blocks_[slot / rows_per_block].get() + slot % rows_per_block * stride_;
}

void Paper::print(uint64_t row, int64_t x, Bytes bits, uint32_t dots, uint32_t left, uint32_t right)
{
    if (!extend(row + 1)) {
        return;
    }
    const int64_t clip_left = left;
    const int64_t clip_right = std::min(right, width_);
    uint8_t *slot = nullptr;
    const size_t used = std::min<size_t>(bits.size(), (dots + 7U) / 8);
    for (size_t i = 0; i < used; ++i) {
        if (bits[i] == 0) {
            continue;
        }
        slot = slot == nullptr ? slot_of(static_cast<size_t>(row)) : slot;
        const int64_t byte_x = x + static_cast<int64_t>(i) * 8;
        const bool whole = byte_x % 8 == 0 && byte_x >= clip_left && byte_x + 8 <= clip_right && (i + 1) * 8 <= dots;
        if (whole) {
            slot[byte_x / 8] |= bits[i];
            continue;
        }
        for (int bit = 0; bit < 8; ++bit) {
            const int64_t dot_x = byte_x + bit;
            const bool inside = dot_x >= clip_left && dot_x < clip_right && i * 8 + static_cast<size_t>(bit) < dots;
            if (inside && (bits[i] >> (7 - bit) & 1) != 0) {
                slot[dot_x / 8] |= static_cast<uint8_t>(0x80 >> (dot_x % 8));
            }
        }
    }
}

void Paper::print(int64_t x, uint64_t y, const Bitmap &bitmap, uint32_t left, uint32_t right)
{
    for (uint32_t row = 0; row < bitmap.height; ++row) {
        print(y + row, x, bitmap.row(row), bitmap.width, left, right);
    }
}

}  // namespace preview
