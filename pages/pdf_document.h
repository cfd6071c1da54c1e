// A PDF file, its pages' sizes, their ink and their pictures. The only place that knows poppler.
#ifndef KLOV_PAGES_PDF_DOCUMENT_H
#define KLOV_PAGES_PDF_DOCUMENT_H

#include "pages/placement.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace poppler {
class document;
class page;
}  // namespace poppler

namespace pages {

// A byte a pixel, 0 is ink and 255 is paper; or a bit, the leftmost in the highest bit, a set bit paper.
enum class Pixels { grey, bits };

// A part of a page that is drawn, in pixels of a page drawn at `dpi`.
struct Cutout {
    Pixels pixels = Pixels::grey;
    double dpi = 0;
    Turn turn = Turn::none;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

class PdfDocument {
public:
    // A file, or what standard input holds when the path is empty.
    static std::optional<Failure> open(const std::string &path, PdfDocument &document);

    PdfDocument();
    ~PdfDocument();

    unsigned page_count() const;
    // As the page is looked at, its own /Rotate done; nothing when the page is broken.
    std::optional<Size> page_size(unsigned number);
    // Where a page turned that way has ink that shows on paper.
    std::optional<Failure> find_ink(unsigned number, Turn turn, Size turned_size, std::optional<Box> &ink);
    // The cutout's pixels: `take(first pixel, stride)`.
    using Take = std::function<void(const std::uint8_t *pixels, std::size_t stride)>;
    std::optional<Failure> draw(unsigned number, const Cutout &cutout, const Take &take);

private:
    poppler::page *page(unsigned number);

    std::unique_ptr<poppler::document> document_;
    std::unique_ptr<poppler::page> page_;  // the one that was asked for last
    unsigned page_number_ = 0;
};

}  // namespace pages

#endif
