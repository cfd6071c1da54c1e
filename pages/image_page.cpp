#include "pages/image_page.h"

#include "pages/dots.h"
#include "pages/image_scaler.h"

#include <algorithm>
#include <cstring>

namespace pages {
namespace {

// Cuts and pads rows of the picture to rows of the page, makes dots of them and keeps those.
class PageRows {
public:
    PageRows(const ImageLayout &layout, std::size_t head_dots, const DotSettings &settings)
        : layout_(layout),
          row_(head_dots, paper),
          maker_(head_dots, settings, [this](const std::uint8_t *bits) { keep(bits); }),
          row_bytes_((head_dots + 7) / 8),
          row_number_(layout.top)
    {
        dots_.reserve(row_bytes_ * layout.page_height);
        for (long row = 0; row < std::min(layout.top, static_cast<long>(layout.page_height)); ++row) {
            maker_.put_rows(row_.data(), 0, 1);
        }
        const long head = static_cast<long>(head_dots);
        const long width = static_cast<long>(layout.width);
        skipped_ = std::max(0L, -layout.left);
        from_ = std::clamp(layout.left, 0L, head);
        count_ = std::max(0L, std::min(width - skipped_, head - from_));
    }

    // Whether the page has room for more.
    void put(const std::uint8_t *grey)
    {
        if (row_number_ >= 0 && row_number_ < static_cast<long>(layout_.page_height)) {
            std::memcpy(row_.data() + from_, grey + skipped_, static_cast<std::size_t>(count_));
            maker_.put_rows(row_.data(), 0, 1);
        }
        row_number_ += 1;
    }

    std::vector<std::uint8_t> finish()
    {
        maker_.finish();
        dots_.resize(row_bytes_ * layout_.page_height);
        return std::move(dots_);
    }

private:
    static constexpr std::uint8_t paper = 255;

    void keep(const std::uint8_t *bits)
    {
        dots_.insert(dots_.end(), bits, bits + row_bytes_);
    }

    const ImageLayout &layout_;
    std::vector<std::uint8_t> row_;
    DotMaker maker_;
    std::size_t row_bytes_;
    std::vector<std::uint8_t> dots_;
    long row_number_;
    long skipped_ = 0, from_ = 0, count_ = 0;
};

// A picture that is turned or stands on its head must be there whole; it is, in the size of its print.
class Canvas {
public:
    Canvas(std::size_t width, std::size_t height, const Turning &turning)
        : width_(width), height_(height), turning_(turning)
    {
        grey_.reserve(width * height);
    }

    void put(const std::uint8_t *grey)
    {
        grey_.insert(grey_.end(), grey, grey + width_);
    }

    void emit(PageRows &page) const
    {
        const std::size_t columns = turning_.transposed ? height_ : width_;
        const std::size_t rows = turning_.transposed ? width_ : height_;
        std::vector<std::uint8_t> row(columns);
        for (std::size_t y = 0; y < rows; ++y) {
            for (std::size_t x = 0; x < columns; ++x) {
                const std::size_t from_x = turning_.transposed ? y : x;
                const std::size_t from_y = turning_.transposed ? x : y;
                row[x] = grey_[(turning_.mirrored_y ? height_ - 1 - from_y : from_y) * width_ +
                               (turning_.mirrored_x ? width_ - 1 - from_x : from_x)];
            }
            page.put(row.data());
        }
    }

private:
    std::size_t width_, height_;
    Turning turning_;
    std::vector<std::uint8_t> grey_;
};

}  // namespace

std::variant<std::vector<std::uint8_t>, Failure> draw_image(ImageReader &reader, const ImageLayout &layout,
                                                            std::size_t head_dots, const DotSettings &settings)
{
    // In the file's own orientation.
    const std::size_t width = layout.turning.transposed ? layout.height : layout.width;
    const std::size_t height = layout.turning.transposed ? layout.width : layout.height;
    const bool turned = layout.turning.transposed || layout.turning.mirrored_y;
    const bool mirrored = layout.turning.mirrored_x && !turned;
    if (turned && width * height > most_pixels_in_memory) {
        return Failure{"The picture is too large to be turned."};
    }
    reader.shrink(width, height);
    PageRows page(layout, head_dots, settings);
    std::vector<std::uint8_t> mirror(mirrored ? width : 0);
    Canvas canvas(turned ? width : 0, turned ? height : 0, layout.turning);
    Canvas *const whole = turned ? &canvas : nullptr;
    ImageScaler scaler(reader.row_width(), reader.row_count(), width, height, [&](const std::uint8_t *grey) {
        if (whole != nullptr) {
            whole->put(grey);
        } else if (mirrored) {
            std::reverse_copy(grey, grey + width, mirror.begin());
            page.put(mirror.data());
        } else {
            page.put(grey);
        }
    });
    if (auto failure = reader.read([&](const std::uint8_t *grey) { scaler.put_row(grey); })) {
        return *failure;
    }
    if (whole != nullptr) {
        whole->emit(page);
    }
    return page.finish();
}

}  // namespace pages
