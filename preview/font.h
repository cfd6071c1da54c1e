// The built-in text fonts.
#ifndef KLOV_PREVIEW_FONT_H
#define KLOV_PREVIEW_FONT_H

#include <cstddef>
#include <cstdint>

namespace preview {

constexpr size_t font_first = 0x20;
constexpr size_t font_glyphs = 95;
constexpr size_t font_a_height = 20;
constexpr size_t font_b_height = 15;

extern const uint16_t font_a_rows[font_glyphs][font_a_height];
extern const uint16_t font_b_rows[font_glyphs][font_b_height];

// A font and the cell that it prints in. A character that the font lacks is drawn as a hollow box.
struct Font {
    uint32_t cell_width;
    uint32_t cell_height;
    uint32_t glyph_rows;
    uint32_t glyph_columns;
    uint32_t left;  // of the glyph in its cell
    uint32_t top;
};

constexpr Font font_a{12, 24, font_a_height, 10, 1, 2};
constexpr Font font_b{9, 17, font_b_height, 9, 0, 1};

// The dots of one row of a character's cell, most significant of `cell_width` bits leftmost.
uint32_t cell_row(const Font &font, uint8_t character, uint32_t row);

}  // namespace preview

#endif
