// A PNG file read back with libpng.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace test {

struct Png {
    uint32_t width = 0;
    uint32_t height = 0;
    int bit_depth = 0;
    uint32_t dots_a_metre = 0;
    std::vector<uint8_t> rgb;

    uint32_t colour(uint32_t x, uint32_t y) const;
    bool black(uint32_t x, uint32_t y) const
    {
        return colour(x, y) == 0;
    }
};

// Width 0 when the file is not a PNG.
Png read_png(const std::string &path);

// A directory of its own for each test.
std::string temporary_folder();

}  // namespace test
