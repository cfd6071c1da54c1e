#include "pages/coverage.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace pages {

namespace {

constexpr unsigned fine = Coverage::fine_pixels;
constexpr unsigned fine_area = fine * fine;
// Of an upright or level edge a quarter, a half or three quarters of a dot are covered. Half is enough for bars, and a
// picture of single dots, which poppler draws up to one fine pixel off, still comes out dot for dot.
constexpr unsigned enough = fine_area / 2;
// Less ink than a quarter of a dot along three dots is dust, not a stroke.
constexpr unsigned least_stroke = fine_area / 4;
constexpr std::uint8_t paper = 255;
constexpr std::uint32_t paper_pixels = 0xffffffff;

std::uint32_t pixels_at(const std::uint8_t *at)
{
    std::uint32_t pixels = 0;
    static_assert(sizeof pixels == fine);
    memcpy(&pixels, at, sizeof pixels);
    return pixels;
}

bool is_paper(const std::uint8_t *pixels, std::size_t count)
{
    return pixels[0] == paper && memcmp(pixels, pixels + 1, count - 1) == 0;
}

}  // namespace

Coverage::Coverage(std::size_t width, RowSink sink) : width_(width), sink_(std::move(sink))
{
    for (Row &row : rows_) {
        row.ink.assign(width, 0);
        row.grey.assign(width, paper);
        row.dark.assign(width, paper);
    }
}

void Coverage::put_rows(const std::uint8_t *pixels, std::size_t stride, std::size_t rows)
{
    for (std::size_t y = 0; y + fine <= rows; y += fine) {
        measure(pixels + y * stride, stride, rows_.back());
        next_row();
    }
}

void Coverage::put_bits(const std::uint8_t *bits, std::size_t stride, std::size_t rows)
{
    for (std::size_t y = 0; y + fine <= rows; y += fine) {
        measure_bits(bits + y * stride, stride, rows_.back());
        next_row();
    }
}

void Coverage::put_blank_rows(std::size_t rows)
{
    for (std::size_t y = 0; y + fine <= rows; y += fine) {
        if (!rows_.back().blank)
            clear(rows_.back());
        next_row();
    }
}

void Coverage::finish()
{
    for (const std::size_t end = came_; left_ < end;)
        put_blank_rows(fine);
    for (Row &row : rows_)
        clear(row);
    came_ = left_ = 0;
}

void Coverage::clear(Row &row)
{
    std::ranges::fill(row.ink, 0);
    std::ranges::fill(row.grey, paper);
    row.blank = true;
    row.undecided = false;
}

// The last row is measured: the one in the middle has all the rows around it and leaves.
void Coverage::next_row()
{
    if (++came_ > around) {
        keep_strokes();
        sink_(row_at(0).grey.data());
        left_++;
    }
    std::rotate(rows_.begin(), rows_.begin() + 1, rows_.end());
}

void Coverage::measure(const std::uint8_t *pixels, std::size_t stride, Row &row) const
{
    bool blank = true;
    for (unsigned y = 0; y < fine; y++)
        blank = blank && is_paper(pixels + y * stride, width_ * fine);
    if (blank) {
        if (!row.blank)
            clear(row);
        return;
    }
    row.blank = false;
    row.undecided = false;
    for (std::size_t x = 0; x < width_; x++)
        measure_dot(pixels + x * fine, stride, x, row);
}

// A dot is four bits of four rows.
void Coverage::measure_bits(const std::uint8_t *bits, std::size_t stride, Row &row) const
{
    bool blank = true;
    const std::size_t whole_bytes = width_ * fine / 8;
    for (unsigned y = 0; y < fine && blank; y++)
        blank = whole_bytes > 0 && is_paper(bits + y * stride, whole_bytes);
    if (blank && width_ % 2 == 0) {
        if (!row.blank)
            clear(row);
        return;
    }
    row.blank = false;
    row.undecided = false;
    for (std::size_t x = 0; x < width_; x++) {
        unsigned pixels = 0;
        for (unsigned y = 0; y < fine; y++) {
            const unsigned byte = bits[y * stride + x / 2];
            pixels = pixels << fine | (x % 2 ? byte & 15U : byte >> 4);
        }
        const auto dark = static_cast<unsigned>(std::popcount(~pixels & 0xffffU));
        const bool undecided = dark > 0 && dark < enough;
        row.ink[x] = dark == 0 ? 0 : undecided ? static_cast<std::uint8_t>(dark) : taken;
        row.dark[x] = 0;
        row.grey[x] = dark >= enough ? 0 : paper;
        row.undecided = row.undecided || undecided;
    }
}

void Coverage::measure_dot(const std::uint8_t *pixels, std::size_t stride, std::size_t x, Row &row) const
{
    const std::uint32_t first = pixels_at(pixels);
    bool one_grey = first == first % 256 * 0x01010101U;
    for (unsigned y = 1; y < fine; y++)
        one_grey = one_grey && pixels_at(pixels + y * stride) == first;
    if (one_grey) {
        row.ink[x] = first == paper_pixels ? 0 : taken;
        row.grey[x] = pixels[0];
        return;
    }

    std::uint8_t dark = paper;
    std::uint8_t light = 0;
    unsigned sum = 0;
    for (unsigned y = 0; y < fine; y++) {
        for (unsigned i = 0; i < fine; i++) {
            const std::uint8_t pixel = pixels[y * stride + i];
            dark = std::min(dark, pixel);
            light = std::max(light, pixel);
            sum += pixel;
        }
    }
    unsigned darker = 0;
    unsigned lighter = 0;
    for (unsigned y = 0; y < fine; y++) {
        for (unsigned i = 0; i < fine; i++) {
            darker += pixels[y * stride + i] == dark;
            lighter += pixels[y * stride + i] == light;
        }
    }
    const bool picture = darker + lighter < fine_area;
    const bool undecided = !picture && darker < enough;
    row.ink[x] = undecided ? static_cast<std::uint8_t>(darker) : taken;
    row.dark[x] = dark;
    row.grey[x] = picture ? static_cast<std::uint8_t>((sum + fine_area / 2) / fine_area) : undecided ? light : dark;
    row.undecided = row.undecided || undecided;
}

void Coverage::keep_strokes()
{
    Row &row = rows_[around];
    if (!row.undecided)
        return;
    for (std::size_t x = 0; x < width_; x++) {
        if (row.ink[x] == 0 || row.ink[x] == taken)
            continue;
        if (is_upright_stroke(x) || is_level_stroke(x))
            row.grey[x] = row.dark[x];
    }
}

// Something solid at an end, and nothing that goes on as a stroke at the other.
bool Coverage::is_soft_edge(unsigned one_end, unsigned other_end)
{
    const bool solid = one_end == taken || other_end == taken;
    const bool goes_on = (one_end != 0 && one_end != taken) || (other_end != 0 && other_end != taken);
    return solid && !goes_on;
}

// The stroke lies in this dot, or in this and one neighbour of which this one has more of it, with paper on both sides.
bool Coverage::is_upright_stroke(std::size_t x) const
{
    const Row &row = row_at(0);
    const auto ink = [&](long at) -> unsigned {
        return at < 0 || at >= static_cast<long>(width_) ? 0 : row.ink[static_cast<std::size_t>(at)];
    };
    const long at = static_cast<long>(x);
    const unsigned here = ink(at);
    const unsigned before = ink(at - 1);
    const unsigned after = ink(at + 1);
    if (before && after)
        return false;
    if (before && (before >= here || ink(at - 2)))
        return false;
    if (after && (after > here || after == taken || ink(at + 2)))
        return false;

    const long partner = before ? at - 1 : after ? at + 1 : at;
    const auto along = [&](int distance) -> unsigned {
        const Row &other = row_at(distance);
        return std::max(other.ink[x], other.ink[static_cast<std::size_t>(partner)]);
    };
    const unsigned above = along(-1);
    const unsigned below = along(1);
    if (is_soft_edge(above, below))
        return false;
    return here + before + after + std::min(above, fine_area) + std::min(below, fine_area) >= least_stroke;
}

bool Coverage::is_level_stroke(std::size_t x) const
{
    const unsigned here = row_at(0).ink[x];
    const unsigned above = row_at(-1).ink[x];
    const unsigned below = row_at(1).ink[x];
    if (above && below)
        return false;
    if (above && (above >= here || row_at(-2).ink[x]))
        return false;
    if (below && (below > here || below == taken || row_at(2).ink[x]))
        return false;

    const Row &row = row_at(0);
    const Row &partner = row_at(above ? -1 : below ? 1 : 0);
    const unsigned before = x == 0 ? 0 : std::max(row.ink[x - 1], partner.ink[x - 1]);
    const unsigned after = x + 1 == width_ ? 0 : std::max(row.ink[x + 1], partner.ink[x + 1]);
    if (is_soft_edge(before, after))
        return false;
    return here + above + below + std::min(before, fine_area) + std::min(after, fine_area) >= least_stroke;
}

}  // namespace pages
