// Characters: style settings and drawing.
#include <algorithm>

#include "preview/machine.h"

namespace preview {
namespace {

uint32_t choice(const Command &command)
{
    const int64_t n = command.arg("n");
    return static_cast<uint32_t>(n >= 48 ? n - 48 : n);
}

bool lowest_bit(const Command &command)
{
    return command.arg("n") % 2 == 1;
}

// One character's cell, unscaled, with the space at its right.
Bitmap cell_bitmap(const Font &font, uint8_t code, uint32_t spacing, bool bold)
{
    Bitmap cell = make_bitmap(font.cell_width + spacing, font.cell_height);
    for (uint32_t y = 0; y < font.cell_height; ++y) {
        uint32_t bits = cell_row(font, code, y);
        bits |= bold ? bits >> 1 : 0;
        for (uint32_t x = 0; x < font.cell_width; ++x) {
            if ((bits >> (font.cell_width - 1 - x) & 1) != 0) {
                cell.set(x, y);
            }
        }
    }
    return cell;
}

void underline(Bitmap &bitmap, uint32_t thickness)
{
    for (uint32_t y = bitmap.height - std::min(thickness, bitmap.height); y < bitmap.height; ++y) {
        for (uint32_t x = 0; x < bitmap.width; ++x) {
            bitmap.set(x, y);
        }
    }
}

void invert(Bitmap &bitmap)
{
    for (uint8_t &byte : bitmap.bits) {
        byte = static_cast<uint8_t>(~byte);
    }
}

}  // namespace

std::span<const Machine::HandlerRow> Machine::text_handlers()
{
    static constexpr HandlerRow rows[] = {
        {"text", &Machine::do_text},
        {"select_print_modes", &Machine::do_print_modes},
        {"select_character_size", &Machine::do_character_size},
        {"turn_emphasized_mode_on_off", &Machine::do_emphasized},
        {"turn_double_strike_mode_on_off", &Machine::do_double_strike},
        {"turn_underline_mode_on_off", &Machine::do_underline},
        {"turn_white_black_reverse_print_mode_on_off", &Machine::do_reverse},
        {"turn90_clockwise_rotation_mode_on_off", &Machine::do_rotation},
        {"turn_upside_down_print_mode_on_off", &Machine::do_upside_down},
        {"select_character_font", &Machine::do_font},
        {"set_right_side_character_spacing", &Machine::do_spacing},
        {"select_or_cancel_defined_charater_set", &Machine::do_user_set},
        {"define_user_defined_characters", &Machine::do_define_character},
        {"cancel_user_defined_characters", &Machine::do_cancel_character},
    };
    return rows;
}

Bitmap Machine::character(uint8_t code)
{
    const TextStyle &style = settings_.style;
    const Font &font = style.small_font ? font_b : font_a;
    // Drawn, underlined or inverted, and turned: each looks at the dots.
    const uint64_t dots = uint64_t{font.cell_width + style.spacing} * font.cell_height;
    if (!spend(2 * dots + 4 * dots * style.horizontal * (style.rotated ? style.vertical : 1))) {
        return {};
    }
    Bitmap cell = cell_bitmap(font, code, style.spacing, style.emphasized || style.double_strike);
    const auto own = user_characters_.find(code);
    if (style.user_characters && own != user_characters_.end()) {
        cell = own->second;
    }
    cell = enlarged(cell, style.horizontal, style.vertical);
    if (style.underline > 0 && !style.rotated && !style.reverse) {
        underline(cell, style.underline);
    }
    if (style.reverse) {
        invert(cell);
    }
    return style.rotated ? turned(cell) : cell;
}

// A line of plain text of its own, for what stands at a bar code.
Bitmap Machine::text_bitmap(Bytes text, bool small_font) const
{
    const Font &font = small_font ? font_b : font_a;
    Bitmap line = make_bitmap(font.cell_width * static_cast<uint32_t>(text.size()), font.cell_height);
    for (uint32_t i = 0; i < text.size(); ++i) {
        const Bitmap cell = cell_bitmap(font, text[i], 0, false);
        for (uint32_t y = 0; y < cell.height; ++y) {
            for (uint32_t x = 0; x < cell.width; ++x) {
                if (cell.dot(x, y)) {
                    line.set(i * font.cell_width + x, y);
                }
            }
        }
    }
    return line;
}

void Machine::do_text(const Command &command)
{
    for (const uint8_t code : command.data) {
        if (problem_) {
            return;
        }
        put_in_line(character(code));
    }
}

void Machine::do_print_modes(const Command &command)
{
    const int64_t n = command.arg("n");
    TextStyle &style = settings_.style;
    style.small_font = (n & 0x01) != 0;
    style.emphasized = (n & 0x08) != 0;
    style.vertical = (n & 0x10) != 0 ? 2 : 1;
    style.horizontal = (n & 0x20) != 0 ? 2 : 1;
    style.underline = (n & 0x80) != 0 ? 1 : 0;
}

void Machine::do_character_size(const Command &command)
{
    const auto n = static_cast<uint32_t>(command.arg("n"));
    settings_.style.horizontal = (n >> 4 & 7) + 1;
    settings_.style.vertical = (n & 7) + 1;
}

void Machine::do_emphasized(const Command &command)
{
    settings_.style.emphasized = lowest_bit(command);
}

void Machine::do_double_strike(const Command &command)
{
    settings_.style.double_strike = lowest_bit(command);
}

void Machine::do_underline(const Command &command)
{
    settings_.style.underline = std::min(choice(command), 2U);
}

void Machine::do_reverse(const Command &command)
{
    settings_.style.reverse = lowest_bit(command);
}

void Machine::do_rotation(const Command &command)
{
    settings_.style.rotated = choice(command) != 0;
}

void Machine::do_upside_down(const Command &command)
{
    settings_.upside_down = lowest_bit(command);
}

void Machine::do_font(const Command &command)
{
    settings_.style.small_font = choice(command) != 0;
}

void Machine::do_spacing(const Command &command)
{
    settings_.style.spacing = std::min(to_dots_x(command.arg("n")), 255U);
}

void Machine::do_user_set(const Command &command)
{
    settings_.style.user_characters = lowest_bit(command);
}

void Machine::do_define_character(const Command &command)
{
    const auto width = static_cast<uint32_t>(command.arg("x"));
    const auto code = static_cast<uint8_t>(command.arg("c1"));
    user_characters_[code] = bitmap_from_columns(width, 24, command.data);
}

void Machine::do_cancel_character(const Command &command)
{
    user_characters_.erase(static_cast<uint8_t>(command.arg("n")));
}

}  // namespace preview
