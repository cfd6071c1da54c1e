// How large a picture is printed, which way round, and where: pure geometry.
#ifndef KLOV_PAGES_IMAGE_LAYOUT_H
#define KLOV_PAGES_IMAGE_LAYOUT_H

#include "pages/image.h"

namespace pages {

struct ImageLayout {
    std::size_t width = 0;  // dots, as the picture lies on the paper
    std::size_t height = 0;
    long left = 0;  // of the picture's first dot on the head; negative: its left side is cut off
    long top = 0;   // of its first row on the page
    std::size_t page_height = 0;
    Turning turning;  // from the file's rows to the paper's
};

// A resolution below this is what programs write unasked.
constexpr double least_meant_ppi = 150;
// The longest page: 50 m, as a number of rows at the job's resolution.
std::size_t most_rows(const Paper &paper);

std::variant<ImageLayout, Failure> lay_out_image(const ImageInfo &info, const Job &job);

}  // namespace pages

#endif
