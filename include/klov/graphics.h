/**
 * \file
 * Graphics and bit images: images sent for printing at once, and images kept in the printer's NV (permanent) or
 * download (volatile) memory under a number or a two-character key code. The raster bit image and printing NV graphics
 * are in klov/printing.h.
 *
 * Raster data is rows of (x + 7) / 8 bytes, column data columns of (y + 7) / 8 bytes; the highest bit is the leftmost
 * or topmost dot. The room for header and data is tested before all parameters, in unsigned 32-bit arithmetic.
 *
 * What every command keeps to is in klov/klov.h.
 */
#ifndef KLOV_GRAPHICS_H
#define KLOV_GRAPHICS_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>

/* ---- Bit images ---- */

/**
 * Select bit-image mode: one band of 8 or 24 dots height.
 *
 * - Bytes: 1B 2A m nL nH, then k bytes of data (5 + k in all).
 * - m: 0 or 1 for 8 dots at single or double density, 32 or 33 for 24 dots.
 * - n: dots across, 1-2047.
 * - k: bytes of data, signed; where data is not null and k above 0 it must be n for m = 0, 2 * n for m = 1, n for
 *   m = 32, 6 * n for m = 33.
 * - Caution: with a null data nothing is copied, but *len grows by 5 + k all the same and the caller fills those k
 *   bytes; then k is not tested. A k from -5 to -1 shortens the growth, not the header of five bytes: bring room for
 *   those.
 */
KLOV_API int32_t klov_cmd_select_bit_image_mode(uint32_t printer_class, int32_t m, int32_t n, const uint8_t *data,
                                                int32_t k, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Print NV bit image.
 *
 * - Bytes: 1C 70 n m
 * - n: image number, 1-255.
 * - m: enum klov_scale (klov/printing.h), 0-3 or 48-51.
 */
KLOV_API int32_t klov_cmd_print_NV_bit_image(uint32_t printer_class, int32_t n, int32_t m, uint8_t *buf, uint32_t cap,
                                             uint32_t *len);

/**
 * Define NV bit image (replaces all of them).
 *
 * - Bytes: 1C 71 n, then k bytes of data (3 + k in all).
 * - n: number of images in data, 1-255.
 * - data: for each image its size and dots, not tested.
 * - k: bytes of data; a length that does not fit 32 bits is KLOV_E_BUFFER_TOO_SMALL.
 */
KLOV_API int32_t klov_cmd_define_nv_bit_image_fmode(uint32_t printer_class, int32_t n, const uint8_t *data, uint32_t k,
                                                    uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Define downloaded bit image.
 *
 * - Bytes: 1D 2A x y, then k bytes of data (4 + k in all).
 * - x, y: width and height in groups of 8 dots, 1-255 each.
 * - data: columns of y bytes.
 * - k: bytes of data, exactly x * y * 8.
 */
KLOV_API int32_t klov_cmd_define_downloaded_bit_image(uint32_t printer_class, int32_t x, int32_t y, const uint8_t *data,
                                                      uint32_t k, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Print downloaded bit image.
 *
 * - Bytes: 1D 2F m
 * - m: enum klov_scale (klov/printing.h), 0-3 or 48-51.
 */
KLOV_API int32_t klov_cmd_print_downloaded_bit_image(uint32_t printer_class, int32_t m, uint8_t *buf, uint32_t cap,
                                                     uint32_t *len);

/* ---- Graphics settings and the print buffer ---- */

/**
 * Set the reference dot density for graphics.
 *
 * - Bytes: 1D 28 4C 04 00 30 31 n n
 * - n: 50 or 51, the characters "2" (180 dpi) and "3" (360 dpi).
 */
KLOV_API int32_t klov_cmd_set_the_reference_dot_density_for_graphics_gmode(uint32_t printer_class, int32_t n,
                                                                           uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Print the graphics data in the print buffer.
 *
 * - Bytes: 1D 28 4C 02 00 30 32
 */
KLOV_API int32_t klov_cmd_print_the_graphics_data_in_the_print_buffer_gmode(uint32_t printer_class, uint8_t *buf,
                                                                            uint32_t cap, uint32_t *len);

/**
 * Store the graphics data in the print buffer, raster format. P = k + 10 is sent as the length.
 *
 * - Bytes, P below 65536: 1D 28 4C pL pH 30 70 30 bx by 31 xL xH yL yH, then k bytes of data (15 + k in all).
 * - Bytes, P from 65536: 1D 38 4C p1 p2 p3 p4 30 70 30 bx by 31 xL xH yL yH, then k bytes of data (17 + k in all).
 * - bx, by: horizontal and vertical scale, 1 or 2.
 * - x: dots across, 1-2047.
 * - y: dots down, 1-1662 with by = 1, 1-831 with by = 2.
 * - k: bytes of data, exactly y * ((x + 7) / 8).
 */
KLOV_API int32_t klov_cmd_store_the_graphics_data_in_the_print_buffer_raster_gmode(uint32_t printer_class, int32_t bx,
                                                                                   int32_t by, int32_t x, int32_t y,
                                                                                   const uint8_t *data, uint32_t k,
                                                                                   uint8_t *buf, uint32_t cap,
                                                                                   uint32_t *len);

/**
 * Store the graphics data in the print buffer, column format. P = k + 11, one more than the bytes that follow, is sent
 * as the length.
 *
 * - Bytes, P below 65536: 1D 28 4C pL pH 30 70 30 bx by 31 xL xH yL yH, then k bytes of data (15 + k in all).
 * - Bytes, P from 65536: 1D 28 4C p1 p2 p3 p4 30 70 30 bx by 31 xL xH yL yH, then k bytes of data (17 + k in all).
 * - bx, by: horizontal and vertical scale, 1 or 2.
 * - x: dots across, 1-2047.
 * - y: dots down, 1-1662 with by = 1, 1-831 with by = 2.
 * - k: bytes of data, exactly x * ((y + 7) / 8).
 */
KLOV_API int32_t klov_cmd_store_the_graphics_data_in_the_print_buffer_column_gmode(uint32_t printer_class, int32_t bx,
                                                                                   int32_t by, int32_t x, int32_t y,
                                                                                   const uint8_t *data, uint32_t k,
                                                                                   uint8_t *buf, uint32_t cap,
                                                                                   uint32_t *len);

/* ---- NV graphics ---- */

/**
 * Transmit the NV graphics memory capacity. The caller reads the reply.
 *
 * - Bytes: 1D 28 4C 02 00 30 30
 */
KLOV_API int32_t klov_cmd_transmit_the_NV_graphics_memory_capacity_gmode(uint32_t printer_class, uint8_t *buf,
                                                                         uint32_t cap, uint32_t *len);

/**
 * Transmit the remaining capacity of the NV graphics memory. The caller reads the reply.
 *
 * - Bytes: 1D 28 4C 02 00 30 33
 */
KLOV_API int32_t klov_cmd_transmit_the_remaining_capacity_of_the_NV_graphics_memory_gmode(uint32_t printer_class,
                                                                                          uint8_t *buf, uint32_t cap,
                                                                                          uint32_t *len);

/**
 * Transmit the key code list for defined NV graphics. The caller reads the reply.
 *
 * - Bytes: 1D 28 4C 04 00 30 40 4B 43
 */
KLOV_API int32_t klov_cmd_transmit_the_key_code_list_for_defined_NV_graphics_gmode(uint32_t printer_class, uint8_t *buf,
                                                                                   uint32_t cap, uint32_t *len);

/**
 * Delete all NV graphics data.
 *
 * - Bytes: 1D 28 4C 05 00 30 41 43 4C 52
 */
KLOV_API int32_t klov_cmd_delete_all_NV_graphics_data_gmode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                            uint32_t *len);

/**
 * Delete the specified NV graphics data.
 *
 * - Bytes: 1D 28 4C 04 00 30 42 kc1 kc2
 * - kc1, kc2: key code, 32-126 each.
 */
KLOV_API int32_t klov_cmd_delete_the_specified_NV_graphics_data_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2,
                                                                      uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Define the NV graphics data, raster format. P = k + 11 is sent as the length.
 *
 * - Bytes, P below 65536: 1D 28 4C pL pH 30 43 30 kc1 kc2 01 xL xH yL yH 31, then k bytes of data (16 + k in all).
 * - Bytes, P from 65536: 1D 28 4C p1 p2 p3 p4 30 43 30 kc1 kc2 01 xL xH yL yH 31, then k bytes of data (18 + k in all).
 * - kc1, kc2: key code, 32-126 each.
 * - x: dots across, 1-8192.
 * - y: dots down, 1-2304.
 * - k: bytes of data, exactly y * ((x + 7) / 8).
 */
KLOV_API int32_t klov_cmd_define_the_NV_graphics_data_raster_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2,
                                                                   int32_t x, int32_t y, const uint8_t *data,
                                                                   uint32_t k, uint8_t *buf, uint32_t cap,
                                                                   uint32_t *len);

/**
 * Define the NV graphics data, column format. P = k + 11 is sent as the length.
 *
 * - Bytes, P below 65536: 1D 28 4C pL pH 30 44 30 kc1 kc2 01 xL xH yL yH 30, then k bytes of data (16 + k in all).
 * - Bytes, P from 65536: 1D 28 4C p1 p2 p3 p4 30 44 30 kc1 kc2 01 xL xH yL yH 30, then k bytes of data (18 + k in all).
 * - kc1, kc2: key code, 32-126 each.
 * - x: dots across, 1-8192.
 * - y: dots down, 1-2304.
 * - k: bytes of data, exactly x * ((y + 7) / 8).
 */
KLOV_API int32_t klov_cmd_define_the_NV_graphics_data_column_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2,
                                                                   int32_t x, int32_t y, const uint8_t *data,
                                                                   uint32_t k, uint8_t *buf, uint32_t cap,
                                                                   uint32_t *len);

/* ---- Download graphics ---- */

/**
 * Transmit the remaining capacity of the download graphics memory. The caller reads the reply.
 *
 * - Bytes: 1D 28 4C 02 00 30 34
 */
KLOV_API int32_t klov_cmd_transmit_the_remaining_capacity_of_the_download_graphics_memory_gmode(uint32_t printer_class,
                                                                                                uint8_t *buf,
                                                                                                uint32_t cap,
                                                                                                uint32_t *len);

/**
 * Transmit the key code list for defined download graphics. The caller reads the reply.
 *
 * - Bytes: 1D 28 4C 04 00 30 50 4B 43
 */
KLOV_API int32_t klov_cmd_transmit_the_key_code_list_for_defined_download_graphics_gmode(uint32_t printer_class,
                                                                                         uint8_t *buf, uint32_t cap,
                                                                                         uint32_t *len);

/**
 * Delete all download graphics data.
 *
 * - Bytes: 1D 28 4C 05 00 30 51 43 4C 52
 */
KLOV_API int32_t klov_cmd_delete_all_memory_graphics_data_gmode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                                uint32_t *len);

/**
 * Delete the specified download graphics data.
 *
 * - Bytes: 1D 28 4C 04 00 30 52 kc1 kc2
 * - kc1, kc2: key code, 32-126 each.
 */
KLOV_API int32_t klov_cmd_delete_the_specified_download_memory_graphics_data_gmode(uint32_t printer_class, int32_t kc1,
                                                                                   int32_t kc2, uint8_t *buf,
                                                                                   uint32_t cap, uint32_t *len);

/**
 * Define the downloaded graphics data, raster format. P = k + 11 is sent as the length.
 *
 * - Bytes, P below 65536: 1D 28 4C pL pH 30 53 30 kc1 kc2 01 xL xH yL yH 31, then k bytes of data (16 + k in all).
 * - Bytes, P from 65536: 1D 28 4C p1 p2 p3 p4 30 53 30 kc1 kc2 01 xL xH yL yH 31, then k bytes of data (18 + k in all).
 * - kc1, kc2: key code, 32-126 each.
 * - x: dots across, 1-8192.
 * - y: dots down, 1-2304.
 * - k: bytes of data, exactly y * ((x + 7) / 8).
 */
KLOV_API int32_t klov_cmd_define_the_downloaded_graphics_data_raster_gmode(uint32_t printer_class, int32_t kc1,
                                                                           int32_t kc2, int32_t x, int32_t y,
                                                                           const uint8_t *data, uint32_t k,
                                                                           uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Define the downloaded graphics data, column format. P = k + 11 is sent as the length.
 *
 * - Bytes, P below 65536: 1D 28 4C pL pH 30 54 30 kc1 kc2 01 xL xH yL yH 31, then k bytes of data (16 + k in all).
 * - Bytes, P from 65536: 1D 28 4C p1 p2 p3 p4 30 54 30 kc1 kc2 01 xL xH yL yH 31, then k bytes of data (18 + k in all).
 * - kc1, kc2: key code, 32-126 each.
 * - x: dots across, 1-8192.
 * - y: dots down, 1-2304.
 * - k: bytes of data, exactly x * ((y + 7) / 8).
 */
KLOV_API int32_t klov_cmd_define_the_downloaded_graphics_data_column_gmode(uint32_t printer_class, int32_t kc1,
                                                                           int32_t kc2, int32_t x, int32_t y,
                                                                           const uint8_t *data, uint32_t k,
                                                                           uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Print the specified download graphics data.
 *
 * - Bytes: 1D 28 4C 06 00 30 55 kc1 kc2 x y
 * - kc1, kc2: key code, 32-126 each.
 * - x, y: horizontal and vertical scale, any; printers know 1 and 2.
 */
KLOV_API int32_t klov_cmd_print_the_specified_downloaded_graphics_data_gmode(uint32_t printer_class, int32_t kc1,
                                                                             int32_t kc2, int32_t x, int32_t y,
                                                                             uint8_t *buf, uint32_t cap, uint32_t *len);

#endif
