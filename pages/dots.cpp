#include "pages/dots.h"

#include "pages/bit_row.h"
#include "pages/diffusion.h"
#include "pages/strokes.h"
#include "pages/tone.h"

#include <bit>
#include <cstring>
#include <utility>
#include <vector>

namespace pages {
namespace {

// Dispersed thresholds, 1 to 64, for the regular pattern.
constexpr std::uint8_t pattern[8][8] = {{1, 33, 9, 41, 3, 35, 11, 43},  {49, 17, 57, 25, 51, 19, 59, 27},
                                        {13, 45, 5, 37, 15, 47, 7, 39}, {61, 29, 53, 21, 63, 31, 55, 23},
                                        {4, 36, 12, 44, 2, 34, 10, 42}, {52, 20, 60, 28, 50, 18, 58, 26},
                                        {16, 48, 8, 40, 14, 46, 6, 38}, {64, 32, 56, 24, 62, 30, 54, 22}};
constexpr int pattern_step = all_dots / 64;

// Where half of the dots would be black, without any darkness asked for, falls the line of the plain threshold.
int plain_threshold()
{
    return tone_curve(0)[half_covered];
}

// The highest bit of a byte is its leftmost dot.
void store_row(const BitRow &dots, std::size_t width, std::uint8_t *bytes)
{
    const std::size_t count = (width + 7) / 8;
    for (std::size_t at = 0; at < count; at += 8) {
        Word word = dots[at / 8];
        word = (word >> 1 & 0x5555555555555555U) | (word & 0x5555555555555555U) << 1;
        word = (word >> 2 & 0x3333333333333333U) | (word & 0x3333333333333333U) << 2;
        word = (word >> 4 & 0x0F0F0F0F0F0F0F0FU) | (word & 0x0F0F0F0F0F0F0F0FU) << 4;
        for (std::size_t i = at; i < std::min(at + 8, count); ++i) {
            bytes[i] = static_cast<std::uint8_t>(word);
            word >>= 8;
        }
    }
}

}  // namespace

class DotMaker::Window {
public:
    Window(std::size_t width, const DotSettings &settings, RowSink sink)
        : width_(width),
          words_((width + word_bits - 1) / word_bits),
          sink_(std::move(sink)),
          dither_(settings.dither),
          curve_(tone_curve(settings.darkness)),
          threshold_(plain_threshold()),
          strokes_(width),
          diffusion_(width, curve_),
          greys_(StrokeFinder::delay + 1, std::vector<std::uint8_t>(width)),
          shaded_(words_, 0),
          dots_(words_, 0),
          bytes_((width + 7) / 8)
    {
    }

    void put_row(const std::uint8_t *grey)
    {
        if (strokes_.push(grey)) {
            std::memcpy(greys_[pushed_ % greys_.size()].data(), grey, width_);
        }
        advance();
    }

    void finish()
    {
        for (std::size_t i = 0; i < StrokeFinder::delay && pushed_ > 0; ++i) {
            strokes_.push_paper();
            advance();
        }
        strokes_.clear();
        diffusion_.clear();
        pushed_ = 0;
    }

private:
    void advance()
    {
        pushed_ += 1;
        if (pushed_ > StrokeFinder::delay) {
            emit(pushed_ - 1 - StrokeFinder::delay);
        }
    }

    void emit(std::size_t row)
    {
        const RowKind kind = strokes_.classify(dots_, shaded_);
        if (kind != RowKind::shaded) {
            diffusion_.skip_row();
        } else if (dither_ == Dither::diffusion) {
            diffusion_.shade_row(greys_[row % greys_.size()].data(), shaded_, dots_);
        } else {
            compare_row(greys_[row % greys_.size()].data(), row);
        }
        if (kind == RowKind::paper) {
            std::fill(bytes_.begin(), bytes_.end(), std::uint8_t{0});
        } else {
            store_row(dots_, width_, bytes_.data());
        }
        sink_(bytes_.data());
    }

    void compare_row(const std::uint8_t *grey, std::size_t row)
    {
        for (std::size_t i = 0; i < words_; ++i) {
            for (Word left = shaded_[i]; left != 0; left &= left - 1) {
                const auto bit = static_cast<unsigned>(std::countr_zero(left));
                const int wanted = curve_[grey[i * word_bits + bit]];
                const int line = dither_ == Dither::threshold ? threshold_ : pattern[row % 8][bit % 8] * pattern_step;
                dots_[i] |= Word{wanted >= line} << bit;
            }
        }
    }

    std::size_t width_;
    std::size_t words_;
    RowSink sink_;
    Dither dither_;
    ToneCurve curve_;
    int threshold_;
    StrokeFinder strokes_;
    Diffusion diffusion_;
    std::vector<std::vector<std::uint8_t>> greys_;  // rows that wait for those below them
    BitRow shaded_;
    BitRow dots_;
    std::vector<std::uint8_t> bytes_;
    std::size_t pushed_ = 0;
};

DotMaker::DotMaker(std::size_t width, const DotSettings &settings, RowSink sink)
    : window_(std::make_unique<Window>(width, settings, std::move(sink)))
{
}

DotMaker::~DotMaker() = default;

void DotMaker::put_rows(const std::uint8_t *grey, std::size_t stride, std::size_t rows)
{
    for (std::size_t row = 0; row < rows; ++row) {
        window_->put_row(grey + row * stride);
    }
}

void DotMaker::finish()
{
    window_->finish();
}

}  // namespace pages
