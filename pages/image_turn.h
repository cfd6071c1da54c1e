// The eight ways to lay a picture down. A turning says where a dot of the result comes from: at (x, y), look at (y, x)
// if transposed, then count from the other side where mirrored.
#ifndef KLOV_PAGES_IMAGE_TURN_H
#define KLOV_PAGES_IMAGE_TURN_H

#include "pages/job.h"

namespace pages {

struct Turning {
    bool transposed = false;
    bool mirrored_x = false;  // of the source
    bool mirrored_y = false;

    bool operator==(const Turning &) const = default;
};

// The orientation tag of cameras, 1 to 8; anything else turns nothing.
inline Turning turning_of_tag(unsigned tag)
{
    constexpr Turning turnings[] = {{false, false, false}, {false, true, false}, {false, true, true},
                                    {false, false, true},  {true, false, false}, {true, false, true},
                                    {true, true, true},    {true, true, false}};
    return tag >= 1 && tag <= 8 ? turnings[tag - 1] : Turning{};
}

inline Turning turning_of(Turn counter_clockwise)
{
    switch (counter_clockwise) {
        case Turn::quarter:
            return {true, true, false};
        case Turn::half:
            return {false, true, true};
        case Turn::three_quarters:
            return {true, false, true};
        case Turn::none:
            break;
    }
    return {};
}

constexpr Turning mirror_turning{false, true, false};

inline Turning then(const Turning &first, const Turning &second)
{
    if (first.transposed) {
        return {!second.transposed, first.mirrored_x != second.mirrored_y, first.mirrored_y != second.mirrored_x};
    }
    return {second.transposed, first.mirrored_x != second.mirrored_x, first.mirrored_y != second.mirrored_y};
}

}  // namespace pages

#endif
