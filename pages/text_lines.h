// Breaks clean text into lines of cells, a fixed number of columns wide.
#ifndef KLOV_PAGES_TEXT_LINES_H
#define KLOV_PAGES_TEXT_LINES_H

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

namespace pages {

// What is drawn as one: a character with its marks, or a word of a script whose letters join.
struct Cell {
    std::string_view text;  // " " for blanks
    unsigned columns = 1;
    bool rightwards = true;  // false: of a script that is written to the left
};

struct Line {
    std::vector<Cell> cells;  // from left to right
    bool ends_page = false;   // a form feed follows
};

class LineBreaker {
public:
    // How many columns a word takes whose letters join.
    using Measure = std::function<unsigned(std::string_view word)>;

    // The text must outlive the lines. Without `wrap`, what does not fit is cut off.
    LineBreaker(std::string_view text, unsigned columns, bool wrap, Measure measure);

    // The next line; false at the end of the text.
    bool next(Line &line);

    // Where the next line begins in the text, and how to come back to it.
    std::size_t position() const
    {
        return at_;
    }
    void seek(std::size_t position)
    {
        at_ = position;
    }

private:
    Cell take_cell();
    Cell take_word();
    void skip_blanks();
    void skip_line();
    bool end_of_line(Line &line);

    std::string_view text_;
    std::size_t at_ = 0;
    unsigned columns_;
    bool wrap_;
    Measure measure_;
    std::vector<std::size_t> places_;  // in the text, of the cells of the line in the making
};

}  // namespace pages

#endif
