// Fine pixels to dots. A page is drawn several times as fine as the print head without smoothing; a dot then takes the
// colour that is drawn on enough of it. So bars and stems come out as wide as they are drawn, to the nearest dot, black
// stays black and the grey of pictures stays grey.
#ifndef KLOV_PAGES_COVERAGE_H
#define KLOV_PAGES_COVERAGE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace pages {

// Rows of grey pixels, fine_pixels x fine_pixels of them a dot (0 is ink, 255 is paper), become rows of grey dots:
//   - of two greys in a dot, the darker wins when it covers half or more;
//   - three or more greys, as pictures have them, are averaged;
//   - a stroke that covers half of no dot still is one dot wide: nothing drawn vanishes.
// Thin strokes show only by the rows around, so rows leave two rows late; finish() sends the rest.
class Coverage {
public:
    static constexpr unsigned fine_pixels = 4;
    using RowSink = std::function<void(const std::uint8_t *grey)>;

    Coverage(std::size_t width, RowSink sink);

    // Rows come in fours; `stride` is the distance from fine row to fine row in bytes, each has 4 * width pixels.
    void put_rows(const std::uint8_t *fine, std::size_t stride, std::size_t rows);
    // The same of one bit a pixel, the leftmost in the highest bit, a set bit paper.
    void put_bits(const std::uint8_t *fine, std::size_t stride, std::size_t rows);
    // Rows of nothing but paper, as put_rows would take them.
    void put_blank_rows(std::size_t rows);
    void finish();

private:
    struct Row {
        std::vector<std::uint8_t> ink;   // fine pixels of the darker grey: 0 is paper, `taken` a dot that is decided
        std::vector<std::uint8_t> grey;  // of the dot as it stands
        std::vector<std::uint8_t> dark;  // the darker grey of an undecided dot
        bool blank = true;
        bool undecided = false;  // some dot has less than enough ink
    };
    static constexpr std::size_t around = 2;
    static constexpr std::uint8_t taken = 255;

    void measure(const std::uint8_t *fine, std::size_t stride, Row &row) const;
    void measure_dot(const std::uint8_t *fine, std::size_t stride, std::size_t x, Row &row) const;
    void measure_bits(const std::uint8_t *fine, std::size_t stride, Row &row) const;
    static void clear(Row &row);
    void next_row();
    void keep_strokes();
    static bool is_soft_edge(unsigned one_end, unsigned other_end);
    bool is_upright_stroke(std::size_t x) const;
    bool is_level_stroke(std::size_t x) const;
    const Row &row_at(int distance) const
    {
        return rows_.begin()[std::ptrdiff_t{around} + distance];
    }

    std::size_t width_;
    RowSink sink_;
    std::array<Row, 2 * around + 1> rows_;  // the middle one is the next to leave
    std::size_t came_ = 0;                  // rows of dots
    std::size_t left_ = 0;
};

}  // namespace pages

#endif
