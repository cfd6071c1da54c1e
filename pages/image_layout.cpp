#include "pages/image_layout.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace pages {
namespace {

constexpr double points_an_inch = 72;
constexpr double longest_page = 50'000 / 25.4;  // inches
// Resolutions this close to the head's are the head's: 203, 203.2 and 204 are all written for 8 dots a millimetre.
constexpr double same_resolution = 0.01;

struct Extent {
    double width;
    double height;
};

double dots_a_pixel(double ppi, double dpi)
{
    return std::abs(dpi / ppi - 1) < same_resolution ? 1 : dpi / ppi;
}

Extent scaled(const Extent &pixels, double ppi_x, double ppi_y, double dpi)
{
    return {pixels.width * dots_a_pixel(ppi_x, dpi), pixels.height * dots_a_pixel(ppi_y, dpi)};
}

// By how much the picture grows or shrinks so that it just fits into the room; a side of 0 has no bound.
double fitting(const Extent &picture, const Extent &room)
{
    const double across = room.width / picture.width;
    return room.height > 0 ? std::min(across, room.height / picture.height) : across;
}

double filling(const Extent &picture, const Extent &room)
{
    return std::max(room.width / picture.width, room.height / picture.height);
}

// The size before the paper has its say. A picture tells how large it is meant only by a resolution that somebody
// chose; one that would then be wider than the head did not mean this paper.
Extent natural_size(const Extent &pixels, double ppi_x, double ppi_y, const Job &job, double room_width)
{
    if (job.ppi) {
        return scaled(pixels, *job.ppi, *job.ppi, job.paper.dpi);
    }
    if (ppi_x >= least_meant_ppi && ppi_y >= least_meant_ppi) {
        const Extent meant = scaled(pixels, ppi_x, ppi_y, job.paper.dpi);
        if (std::lround(meant.width) <= std::lround(room_width)) {
            return meant;
        }
    }
    return pixels;
}

double scale_of(const Extent &natural, const Extent &room, const Job &job)
{
    const double fits = fitting(natural, room);
    if (job.page_percent) {
        return std::min(1.0, *job.page_percent / 100) * fits;
    }
    if (job.natural_percent) {
        return std::min(*job.natural_percent / 100, fits);
    }
    switch (job.scaling) {
        case Scaling::none:
            return 1;
        case Scaling::fit:
            return fits;
        case Scaling::fill:
            return filling(natural, room);
        case Scaling::automatic:
        case Scaling::auto_fit:
            break;
    }
    return std::min(1.0, fits);
}

long place(Place where, std::size_t room, std::size_t length)
{
    const long spare = static_cast<long>(room) - static_cast<long>(length);
    switch (where) {
        case Place::start:
            return 0;
        case Place::end:
            return spare;
        case Place::centre:
            break;
    }
    return spare >= 0 ? spare / 2 : -(-spare / 2);
}

std::size_t whole_dots(double length)
{
    return static_cast<std::size_t>(std::max(1.0, std::floor(length + 0.5)));
}

bool lies_across(const Extent &picture, const Extent &label)
{
    return picture.width != picture.height && label.width != label.height &&
           (picture.width > picture.height) != (label.width > label.height);
}

}  // namespace

std::size_t most_rows(const Paper &paper)
{
    return static_cast<std::size_t>(longest_page * paper.dpi);
}

std::variant<ImageLayout, Failure> lay_out_image(const ImageInfo &info, const Job &job)
{
    ImageLayout layout;
    const bool roll = job.paper.type == PaperType::roll;
    const double dots_a_point = job.paper.dpi / points_an_inch;
    Extent room = {static_cast<double>(job.paper.head_dots), 0};
    if (!roll) {
        room.width = std::min(room.width, std::max(1.0, std::round(job.paper.page_width * dots_a_point)));
        room.height = std::max(1.0, std::round(job.paper.page_length * dots_a_point));
    }
    Extent pixels = {static_cast<double>(info.width), static_cast<double>(info.height)};
    double ppi_x = info.ppi_x;
    double ppi_y = info.ppi_y;
    layout.turning = then(info.turning, turning_of(job.orientation.value_or(Turn::none)));
    const Extent upright = info.turning.transposed ? Extent{pixels.height, pixels.width} : pixels;
    if (!roll && !job.orientation && job.auto_rotate && lies_across(upright, room)) {
        layout.turning = then(layout.turning, turning_of(Turn::quarter));
    }
    if (job.mirror) {
        layout.turning = then(layout.turning, mirror_turning);
    }
    if (layout.turning.transposed) {
        std::swap(pixels.width, pixels.height);
        std::swap(ppi_x, ppi_y);
    }

    const Extent natural = natural_size(pixels, ppi_x, ppi_y, job, room.width);
    const double scale = scale_of(natural, room, job);
    const double rows = natural.height * scale;
    const double columns = natural.width * scale;
    const auto longest = static_cast<double>(most_rows(job.paper));
    if (rows > longest || room.height > longest || columns > static_cast<double>(widest_picture)) {
        return Failure{"The picture is too large to be printed: it would be longer than 50 m, or wider than 12 m."};
    }
    layout.width = whole_dots(columns);
    layout.height = whole_dots(rows);
    layout.page_height = roll ? layout.height : whole_dots(room.height);
    layout.left = place(job.across.value_or(Place::centre), static_cast<std::size_t>(room.width), layout.width);
    layout.top = roll ? 0 : place(job.along.value_or(Place::centre), layout.page_height, layout.height);
    return layout;
}

}  // namespace pages
