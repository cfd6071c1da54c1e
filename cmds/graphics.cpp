// Graphics and bit images: ESC *, FS p, FS q, GS *, GS / and the GS ( L graphics functions.
#include <klov/graphics.h>

#include "cmds/contract.h"

// ---- Bit images ----

// The data may come later: without it the command still grows by k, and the caller fills those bytes. A k from -5 to -1
// takes back part of the header from *len, so that the length is meant to wrap here.
int32_t klov_cmd_select_bit_image_mode(uint32_t printer_class, int32_t m, int32_t n, const uint8_t *data, int32_t k,
                                       uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit(printer_class, out, 5 + static_cast<uint32_t>(k));
    if (refusal != KLOV_OK) {
        return refusal;
    }
    const uint8_t mode = low_byte(m);
    const bool high = mode == 32 || mode == 33;
    if ((!high && !in_range(mode, 0, 1)) || !in_range(n, 1, 2047)) {
        return KLOV_E_PARAMETER;
    }
    const bool data_given = data != nullptr && k > 0;
    const int32_t expected = n * (mode < 33 ? 1 : 3) * (mode % 2 == 1 ? 2 : 1);
    if (data_given && k != expected) {
        return KLOV_E_PARAMETER;
    }
    if (data_given) {
        append_with_data(out, data, static_cast<uint32_t>(k), 0x1B, 0x2A, mode, low_byte(n), second_byte(n));
        return KLOV_OK;
    }
    append(out, 0x1B, 0x2A, mode, low_byte(n), second_byte(n));
    *len += static_cast<uint32_t>(k);
    return KLOV_OK;
}

int32_t klov_cmd_print_NV_bit_image(uint32_t printer_class, int32_t n, int32_t m, uint8_t *buf, uint32_t cap,
                                    uint32_t *len)
{
    return emit_if(low_byte(n) >= 1 && number_or_digit(low_byte(m), 0, 3), printer_class, {buf, cap, len}, 0x1C, 0x70,
                   n, m);
}

// The images describe their own sizes inside the data, which is not looked at.
int32_t klov_cmd_define_nv_bit_image_fmode(uint32_t printer_class, int32_t n, const uint8_t *data, uint32_t k,
                                           uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit_data(printer_class, out, 3, k);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (low_byte(n) == 0 || !has_data(data, k)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, k, 0x1C, 0x71, n);
    return KLOV_OK;
}

int32_t klov_cmd_define_downloaded_bit_image(uint32_t printer_class, int32_t x, int32_t y, const uint8_t *data,
                                             uint32_t k, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit_data(printer_class, out, 4, k);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    const uint32_t width = low_byte(x);
    const uint32_t height = low_byte(y);
    if (width == 0 || height == 0 || k != width * height * 8 || !has_data(data, k)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, k, 0x1D, 0x2A, x, y);
    return KLOV_OK;
}

int32_t klov_cmd_print_downloaded_bit_image(uint32_t printer_class, int32_t m, uint8_t *buf, uint32_t cap,
                                            uint32_t *len)
{
    return emit_if(number_or_digit(low_byte(m), 0, 3), printer_class, {buf, cap, len}, 0x1D, 0x2F, m);
}

// ---- Graphics functions of fixed length: GS ( L pL pH 30 fn ... ----

namespace {

template <typename... Byte>
int32_t graphics_if(bool valid, uint32_t printer_class, command_buffer out, uint8_t function, Byte... byte)
{
    return emit_if(valid, printer_class, out, 0x1D, 0x28, 0x4C, 2 + sizeof...(byte), 0x00, 0x30, function, byte...);
}

template <typename... Byte>
int32_t graphics(uint32_t printer_class, command_buffer out, uint8_t function, Byte... byte)
{
    return graphics_if(true, printer_class, out, function, byte...);
}

}  // namespace

int32_t klov_cmd_transmit_the_NV_graphics_memory_capacity_gmode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                                uint32_t *len)
{
    return graphics(printer_class, {buf, cap, len}, 0x30);
}

int32_t klov_cmd_set_the_reference_dot_density_for_graphics_gmode(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                  uint32_t cap, uint32_t *len)
{
    return graphics_if(in_range(low_byte(n), 50, 51), printer_class, {buf, cap, len}, 0x31, n, n);
}

int32_t klov_cmd_print_the_graphics_data_in_the_print_buffer_gmode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                                   uint32_t *len)
{
    return graphics(printer_class, {buf, cap, len}, 0x32);
}

int32_t klov_cmd_transmit_the_remaining_capacity_of_the_NV_graphics_memory_gmode(uint32_t printer_class, uint8_t *buf,
                                                                                 uint32_t cap, uint32_t *len)
{
    return graphics(printer_class, {buf, cap, len}, 0x33);
}

int32_t klov_cmd_transmit_the_remaining_capacity_of_the_download_graphics_memory_gmode(uint32_t printer_class,
                                                                                       uint8_t *buf, uint32_t cap,
                                                                                       uint32_t *len)
{
    return graphics(printer_class, {buf, cap, len}, 0x34);
}

int32_t klov_cmd_transmit_the_key_code_list_for_defined_NV_graphics_gmode(uint32_t printer_class, uint8_t *buf,
                                                                          uint32_t cap, uint32_t *len)
{
    return graphics(printer_class, {buf, cap, len}, 0x40, 'K', 'C');
}

int32_t klov_cmd_delete_all_NV_graphics_data_gmode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return graphics(printer_class, {buf, cap, len}, 0x41, 'C', 'L', 'R');
}

int32_t klov_cmd_delete_the_specified_NV_graphics_data_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2,
                                                             uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return graphics_if(is_key_code(kc1, kc2), printer_class, {buf, cap, len}, 0x42, kc1, kc2);
}

int32_t klov_cmd_transmit_the_key_code_list_for_defined_download_graphics_gmode(uint32_t printer_class, uint8_t *buf,
                                                                                uint32_t cap, uint32_t *len)
{
    return graphics(printer_class, {buf, cap, len}, 0x50, 'K', 'C');
}

int32_t klov_cmd_delete_all_memory_graphics_data_gmode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                       uint32_t *len)
{
    return graphics(printer_class, {buf, cap, len}, 0x51, 'C', 'L', 'R');
}

int32_t klov_cmd_delete_the_specified_download_memory_graphics_data_gmode(uint32_t printer_class, int32_t kc1,
                                                                          int32_t kc2, uint8_t *buf, uint32_t cap,
                                                                          uint32_t *len)
{
    return graphics_if(is_key_code(kc1, kc2), printer_class, {buf, cap, len}, 0x52, kc1, kc2);
}

int32_t klov_cmd_print_the_specified_downloaded_graphics_data_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2,
                                                                    int32_t x, int32_t y, uint8_t *buf, uint32_t cap,
                                                                    uint32_t *len)
{
    return graphics_if(is_key_code(kc1, kc2), printer_class, {buf, cap, len}, 0x55, kc1, kc2, x, y);
}

// ---- Graphics with data ----

namespace {

// Raster data runs in rows of whole bytes, column data in columns of whole bytes.
enum class data_order { raster, column };

uint32_t image_size(data_order order, int32_t x, int32_t y)
{
    const uint32_t width = static_cast<uint32_t>(x);
    const uint32_t height = static_cast<uint32_t>(y);
    return order == data_order::raster ? height * ((width + 7) / 8) : width * ((height + 7) / 8);
}

// Lengths that fit two bytes take the short form, GS ( L pL pH; others four bytes.
bool fits_two_bytes(uint32_t parameter_length)
{
    return parameter_length < 65536;
}

struct image {
    int32_t x;
    int32_t y;
    const uint8_t *data;
    uint32_t size;
};

template <typename... Byte>
void append_image(command_buffer out, uint8_t long_form_letter, uint32_t parameter_length, const image &picture,
                  Byte... parameter)
{
    const uint8_t low = low_byte(parameter_length);
    const uint8_t second = second_byte(parameter_length);
    if (fits_two_bytes(parameter_length)) {
        append_with_data(out, picture.data, picture.size, 0x1D, 0x28, 0x4C, low, second, parameter...);
        return;
    }
    append_with_data(out, picture.data, picture.size, 0x1D, long_form_letter, 0x4C, low, second,
                     low_byte(parameter_length >> 16), low_byte(parameter_length >> 24), parameter...);
}

struct definition {
    uint8_t function;
    uint8_t colour;
    data_order order;
};

// The four define functions. Their long form goes out under the short form's letter.
int32_t define_graphics(const definition &what, uint32_t printer_class, int32_t kc1, int32_t kc2, const image &picture,
                        command_buffer out)
{
    const uint32_t parameter_length = picture.size + 11;
    const uint32_t head = fits_two_bytes(parameter_length) ? 5 : 7;
    const int32_t refusal = admit_data(printer_class, out, head + 11, picture.size);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    const int32_t x = picture.x;
    const int32_t y = picture.y;
    if (!is_key_code(kc1, kc2) || !in_range(x, 1, 8192) || !in_range(y, 1, 2304) ||
        picture.size != image_size(what.order, x, y) || !has_data(picture.data, picture.size)) {
        return KLOV_E_PARAMETER;
    }
    append_image(out, 0x28, parameter_length, picture, 0x30, what.function, 0x30, kc1, kc2, 0x01, low_byte(x),
                 second_byte(x), low_byte(y), second_byte(y), what.colour);
    return KLOV_OK;
}

}  // namespace

int32_t klov_cmd_define_the_NV_graphics_data_raster_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2, int32_t x,
                                                          int32_t y, const uint8_t *data, uint32_t k, uint8_t *buf,
                                                          uint32_t cap, uint32_t *len)
{
    return define_graphics({.function = 0x43, .colour = 0x31, .order = data_order::raster}, printer_class, kc1, kc2,
                           {x, y, data, k}, {buf, cap, len});
}

// The one definition that names its colour 30.
int32_t klov_cmd_define_the_NV_graphics_data_column_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2, int32_t x,
                                                          int32_t y, const uint8_t *data, uint32_t k, uint8_t *buf,
                                                          uint32_t cap, uint32_t *len)
{
    return define_graphics({.function = 0x44, .colour = 0x30, .order = data_order::column}, printer_class, kc1, kc2,
                           {x, y, data, k}, {buf, cap, len});
}

int32_t klov_cmd_define_the_downloaded_graphics_data_raster_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2,
                                                                  int32_t x, int32_t y, const uint8_t *data, uint32_t k,
                                                                  uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return define_graphics({.function = 0x53, .colour = 0x31, .order = data_order::raster}, printer_class, kc1, kc2,
                           {x, y, data, k}, {buf, cap, len});
}

int32_t klov_cmd_define_the_downloaded_graphics_data_column_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2,
                                                                  int32_t x, int32_t y, const uint8_t *data, uint32_t k,
                                                                  uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return define_graphics({.function = 0x54, .colour = 0x31, .order = data_order::column}, printer_class, kc1, kc2,
                           {x, y, data, k}, {buf, cap, len});
}

namespace {

struct storing {
    data_order order;
    uint32_t parameter_overhead;
    uint8_t long_form_letter;
};

// Both store functions: scale bx and by, function 70 for either order. Double height halves the rows that fit.
int32_t store_graphics(const storing &what, uint32_t printer_class, int32_t bx, int32_t by, const image &picture,
                       command_buffer out)
{
    const uint32_t parameter_length = picture.size + what.parameter_overhead;
    const uint32_t head = fits_two_bytes(parameter_length) ? 5 : 7;
    const int32_t refusal = admit_data(printer_class, out, head + 10, picture.size);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    const int32_t x = picture.x;
    const int32_t y = picture.y;
    const int32_t most_rows = low_byte(by) == 1 ? 1662 : 831;
    if (!in_range(low_byte(bx), 1, 2) || !in_range(low_byte(by), 1, 2) || !in_range(x, 1, 2047) ||
        !in_range(y, 1, most_rows) || picture.size != image_size(what.order, x, y) ||
        !has_data(picture.data, picture.size)) {
        return KLOV_E_PARAMETER;
    }
    append_image(out, what.long_form_letter, parameter_length, picture, 0x30, 0x70, 0x30, bx, by, 0x31, low_byte(x),
                 second_byte(x), low_byte(y), second_byte(y));
    return KLOV_OK;
}

}  // namespace

int32_t klov_cmd_store_the_graphics_data_in_the_print_buffer_raster_gmode(uint32_t printer_class, int32_t bx,
                                                                          int32_t by, int32_t x, int32_t y,
                                                                          const uint8_t *data, uint32_t k, uint8_t *buf,
                                                                          uint32_t cap, uint32_t *len)
{
    return store_graphics({.order = data_order::raster, .parameter_overhead = 10, .long_form_letter = 0x38},
                          printer_class, bx, by, {x, y, data, k}, {buf, cap, len});
}

// The column form states one byte more than follows, and keeps the short form's letter in the long form.
int32_t klov_cmd_store_the_graphics_data_in_the_print_buffer_column_gmode(uint32_t printer_class, int32_t bx,
                                                                          int32_t by, int32_t x, int32_t y,
                                                                          const uint8_t *data, uint32_t k, uint8_t *buf,
                                                                          uint32_t cap, uint32_t *len)
{
    return store_graphics({.order = data_order::column, .parameter_overhead = 11, .long_form_letter = 0x28},
                          printer_class, bx, by, {x, y, data, k}, {buf, cap, len});
}
