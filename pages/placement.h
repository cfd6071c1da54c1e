// Where a page of a document comes to lie on the paper: pure geometry.
//
// A roll has a width and no length: pages keep their own size where the paper is wide enough, are never turned unasked
// and bring no blank paper of their own. A label has both, and a page is fitted into it.
#ifndef KLOV_PAGES_PLACEMENT_H
#define KLOV_PAGES_PLACEMENT_H

#include "pages/job.h"

#include <optional>

namespace pages {

// Points (1/72 inch); the origin is the top left corner of the page as it is looked at.
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

// The ink of a page, all of it turned as the page will be. Pages of one size share `across`, so that they share one
// scale and one left edge.
struct Ink {
    Box own;
    Box across;
};

struct Placement {
    double scale = 1;     // 1: the document's own size
    long left = 0;        // dots from the head's first dot to the page's left edge; negative: that much is cut off
    long top = 0;         // dots from the first row to the page's top edge
    unsigned height = 0;  // rows
};

// How a page of this size is turned, counter-clockwise, before it is placed.
Turn choose_turn(const Job &job, Size page);
Size turned(Size page, Turn turn);

// Whether placing a page of this size, turned already, depends on where its ink is.
bool needs_ink(const Job &job, Size page);

// Places a turned page. No ink: the page is blank, or nobody needs to know.
Placement place(const Job &job, Size page, const std::optional<Ink> &ink);

Box unite(const Box &one, const Box &other);

}  // namespace pages

#endif
