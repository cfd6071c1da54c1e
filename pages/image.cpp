#include "pages/image.h"

#include <string>

namespace pages {

std::optional<Failure> refuse_size(std::size_t width, std::size_t height)
{
    const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width == 0 || height == 0) {
        return Failure{"The picture is empty: it has " + size + "."};
    }
    if (width > widest_picture || height > most_pixels / width) {
        return Failure{"The picture is too large: it has " + size + "."};
    }
    return std::nullopt;
}

OpenedImage open_image(std::FILE *file)
{
    const int first = std::getc(file);
    if (first == EOF) {
        return Failure{"The picture is empty: the file has no content."};
    }
    std::ungetc(first, file);
    switch (first) {
        case 0x89:
            return open_png(file);
        case 0xFF:
            return open_jpeg(file);
        case 'P':
            return open_pnm(file);
        default:
            return Failure{"The document is not a picture of a kind that can be printed: PNG, JPEG or PNM."};
    }
}

}  // namespace pages
