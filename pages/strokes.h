// Tells, for every dot of a grey page, whether it is paper, solid or shaded.
//
// Solid are the darkest greys, strokes, and the halves of soft edges that hold more than half of the ink. A stroke is
// what a square of 5 x 5 dots of 35 % ink does not fit into, so at most 4 dots wide whichever way it runs; and it lies
// on paper, its soft edges included: where a square of 7 x 7 dots fits without touching paper, it is the grain of a
// picture. Single white dots, as in noise, are no paper; it takes 2 x 2 of them.
#ifndef KLOV_PAGES_STROKES_H
#define KLOV_PAGES_STROKES_H

#include "pages/bit_row.h"

#include <bit>

namespace pages {

enum class RowKind { paper, solid, shaded };

class StrokeFinder {
public:
    // Rows that must follow a row before it can be told.
    static constexpr std::size_t delay = 7;

    explicit StrokeFinder(std::size_t width);

    // Takes the next row; whether its greys will be asked for.
    bool push(const std::uint8_t *grey);
    void push_paper();
    void clear();

    // For the row that was pushed `delay` rows before the last one: its solid dots, and those to be shaded. Of a row
    // that is paper neither is written.
    RowKind classify(BitRow &solid, BitRow &shaded) const;

private:
    static constexpr std::size_t places = 16;  // rows in memory: `delay` below, as many above, and the row itself
    struct Row {
        explicit Row(std::size_t words);
        BitRow paper, black, dark, stroke_ink;   // dark: half of the ink or more
        BitRow paper_pairs;                      // two dots of paper side by side, the left one marked
        BitRow paper_squares;                    // 2 x 2 of them, the upper left one
        BitRow picture;                          // dots that are not in any such square
        BitRow ink_across, ink_squares;          // 5 dots of stroke ink from here on, 5 x 5
        BitRow picture_across, picture_squares;  // 7 dots of picture, 7 x 7
        RowKind kind = RowKind::paper;
    };

    Row &at(std::size_t age)
    {
        return rows_[(next_ - 1 - age) % places];
    }
    const Row &at(std::size_t age) const
    {
        return rows_[(next_ - 1 - age) % places];
    }
    void split(const std::uint8_t *grey, Row &row);
    void extend();
    Word covered(std::size_t i, BitRow Row::*squares, std::size_t side) const;
    Word soft_edges(std::size_t i) const;

    std::size_t width_;
    std::size_t words_;
    std::vector<Row> rows_;
    std::size_t next_ = places;  // number of the next row; its place is next_ % places
    std::size_t paper_run_;      // rows of paper on end; stops counting when nothing in memory can change any more
    std::vector<std::uint8_t> last_greys_;  // the end of a row, filled up with paper
};

}  // namespace pages

#endif
