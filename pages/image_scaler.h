// Changes the size of a picture by area: a pixel of the result is the mean of what it covers. Rows come and go one by
// one, so memory is a few rows. Integers throughout; a picture of the same size passes as it is.
#ifndef KLOV_PAGES_IMAGE_SCALER_H
#define KLOV_PAGES_IMAGE_SCALER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace pages {

class ImageScaler {
public:
    using Sink = std::function<void(const std::uint8_t *grey)>;

    // No side is 0, and none longer than 2^31.
    ImageScaler(std::size_t from_width, std::size_t from_height, std::size_t to_width, std::size_t to_height,
                Sink sink);

    void put_row(const std::uint8_t *grey);

private:
    // Lengths are counted so that a side of the picture is from * to: a pixel of the one is `to` long, of the other
    // `from`.
    struct Span {
        std::size_t first;           // the first pixel that is covered
        std::size_t whole;           // pixels behind it that are covered whole
        std::uint32_t first_length;  // how much of the first is covered
        std::uint32_t last_length;   // and of the one behind the whole ones
    };
    void sum_across(const std::uint8_t *grey);
    void emit();

    std::size_t from_width_, from_height_, to_width_, to_height_;
    Sink sink_;
    std::vector<Span> spans_;
    std::vector<std::uint64_t> across_;  // sums of the row at hand
    std::vector<std::uint64_t> sums_;    // of the row in the making
    std::vector<std::uint8_t> result_;
    std::uint64_t wanting_;  // length that the row in the making still lacks
};

}  // namespace pages

#endif
