// Prints one picture: rows of the file to rows of dots, in the size and place that its layout says.
#ifndef KLOV_PAGES_IMAGE_PAGE_H
#define KLOV_PAGES_IMAGE_PAGE_H

#include "pages/image.h"
#include "pages/image_layout.h"

namespace pages {

// The dots of the whole page, (head_dots + 7) / 8 bytes a row. Nothing is printed of a picture that turns out to be
// damaged, so the page is complete before any of it leaves; a metre of a wide head takes 1 MB.
std::variant<std::vector<std::uint8_t>, Failure> draw_image(ImageReader &reader, const ImageLayout &layout,
                                                            std::size_t head_dots, const DotSettings &settings);

}  // namespace pages

#endif
