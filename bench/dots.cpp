// Times the making of dots from grey: items are dots, and one core is to make 100 million of them a second.
#include "pages/dots.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

constexpr std::size_t width = 576;
constexpr std::size_t rows = 1600;  // 20 cm

// Waves of all greys with grain: nothing in it is paper or solid.
std::vector<std::uint8_t> photo()
{
    std::vector<std::uint8_t> grey(width * rows);
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i < grey.size(); ++i) {
        state = state * 1664525 + 1013904223;
        const std::size_t x = i % width;
        const std::size_t y = i / width;
        const double wave = std::sin(static_cast<double>(x) / 40) * std::cos(static_cast<double>(y) / 60);
        grey[i] = static_cast<std::uint8_t>(128 + 90 * wave + (state >> 24) % 16);
    }
    return grey;
}

// Black stems on white, as text has them.
std::vector<std::uint8_t> line_art()
{
    std::vector<std::uint8_t> grey(width * rows);
    for (std::size_t i = 0; i < grey.size(); ++i) {
        grey[i] = i % width / 3 % 4 == 0 && i / width % 24 < 18 ? 0 : 255;
    }
    return grey;
}

void make_dots(benchmark::State &state, const std::vector<std::uint8_t> &grey, pages::Dither dither)
{
    std::size_t ink = 0;
    pages::DotMaker maker(width, {dither, 0}, [&](const std::uint8_t *bits) { ink += bits[10]; });
    for (auto unused : state) {
        (void)unused;
        maker.put_rows(grey.data(), width, rows);
        maker.finish();
    }
    benchmark::DoNotOptimize(ink);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * width * rows));
}

BENCHMARK_CAPTURE(make_dots, photo_diffusion, photo(), pages::Dither::diffusion);
BENCHMARK_CAPTURE(make_dots, photo_ordered, photo(), pages::Dither::ordered);
BENCHMARK_CAPTURE(make_dots, line_art, line_art(), pages::Dither::diffusion);
BENCHMARK_CAPTURE(make_dots, paper, std::vector<std::uint8_t>(width *rows, 250), pages::Dither::diffusion);

}  // namespace

BENCHMARK_MAIN();
