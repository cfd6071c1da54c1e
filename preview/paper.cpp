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
    return {slot_bytes(slots_[at]), stride_};
}

uint8_t *Paper::slot_bytes(uint32_t number) const
{
    const uint32_t slot = number - 1;
    return blocks_[slot / rows_per_block].get() + slot % rows_per_block * stride_;
}

uint8_t *Paper::slot_of(size_t row)
{
    if (slots_[row] == 0) {
        if (used_slots_ == blocks_.size() * rows_per_block) {
            blocks_.push_back(std::make_unique_for_overwrite<uint8_t[]>(rows_per_block * stride_));
        }
        slots_[row] = ++used_slots_;
        std::fill_n(slot_bytes(slots_[row]), stride_, uint8_t{0});
    }
    return slot_bytes(slots_[row]);
}

void Paper::print(uint64_t row, int64_t x, Bytes bits, uint32_t dots, uint32_t left, uint32_t right)
{
    if (!extend(row + 1)) {
        return;
    }
    const int64_t first = std::max<int64_t>(x, left);
    const int64_t end = std::min<int64_t>({x + dots, right, width_});
    if (first >= end) {
        return;
    }
    const size_t last_byte = std::min(bits.size(), static_cast<size_t>(end - x + 7) / 8);
    const int64_t shift = (x % 8 + 8) % 8;
    uint8_t *slot = nullptr;
    for (size_t i = static_cast<size_t>(first - x) / 8; i < last_byte; ++i) {
        const int64_t byte_x = x + static_cast<int64_t>(i) * 8;
        unsigned byte = bits[i];
        if (byte_x < first) {
            byte &= 0xFFU >> (first - byte_x);
        }
        if (byte_x + 8 > end) {
            byte &= 0xFFU << (byte_x + 8 - end);
        }
        if (byte == 0) {
            continue;
        }
        slot = slot == nullptr ? slot_of(static_cast<size_t>(row)) : slot;
        // The byte falls on two bytes of the row; of one that begins left of the paper only the second is there.
        const unsigned both = byte << (8 - shift);
        const int64_t at = (byte_x - shift) / 8;
        if (both > 0xFF) {
            slot[at] |= static_cast<uint8_t>(both >> 8);
        }
        if ((both & 0xFF) != 0) {
            slot[at + 1] |= static_cast<uint8_t>(both);
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
