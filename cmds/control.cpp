// The printer's mechanism and state: modes, cutting, label positions, pulses, macros, drawing, NV user memory, USB.
#include <klov/control.h>

#include "cmds/contract.h"

// Class bit of printers that take the USB control sequences.
constexpr uint32_t class_usb_control = 0x1000;

int32_t klov_cmd_initialize_printer(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x40);
}

int32_t klov_cmd_select_page_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4C);
}

int32_t klov_cmd_select_standard_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x53);
}

int32_t klov_cmd_return_home(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x3C);
}

int32_t klov_cmd_select_unidirectional_print_mode(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                  uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x55, n);
}

int32_t klov_cmd_select_peripheral_device(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 1, 3);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1B, 0x3D, n);
}

int32_t klov_cmd_partial_cut_one_point_left_uncut(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x69);
}

int32_t klov_cmd_partial_cut_three_point_left_uncut(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x6D);
}

int32_t klov_cmd_select_cut_mode_and_cut_paper(uint32_t printer_class, int32_t m, uint8_t *buf, uint32_t cap,
                                               uint32_t *len)
{
    const bool valid = number_or_digit(low_byte(m), 0, 1);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x56, m);
}

int32_t klov_cmd_position_next_label(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1D, 0x0C);
}

int32_t klov_cmd_feed_paper_to_the_label_peeling_position(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                          uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 48, 49);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1C, 0x28, 0x4C, 0x02, 0x00, 0x41, n);
}

int32_t klov_cmd_feed_paper_to_the_cutting_position(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                    uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 48, 49);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1C, 0x28, 0x4C, 0x02, 0x00, 0x42, n);
}

int32_t klov_cmd_feed_paper_to_the_print_starting_position(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                           uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 48, 50);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1C, 0x28, 0x4C, 0x02, 0x00, 0x43, n);
}

int32_t klov_cmd_send_real_time_request_to_printer(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                   uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 1, 2);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x10, 0x05, n);
}

// Callers give the time in the printer's units of 100 ms or, above 100, in milliseconds. Tested whole, as a time is no
// byte.
int32_t klov_cmd_generate_pulse_in_real_time(uint32_t printer_class, int32_t m, int32_t t, uint8_t *buf, uint32_t cap,
                                             uint32_t *len)
{
    const int32_t units = t <= 100 ? t : t / 100;
    const bool valid = in_range(units, 1, 8);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x10, 0x14, 0x01, m, units);
}

int32_t klov_cmd_execute_power_off_sequence(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x10, 0x14, 0x02, 0x01, 0x08);
}

int32_t klov_cmd_clear_buffer(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x10, 0x14, 0x08, 0x01, 0x03, 0x14, 0x01, 0x06, 0x02, 0x08);
}

int32_t klov_cmd_clearbuffer(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return klov_cmd_clear_buffer(printer_class, buf, cap, len);
}

// The whole value is tested: 256 is not 0 here.
int32_t klov_cmd_set_buzzer(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = n == 0 || n == 2;
    return emit_if(valid, printer_class, {buf, cap, len}, 0x12, 0x27, 0x77, 0x10, n, 0x0D, 0x0A);
}

int32_t klov_cmd_start_macro_definition(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1D, 0x3A);
}

int32_t klov_cmd_execute_macro(uint32_t printer_class, int32_t r, int32_t t, int32_t m, uint8_t *buf, uint32_t cap,
                               uint32_t *len)
{
    const bool valid = in_range(low_byte(r), 1, 255) && in_range(low_byte(m), 0, 1);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x5E, r, t, m);
}

int32_t klov_cmd_execute_test_print(uint32_t printer_class, int32_t n, int32_t m, uint8_t *buf, uint32_t cap,
                                    uint32_t *len)
{
    const bool valid = number_or_digit(low_byte(n), 0, 2) && number_or_digit(low_byte(m), 1, 3);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x28, 0x41, 0x02, 0x00, n, m);
}

// k counts as one byte and is not compared with p: the caller makes them agree.
int32_t klov_cmd_enable_real_time_command(uint32_t printer_class, int32_t p, const uint8_t *data, uint32_t k,
                                          uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const uint8_t size = low_byte(k);
    const int32_t refusal = admit_data(printer_class, out, 6, size);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if ((low_byte(p) != 3 && low_byte(p) != 5) || !has_data(data, size)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, size, 0x1D, 0x28, 0x44, p, 0x00, 0x14);
    return KLOV_OK;
}

int32_t klov_cmd_select_the_print_control_mode(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                               uint32_t *len)
{
    const bool valid = number_or_digit(low_byte(n), 0, 4);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x28, 0x4B, 0x02, 0x00, 0x30, n);
}

int32_t klov_cmd_select_the_number_of_parts_for_the_thermal_head_energizing(uint32_t printer_class, int32_t n,
                                                                            uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = number_or_digit(low_byte(n), 0, 4) || low_byte(n) == 128;
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x28, 0x4B, 0x02, 0x00, 0x61, n);
}

// GS ( Q: one shape, its coordinates and style of fixed size. The room is asked for the size that was given.
static int32_t emit_shape(uint32_t printer_class, command_buffer out, uint8_t function, uint32_t shape_size,
                          const uint8_t *data, uint32_t k)
{
    const int32_t refusal = admit_data(printer_class, out, 6, k);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (k != shape_size || !has_data(data, k)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, k, 0x1D, 0x28, 0x51, k, 0x00, function);
    return KLOV_OK;
}

int32_t klov_cmd_draw_line(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf, uint32_t cap,
                           uint32_t *len)
{
    return emit_shape(printer_class, {buf, cap, len}, 0x30, 12, data, k);
}

int32_t klov_cmd_draw_rectangle(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf, uint32_t cap,
                                uint32_t *len)
{
    return emit_shape(printer_class, {buf, cap, len}, 0x31, 14, data, k);
}

static bool is_printable(const uint8_t *data, uint32_t size)
{
    for (uint32_t i = 0; i < size; ++i) {
        if (data[i] < 0x20) {
            return false;
        }
    }
    return true;
}

// The data are looked at last, when their size is known to be a sane one; every fault gives the same result.
int32_t klov_cmd_write_to_nv_user_memory(uint32_t printer_class, uint32_t a, int32_t n, const uint8_t *data, uint32_t k,
                                         uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit_data(printer_class, out, 10, k);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    const bool sized = in_range(n, 1, 1024) && k == static_cast<uint32_t>(n);
    if (!sized || !has_data(data, k) || !is_printable(data, k)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, k, 0x1C, 0x67, 0x31, 0x00, a, a >> 8, a >> 16, a >> 24, low_byte(n), second_byte(n));
    return KLOV_OK;
}

int32_t klov_cmd_read_from_nv_user_memory(uint32_t printer_class, uint32_t a, int32_t n, uint8_t *buf, uint32_t cap,
                                          uint32_t *len)
{
    const bool valid = a <= 1023 && in_range(n, 1, 80);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1C, 0x67, 0x32, 0x00, a, a >> 8, a >> 16, a >> 24,
                   low_byte(n), second_byte(n));
}

// An unknown op succeeds without writing: the three bytes at buf + *len stay what they were, and count as appended.
// That is part of the interface: every op grows the buffer alike.
int32_t klov_cmd_usb_ctl(uint32_t printer_class, int32_t op, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    if ((printer_class & class_usb_control) == 0) {
        return KLOV_E_MODEL_TYPE;
    }
    const command_buffer out = {buf, cap, len};
    if (op == 1) {
        return emit(printer_class, out, 0x1E, 0x1E, 0x1E);
    }
    if (op == 2) {
        return emit(printer_class, out, 0x1E, 0x10, 0x04);
    }
    const int32_t refusal = admit(printer_class, out, 3);
    if (refusal == KLOV_OK) {
        *len += 3;
    }
    return refusal;
}
