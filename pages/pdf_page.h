// One page of a PDF, from its place on the paper to rows of dots.
#ifndef KLOV_PAGES_PDF_PAGE_H
#define KLOV_PAGES_PDF_PAGE_H

#include "pages/pdf_document.h"
#include "pages/placement.h"
#include "pages/raster_writer.h"

#include <optional>

namespace pages {

struct PageOrder {
    unsigned number = 1;  // in the document
    Size size;            // turned
    Turn turn = Turn::none;
    Placement placement;
    unsigned copies = 1;
};

// Draws the page slice by slice and sends its dots. Where that fails in the middle, the page ends blank, but whole.
std::optional<Failure> print_page(const Job &job, PdfDocument &document, const PageOrder &order, RasterWriter &writer);

}  // namespace pages

#endif
