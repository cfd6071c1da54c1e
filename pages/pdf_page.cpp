#include "pages/pdf_page.h"

#include "pages/coverage.h"
#include "pages/dots.h"
#include "pages/limits.h"
#include "pages/tone.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <vector>

namespace pages {

namespace {

constexpr double points_per_inch = 72;
constexpr int fine = Coverage::fine_pixels;
constexpr std::uint8_t paper = 255;
// Every slice goes through the whole page's contents again, so few and big ones are fast; what they cost is memory. A
// band is looked at with a byte a dot; what is black and white in it is drawn with a bit a fine pixel, grey with three
// bytes. Pages of more than a metre get the memory of a long page.
constexpr long band_dots = 1200000;
constexpr long long_page_band_dots = 3400000;
constexpr long long_page_rows = 8000;
constexpr long grey_slice_pixels = 3600000;
// Rows are told apart in blocks of so many; ink can lie a row beside where it shows when drawn coarsely.
constexpr long block_rows = 64;
constexpr long spread_rows = 2;

// The part of a page that lies on the paper: dots of the raster page, the far edges outside.
struct Visible {
    long left = 0;
    long right = 0;
    long top = 0;
    long bottom = 0;
};

// The one place where grey rows of a page become rows of the raster: set where they belong, mirrored, made dots.
class RowPrinter {
public:
    RowPrinter(const Job &job, const Visible &visible, RasterWriter &writer)
        : mirror_(job.mirror),
          left_(static_cast<std::size_t>(visible.left)),
          count_(static_cast<std::size_t>(visible.right - visible.left)),
          grey_(job.paper.head_dots, paper),
          writer_(writer),
          dots_(job.paper.head_dots, job.dots,
                [this](const std::uint8_t *bits) { works_ = works_ && writer_.put_rows(bits, 1); })
    {
    }

    void put(const std::uint8_t *row)
    {
        std::copy_n(row, count_, grey_.begin() + static_cast<std::ptrdiff_t>(left_));
        if (mirror_)
            std::ranges::reverse(grey_);
        dots_.put_rows(grey_.data(), grey_.size(), 1);
        if (mirror_)
            std::ranges::fill(grey_, paper);
    }
    void put_blank(long rows)
    {
        std::ranges::fill(grey_, paper);
        for (long y = 0; y < rows; y++)
            dots_.put_rows(grey_.data(), grey_.size(), 1);
    }
    void finish()
    {
        dots_.finish();
    }
    bool works() const
    {
        return works_;
    }

private:
    bool mirror_;
    std::size_t left_;
    std::size_t count_;
    std::vector<std::uint8_t> grey_;
    RasterWriter &writer_;
    bool works_ = true;
    DotMaker dots_;
};

Visible visible_part(const Job &job, const PageOrder &order)
{
    const Placement &placement = order.placement;
    const double dots_per_point = job.paper.dpi / points_per_inch * placement.scale;
    const auto end = [&](long start, double points, long limit) {
        return std::clamp(start + static_cast<long>(std::ceil(points * dots_per_point - 0.01)), 0L, limit);
    };
    const auto width = static_cast<long>(job.paper.head_dots);
    const auto height = static_cast<long>(placement.height);
    Visible visible;
    visible.right = end(placement.left, order.size.width, width);
    visible.bottom = end(placement.top, order.size.height, height);
    visible.left = std::clamp(placement.left, 0L, visible.right);
    visible.top = std::clamp(placement.top, 0L, visible.bottom);
    return visible;
}

enum class Shade { none, black, grey };

// What shows in some rows of a page that is drawn a pixel a dot.
struct Shades {
    bool black = false;
    bool grey = false;
    bool pale = false;  // stays paper, but would leave single fine pixels where only bits are drawn

    void add(const std::uint8_t *row, std::size_t width)
    {
        if (row[0] == paper && memcmp(row, row + 1, width - 1) == 0)
            return;
        for (std::size_t x = 0; x < width; x++) {
            black = black || row[x] <= darkest_grey;
            grey = grey || (row[x] > darkest_grey && row[x] < lightest_ink);
            pale = pale || (row[x] >= lightest_ink && row[x] != paper);
        }
    }
    Shade shade() const
    {
        if (grey || pale)
            return Shade::grey;
        return black ? Shade::black : Shade::none;
    }
};

// Draws the visible part of one page from top to bottom.
class PageDrawing {
public:
    PageDrawing(const Job &job, PdfDocument &document, const PageOrder &order, const Visible &visible,
                Coverage &coverage)
        : job_(job), document_(document), order_(order), visible_(visible), coverage_(coverage)
    {
    }

    long band_rows() const
    {
        const bool is_long = visible_.bottom - visible_.top > long_page_rows;
        return std::max(block_rows, (is_long ? long_page_band_dots : band_dots) / (visible_.right - visible_.left));
    }
    // Rows of the raster page. After each part, `sent` says whether to go on.
    std::optional<Failure> draw_band(long top, long bottom, const std::function<bool()> &sent);

private:
    Cutout cutout(long top, long bottom, int fineness) const;
    std::optional<Failure> look_at(long top, long bottom, std::vector<Shade> &blocks);
    std::optional<Failure> draw_part(long top, long bottom, Shade shade);

    const Job &job_;
    PdfDocument &document_;
    const PageOrder &order_;
    const Visible &visible_;
    Coverage &coverage_;
};

Cutout PageDrawing::cutout(long top, long bottom, int fineness) const
{
    Cutout cutout;
    cutout.dpi = job_.paper.dpi * order_.placement.scale * fineness;
    cutout.turn = order_.turn;
    cutout.x = static_cast<int>(visible_.left - order_.placement.left) * fineness;
    cutout.width = static_cast<int>(visible_.right - visible_.left) * fineness;
    cutout.y = static_cast<int>(top - order_.placement.top) * fineness;
    cutout.height = static_cast<int>(bottom - top) * fineness;
    return cutout;
}

std::optional<Failure> PageDrawing::look_at(long top, long bottom, std::vector<Shade> &blocks)
{
    const long first = std::max(top - spread_rows, visible_.top);
    const long last = std::min(bottom + spread_rows, visible_.bottom);
    const auto width = static_cast<std::size_t>(visible_.right - visible_.left);
    return document_.draw(order_.number, cutout(first, last, 1), [&](const std::uint8_t *pixels, std::size_t stride) {
        for (long start = top; start < bottom; start += block_rows) {
            Shades shades;
            const long end = std::min(start + block_rows + spread_rows, last);
            for (long y = std::max(start - spread_rows, first); y < end; y++)
                shades.add(pixels + static_cast<std::size_t>(y - first) * stride, width);
            blocks.push_back(shades.shade());
        }
    });
}

std::optional<Failure> PageDrawing::draw_part(long top, long bottom, Shade shade)
{
    const auto fine_rows = static_cast<std::size_t>(bottom - top) * fine;
    if (shade == Shade::none) {
        coverage_.put_blank_rows(fine_rows);
        return std::nullopt;
    }
    if (shade == Shade::black) {
        Cutout part = cutout(top, bottom, fine);
        part.pixels = Pixels::bits;
        return document_.draw(order_.number, part, [&](const std::uint8_t *pixels, std::size_t stride) {
            coverage_.put_bits(pixels, stride, fine_rows);
        });
    }
    const long step = std::max(block_rows, grey_slice_pixels / ((visible_.right - visible_.left) * fine * fine));
    for (long y = top; y < bottom; y += step) {
        const Cutout part = cutout(y, std::min(y + step, bottom), fine);
        auto failure = document_.draw(order_.number, part, [&](const std::uint8_t *pixels, std::size_t stride) {
            coverage_.put_rows(pixels, stride, static_cast<std::size_t>(part.height));
        });
        if (failure)
            return failure;
    }
    return std::nullopt;
}

// Every part that is drawn goes through the page's contents and fonts anew, so a short part goes with its neighbours
// where those can draw it too.
void join_short_parts(std::vector<Shade> &blocks)
{
    constexpr std::size_t short_blank = 16;
    constexpr std::size_t short_black = 5;
    const auto join = [&](Shade shade, std::size_t longest) {
        for (std::size_t i = 0; i < blocks.size();) {
            std::size_t end = i;
            while (end < blocks.size() && blocks[end] == blocks[i])
                end++;
            const Shade around = i > 0 && end < blocks.size() ? std::min(blocks[i - 1], blocks[end]) : Shade::none;
            if (blocks[i] == shade && end - i <= longest && around > shade) {
                std::fill(blocks.begin() + static_cast<std::ptrdiff_t>(i),
                          blocks.begin() + static_cast<std::ptrdiff_t>(end), around);
            }
            i = end;
        }
    };
    join(Shade::none, short_blank);
    join(Shade::black, short_black);
}

std::optional<Failure> PageDrawing::draw_band(long top, long bottom, const std::function<bool()> &sent)
{
    std::vector<Shade> blocks;
    if (auto failure = look_at(top, bottom, blocks))
        return failure;
    join_short_parts(blocks);
    for (std::size_t i = 0; i < blocks.size();) {
        std::size_t end = i;
        while (end < blocks.size() && blocks[end] == blocks[i])
            end++;
        const long part_top = top + static_cast<long>(i) * block_rows;
        const long part_bottom = std::min(bottom, top + static_cast<long>(end) * block_rows);
        // Each part has its own time, so that a long page may take long.
        begin_work_on_page(order_.number);
        if (auto failure = draw_part(part_top, part_bottom, blocks[i]))
            return failure;
        if (!sent())
            return std::nullopt;
        i = end;
    }
    return std::nullopt;
}

std::optional<Failure> draw_bands(PageDrawing &drawing, const Visible &visible, const RowPrinter &printer,
                                  RasterWriter &writer)
{
    bool first = true;
    const auto sent = [&] {
        const bool goes_on = printer.works() && !is_cancelled() && (!first || writer.flush());
        first = false;
        return goes_on;
    };
    const long step = drawing.band_rows();
    for (long y = visible.top; y < visible.bottom && printer.works() && !is_cancelled(); y += step) {
        if (auto failure = drawing.draw_band(y, std::min(y + step, visible.bottom), sent))
            return failure;
    }
    return std::nullopt;
}

}  // namespace

std::optional<Failure> print_page(const Job &job, PdfDocument &document, const PageOrder &order, RasterWriter &writer)
{
    RollPage page;
    page.width = job.paper.head_dots;
    page.height = order.placement.height;
    page.resolution = job.paper.resolution;
    page.copies = order.copies;
    page.media = job.paper.size_name;
    bool works = writer.begin_page(page);

    std::optional<Failure> failure;
    const Visible visible = visible_part(job, order);
    if (works && visible.right > visible.left && visible.bottom > visible.top) {
        RowPrinter printer(job, visible, writer);
        printer.put_blank(visible.top);
        Coverage coverage(static_cast<std::size_t>(visible.right - visible.left),
                          [&](const std::uint8_t *grey) { printer.put(grey); });
        PageDrawing drawing(job, document, order, visible, coverage);
        failure = draw_bands(drawing, visible, printer, writer);
        coverage.finish();
        printer.finish();
        works = printer.works();
    }
    works = writer.end_page() && works;
    if (!failure && !works)
        failure = Failure{"The printer's filter takes no more pages."};
    return failure;
}

}  // namespace pages
