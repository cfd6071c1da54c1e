// Error diffusion in serpentine rows: what a dot is too dark or too light is made up for by its neighbours. Only dots
// that are shaded take part; black, white and strokes neither take an error nor give one, so they stay as they are
// drawn.
#ifndef KLOV_PAGES_DIFFUSION_H
#define KLOV_PAGES_DIFFUSION_H

#include "pages/bit_row.h"
#include "pages/tone.h"

namespace pages {

class Diffusion {
public:
    Diffusion(std::size_t width, const ToneCurve &curve);

    // Sets the dots of one row: those of `shaded` that become black are added to `dots`.
    void shade_row(const std::uint8_t *grey, const BitRow &shaded, BitRow &dots);
    // Instead of a row where nothing is shaded.
    void skip_row();
    // Before a new page.
    void clear();

private:
    template <int step>
    void shade_run(const std::uint8_t *grey, std::ptrdiff_t first, std::ptrdiff_t end, BitRow &dots);
    void shade_runs_rightwards(const std::uint8_t *grey, const BitRow &shaded, BitRow &dots);
    void shade_runs_leftwards(const std::uint8_t *grey, const BitRow &shaded, BitRow &dots);

    ToneCurve curve_;
    std::ptrdiff_t width_;
    std::vector<std::int32_t> error_;  // for this row, one more dot on each side
    std::vector<std::int32_t> below_;  // for the next
    bool rightwards_ = true;
    bool clean_ = true;  // no errors are waiting
};

}  // namespace pages

#endif
