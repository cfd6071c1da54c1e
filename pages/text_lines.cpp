#include "pages/text_lines.h"

#include "pages/text_clean.h"

#include <glib.h>

#include <algorithm>
#include <utility>

namespace pages {
namespace {

constexpr unsigned tab_stop = 8;
// Marks upon one character, and letters of one word; more begin a new one.
constexpr unsigned most_marks = 8;
constexpr unsigned most_letters = 64;
constexpr std::string_view blank = " ";

bool is_mark(char32_t code)
{
    return g_unichar_iszerowidth(code) != FALSE;
}

bool is_leftwards(char32_t code)
{
    switch (g_unichar_get_script(code)) {
        case G_UNICODE_SCRIPT_HEBREW:
        case G_UNICODE_SCRIPT_ARABIC:
        case G_UNICODE_SCRIPT_SYRIAC:
        case G_UNICODE_SCRIPT_THAANA:
        case G_UNICODE_SCRIPT_NKO:
            return true;
        default:
            return false;
    }
}

// Scripts whose letters stand side by side, each in its own cells; all others are drawn word by word.
bool joins(char32_t code)
{
    if (code < 0x590) {
        return false;
    }
    switch (g_unichar_get_script(code)) {
        case G_UNICODE_SCRIPT_COMMON:
        case G_UNICODE_SCRIPT_INHERITED:
        case G_UNICODE_SCRIPT_UNKNOWN:
        case G_UNICODE_SCRIPT_LATIN:
        case G_UNICODE_SCRIPT_GREEK:
        case G_UNICODE_SCRIPT_CYRILLIC:
        case G_UNICODE_SCRIPT_GEORGIAN:
        case G_UNICODE_SCRIPT_HAN:
        case G_UNICODE_SCRIPT_HIRAGANA:
        case G_UNICODE_SCRIPT_KATAKANA:
        case G_UNICODE_SCRIPT_BOPOMOFO:
        case G_UNICODE_SCRIPT_YI:
        case G_UNICODE_SCRIPT_BRAILLE:
        case G_UNICODE_SCRIPT_THAI:
            return false;
        case G_UNICODE_SCRIPT_HANGUL:
            // Syllables stand alone, their parts join.
            return !(code >= 0xAC00 && code <= 0xD7A3) && !(code >= 0x3130 && code <= 0x318F);
        default:
            return true;
    }
}

bool is_blank(const Cell &cell)
{
    return cell.text == blank;
}

// Words may part before and behind wide characters, which need no blanks between them.
bool may_part(const Cell &left, const Cell &right)
{
    if (is_blank(right)) {
        return false;
    }
    const auto stands_alone = [](const Cell &cell) {
        return cell.columns == 2 && !joins(front_character(cell.text).code);
    };
    return is_blank(left) || stands_alone(left) || stands_alone(right);
}

// How many cells of a full line stay when `next` does not fit: up to the last place where words part, or all of them
// when there is none but behind blanks at the front.
std::size_t parting(const std::vector<Cell> &cells, const Cell &next)
{
    const auto indent = std::ranges::find_if_not(cells, is_blank) - cells.begin();
    for (std::size_t kept = cells.size(); kept > static_cast<std::size_t>(indent); --kept) {
        if (may_part(cells[kept - 1], kept < cells.size() ? cells[kept] : next)) {
            return kept;
        }
    }
    return cells.size();
}

bool is_figure(const Cell &cell)
{
    return cell.text.size() == 1 && cell.text[0] >= '0' && cell.text[0] <= '9';
}

bool is_strong(const Cell &cell)
{
    const char32_t code = front_character(cell.text).code;
    return cell.rightwards && g_unichar_isalpha(code) != FALSE;
}

using Place = std::vector<Cell>::iterator;

// Turns cells round; numbers in them, and words that are written to the right, keep their order.
void turn_round(Place from, Place end)
{
    std::reverse(from, end);
    while (from != end) {
        if (!is_strong(*from) && !is_figure(*from)) {
            ++from;
            continue;
        }
        const bool word = is_strong(*from);
        Place last = from;
        for (Place to = from; to != end && to->rightwards && (word || !is_blank(*to)); ++to) {
            if (is_strong(*to) || is_figure(*to)) {
                last = to;
            }
        }
        std::reverse(from, last + 1);
        from = last + 1;
    }
}

// Runs that are written to the left, with blanks and numbers between them.
void turn_runs(std::vector<Cell> &cells)
{
    for (Place from = cells.begin(); from != cells.end(); ++from) {
        if (from->rightwards) {
            continue;
        }
        Place last = from;
        for (Place to = from; to != cells.end() && !is_strong(*to); ++to) {
            if (!to->rightwards) {
                last = to;
            }
        }
        turn_round(from, last + 1);
        from = last;
    }
}

unsigned width_of(const std::vector<Cell> &cells)
{
    unsigned width = 0;
    for (const Cell &cell : cells) {
        width += cell.columns;
    }
    return width;
}

// A line whose first letter is written to the left begins at the right edge.
void finish(Line &line, unsigned columns)
{
    while (!line.cells.empty() && is_blank(line.cells.back())) {
        line.cells.pop_back();
    }
    const auto first = std::ranges::find_if(line.cells, [](const Cell &c) { return !c.rightwards || is_strong(c); });
    const bool leftwards = first != line.cells.end() && !first->rightwards;
    if (std::ranges::all_of(line.cells, &Cell::rightwards)) {
        return;
    }
    if (!leftwards) {
        turn_runs(line.cells);
    } else {
        turn_round(line.cells.begin(), line.cells.end());
        line.cells.insert(line.cells.begin(), columns - std::min(columns, width_of(line.cells)), Cell{blank});
    }
}

}  // namespace

LineBreaker::LineBreaker(std::string_view text, unsigned columns, bool wrap, Measure measure)
    : text_(text), columns_(std::max(columns, 1U)), wrap_(wrap), measure_(std::move(measure))
{
}

// A word of joining letters; when it would not fit into any line, its first letter alone.
Cell LineBreaker::take_word()
{
    const std::size_t start = at_;
    std::size_t end = at_;
    std::size_t first_end = 0;
    const bool rightwards = !is_leftwards(front_character(text_.substr(at_)).code);
    for (unsigned letters = 0; letters < most_letters && end < text_.size(); ++letters) {
        const Character letter = front_character(text_.substr(end));
        if (letter.size == 0 || (letters > 0 && !joins(letter.code) && !is_mark(letter.code)) ||
            (letters > 0 && joins(letter.code) && is_leftwards(letter.code) == rightwards)) {
            break;
        }
        end += letter.size;
        if (first_end == 0) {
            first_end = end;
        }
    }
    for (const std::size_t stop : {end, first_end}) {
        const std::string_view word = text_.substr(start, stop - start);
        const unsigned columns = std::max(measure_(word), 1U);
        if (columns <= columns_ || stop == first_end) {
            at_ = stop;
            return {word, std::min(columns, columns_), rightwards};
        }
    }
    return {};
}

Cell LineBreaker::take_cell()
{
    const Character first = front_character(text_.substr(at_));
    if (first.code == ' ' || first.size == 0) {
        at_ += 1;
        return {blank};
    }
    if (joins(first.code)) {
        return take_word();
    }
    const std::size_t start = at_;
    at_ += first.size;
    unsigned marks = 0;
    while (at_ < text_.size() && static_cast<unsigned char>(text_[at_]) >= 0x80) {
        const Character mark = front_character(text_.substr(at_));
        if (mark.size == 0 || !is_mark(mark.code)) {
            break;
        }
        at_ += mark.size;
        if (++marks == most_marks) {
            break;
        }
    }
    const bool wide = first.code >= 0x1100 && g_unichar_iswide(first.code) != FALSE && columns_ >= 2;
    return {text_.substr(start, at_ - start), wide ? 2U : 1U};
}

void LineBreaker::skip_blanks()
{
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) {
        at_ += 1;
    }
}

void LineBreaker::skip_line()
{
    while (at_ < text_.size() && text_[at_] != '\n' && text_[at_] != '\f') {
        at_ += 1;
    }
}

// Takes a line end or form feed, if that comes next. The line end behind a form feed belongs to it.
bool LineBreaker::end_of_line(Line &line)
{
    if (at_ >= text_.size()) {
        return true;
    }
    if (text_[at_] == '\f') {
        line.ends_page = true;
        at_ += 1;
        return true;
    }
    if (text_[at_] != '\n') {
        return false;
    }
    at_ += 1;
    return true;
}

bool LineBreaker::next(Line &line)
{
    line.cells.clear();
    line.ends_page = false;
    places_.clear();
    if (at_ >= text_.size()) {
        return false;
    }
    unsigned column = 0;
    while (!end_of_line(line)) {
        const std::size_t place = at_;
        if (text_[at_] == '\t') {
            at_ += 1;
            const unsigned stop = std::min(column + tab_stop - column % tab_stop, columns_);
            for (; column < stop; ++column) {
                line.cells.push_back({blank});
                places_.push_back(place);
            }
            continue;
        }
        const Cell cell = take_cell();
        if (column + cell.columns <= columns_) {
            line.cells.push_back(cell);
            places_.push_back(place);
            column += cell.columns;
            continue;
        }
        if (!wrap_) {
            skip_line();
            continue;
        }
        if (is_blank(cell)) {
            skip_blanks();
            end_of_line(line);
            break;
        }
        const std::size_t kept = parting(line.cells, cell);
        at_ = kept < places_.size() ? places_[kept] : place;
        line.cells.resize(kept);
        break;
    }
    finish(line, columns_);
    return true;
}

}  // namespace pages
