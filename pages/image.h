// Pictures as rows of grey: PNG, JPEG and PNM behind one face. 0 is ink, 255 is paper; what is transparent is paper.
#ifndef KLOV_PAGES_IMAGE_H
#define KLOV_PAGES_IMAGE_H

#include "pages/image_turn.h"
#include "pages/job.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace pages {

// As the file has it, before any turning.
struct ImageInfo {
    std::size_t width = 0;
    std::size_t height = 0;
    double ppi_x = 0;  // pixels an inch; 0: the file does not say
    double ppi_y = 0;
    Turning turning;  // that the file asks for
};

using GreySink = std::function<void(const std::uint8_t *grey)>;

class ImageReader {
public:
    virtual ~ImageReader() = default;

    const ImageInfo &info() const
    {
        return info_;
    }
    // What read() delivers; info's size unless shrink() found something smaller.
    std::size_t row_width() const
    {
        return width_;
    }
    std::size_t row_count() const
    {
        return height_;
    }
    // A picture of at least this size is wanted; formats that can, deliver a smaller one for less work.
    virtual void shrink(std::size_t /*width*/, std::size_t /*height*/) {}
    // All rows, from the top; a failure can come after some of them.
    virtual std::optional<Failure> read(const GreySink &sink) = 0;

protected:
    void set_size(std::size_t width, std::size_t height)
    {
        info_.width = width_ = width;
        info_.height = height_ = height;
    }
    ImageInfo info_;
    std::size_t width_ = 0;
    std::size_t height_ = 0;
};

// Bounds on what a file may ask for. The largest picture that makes sense is a roll of 50 m of a wide head.
constexpr std::size_t most_pixels = 400'000'000;
constexpr std::size_t most_pixels_in_memory = 64'000'000;  // of pictures that come in an order of their own
constexpr std::size_t widest_picture = 100'000;

// Why a picture of this size is refused, if it is.
std::optional<Failure> refuse_size(std::size_t width, std::size_t height);

using OpenedImage = std::variant<std::unique_ptr<ImageReader>, Failure>;

// Looks at the first byte and reads the header. The file stays the caller's, and open until the reader is gone.
OpenedImage open_image(std::FILE *file);
OpenedImage open_png(std::FILE *file);
OpenedImage open_jpeg(std::FILE *file);
OpenedImage open_pnm(std::FILE *file);

// Grey of red, green and blue; black stays 0 and white 255.
inline std::uint8_t grey_of(unsigned red, unsigned green, unsigned blue)
{
    return static_cast<std::uint8_t>((red * 77 + green * 150 + blue * 29) >> 8);
}

// On white paper.
inline std::uint8_t on_paper(unsigned value, unsigned opacity)
{
    return static_cast<std::uint8_t>((value * opacity + 255 * (255 - opacity) + 127) / 255);
}

}  // namespace pages

#endif
