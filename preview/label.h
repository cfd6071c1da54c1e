// The marks beside the paper: what happened, and at which row.
#ifndef KLOV_PREVIEW_LABEL_H
#define KLOV_PREVIEW_LABEL_H

#include "preview/reader.h"

namespace preview {

constexpr uint32_t label_height = 24;

struct Label {
    uint64_t tick;  // picture row that the mark belongs to
    uint64_t top;   // picture row where the label starts; labels never overlap
    uint8_t colour;
    Bitmap text;
};

// A wanted label; the same text at the same place is joined ("x3").
struct LabelText {
    uint64_t tick;
    uint8_t colour;
    std::string text;
};

// Stacks the labels downwards from their ticks. Where there are so many that labels would stand far from their ticks,
// some are left out, and one in `rest_colour` says how many.
std::vector<Label> stack_labels(const std::vector<LabelText> &wanted, uint8_t rest_colour);

}  // namespace preview

#endif
