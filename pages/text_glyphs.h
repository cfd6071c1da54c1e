// Pictures of cells: every character is drawn once, by Pango with whatever font has it, and kept.
#ifndef KLOV_PAGES_TEXT_GLYPHS_H
#define KLOV_PAGES_TEXT_GLYPHS_H

#include "pages/job.h"
#include "pages/text_lines.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

namespace pages {

struct Glyph {
    std::size_t width = 0;           // dots
    std::size_t row_bytes = 0;       // 8 dots a byte, the leftmost in the highest bit
    std::vector<std::uint8_t> bits;  // empty: nothing to see
};

class GlyphMaker {
public:
    // Cells of this size in dots.
    GlyphMaker(std::size_t width, std::size_t height);
    ~GlyphMaker();
    GlyphMaker(const GlyphMaker &) = delete;
    GlyphMaker &operator=(const GlyphMaker &) = delete;

    // Fonts that are needed and not there; nothing when all is well enough to print.
    std::optional<Failure> prepare();

    unsigned columns_of(std::string_view word);
    const Glyph &glyph(const Cell &cell);

    // One warning about the characters that no font had, if there were any.
    void report_missing() const;

private:
    struct Pango;
    Glyph draw(const Cell &cell);
    void note_missing(std::string_view text);

    std::size_t width_, height_;
    std::unique_ptr<Pango> pango_;
    std::unordered_map<std::string, Glyph> glyphs_;
    std::unordered_map<std::string, unsigned> word_columns_;
    std::vector<std::string> missing_;
    std::size_t missing_count_ = 0;
};

}  // namespace pages

#endif
