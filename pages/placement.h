// Where a page of a document comes to lie on the paper: pure geometry.
#ifndef KLOV_PAGES_PLACEMENT_H
#define KLOV_PAGES_PLACEMENT_H

#include "pages/job.h"

#include <optional>

namespace pages {

// Points (1/72 inch), the origin at the top left of the page as it is looked at.
struct Size {
    double width = 0;
    double height = 0;
};
struct Box {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

struct Placement {
    double scale = 1;        // of the document; 1 is its own size
    Turn turn = Turn::none;  // counter-clockwise, before placing
    long left = 0;           // dots from the head's first dot to the turned page's left edge; negative: cut off
    long top = 0;            // dots from the raster page's first row to the turned page's top edge
    unsigned height = 0;     // rows of the raster page
};

}  // namespace pages

#endif
