// A block of camera notes for the tests.
#ifndef KLOV_TESTS_PAGES_EXIF_BLOCK_H
#define KLOV_TESTS_PAGES_EXIF_BLOCK_H

#include <cstdint>
#include <vector>

namespace pages_test {

inline std::vector<std::uint8_t> exif_block(bool big, unsigned orientation, unsigned resolution, unsigned unit)
{
    std::vector<std::uint8_t> block;
    const auto put = [&](unsigned value, unsigned bytes) {
        for (unsigned i = 0; i < bytes; ++i) {
            block.push_back(static_cast<std::uint8_t>(value >> 8 * (big ? bytes - 1 - i : i)));
        }
    };
    const auto short_entry = [&](unsigned tag, unsigned value) {
        put(tag, 2);
        put(3, 2);
        put(1, 4);
        put(value, 2);
        put(0, 2);
    };
    constexpr unsigned fractions = 8 + 2 + 4 * 12 + 4;
    block.assign(2, big ? 'M' : 'I');
    put(42, 2);
    put(8, 4);
    put(4, 2);
    short_entry(0x112, orientation);
    for (unsigned i = 0; i < 2; ++i) {
        put(0x11A + i, 2);
        put(5, 2);
        put(1, 4);
        put(fractions + 8 * i, 4);
    }
    short_entry(0x128, unit);
    put(0, 4);
    for (unsigned i = 0; i < 2; ++i) {
        put(resolution, 4);
        put(1, 4);
    }
    return block;
}

}  // namespace pages_test

#endif
