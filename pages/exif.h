// What a camera notes down about a picture, as far as printing needs it.
#ifndef KLOV_PAGES_EXIF_H
#define KLOV_PAGES_EXIF_H

#include <cstddef>
#include <cstdint>

namespace pages {

struct Exif {
    unsigned orientation = 1;  // 1 to 8
    double ppi_x = 0;          // pixels an inch; 0: not said
    double ppi_y = 0;
};

// Of the block that begins with the byte order "II" or "MM". What is broken or missing counts as not said.
Exif read_exif(const std::uint8_t *bytes, std::size_t size);

}  // namespace pages

#endif
