// The commands that print a page: raster bands, feeds, cuts, page end, speed and density, beeper, drawer and logo.
#include <klov/printing.h>

#include "cmds/contract.h"

int32_t klov_cmd_print_raster_img_cmd_header(uint32_t printer_class, int32_t m, int32_t xBytes, int32_t yDots,
                                             uintptr_t buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {reinterpret_cast<uint8_t *>(buf), cap, len}, 0x1D, 0x76, 0x30, m, low_byte(xBytes),
                second_byte(xBytes), low_byte(yDots), second_byte(yDots));
}

// The length depends on the data, and the room for all of it is asked for before the ranges.
int32_t klov_cmd_print_raster_bit_image(uint32_t printer_class, int32_t m, int32_t xBytes, int32_t yDots,
                                        const uint8_t *data, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const uint32_t size = static_cast<uint32_t>(xBytes) * static_cast<uint32_t>(yDots);
    const int32_t refusal = admit_data(printer_class, out, 8, size);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    const bool valid = number_or_digit(low_byte(m), 0, 3) && in_range(xBytes, 1, 128) && in_range(yDots, 1, 2303);
    if (!valid || !has_data(data, size)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, size, 0x1D, 0x76, 0x30, m, xBytes, 0x00, low_byte(yDots), second_byte(yDots));
    return KLOV_OK;
}

int32_t klov_cmd_set_left_margin(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_if(in_range(n, 0, 65535), printer_class, {buf, cap, len}, 0x1D, 0x4C, low_byte(n), second_byte(n));
}

// One ESC J feeds 255 units at most, so a longer feed is a row of them. The number of groups is a signed 32-bit
// quotient: from -1 to -508 it is 0 and nothing is written; below that it is negative and no room is large enough.
int32_t klov_cmd_print_and_feed_paper(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    if (n == 0) {
        return emit(printer_class, out, 0x1B, 0x4A, 0x00);
    }
    const int32_t groups = static_cast<int32_t>(static_cast<uint32_t>(n) + 254) / 255;
    const int32_t refusal = admit(printer_class, out, 3 * static_cast<uint32_t>(groups));
    if (refusal != KLOV_OK) {
        return refusal;
    }
    int32_t rest = n;
    for (; rest > 255; rest -= 255) {
        append(out, 0x1B, 0x4A, 0xFF);
    }
    if (rest > 0) {
        append(out, 0x1B, 0x4A, rest);
    }
    return KLOV_OK;
}

// 0 and 1 are the cuts of the command without a feed; 65 and 66 are the same cuts after feeding n.
int32_t klov_cmd_select_cut_mode_and_feed_paper(uint32_t printer_class, int32_t m, int32_t n, uint8_t *buf,
                                                uint32_t cap, uint32_t *len)
{
    const uint8_t mode = low_byte(m);
    const bool short_form = in_range(mode, 0, 1);
    const bool valid = short_form || in_range(mode, 65, 66);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x56, short_form ? mode + 65 : mode, n);
}

int32_t klov_cmd_print_and_return_standard_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x0C);
}

int32_t klov_cmd_select_the_print_speed(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1D, 0x45, n);
}

int32_t klov_cmd_select_the_print_density(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1D, 0x28, 0x4B, 0x02, 0x00, 0x31, n);
}

int32_t klov_cmd_set_line_spacing(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x33, n);
}

int32_t klov_cmd_beep_integrated_beeper(uint32_t printer_class, int32_t n, int32_t c, int32_t t, uint8_t *buf,
                                        uint32_t cap, uint32_t *len)
{
    return emit_if(in_range(low_byte(n), 0, 63), printer_class, {buf, cap, len}, 0x1B, 0x28, 0x41, 0x05, 0x00, 0x61,
                   0x64, n, c, t);
}

// An off time below the on time is raised to it: a solenoid rests at least as long as it was driven.
int32_t klov_cmd_generate_pulse(uint32_t printer_class, int32_t m, int32_t t1, int32_t t2, uint8_t *buf, uint32_t cap,
                                uint32_t *len)
{
    const int32_t off = low_byte(t2) < low_byte(t1) ? t1 : t2;
    return emit_if(number_or_digit(low_byte(m), 0, 1), printer_class, {buf, cap, len}, 0x1B, 0x70, m, t1, off);
}

int32_t klov_cmd_select_justification(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_if(number_or_digit(low_byte(n), 0, 2), printer_class, {buf, cap, len}, 0x1B, 0x61, n);
}

int32_t klov_cmd_print_the_specified_NV_graphics_data_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2, int32_t x,
                                                            int32_t y, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_if(is_key_code(kc1, kc2), printer_class, {buf, cap, len}, 0x1D, 0x28, 0x4C, 0x06, 0x00, 0x30, 0x45, kc1,
                   kc2, x, y);
}
