#include "pages/tone.h"

#include <algorithm>

namespace pages {
namespace {

// Of 1 - (1 - t)^(1 / 1.3), t going from 0 at the lightest grey that counts to 1 at black. Integers, so that every
// machine prints the same dots.
struct Point {
    int ink;
    int dots;  // of 255
};
constexpr Point curve[] = {{20, 0},    {32, 11},   {64, 41},   {96, 73},  {128, 106},
                           {160, 142}, {192, 181}, {224, 230}, {235, 255}};
// How much a step of darkness moves the middle greys, in 255ths of what is left to move.
constexpr int darkness_step = 51;
constexpr int full = 255;

int plain_dots(int ink)
{
    if (ink <= curve[0].ink) {
        return 0;
    }
    const Point *from = curve;
    for (const Point &to : curve) {
        if (ink <= to.ink) {
            const int run = std::max(to.ink - from->ink, 1);
            return from->dots * all_dots / full + (to.dots - from->dots) * (ink - from->ink) * all_dots / full / run;
        }
        from = &to;
    }
    return all_dots;
}

}  // namespace

ToneCurve tone_curve(int darkness)
{
    const int step = darkness_step * std::clamp(darkness, -3, 3);
    ToneCurve result{};
    for (int grey = 0; grey <= full; ++grey) {
        const int dots = plain_dots(full - grey);
        const int bend = dots * (all_dots - dots) / all_dots * step / full;
        result[static_cast<std::size_t>(grey)] = static_cast<std::int16_t>(dots + bend);
    }
    return result;
}

}  // namespace pages
