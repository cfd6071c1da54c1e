#include "pages/exif.h"

#include <algorithm>

namespace pages {
namespace {

constexpr double inch = 2.54;  // centimetres
constexpr std::size_t header_bytes = 8;
constexpr std::size_t entry_bytes = 12;
enum Tag : unsigned { orientation_tag = 0x112, x_resolution_tag = 0x11A, y_resolution_tag = 0x11B, unit_tag = 0x128 };
enum Unit : unsigned { per_inch = 2, per_centimetre = 3 };

// Numbers at places that the block itself names; outside of it everything is 0.
class Block {
public:
    Block(const std::uint8_t *bytes, std::size_t size) : bytes_(bytes), size_(size), big_(size > 0 && bytes[0] == 'M')
    {
    }

    unsigned number(std::size_t at, std::size_t count) const
    {
        if (at > size_ || count > size_ - at) {
            return 0;
        }
        unsigned value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            value = value << 8 | bytes_[at + (big_ ? i : count - 1 - i)];
        }
        return value;
    }

    double fraction(std::size_t at) const
    {
        const unsigned below = number(at + 4, 4);
        return below == 0 ? 0 : static_cast<double>(number(at, 4)) / below;
    }

private:
    const std::uint8_t *bytes_;
    std::size_t size_;
    bool big_;
};

}  // namespace

Exif read_exif(const std::uint8_t *bytes, std::size_t size)
{
    Exif result;
    const bool has_order = size >= header_bytes && bytes[0] == bytes[1] && (bytes[0] == 'I' || bytes[0] == 'M');
    const Block block(bytes, size);
    if (!has_order || block.number(2, 2) != 42) {
        return result;
    }
    const std::size_t directory = block.number(4, 4);
    unsigned unit = per_inch;
    const unsigned entries = block.number(directory, 2);
    for (std::size_t i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + i * entry_bytes;
        if (entry > size) {
            break;
        }
        const unsigned tag = block.number(entry, 2);
        const unsigned small = block.number(entry + 8, 2);
        const std::size_t place = block.number(entry + 8, 4);
        if (tag == orientation_tag && small >= 1 && small <= 8) {
            result.orientation = small;
        } else if (tag == x_resolution_tag) {
            result.ppi_x = block.fraction(place);
        } else if (tag == y_resolution_tag) {
            result.ppi_y = block.fraction(place);
        } else if (tag == unit_tag) {
            unit = small;
        }
    }
    const double factor = unit == per_inch ? 1 : unit == per_centimetre ? inch : 0;
    result.ppi_x *= factor;
    result.ppi_y *= factor;
    return result;
}

}  // namespace pages
