#include "pages/strokes.h"

#include "pages/tone.h"

#include <cstring>

namespace pages {
namespace {

constexpr Word all = ~Word{0};
constexpr Word lowest_bits = 0x0101010101010101U;
constexpr Word highest_bits = 0x8080808080808080U;
constexpr std::size_t ink_side = 5;
constexpr std::size_t picture_side = 7;
constexpr std::size_t settled = 32;  // rows of paper after which every row in memory is that of an empty page

// Eight greys, the leftmost in the lowest byte whatever the machine's byte order.
Word eight_greys(const std::uint8_t *grey)
{
    Word result;
    std::memcpy(&result, grey, sizeof result);
    if constexpr (std::endian::native == std::endian::big) {
        result = __builtin_bswap64(result);
    }
    return result;
}

// Of eight greys, a bit for each that is `least` or lighter; the first grey's bit is the lowest.
template <unsigned least>
Word at_least(Word greys)
{
    constexpr Word low = (least & 0x7FU) * lowest_bits;
    const Word seven = (greys | highest_bits) - low;
    const Word result = least >= 0x80 ? greys & seven : greys | seven;
    // The product gathers one bit of each byte in the highest byte.
    return ((result & highest_bits) >> 7) * 0x0102040810204080U >> 56;
}

bool is_paper(const std::uint8_t *grey, std::size_t width)
{
    constexpr Word low = (lightest_ink & 0x7FU) * lowest_bits;
    std::size_t x = 0;
    for (; x + 8 <= width; x += 8) {
        const Word greys = eight_greys(grey + x);
        if ((greys & ((greys | highest_bits) - low) & highest_bits) != highest_bits) {
            return false;
        }
    }
    for (; x < width; ++x) {
        if (grey[x] < lightest_ink) {
            return false;
        }
    }
    return true;
}

}  // namespace

StrokeFinder::Row::Row(std::size_t words)
    : paper(words, all),
      black(words, 0),
      dark(words, 0),
      stroke_ink(words, 0),
      paper_pairs(words, all),
      paper_squares(words, all),
      picture(words, 0),
      ink_across(words, 0),
      ink_squares(words, 0),
      picture_across(words, 0),
      picture_squares(words, 0)
{
}

StrokeFinder::StrokeFinder(std::size_t width)
    : width_(width),
      words_((width + word_bits - 1) / word_bits),
      rows_(places, Row(words_)),
      paper_run_(settled),
      last_greys_(word_bits)
{
}

void StrokeFinder::clear()
{
    rows_.assign(places, Row(words_));
    paper_run_ = settled;
}

bool StrokeFinder::push(const std::uint8_t *grey)
{
    if (is_paper(grey, width_)) {
        push_paper();
        return false;
    }
    paper_run_ = 0;
    next_ += 1;
    Row &row = at(0);
    split(grey, row);
    extend();
    return row.kind == RowKind::shaded;
}

void StrokeFinder::push_paper()
{
    if (paper_run_ >= settled) {
        return;
    }
    paper_run_ += 1;
    next_ += 1;
    Row &row = at(0);
    row.paper.fill(all);
    row.paper_pairs.fill(all);
    row.paper_pairs.left_side() = all;
    row.black.fill(0);
    row.dark.fill(0);
    row.stroke_ink.fill(0);
    row.kind = RowKind::paper;
    extend();
}

void StrokeFinder::split(const std::uint8_t *grey, Row &row)
{
    Word greys_between = 0;
    for (std::size_t i = 0; i < words_; ++i) {
        const std::uint8_t *from = grey + i * word_bits;
        if ((i + 1) * word_bits > width_) {
            // What lies beyond the row's end is paper.
            std::fill(last_greys_.begin(), last_greys_.end(), std::uint8_t{255});
            std::memcpy(last_greys_.data(), from, width_ - i * word_bits);
            from = last_greys_.data();
        }
        Word paper = 0;
        Word grey_or_paper = 0;
        Word light = 0;
        Word pale = 0;
        for (unsigned group = 0; group < word_bits; group += 8) {
            const Word greys = eight_greys(from + group);
            paper |= at_least<lightest_ink>(greys) << group;
            grey_or_paper |= at_least<darkest_grey + 1>(greys) << group;
            light |= at_least<half_covered + 1>(greys) << group;
            pale |= at_least<palest_stroke + 1>(greys) << group;
        }
        row.paper[i] = paper;
        row.black[i] = ~grey_or_paper;
        row.dark[i] = ~light;
        row.stroke_ink[i] = ~pale;
        greys_between |= grey_or_paper & ~paper;
    }
    for (std::size_t i = 0; i < words_; ++i) {
        row.paper_pairs[i] = row.paper[i] & row.paper.right(i, 1);
    }
    // The pair that the row's first dot makes with the one outside.
    row.paper_pairs.left_side() = all >> 1 | row.paper[0] << (word_bits - 1);
    row.kind = greys_between != 0 ? RowKind::shaded : RowKind::solid;
}

// Everything that the new row completes: squares end in it, or one row above.
void StrokeFinder::extend()
{
    Row &first = at(0);
    Row &second = at(1);
    for (std::size_t i = 0; i < words_; ++i) {
        second.paper_squares[i] = second.paper_pairs[i] & first.paper_pairs[i];
    }
    second.paper_squares.left_side() = second.paper_pairs.left_side() & first.paper_pairs.left_side();
    const BitRow &above = at(2).paper_squares;
    for (std::size_t i = 0; i < words_; ++i) {
        const BitRow &here = second.paper_squares;
        second.picture[i] = ~(here[i] | here.left(i, 1) | above[i] | above.left(i, 1));
    }
    for (std::size_t i = 0; i < words_; ++i) {
        Word across = second.picture[i];
        for (unsigned distance = 1; distance < picture_side; ++distance) {
            across &= second.picture.right(i, distance);
        }
        second.picture_across[i] = across;
        Word ink = first.stroke_ink[i];
        for (unsigned distance = 1; distance < ink_side; ++distance) {
            ink &= first.stroke_ink.right(i, distance);
        }
        first.ink_across[i] = ink;
    }
    for (std::size_t i = 0; i < words_; ++i) {
        Word picture = all;
        for (std::size_t age = 1; age <= picture_side; ++age) {
            picture &= at(age).picture_across[i];
        }
        at(picture_side).picture_squares[i] = picture;
        Word ink = all;
        for (std::size_t age = 0; age < ink_side; ++age) {
            ink &= at(age).ink_across[i];
        }
        at(ink_side - 1).ink_squares[i] = ink;
    }
}

// The dots of the row in question that lie in a square.
Word StrokeFinder::covered(std::size_t i, BitRow Row::*squares, std::size_t side) const
{
    Word result = 0;
    for (std::size_t up = 0; up < side; ++up) {
        const BitRow &row = at(delay + up).*squares;
        result |= row[i];
        for (unsigned distance = 1; distance < side; ++distance) {
            result |= row.left(i, distance);
        }
    }
    return result;
}

// Grey dots with black within two dots on one side and paper within two on the opposite one.
Word StrokeFinder::soft_edges(std::size_t i) const
{
    const Row &row = at(delay);
    const Row &up = at(delay + 1);
    const Row &up2 = at(delay + 2);
    const Row &down = at(delay - 1);
    const Row &down2 = at(delay - 2);
    const Word black_left = row.black.left(i, 1) | row.black.left(i, 2);
    const Word black_right = row.black.right(i, 1) | row.black.right(i, 2);
    const Word paper_left = row.paper.left(i, 1) | row.paper.left(i, 2);
    const Word paper_right = row.paper.right(i, 1) | row.paper.right(i, 2);
    const Word black_up = up.black[i] | up2.black[i];
    const Word black_down = down.black[i] | down2.black[i];
    const Word paper_up = up.paper[i] | up2.paper[i];
    const Word paper_down = down.paper[i] | down2.paper[i];
    return (black_left & paper_right) | (black_right & paper_left) | (black_up & paper_down) | (black_down & paper_up);
}

RowKind StrokeFinder::classify(BitRow &solid, BitRow &shaded) const
{
    const Row &row = at(delay);
    if (row.kind == RowKind::paper) {
        return RowKind::paper;
    }
    Word any = 0;
    for (std::size_t i = 0; i < words_; ++i) {
        const Word grey = ~(row.paper[i] | row.black[i]);
        solid[i] = row.black[i];
        shaded[i] = 0;
        if (grey == 0) {
            continue;
        }
        const Word edge = grey & soft_edges(i);
        const Word wide = covered(i, &Row::ink_squares, ink_side) | covered(i, &Row::picture_squares, picture_side);
        const Word stroke = grey & ~edge & row.stroke_ink[i] & ~wide;
        solid[i] |= stroke | (edge & row.dark[i]);
        shaded[i] = grey & ~edge & ~stroke;
        any |= shaded[i];
    }
    return any != 0 ? RowKind::shaded : RowKind::solid;
}

}  // namespace pages
