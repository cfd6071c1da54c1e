#include "pages/image_scaler.h"

#include <algorithm>
#include <utility>

namespace pages {

ImageScaler::ImageScaler(std::size_t from_width, std::size_t from_height, std::size_t to_width, std::size_t to_height,
                         Sink sink)
    : from_width_(from_width),
      from_height_(from_height),
      to_width_(to_width),
      to_height_(to_height),
      sink_(std::move(sink)),
      across_(to_width),
      sums_(to_width),
      result_(to_width),
      wanting_(from_height)
{
    for (std::uint64_t x = 0; x < to_width; ++x) {
        const std::uint64_t begin = x * from_width;
        const std::uint64_t end = begin + from_width;
        Span span{};
        span.first = begin / to_width;
        span.first_length =
            static_cast<std::uint32_t>(std::min((span.first + 1) * std::uint64_t{to_width}, end) - begin);
        const std::uint64_t rest = from_width - span.first_length;
        span.whole = rest / to_width;
        span.last_length = static_cast<std::uint32_t>(rest % to_width);
        spans_.push_back(span);
    }
}

void ImageScaler::sum_across(const std::uint8_t *grey)
{
    for (std::size_t x = 0; x < to_width_; ++x) {
        const Span &span = spans_[x];
        const std::uint8_t *pixel = grey + span.first;
        std::uint64_t sum = std::uint64_t{*pixel++} * span.first_length;
        std::uint64_t whole = 0;
        for (std::size_t i = 0; i < span.whole; ++i) {
            whole += *pixel++;
        }
        sum += whole * to_width_;
        if (span.last_length > 0) {
            sum += std::uint64_t{*pixel} * span.last_length;
        }
        across_[x] = sum;
    }
}

void ImageScaler::emit()
{
    const std::uint64_t area = std::uint64_t{from_width_} * from_height_;
    for (std::size_t x = 0; x < to_width_; ++x) {
        result_[x] = static_cast<std::uint8_t>((sums_[x] + area / 2) / area);
    }
    std::fill(sums_.begin(), sums_.end(), std::uint64_t{0});
    wanting_ = from_height_;
    sink_(result_.data());
}

void ImageScaler::put_row(const std::uint8_t *grey)
{
    if (from_width_ == to_width_ && from_height_ == to_height_) {
        sink_(grey);
        return;
    }
    sum_across(grey);
    std::uint64_t left = to_height_;
    while (left > 0) {
        const std::uint64_t part = std::min(left, wanting_);
        for (std::size_t x = 0; x < to_width_; ++x) {
            sums_[x] += across_[x] * part;
        }
        left -= part;
        wanting_ -= part;
        if (wanting_ == 0) {
            emit();
        }
    }
}

}  // namespace pages
