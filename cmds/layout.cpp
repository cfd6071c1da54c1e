// Text and layout: character modes, code tables, line feeds, positions, tabs, page mode, kanji mode.
#include <klov/layout.h>

#include "cmds/contract.h"

// Model identifier in bits 16-31 of the class word.
constexpr uint32_t model_with_padded_print_area = 0x1102;

// ---- Line and page data ----

int32_t klov_cmd_print_and_line_feed(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x0A);
}

int32_t klov_cmd_print_and_carriage_return(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x0D);
}

int32_t klov_cmd_horizontal_tab(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x09);
}

int32_t klov_cmd_cancel_print_data_in_page_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x18);
}

int32_t klov_cmd_print_data_in_page_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x0C);
}

// ---- Line spacing and feeds ----

int32_t klov_cmd_select_default_line_spacing(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x32);
}

int32_t klov_cmd_print_and_reverse_feed(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4B, n);
}

int32_t klov_cmd_print_and_feed_n_line(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x64, n);
}

// One group for every started 255 lines. Only a single group below 255 lines is asked room for and counted in *len: a
// longer feed is written behind *len, and the caller who wants it counts its groups.
int32_t klov_cmd_print_and_reverse_feed_n_line(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                               uint32_t *len)
{
    const uint32_t counted = in_range(n, 1, 254) ? 3 : 0;
    const int32_t refusal = admit(printer_class, {buf, cap, len}, counted);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    uint32_t end = *len;
    const command_buffer groups = {buf, cap, &end};
    int32_t rest = n;
    for (; rest > 255; rest -= 255) {
        append(groups, 0x1B, 0x65, 0xFF);
    }
    if (rest > 0) {
        append(groups, 0x1B, 0x65, rest);
    }
    *len += counted;
    return KLOV_OK;
}

// ---- Characters ----

int32_t klov_cmd_set_right_side_character_spacing(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                  uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x20, n);
}

int32_t klov_cmd_select_print_modes(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x21, n);
}

int32_t klov_cmd_select_or_cancel_defined_charater_set(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                       uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x25, n);
}

// The data is one shape of x columns, three bytes high, even for a range of codes. The product is not
// cut to a byte, so 86 columns and more cannot be defined.
int32_t klov_cmd_define_user_defined_characters(uint32_t printer_class, int32_t c1, int32_t c2, int32_t x,
                                                const uint8_t *data, int32_t k, uint8_t *buf, uint32_t cap,
                                                uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const uint8_t size = low_byte(k);
    const int32_t refusal = admit_data(printer_class, out, 6, size);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    const uint8_t first = low_byte(c1);
    const uint8_t last = low_byte(c2);
    const bool codes_fit = in_range(first, 32, 126) && in_range(last, 32, 126) && first <= last;
    if (size != 3 * low_byte(x) || !codes_fit || !has_data(data, size)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, size, 0x1B, 0x26, 0x03, first, last, x);
    return KLOV_OK;
}

int32_t klov_cmd_cancel_user_defined_characters(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                uint32_t *len)
{
    return emit_if(in_range(low_byte(n), 32, 126), printer_class, {buf, cap, len}, 0x1B, 0x3F, n);
}

int32_t klov_cmd_turn_underline_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                            uint32_t *len)
{
    return emit_if(number_or_digit(low_byte(n), 0, 2), printer_class, {buf, cap, len}, 0x1B, 0x2D, n);
}

int32_t klov_cmd_turn_emphasized_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                             uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x45, n);
}

int32_t klov_cmd_turn_double_strike_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x47, n);
}

int32_t klov_cmd_select_character_font(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_if(number_or_digit(low_byte(n), 0, 2), printer_class, {buf, cap, len}, 0x1B, 0x4D, n);
}

int32_t klov_cmd_select_an_international_character_set(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                       uint32_t *len)
{
    return emit_if(in_range(low_byte(n), 0, 15), printer_class, {buf, cap, len}, 0x1B, 0x52, n);
}

int32_t klov_cmd_turn90_clockwise_rotation_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                       uint32_t *len)
{
    return emit_if(number_or_digit(low_byte(n), 0, 2), printer_class, {buf, cap, len}, 0x1B, 0x56, n);
}

// Asks for no room: callers bring a buffer for the longer form. Mode 1 enters the user setting mode ("IN"), stores
// customised value 8, asks for it back and leaves the mode ("OUT"). The second 01 "IN" belongs to no command, and is
// part of the sequence all the same.
int32_t klov_cmd_select_character_code_table(uint32_t printer_class, int32_t n, int32_t mode, uint8_t *buf,
                                             uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit(printer_class, out, 0);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    switch (mode) {
        case 0:
            append(out, 0x1B, 0x74, n);
            return KLOV_OK;
        case 1:
            append(out, 0x1D, 0x28, 0x45, 0x03, 0x00, 0x01, 'I', 'N');
            append(out, 0x1D, 0x28, 0x45, 0x04, 0x00, 0x05, 0x08, n, 0x00);
            append(out, 0x1D, 0x28, 0x45, 0x02, 0x00, 0x06, 0x08);
            append(out, 0x01, 'I', 'N');
            append(out, 0x1D, 0x28, 0x45, 0x04, 0x00, 0x02, 'O', 'U', 'T');
            return KLOV_OK;
        default:
            return KLOV_E_PARAMETER;
    }
}

int32_t klov_cmd_turn_upside_down_print_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                    uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x7B, n);
}

int32_t klov_cmd_select_character_size(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_if((n & 0x88) == 0, printer_class, {buf, cap, len}, 0x1D, 0x21, n);
}

int32_t klov_cmd_turn_white_black_reverse_print_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                            uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1D, 0x42, n);
}

int32_t klov_cmd_turn_smoothing_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                            uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1D, 0x62, n);
}

// ---- Positions and tabs ----

int32_t klov_cmd_set_absolute_print_position(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                             uint32_t *len)
{
    return emit_if(in_range(n, 0, 65535), printer_class, {buf, cap, len}, 0x1B, 0x24, low_byte(n), second_byte(n));
}

int32_t klov_cmd_set_relative_print_position(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                             uint32_t *len)
{
    return emit_if(in_range(n, -32768, 32767), printer_class, {buf, cap, len}, 0x1B, 0x5C, low_byte(n), second_byte(n));
}

int32_t klov_cmd_set_horizontal_tab_positions(uint32_t printer_class, const uint8_t *data, int32_t k, uint8_t *buf,
                                              uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const uint8_t count = low_byte(k);
    const int32_t refusal = admit_data(printer_class, out, 3, count);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (count > 32 || !has_data(data, count)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, count, 0x1B, 0x44);
    append(out, 0x00);
    return KLOV_OK;
}

int32_t klov_cmd_set_print_position_to_the_beginning_of_print_line(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                   uint32_t cap, uint32_t *len)
{
    return emit_if(number_or_digit(low_byte(n), 0, 1), printer_class, {buf, cap, len}, 0x1D, 0x54, n);
}

int32_t klov_cmd_set_print_area_width(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_if(in_range(n, 0, 65535), printer_class, {buf, cap, len}, 0x1D, 0x57, low_byte(n), second_byte(n));
}

int32_t klov_cmd_set_horizontal_and_vertical_motion_units(uint32_t printer_class, int32_t x, int32_t y, uint8_t *buf,
                                                          uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1D, 0x50, x, y);
}

// ---- Page mode ----

int32_t klov_cmd_select_print_direction_in_page_mode(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                     uint32_t *len)
{
    return emit_if(number_or_digit(low_byte(n), 0, 3), printer_class, {buf, cap, len}, 0x1B, 0x54, n);
}

// One model wants a 00 before the area. Room for that longer form is asked for on every model.
int32_t klov_cmd_set_print_area_in_page_mode(uint32_t printer_class, int32_t x, int32_t y, int32_t dx, int32_t dy,
                                             uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit(printer_class, out, 11);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (!in_range(x, 0, 65535) || !in_range(y, 0, 65535) || !in_range(dx, 0, 65535) || !in_range(dy, 0, 65535)) {
        return KLOV_E_PARAMETER;
    }
    append(out, 0x1B, 0x57);
    if (printer_class >> 16 == model_with_padded_print_area) {
        append(out, 0x00);
    }
    append(out, low_byte(x), second_byte(x), low_byte(y), second_byte(y));
    append(out, low_byte(dx), second_byte(dx), low_byte(dy), second_byte(dy));
    return KLOV_OK;
}

int32_t klov_cmd_set_absolute_vertical_print_position_in_page_mode(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                   uint32_t cap, uint32_t *len)
{
    return emit_if(in_range(n, 0, 65535), printer_class, {buf, cap, len}, 0x1D, 0x24, low_byte(n), second_byte(n));
}

int32_t klov_cmd_set_relative_vertical_print_position_in_page_mode(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                   uint32_t cap, uint32_t *len)
{
    return emit_if(in_range(n, -32768, 32767), printer_class, {buf, cap, len}, 0x1D, 0x5C, low_byte(n), second_byte(n));
}

// ---- Kanji mode ----

int32_t klov_cmd_select_kanji_character_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1C, 0x26);
}

int32_t klov_cmd_cancel_kanji_character_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1C, 0x2E);
}
