#include "pages/placement.h"

#include <algorithm>
#include <cmath>

namespace pages {

namespace {

constexpr double points_per_inch = 72;
constexpr double mm_per_inch = 25.4;
// What a page may be wider than the paper and count as wide as it: sizes are rounded to points, or to dots, on the way.
constexpr double slack_mm = 0.3;
// Blank paper that stays above and below the ink of a page that had to be scaled.
constexpr double rest_mm = 3;

struct Dots {
    const Paper &paper;

    double of_points(double points) const
    {
        return points / points_per_inch * paper.dpi;
    }
    double of_mm(double mm) const
    {
        return mm / mm_per_inch * paper.dpi;
    }
};

bool is_wide(const Job &job, Size page)
{
    return page.width / points_per_inch * mm_per_inch > job.paper.paper_width + slack_mm;
}

// What the scale rule comes to once the words that depend on the page's width are settled.
Scaling settled(const Job &job, Size page)
{
    if (job.scaling != Scaling::auto_fit)
        return job.scaling;
    return is_wide(job, page) ? Scaling::fit : Scaling::automatic;
}

bool trims_page(const Job &job, Size page)
{
    return settled(job, page) == Scaling::automatic && !job.page_percent && !job.natural_percent && is_wide(job, page);
}

double automatic_scale(const Job &job, Size page, const std::optional<Ink> &ink)
{
    const Dots dots{job.paper};
    const double room = job.paper.head_dots;
    if (!ink)
        return is_wide(job, page) ? std::min(1.0, room / dots.of_points(page.width)) : 1;
    const double width = dots.of_points(ink->across.right - ink->across.left);
    return width <= room + dots.of_mm(slack_mm) ? 1 : room / width;
}

double roll_scale(const Job &job, Size page, const std::optional<Ink> &ink)
{
    const Dots dots{job.paper};
    const double whole = job.paper.head_dots / dots.of_points(page.width);
    if (job.page_percent)
        return *job.page_percent / 100 * whole;
    if (job.natural_percent)
        return *job.natural_percent / 100;
    switch (settled(job, page)) {
        case Scaling::none:
            return 1;
        case Scaling::fit:
            return whole;
        case Scaling::fill:
            return dots.of_mm(job.paper.paper_width) / dots.of_points(page.width);
        default:
            return automatic_scale(job, page, ink);
    }
}

long rounded(double dots)
{
    return std::lround(dots);
}

// From the start of `room` to the start of `length`.
long placed(Place place, double room, double length)
{
    if (place == Place::start)
        return 0;
    return rounded(place == Place::end ? room - length : (room - length) / 2);
}

// The page's left edge: where it was asked to be, then moved so far that no ink is lost, if it can be.
long roll_left(const Job &job, Size page, const std::optional<Ink> &ink, double scale)
{
    const Dots dots{job.paper};
    const double room = job.paper.head_dots;
    const long left = placed(job.across.value_or(Place::centre), room, dots.of_points(page.width) * scale);
    if (!ink)
        return left;
    const double slack = dots.of_mm(slack_mm);
    const double first = dots.of_points(ink->across.left) * scale;
    const double last = dots.of_points(ink->across.right) * scale;
    const auto at = static_cast<double>(left);
    if (last - first > room)
        return last - first > room + slack ? left : rounded((room - first - last) / 2);
    if (at + first < 0)
        return static_cast<long>(std::ceil(-first));
    if (at + last > room)
        return static_cast<long>(std::floor(room - last));
    return left;
}

Placement place_on_roll(const Job &job, Size page, const std::optional<Ink> &ink)
{
    const Dots dots{job.paper};
    Placement placement;
    placement.scale = roll_scale(job, page, ink);
    placement.left = roll_left(job, page, ink, placement.scale);
    const double length = dots.of_points(page.height) * placement.scale;
    double first = 0;
    double last = length;
    if (trims_page(job, page)) {
        const double rest = dots.of_mm(rest_mm);
        first = ink ? std::max(0.0, dots.of_points(ink->own.top) * placement.scale - rest) : 0;
        last =
            ink ? std::min(length, dots.of_points(ink->own.bottom) * placement.scale + rest) : std::min(length, rest);
    }
    placement.top = -static_cast<long>(std::floor(first));
    placement.height = static_cast<unsigned>(std::max(1L, rounded(last) + placement.top));
    return placement;
}

Placement place_on_label(const Job &job, Size page)
{
    const Dots dots{job.paper};
    const double room = std::min<double>(job.paper.head_dots, dots.of_points(job.paper.page_width));
    const double length = dots.of_points(job.paper.page_length);
    const double width = dots.of_points(page.width);
    const double height = dots.of_points(page.height);
    const double slack = dots.of_mm(slack_mm);
    const double fitted = std::min(room / width, length / height);
    Placement placement;
    placement.scale = width <= room + slack && height <= length + slack ? 1 : fitted;
    if (job.scaling == Scaling::none)
        placement.scale = 1;
    if (job.scaling == Scaling::fit)
        placement.scale = fitted;
    if (job.scaling == Scaling::fill)
        placement.scale = std::max(room / width, length / height);
    if (job.natural_percent)
        placement.scale = *job.natural_percent / 100;
    if (job.page_percent)
        placement.scale = *job.page_percent / 100 * fitted;
    placement.left = placed(job.across.value_or(Place::centre), room, width * placement.scale);
    placement.top = placed(job.along.value_or(Place::centre), length, height * placement.scale);
    placement.height = static_cast<unsigned>(std::max(1L, rounded(length)));
    return placement;
}

}  // namespace

Turn choose_turn(const Job &job, Size page)
{
    if (job.orientation)
        return *job.orientation;
    if (job.paper.type == PaperType::roll || !job.auto_rotate)
        return Turn::none;
    const double label_slope = job.paper.page_width - job.paper.page_length;
    const double page_slope = page.width - page.height;
    return label_slope * page_slope < 0 ? Turn::quarter : Turn::none;
}

Size turned(Size page, Turn turn)
{
    if (turn == Turn::quarter || turn == Turn::three_quarters)
        return {page.height, page.width};
    return page;
}

bool needs_ink(const Job &job, Size page)
{
    if (job.paper.type != PaperType::roll)
        return false;
    const Dots dots{job.paper};
    const double width = dots.of_points(page.width) * roll_scale(job, page, std::nullopt);
    return trims_page(job, page) || width > job.paper.head_dots + dots.of_mm(slack_mm);
}

Placement place(const Job &job, Size page, const std::optional<Ink> &ink)
{
    return job.paper.type == PaperType::roll ? place_on_roll(job, page, ink) : place_on_label(job, page);
}

Box unite(const Box &one, const Box &other)
{
    return {std::min(one.left, other.left), std::min(one.top, other.top), std::max(one.right, other.right),
            std::max(one.bottom, other.bottom)};
}

}  // namespace pages
