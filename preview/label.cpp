// Text and places of the marks beside the paper.
#include "preview/label.h"

#include <algorithm>

#include "preview/font.h"

namespace preview {
namespace {

constexpr uint32_t letter_width = 10;

Bitmap text_picture(const std::string &text)
{
    Bitmap picture = make_bitmap(static_cast<uint32_t>(text.size()) * letter_width, font_a.cell_height);
    for (uint32_t i = 0; i < text.size(); ++i) {
        for (uint32_t y = 0; y < picture.height; ++y) {
            const uint32_t bits = cell_row(font_a, static_cast<uint8_t>(text[i]), y) >> font_a.left;
            for (uint32_t x = 0; x < letter_width; ++x) {
                if ((bits >> (letter_width - 1 - x) & 1) != 0) {
                    picture.set(i * letter_width + x, y);
                }
            }
        }
    }
    return picture;
}

struct Joined {
    LabelText label;
    size_t times;
};

std::vector<Joined> join(const std::vector<LabelText> &wanted)
{
    std::vector<Joined> joined;
    for (const LabelText &label : wanted) {
        const bool same =
            !joined.empty() && joined.back().label.tick == label.tick && joined.back().label.text == label.text;
        if (same) {
            ++joined.back().times;
        } else {
            joined.push_back({label, 1});
        }
    }
    return joined;
}

}  // namespace

std::vector<Label> stack_labels(const std::vector<LabelText> &wanted, size_t most)
{
    std::vector<Joined> joined = join(wanted);
    if (joined.size() > most) {
        const size_t missing = joined.size() - most + 1;
        joined.resize(most);
        joined.back().label.text = std::to_string(missing) + " more events";
        joined.back().times = 1;
    }
    std::vector<Label> labels;
    uint64_t free_from = 0;
    for (const Joined &entry : joined) {
        const uint64_t wanted_top = entry.label.tick - std::min<uint64_t>(entry.label.tick, label_height / 2);
        const std::string times = entry.times > 1 ? " (" + std::to_string(entry.times) + " times)" : "";
        Label label{entry.label.tick, std::max(wanted_top, free_from), entry.label.colour,
                    text_picture(entry.label.text + times)};
        free_from = label.top + label_height;
        labels.push_back(std::move(label));
    }
    return labels;
}

}  // namespace preview
