// What a grey becomes on thermal paper. Greys are bytes as pictures have them: 0 is ink, 255 is paper.
#ifndef KLOV_PAGES_TONE_H
#define KLOV_PAGES_TONE_H

#include <array>
#include <cstdint>

namespace pages {

// Lighter than 8 % of ink is paper: a scan of off-white paper prints without snow. The darkest 8 % are black.
constexpr unsigned lightest_ink = 235;  // from this grey on: paper
constexpr unsigned darkest_grey = 20;   // up to this grey: black
// A thin stroke with 35 % of ink or more is meant to be read, not to be shaded.
constexpr unsigned palest_stroke = 166;
// The edge of a solid shape falls to the side that has more of it.
constexpr unsigned half_covered = 127;

// How many of 4096 dots are black for each grey. Dots bleed on thermal paper, so fewer are set than the grey says, most
// of all in the shadows, which would close. Darkness (-3 to 3) bends the curve; black and white stay where they are.
constexpr int all_dots = 4096;
using ToneCurve = std::array<std::int16_t, 256>;
ToneCurve tone_curve(int darkness);

}  // namespace pages

#endif
