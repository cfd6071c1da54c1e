// Pages of text: how many columns and lines they have, and the dots of their lines.
#ifndef KLOV_PAGES_TEXT_PAGE_H
#define KLOV_PAGES_TEXT_PAGE_H

#include "pages/job.h"
#include "pages/raster_writer.h"
#include "pages/text_glyphs.h"
#include "pages/text_lines.h"

#include <variant>

namespace pages {

struct TextLayout {
    std::size_t cell_width = 12;   // dots
    std::size_t cell_height = 24;  // from line to line
    unsigned columns = 0;
    std::size_t most_lines = 0;                 // of one page
    std::size_t left = 0, top = 0, bottom = 0;  // margins in dots
    std::size_t row_dots = 0;                   // of a row as it is written, before turning
    std::size_t page_rows = 0;                  // of every page; 0: as many as its lines need
    Turn turn = Turn::none;
    bool mirrored = false;
};

std::variant<TextLayout, Failure> lay_out_text(const Job &job);

// Prints clean text; what fails ends it.
std::optional<Failure> print_text(std::string_view text, const Job &job, RasterWriter &writer);

}  // namespace pages

#endif
