// The rules of tone and dots, written out dot by dot: slow, and obvious.
#ifndef KLOV_TESTS_PAGES_DOTS_REFERENCE_H
#define KLOV_TESTS_PAGES_DOTS_REFERENCE_H

#include "pages/dots.h"
#include "pages/tone.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace pages_test {

struct Grey {
    long width;
    long height;
    std::vector<std::uint8_t> bytes;

    Grey(long columns, long rows, std::uint8_t everywhere = 255)
        : width(columns), height(rows), bytes(static_cast<std::size_t>(columns * rows), everywhere)
    {
    }
    std::uint8_t &at(long x, long y)
    {
        return bytes[static_cast<std::size_t>(y * width + x)];
    }
    // Outside lies paper.
    unsigned ink_source(long x, long y) const
    {
        const bool inside = x >= 0 && y >= 0 && x < width && y < height;
        return inside ? bytes[static_cast<std::size_t>(y * width + x)] : 255U;
    }
    void fill(long left, long top, long columns, long rows, std::uint8_t value)
    {
        for (long y = top; y < top + rows; ++y) {
            for (long x = left; x < left + columns; ++x) {
                at(x, y) = value;
            }
        }
    }
};

struct Dots {
    long width = 0;
    std::vector<std::vector<bool>> rows;

    bool at(long x, long y) const
    {
        return rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
    }
    long count() const
    {
        long sum = 0;
        for (const auto &row : rows) {
            for (const bool dot : row) {
                sum += dot ? 1 : 0;
            }
        }
        return sum;
    }
};

inline Dots dots_of(const Grey &grey, const pages::DotSettings &settings = {}, std::size_t piece = 1)
{
    Dots result;
    result.width = grey.width;
    const auto width = static_cast<std::size_t>(grey.width);
    pages::DotMaker maker(width, settings, [&](const std::uint8_t *bits) {
        std::vector<bool> row(width);
        for (std::size_t x = 0; x < width; ++x) {
            row[x] = (bits[x / 8] >> (7 - x % 8) & 1) != 0;
        }
        result.rows.push_back(row);
    });
    const auto height = static_cast<std::size_t>(grey.height);
    for (std::size_t y = 0; y < height; y += piece) {
        maker.put_rows(grey.bytes.data() + y * width, width, std::min(piece, height - y));
    }
    maker.finish();
    return result;
}

enum class Kind { paper, solid, shaded };

class Rules {
public:
    explicit Rules(const Grey &grey) : grey_(grey) {}

    Kind kind(long x, long y) const
    {
        if (is_paper(x, y)) {
            return Kind::paper;
        }
        if (is_black(x, y)) {
            return Kind::solid;
        }
        if (is_soft_edge(x, y)) {
            return grey_.ink_source(x, y) <= pages::half_covered ? Kind::solid : Kind::paper;
        }
        const bool ink = is_ink(x, y);
        return ink && !in_square(x, y, 5, &Rules::is_ink) && !in_square(x, y, 7, &Rules::is_picture) ? Kind::solid
                                                                                                     : Kind::shaded;
    }

private:
    using Test = bool (Rules::*)(long, long) const;

    bool is_paper(long x, long y) const
    {
        return grey_.ink_source(x, y) >= pages::lightest_ink;
    }
    bool is_black(long x, long y) const
    {
        return grey_.ink_source(x, y) <= pages::darkest_grey;
    }
    bool is_ink(long x, long y) const
    {
        return grey_.ink_source(x, y) <= pages::palest_stroke;
    }
    // Whether some square with this side around the dot passes the test everywhere.
    bool in_square(long x, long y, long side, Test test) const
    {
        for (long top = y - side + 1; top <= y; ++top) {
            for (long left = x - side + 1; left <= x; ++left) {
                if (all_of(left, top, side, test)) {
                    return true;
                }
            }
        }
        return false;
    }
    bool all_of(long left, long top, long side, Test test) const
    {
        for (long y = top; y < top + side; ++y) {
            for (long x = left; x < left + side; ++x) {
                if (!(this->*test)(x, y)) {
                    return false;
                }
            }
        }
        return true;
    }
    bool is_picture(long x, long y) const
    {
        return !in_square(x, y, 2, &Rules::is_paper);
    }
    bool near(long x, long y, long dx, long dy, Test test) const
    {
        return (this->*test)(x + dx, y + dy) || (this->*test)(x + 2 * dx, y + 2 * dy);
    }
    bool is_soft_edge(long x, long y) const
    {
        constexpr long ways[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
        for (const auto &way : ways) {
            if (near(x, y, way[0], way[1], &Rules::is_black) && near(x, y, -way[0], -way[1], &Rules::is_paper)) {
                return true;
            }
        }
        return false;
    }

    const Grey &grey_;
};

// Greys in lumps, so that strokes, edges and areas of every kind come about.
inline Grey random_grey(long width, long height, unsigned seed)
{
    std::mt19937 random(seed);
    Grey grey(width, height);
    constexpr std::uint8_t greys[] = {0, 10, 20, 21, 60, 120, 127, 128, 166, 167, 200, 234, 235, 255};
    const auto shapes = 4 + random() % 24;
    for (std::size_t i = 0; i < shapes; ++i) {
        const long left = static_cast<long>(random() % static_cast<unsigned>(width));
        const long top = static_cast<long>(random() % static_cast<unsigned>(height));
        const long columns = std::min(1 + static_cast<long>(random() % 12), width - left);
        const long rows = std::min(1 + static_cast<long>(random() % 12), height - top);
        grey.fill(left, top, columns, rows, greys[random() % std::size(greys)]);
    }
    for (auto i = random() % 60; i > 0; --i) {
        grey.bytes[random() % grey.bytes.size()] = greys[random() % std::size(greys)];
    }
    return grey;
}

}  // namespace pages_test

#endif
