#include "pages/diffusion.h"

#include <bit>

namespace pages {

Diffusion::Diffusion(std::size_t width, const ToneCurve &curve)
    : curve_(curve), width_(static_cast<std::ptrdiff_t>(width)), error_(width + 2), below_(width + 2)
{
}

void Diffusion::skip_row()
{
    if (!clean_) {
        std::fill(error_.begin(), error_.end(), 0);
        clean_ = true;
    }
}

void Diffusion::clear()
{
    skip_row();
    rightwards_ = true;
}

// 7/16 of an error go on, 3/16, 5/16 and the rest to the three dots below.
template <int step>
void Diffusion::shade_run(const std::uint8_t *grey, std::ptrdiff_t first, std::ptrdiff_t end, BitRow &dots)
{
    const std::int32_t *error = error_.data() + 1;
    std::int32_t *below = below_.data() + 1;
    std::int32_t onward = 0;
    std::int32_t behind_sum = 0;  // what the dot below the last one has got so far
    std::int32_t here_sum = 0;    // and the dot below this one
    for (std::ptrdiff_t x = first; x != end; x += step) {
        const std::int32_t wanted = curve_[grey[x]] + error[x] + onward;
        const bool black = wanted >= all_dots / 2;
        const std::int32_t left = wanted - (black ? all_dots : 0);
        const auto at = static_cast<std::size_t>(x);
        dots[at / word_bits] |= Word{black} << (at % word_bits);
        onward = left * 7 >> 4;
        const std::int32_t behind = left * 3 >> 4;
        const std::int32_t here = left * 5 >> 4;
        below[x - step] += behind_sum + behind;
        behind_sum = here_sum + here;
        here_sum = left - onward - behind - here;
    }
    below[end - step] += behind_sum;
    below[end] += here_sum;
}

void Diffusion::shade_runs_rightwards(const std::uint8_t *grey, const BitRow &shaded, BitRow &dots)
{
    std::ptrdiff_t x = 0;
    while (x < width_) {
        const auto offset = static_cast<unsigned>(x) % word_bits;
        const Word rest = shaded[static_cast<std::size_t>(x) / word_bits] >> offset;
        if (rest == 0) {
            x += word_bits - offset;
            continue;
        }
        x += std::countr_zero(rest);
        std::ptrdiff_t end = x;
        for (;;) {
            const auto from = static_cast<unsigned>(end) % word_bits;
            const int run = std::countr_one(shaded[static_cast<std::size_t>(end) / word_bits] >> from);
            end += run;
            if (end >= width_ || run == 0 || static_cast<unsigned>(end) % word_bits != 0) {
                break;
            }
        }
        shade_run<1>(grey, x, end, dots);
        x = end;
    }
}

void Diffusion::shade_runs_leftwards(const std::uint8_t *grey, const BitRow &shaded, BitRow &dots)
{
    std::ptrdiff_t x = width_ - 1;
    while (x >= 0) {
        const unsigned above = word_bits - 1 - static_cast<unsigned>(x) % word_bits;
        const Word rest = shaded[static_cast<std::size_t>(x) / word_bits] << above;
        if (rest == 0) {
            x -= word_bits - above;
            continue;
        }
        x -= std::countl_zero(rest);
        std::ptrdiff_t end = x;
        while (end >= 0) {
            const unsigned over = word_bits - 1 - static_cast<unsigned>(end) % word_bits;
            const int run = std::countl_one(shaded[static_cast<std::size_t>(end) / word_bits] << over);
            end -= run;
            if (run == 0 || run < static_cast<int>(word_bits - over)) {
                break;
            }
        }
        shade_run<-1>(grey, x, end, dots);
        x = end;
    }
}

void Diffusion::shade_row(const std::uint8_t *grey, const BitRow &shaded, BitRow &dots)
{
    if (rightwards_) {
        shade_runs_rightwards(grey, shaded, dots);
    } else {
        shade_runs_leftwards(grey, shaded, dots);
    }
    rightwards_ = !rightwards_;
    error_.swap(below_);
    std::fill(below_.begin(), below_.end(), 0);
    clean_ = false;
}

}  // namespace pages
