#include "pages/text_page.h"

#include "pages/bit_page.h"
#include "pages/image_turn.h"
#include "pages/limits.h"

#include <algorithm>
#include <cmath>

namespace pages {
namespace {

constexpr double points_an_inch = 72;
constexpr double longest_page = 50'000 / 25.4;  // inches; longer text goes on, on the next page
constexpr std::size_t most_pages = 65'535;

struct TextPage {
    std::size_t position;  // of its first line in the text
    std::size_t lines;
};

std::size_t dots_of(double points, const Paper &paper)
{
    return static_cast<std::size_t>(std::lround(std::max(points, 0.0) * paper.dpi / points_an_inch));
}

// Takes the bits of a glyph over into rows, at any dot.
void put_glyph(const Glyph &glyph, std::size_t rows, std::size_t left, std::size_t row_bytes, std::uint8_t *bits)
{
    const unsigned shift = left % 8;
    for (std::size_t y = 0; y < rows; ++y) {
        const std::uint8_t *from = glyph.bits.data() + y * glyph.row_bytes;
        std::uint8_t *to = bits + y * row_bytes + left / 8;
        for (std::size_t i = 0; i < glyph.row_bytes; ++i) {
            to[i] |= static_cast<std::uint8_t>(from[i] >> shift);
            const auto over = static_cast<std::uint8_t>(from[i] << (8 - shift));
            if (over != 0) {
                to[i + 1] |= over;
            }
        }
    }
}

class TextPrinter {
public:
    TextPrinter(std::string_view text, const Job &job, const TextLayout &layout, RasterWriter &writer)
        : job_(job),
          layout_(layout),
          writer_(writer),
          glyphs_(layout.cell_width, layout.cell_height),
          lines_(text, layout.columns, job.wrap, [this](std::string_view word) { return glyphs_.columns_of(word); }),
          row_bytes_((layout.row_dots + 7) / 8),
          band_(row_bytes_ * layout.cell_height)
    {
    }

    std::optional<Failure> run()
    {
        if (auto failure = glyphs_.prepare()) {
            return failure;
        }
        if (auto failure = find_pages()) {
            return failure;
        }
        if (job_.reverse) {
            std::ranges::reverse(pages_);
        }
        const bool repeats = job_.collate && pages_.size() > 1;
        for (unsigned copy = 0; copy < (repeats ? job_.copies : 1); ++copy) {
            for (const TextPage &page : pages_) {
                if (is_cancelled()) {
                    return std::nullopt;
                }
                if (!print_page(page, repeats ? 1 : job_.copies)) {
                    return Failure{"The printer's filter does not take the text."};
                }
            }
        }
        glyphs_.report_missing();
        return std::nullopt;
    }

private:
    // The lines of the page that begins here, the text's end included.
    TextPage next_page()
    {
        TextPage page = {lines_.position(), 0};
        while (page.lines < layout_.most_lines && lines_.next(line_)) {
            page.lines += 1;
            if (line_.ends_page) {
                break;
            }
        }
        return page;
    }

    std::optional<Failure> find_pages()
    {
        unsigned number = 0;
        for (TextPage page = next_page(); page.lines > 0; page = next_page()) {
            number += 1;
            if (is_wanted(job_, number)) {
                pages_.push_back(page);
            }
            if (number == most_pages) {
                return Failure{"The text has too many pages: more than 65535."};
            }
        }
        if (number == 0) {
            return Failure{"The document is empty."};
        }
        if (pages_.empty()) {
            return Failure{"There is nothing to print: the text has no page of those that are asked for."};
        }
        return std::nullopt;
    }

    void draw_line()
    {
        std::fill(band_.begin(), band_.end(), std::uint8_t{0});
        std::size_t left = layout_.left;
        for (const Cell &cell : line_.cells) {
            if (cell.text != " ") {
                const Glyph &glyph = glyphs_.glyph(cell);
                if (!glyph.bits.empty()) {
                    put_glyph(glyph, layout_.cell_height, left, row_bytes_, band_.data());
                }
            }
            left += cell.columns * layout_.cell_width;
        }
    }

    bool print_page(const TextPage &page, unsigned copies)
    {
        const std::size_t needed = layout_.top + page.lines * layout_.cell_height + layout_.bottom;
        const std::size_t rows = layout_.page_rows > 0 ? layout_.page_rows : needed;
        const bool transposed = layout_.turn == Turn::quarter || layout_.turn == Turn::three_quarters;
        RollPage roll;
        roll.width = job_.paper.head_dots;
        roll.height = static_cast<unsigned>(transposed ? layout_.row_dots : rows);
        roll.resolution = job_.paper.resolution;
        roll.copies = copies;
        roll.media = job_.paper.size_name;
        if (!writer_.begin_page(roll)) {
            return false;
        }
        lines_.seek(page.position);
        if (layout_.turn != Turn::none || layout_.mirrored) {
            return print_turned(page, rows) && writer_.end_page();
        }
        bool works = put_blank(layout_.top);
        for (std::size_t i = 0; i < page.lines && works; ++i) {
            lines_.next(line_);
            draw_line();
            works = writer_.put_rows(band_.data(), layout_.cell_height);
        }
        return works && writer_.end_page();
    }

    bool put_blank(std::size_t rows)
    {
        std::fill(band_.begin(), band_.end(), std::uint8_t{0});
        bool works = true;
        while (rows > 0 && works) {
            const std::size_t part = std::min(rows, layout_.cell_height);
            works = writer_.put_rows(band_.data(), part);
            rows -= part;
        }
        return works;
    }

    bool print_turned(const TextPage &page, std::size_t rows)
    {
        BitPage upright(layout_.row_dots, rows);
        std::size_t row = layout_.top;
        for (std::size_t i = 0; i < page.lines && row + layout_.cell_height <= rows; ++i) {
            lines_.next(line_);
            draw_line();
            std::ranges::copy(band_, upright.bits.begin() + static_cast<std::ptrdiff_t>(row * row_bytes_));
            row += layout_.cell_height;
        }
        Turning turning = turning_of(layout_.turn);
        if (layout_.mirrored) {
            turning = then(turning, mirror_turning);
        }
        const std::size_t height = turning.transposed ? upright.width : upright.height;
        BitPage turned(job_.paper.head_dots, height);
        for (std::size_t y = 0; y < upright.height; ++y) {
            for (std::size_t x = 0; x < upright.width; ++x) {
                if (!upright.at(x, y)) {
                    continue;
                }
                const std::size_t from_x = turning.mirrored_x ? upright.width - 1 - x : x;
                const std::size_t from_y = turning.mirrored_y ? upright.height - 1 - y : y;
                const std::size_t to_x = turning.transposed ? from_y : from_x;
                if (to_x < turned.width) {
                    turned.set(to_x, turning.transposed ? from_x : from_y);
                }
            }
        }
        return writer_.put_rows(turned.bits.data(), turned.height);
    }

    const Job &job_;
    TextLayout layout_;
    RasterWriter &writer_;
    GlyphMaker glyphs_;
    LineBreaker lines_;
    std::size_t row_bytes_;
    std::vector<std::uint8_t> band_;  // the dots of one line
    Line line_;
    std::vector<TextPage> pages_;
};

}  // namespace

std::variant<TextLayout, Failure> lay_out_text(const Job &job)
{
    TextLayout layout;
    const Paper &paper = job.paper;
    const bool roll = paper.type == PaperType::roll;
    layout.turn = job.orientation.value_or(Turn::none);
    layout.mirrored = job.mirror;
    if (job.cpi) {
        layout.cell_width = std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(paper.dpi / *job.cpi)));
        layout.cell_height = 2 * layout.cell_width;
    }
    if (job.lpi) {
        layout.cell_height = std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(paper.dpi / *job.lpi)));
    }
    layout.left = dots_of(job.left_margin, paper);
    layout.top = dots_of(job.top_margin, paper);
    layout.bottom = dots_of(job.bottom_margin, paper);
    const std::size_t right = dots_of(job.right_margin, paper);
    const auto longest = static_cast<std::size_t>(longest_page * paper.dpi);
    const std::size_t width =
        roll ? paper.head_dots : std::min<std::size_t>(paper.head_dots, dots_of(paper.page_width, paper));
    const std::size_t length = std::min(dots_of(paper.page_length, paper), longest);
    const bool lengthwise = layout.turn == Turn::quarter || layout.turn == Turn::three_quarters;
    layout.row_dots = lengthwise ? length : roll ? paper.head_dots : width;
    if (!roll || lengthwise) {
        layout.page_rows = lengthwise ? width : length;
    }
    const std::size_t room = layout.page_rows > 0 ? layout.page_rows : longest;
    const std::size_t across = layout.left + right;
    if (across < layout.row_dots) {
        layout.columns = static_cast<unsigned>((layout.row_dots - across) / layout.cell_width);
    }
    if (layout.top + layout.bottom < room) {
        layout.most_lines = (room - layout.top - layout.bottom) / layout.cell_height;
    }
    if (layout.columns == 0 || layout.most_lines == 0) {
        return Failure{"The page has no room for text: its margins or letters are too large."};
    }
    return layout;
}

std::optional<Failure> print_text(std::string_view text, const Job &job, RasterWriter &writer)
{
    const auto laid = lay_out_text(job);
    if (const auto *failure = std::get_if<Failure>(&laid)) {
        return *failure;
    }
    return TextPrinter(text, job, std::get<TextLayout>(laid), writer).run();
}

}  // namespace pages
