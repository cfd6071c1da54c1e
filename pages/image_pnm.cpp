// The portable any map family: P1 to P6, one picture a file.
#include "pages/image.h"

#include <string>

namespace pages {
namespace {

constexpr unsigned most_samples = 65535;  // the largest value of the format
const char *const ends_early = "The picture is damaged: the file ends too early.";

class PnmReader : public ImageReader {
public:
    PnmReader(std::FILE *file, char kind, std::size_t width, std::size_t height, unsigned white)
        : file_(file), kind_(kind), white_(white), grey_(width)
    {
        set_size(width, height);
        const std::size_t samples = kind == '6' ? 3 * width : width;
        packed_.resize(kind == '4' ? (width + 7) / 8 : samples * (white > 255 ? 2 : 1));
    }

    std::optional<Failure> read(const GreySink &sink) override
    {
        for (std::size_t row = 0; row < height_; ++row) {
            const bool whole = kind_ >= '4' ? read_packed_row() : read_text_row();
            if (!whole) {
                return Failure{ends_early};
            }
            sink(grey_.data());
        }
        return std::nullopt;
    }

private:
    std::uint8_t byte_of(unsigned sample) const
    {
        const unsigned value = sample < white_ ? sample : white_;
        return static_cast<std::uint8_t>((value * 255 + white_ / 2) / white_);
    }

    bool read_text_row();
    bool read_packed_row();
    unsigned packed_sample(std::size_t i) const
    {
        return white_ > 255 ? packed_[2 * i] * 256U + packed_[2 * i + 1] : packed_[i];
    }

    std::FILE *file_;
    char kind_;
    unsigned white_;
    std::vector<std::uint8_t> grey_;
    std::vector<std::uint8_t> packed_;
};

bool is_blank(int byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

// The next byte that is neither blank nor part of a comment.
int next_mark(std::FILE *file)
{
    int byte = std::getc(file);
    while (is_blank(byte) || byte == '#') {
        if (byte == '#') {
            while (byte != '\n' && byte != '\r' && byte != EOF) {
                byte = std::getc(file);
            }
        }
        byte = std::getc(file);
    }
    return byte;
}

// A number and the one byte behind it; nothing when there is none, or one too large for anything here.
std::optional<unsigned> next_number(std::FILE *file)
{
    constexpr unsigned too_large = 100'000'000;
    int byte = next_mark(file);
    if (byte < '0' || byte > '9') {
        return std::nullopt;
    }
    unsigned value = 0;
    for (; byte >= '0' && byte <= '9'; byte = std::getc(file)) {
        value = value * 10 + static_cast<unsigned>(byte - '0');
        if (value > too_large) {
            return std::nullopt;
        }
    }
    return value;
}

// Greys and colours in figures; black and white may stand without blanks between.
bool PnmReader::read_text_row()
{
    for (std::size_t x = 0; x < width_; ++x) {
        if (kind_ == '1') {
            const int mark = next_mark(file_);
            if (mark != '0' && mark != '1') {
                return false;
            }
            grey_[x] = mark == '1' ? 0 : 255;
            continue;
        }
        unsigned samples[3] = {};
        for (unsigned i = 0; i < (kind_ == '3' ? 3U : 1U); ++i) {
            const std::optional<unsigned> sample = next_number(file_);
            if (!sample) {
                return false;
            }
            samples[i] = byte_of(*sample);
        }
        grey_[x] = kind_ == '3' ? grey_of(samples[0], samples[1], samples[2]) : static_cast<std::uint8_t>(samples[0]);
    }
    return true;
}

bool PnmReader::read_packed_row()
{
    if (std::fread(packed_.data(), 1, packed_.size(), file_) != packed_.size()) {
        return false;
    }
    for (std::size_t x = 0; x < width_; ++x) {
        if (kind_ == '4') {
            grey_[x] = (packed_[x / 8] >> (7 - x % 8) & 1) != 0 ? 0 : 255;
        } else if (kind_ == '5') {
            grey_[x] = byte_of(packed_sample(x));
        } else {
            grey_[x] = grey_of(byte_of(packed_sample(3 * x)), byte_of(packed_sample(3 * x + 1)),
                               byte_of(packed_sample(3 * x + 2)));
        }
    }
    return true;
}

}  // namespace

OpenedImage open_pnm(std::FILE *file)
{
    std::getc(file);
    const int kind = std::getc(file);
    if (kind < '1' || kind > '6') {
        return Failure{"The document is not a picture of a kind that can be printed: PNG, JPEG or PNM."};
    }
    const std::optional<unsigned> width = next_number(file);
    const std::optional<unsigned> height = next_number(file);
    const bool bilevel = kind == '1' || kind == '4';
    const std::optional<unsigned> white = bilevel ? 1 : next_number(file);
    if (!width || !height || !white || *white == 0 || *white > most_samples) {
        return Failure{"The picture is damaged: its size cannot be read."};
    }
    if (auto failure = refuse_size(*width, *height)) {
        return *failure;
    }
    return std::make_unique<PnmReader>(file, static_cast<char>(kind), *width, *height, *white);
}

}  // namespace pages
