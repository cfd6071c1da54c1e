// Places a glyph in its cell.
#include "preview/font.h"

namespace preview {
namespace {

uint32_t box_row(const Font &font, uint32_t row)
{
    const uint32_t last = font.glyph_rows - 4;
    const uint32_t full = ((1U << (font.glyph_columns - 2)) - 1U) << 1;
    const uint32_t sides = (1U << (font.glyph_columns - 2)) | 2U;
    if (row < 3 || row > last) {
        return 0;
    }
    return row == 3 || row == last ? full : sides;
}

uint32_t glyph_row(const Font &font, uint8_t character, uint32_t row)
{
    if (character < font_first || character >= font_first + font_glyphs) {
        return box_row(font, row);
    }
    const size_t glyph = character - font_first;
    const uint16_t word = font.glyph_rows == font_a_height ? font_a_rows[glyph][row] : font_b_rows[glyph][row];
    return static_cast<uint32_t>(word) >> (16 - font.glyph_columns);
}

}  // namespace

uint32_t cell_row(const Font &font, uint8_t character, uint32_t row)
{
    if (row < font.top || row >= font.top + font.glyph_rows) {
        return 0;
    }
    const uint32_t right = font.cell_width - font.glyph_columns - font.left;
    return glyph_row(font, character, row - font.top) << right;
}

}  // namespace preview
