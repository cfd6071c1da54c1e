// Text and places of the marks beside the paper.
#include "preview/label.h"

#include <algorithm>

#include "preview/font.h"

namespace preview {
namespace {

constexpr uint32_t letter_width = 10;
constexpr uint64_t farthest = uint64_t{5} * label_height;  // of a label from its tick

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

std::vector<Label> stack_labels(const std::vector<LabelText> &wanted, uint8_t rest_colour)
{
    std::vector<Label> labels;
    uint64_t free_from = 0;
    size_t left_out = 0;
    const auto put = [&](uint64_t tick, uint8_t colour, const std::string &text) {
        const uint64_t wanted_top = tick - std::min<uint64_t>(tick, label_height / 2);
        labels.push_back({tick, std::max(wanted_top, free_from), colour, text_picture(text)});
        free_from = labels.back().top + label_height;
    };
    const auto tell_rest = [&](uint64_t tick) {
        if (left_out > 0) {
            put(tick, rest_colour, std::to_string(left_out) + " more events");
            left_out = 0;
        }
    };
    uint64_t last_tick = 0;
    for (const Joined &entry : join(wanted)) {
        const LabelText &label = entry.label;
        if (free_from > label.tick + farthest) {
            left_out += entry.times;
            last_tick = label.tick;
            continue;
        }
        tell_rest(last_tick);
        const std::string times = entry.times > 1 ? " (" + std::to_string(entry.times) + " times)" : "";
        put(label.tick, label.colour, label.text + times);
    }
    tell_rest(last_tick);
    return labels;
}

}  // namespace preview
