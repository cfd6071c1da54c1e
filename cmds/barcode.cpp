// Bar codes, and the PDF417 and QR Code functions of GS ( k.
#include <klov/barcode.h>

#include "cmds/contract.h"

// The symbols of GS ( k, by the byte that names them in its frame.
enum symbol : uint8_t { pdf417 = 0x30, qr_code = 0x31 };

// The whole value is tested, from above only: a negative n goes out as its low byte.
int32_t klov_cmd_select_print_position_HRI_characters(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len)
{
    const bool valid = n <= 3 || in_range(n, 48, 51);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x48, n);
}

int32_t klov_cmd_select_font_HRI_characters(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                            uint32_t *len)
{
    const bool valid = number_or_digit(low_byte(n), 0, 1);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x66, n);
}

int32_t klov_cmd_set_bar_code_height(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 1, 255);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x68, n);
}

int32_t klov_cmd_set_bar_code_width(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 1, 6);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x77, n);
}

// A bar code without data is nothing to print and no mistake, whatever the printer: it succeeds ahead of every check.
int32_t klov_cmd_print_bar_code(uint32_t printer_class, int32_t m, const uint8_t *data, uint32_t k, uint8_t *buf,
                                uint32_t cap, uint32_t *len)
{
    if (data == nullptr || k == 0) {
        return KLOV_OK;
    }
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit_data(printer_class, out, 4, k);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    const bool terminated = in_range(low_byte(m), 0, 6);
    const bool counted = in_range(low_byte(m), 65, 73);
    if (!terminated && !counted) {
        return KLOV_E_PARAMETER;
    }
    if (counted) {
        append_with_data(out, data, k, 0x1D, 0x6B, m, k);
    } else {
        append_with_data(out, data, k, 0x1D, 0x6B, m);
        append(out, 0x00);
    }
    return KLOV_OK;
}

// GS ( k: the count pL pH covers the symbol, the function and its parameters.
template <typename... Byte>
static int32_t emit_symbol_function(bool valid, uint32_t printer_class, command_buffer out, symbol which,
                                    uint8_t function, Byte... parameter)
{
    constexpr uint8_t count = 2 + sizeof...(parameter);
    return emit_if(valid, printer_class, out, 0x1D, 0x28, 0x6B, count, 0x00, which, function, parameter...);
}

static void append_symbol_data(command_buffer out, symbol which, const uint8_t *data, uint32_t k)
{
    const uint32_t count = k + 3;
    append_with_data(out, data, k, 0x1D, 0x28, 0x6B, low_byte(count), second_byte(count), which, 0x50, 0x30);
}

int32_t klov_cmd_pdf417_set_the_number_of_columns_in_the_data_region(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                     uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 0, 30);
    return emit_symbol_function(valid, printer_class, {buf, cap, len}, pdf417, 0x41, n);
}

int32_t klov_cmd_pdf417_set_the_number_of_rows(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                               uint32_t *len)
{
    const bool valid = low_byte(n) == 0 || in_range(low_byte(n), 3, 90);
    return emit_symbol_function(valid, printer_class, {buf, cap, len}, pdf417, 0x42, n);
}

int32_t klov_cmd_pdf417_set_the_width_of_the_module(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                    uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 2, 8);
    return emit_symbol_function(valid, printer_class, {buf, cap, len}, pdf417, 0x43, n);
}

int32_t klov_cmd_pdf417_set_the_row_height(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 2, 8);
    return emit_symbol_function(valid, printer_class, {buf, cap, len}, pdf417, 0x44, n);
}

int32_t klov_cmd_pdf417_set_the_error_correction_level(uint32_t printer_class, int32_t m, int32_t n, uint8_t *buf,
                                                       uint32_t cap, uint32_t *len)
{
    const bool by_level = low_byte(m) == 48 && in_range(low_byte(n), 48, 56);
    const bool by_ratio = low_byte(m) == 49 && in_range(low_byte(n), 1, 40);
    return emit_symbol_function(by_level || by_ratio, printer_class, {buf, cap, len}, pdf417, 0x45, m, n);
}

int32_t klov_cmd_pdf417_select_the_options(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 0, 1);
    return emit_symbol_function(valid, printer_class, {buf, cap, len}, pdf417, 0x46, n);
}

int32_t klov_cmd_pdf417_store_the_data_in_the_symbol_storage_area(uint32_t printer_class, const uint8_t *data,
                                                                  uint32_t k, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit_data(printer_class, out, 8, k);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (k < 1 || k > 65532 || !has_data(data, k)) {
        return KLOV_E_PARAMETER;
    }
    append_symbol_data(out, pdf417, data, k);
    return KLOV_OK;
}

int32_t klov_cmd_pdf417_print_the_symbol_data_in_the_symbol_storage_area(uint32_t printer_class, uint8_t *buf,
                                                                         uint32_t cap, uint32_t *len)
{
    return emit_symbol_function(true, printer_class, {buf, cap, len}, pdf417, 0x51, 0x30);
}

int32_t klov_cmd_pdf417_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area(
    uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_symbol_function(true, printer_class, {buf, cap, len}, pdf417, 0x52, 0x30);
}

int32_t klov_cmd_qr_select_the_model(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 49, 50);
    return emit_symbol_function(valid, printer_class, {buf, cap, len}, qr_code, 0x41, n, 0x00);
}

int32_t klov_cmd_qr_set_the_size_of_module(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 1, 16);
    return emit_symbol_function(valid, printer_class, {buf, cap, len}, qr_code, 0x43, n);
}

int32_t klov_cmd_qr_select_the_error_correction_level(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 48, 51);
    return emit_symbol_function(valid, printer_class, {buf, cap, len}, qr_code, 0x45, n);
}

// Room is asked for the frame only, not for the data behind it, and k is not held to a range: the caller answers for
// k + 8 bytes.
int32_t klov_cmd_qr_store_the_data_in_the_symbol_storage_area(uint32_t printer_class, const uint8_t *data, uint32_t k,
                                                              uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit_data(printer_class, out, 8, k, data_room::not_asked);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (data == nullptr) {
        return KLOV_E_PARAMETER;
    }
    append_symbol_data(out, qr_code, data, k);
    return KLOV_OK;
}

int32_t klov_cmd_qr_print_the_symbol_data_in_the_symbol_storage_area(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                                     uint32_t *len)
{
    return emit_symbol_function(true, printer_class, {buf, cap, len}, qr_code, 0x51, 0x30);
}

int32_t klov_cmd_qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area(uint32_t printer_class,
                                                                                                uint8_t *buf,
                                                                                                uint32_t cap,
                                                                                                uint32_t *len)
{
    return emit_symbol_function(true, printer_class, {buf, cap, len}, qr_code, 0x52, 0x30);
}
