#include "pages/pdf_page.h"

#include "pages/coverage.h"
#include "pages/dots.h"
#include "pages/limits.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace pages {

namespace {

constexpr double points_per_inch = 72;
constexpr int fine = Coverage::fine_pixels;
constexpr std::uint8_t paper = 255;
// A slice costs three bytes a fine pixel. Every slice goes through the whole page's contents again, so long pages are
// drawn in bigger ones; the first is small, for the printer to begin.
constexpr long slice_pixels = 4500000;
constexpr long long_page_rows = 8000;
constexpr long long_page_slice_pixels = 11000000;

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

long slice_rows(const Visible &visible)
{
    const long row_pixels = (visible.right - visible.left) * fine * fine;
    const bool is_long = visible.bottom - visible.top > long_page_rows;
    return std::max(16L, (is_long ? long_page_slice_pixels : slice_pixels) / row_pixels);
}

std::optional<Failure> draw_slices(const Job &job, PdfDocument &document, const PageOrder &order,
                                   const Visible &visible, Coverage &coverage, RowPrinter &printer,
                                   RasterWriter &writer)
{
    Cutout cutout;
    cutout.dpi = job.paper.dpi * order.placement.scale * fine;
    cutout.turn = order.turn;
    cutout.x = static_cast<int>(visible.left - order.placement.left) * fine;
    cutout.width = static_cast<int>(visible.right - visible.left) * fine;
    const long step = slice_rows(visible);
    for (long y = visible.top; y < visible.bottom && !is_cancelled(); y += step) {
        const long rows = std::min(step, visible.bottom - y);
        cutout.y = static_cast<int>(y - order.placement.top) * fine;
        cutout.height = static_cast<int>(rows) * fine;
        auto failure = document.draw(order.number, cutout, [&](const std::uint8_t *pixels, std::size_t stride) {
            coverage.put_rows(pixels, stride, static_cast<std::size_t>(cutout.height));
        });
        if (failure)
            return failure;
        if (!printer.works() || (y == visible.top && !writer.flush()))
            break;
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
        failure = draw_slices(job, document, order, visible, coverage, printer, writer);
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
