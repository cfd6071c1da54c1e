/**
 * \file
 * Printing a page: raster bit images, feeds, cuts, the end of a page, speed and density, beeper, drawer and logo.
 *
 * What every command keeps to is in klov/klov.h.
 */
#ifndef KLOV_PRINTING_H
#define KLOV_PRINTING_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>

/** Bits of the class word, a printer_model's `type`. */
enum klov_class_bits {
    KLOV_CLASS_ESCPOS = 0x1,       /**< knows the ESC/POS-type commands; without it nearly every command is refused */
    KLOV_CLASS_VERSION_TEXT = 0x2, /**< is asked for its firmware by the text "ZZZGETVERSION" */
    KLOV_CLASS_VERSION_COMMAND = 0x4, /**< is asked for its firmware by ESC # * */
    KLOV_CLASS_USB_CONTROL = 0x1000   /**< takes the USB control sequences of klov_cmd_usb_ctl() */
};

/** Scale of a printed image. */
enum klov_scale {
    KLOV_SCALE_NORMAL = 0,        /**< one dot a dot */
    KLOV_SCALE_DOUBLE_WIDTH = 1,  /**< two dots across */
    KLOV_SCALE_DOUBLE_HEIGHT = 2, /**< two dots down */
    KLOV_SCALE_QUADRUPLE = 3      /**< two dots across and down */
};

/** Where a line stands between the margins. */
enum klov_justification {
    KLOV_JUSTIFY_LEFT = 0,   /**< at the left margin */
    KLOV_JUSTIFY_CENTRE = 1, /**< in the middle */
    KLOV_JUSTIFY_RIGHT = 2   /**< at the right end */
};

/** Modes of klov_cmd_select_cut_mode_and_feed_paper(). */
enum klov_feed_and_cut {
    KLOV_FEED_AND_CUT_FULL = 65,   /**< feed to the cutter and n units more, and cut through */
    KLOV_FEED_AND_CUT_PARTIAL = 66 /**< feed to the cutter and n units more, and leave a bridge */
};

/** Pins of the drawer connector. */
enum klov_pin {
    KLOV_PIN_2 = 0, /**< pin 2: the first drawer */
    KLOV_PIN_5 = 1  /**< pin 5: the second drawer, or an external buzzer */
};

/* ---- Raster bit images ---- */

/**
 * Print raster bit image, header only; the caller sends xBytes * yDots image bytes after it.
 *
 * - Bytes: 1D 76 30 m xL xH yL yH, the same for every printer class
 * - m: enum klov_scale, any.
 * - xBytes: bytes a row, any.
 * - yDots: rows, any.
 * - buf: the buffer's address as an integer; 0 is the null buffer.
 */
KLOV_API int32_t klov_cmd_print_raster_img_cmd_header(uint32_t printer_class, int32_t m, int32_t xBytes, int32_t yDots,
                                                      uintptr_t buf, uint32_t cap, uint32_t *len);

/**
 * Print raster bit image.
 *
 * - Bytes: 1D 76 30 m xL 00 yL yH, then xBytes * yDots bytes of data
 * - m: enum klov_scale, 0-3 or 48-51.
 * - xBytes: bytes a row, 1-128.
 * - yDots: rows, 1-2303.
 * - data: rows of 8 dots a byte, the highest bit leftmost, 1 is black.
 * - The room for header and data is tested before the parameters; xBytes * yDots is a product in 32 bits.
 */
KLOV_API int32_t klov_cmd_print_raster_bit_image(uint32_t printer_class, int32_t m, int32_t xBytes, int32_t yDots,
                                                 const uint8_t *data, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Looks for a raster bit image in a block of command bytes. Only the first byte 1D of the block is examined: when
 * another command starts there, nothing is found.
 *
 * - Found: *m the scale mode, *xBytes and *width the bytes a row, *yDots the rows, *position the offset of the 1D,
 *   *total the length of header and image.
 * - Not found: all outputs 0; so *total tells the two apart.
 * - size: bytes of data. At least one byte must follow the 8-byte header. A block of fewer than 8 bytes is read as if
 *   it were longer, so bring at least 8 readable bytes after its first 1D. The image may reach beyond the block.
 * - Returns KLOV_OK, or KLOV_E_MODEL_TYPE (outputs 0) when bit 0 of printer_class is clear.
 */
KLOV_API int32_t klov_cmds_find_raster_imgdata(uint32_t printer_class, const uint8_t *data, uint32_t size, uint8_t *m,
                                               uint32_t *xBytes, uint32_t *yDots, uint32_t *width, uint32_t *position,
                                               uint32_t *total);

/* ---- Position, feed and cut ---- */

/**
 * Set left margin.
 *
 * - Bytes: 1D 4C nL nH
 * - n: dots, 0-65535.
 */
KLOV_API int32_t klov_cmd_set_left_margin(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Print and feed paper.
 *
 * - Bytes: 1B 4A FF while more than 255 units remain, then 1B 4A r with the rest (1-255); 1B 4A 00 for n = 0. So 600
 *   gives 1B 4A FF 1B 4A FF 1B 4A 5A, and 510 gives 1B 4A FF 1B 4A FF.
 * - n: total feed in motion units. -1 to -508 write nothing and give KLOV_OK; less gives KLOV_E_BUFFER_TOO_SMALL.
 * - Room: 3 * ((n + 254) / 255) bytes, 3 for n = 0.
 */
KLOV_API int32_t klov_cmd_print_and_feed_paper(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                               uint32_t *len);

/**
 * Select cut mode and cut paper, after a feed.
 *
 * - Bytes: 1D 56 m n
 * - m: enum klov_feed_and_cut, 65 or 66; 0 and 1 are sent as 65 and 66.
 * - n: feed before the cut in motion units, any.
 */
KLOV_API int32_t klov_cmd_select_cut_mode_and_feed_paper(uint32_t printer_class, int32_t m, int32_t n, uint8_t *buf,
                                                         uint32_t cap, uint32_t *len);

/**
 * Print and return to standard mode (form feed; a label printer moves to its next label).
 *
 * - Bytes: 0C
 */
KLOV_API int32_t klov_cmd_print_and_return_standard_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                         uint32_t *len);

/**
 * Set line spacing.
 *
 * - Bytes: 1B 33 n
 * - n: motion units, any.
 */
KLOV_API int32_t klov_cmd_set_line_spacing(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                           uint32_t *len);

/**
 * Select justification.
 *
 * - Bytes: 1B 61 n
 * - n: enum klov_justification, 0-2 or 48-50.
 */
KLOV_API int32_t klov_cmd_select_justification(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                               uint32_t *len);

/* ---- Speed and density ---- */

/**
 * Select the print speed.
 *
 * - Bytes: 1D 45 n
 * - n: speed level of the printer, any.
 */
KLOV_API int32_t klov_cmd_select_the_print_speed(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                 uint32_t *len);

/**
 * Select the print density.
 *
 * - Bytes: 1D 28 4B 02 00 31 n
 * - n: density level of the printer, any.
 */
KLOV_API int32_t klov_cmd_select_the_print_density(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                   uint32_t *len);

/* ---- Beeper, drawer and logo ---- */

/**
 * Beep integrated beeper.
 *
 * - Bytes: 1B 28 41 05 00 61 64 n c t
 * - n: number of beeps, 0-63.
 * - c, t: length of a beep and pause behind it, in the printer's own steps (100 ms on most models), any.
 */
KLOV_API int32_t klov_cmd_beep_integrated_beeper(uint32_t printer_class, int32_t n, int32_t c, int32_t t, uint8_t *buf,
                                                 uint32_t cap, uint32_t *len);

/**
 * Generate pulse: opens a cash drawer or drives an external buzzer.
 *
 * - Bytes: 1B 70 m t1 t2
 * - m: enum klov_pin, 0 or 48, 1 or 49.
 * - t1, t2: on and off time in units of 2 ms, any; the low bytes are compared, and an off time below the on time is
 * sent as the on time. A drawer wants 50 to 100 (100 to 200 ms).
 */
KLOV_API int32_t klov_cmd_generate_pulse(uint32_t printer_class, int32_t m, int32_t t1, int32_t t2, uint8_t *buf,
                                         uint32_t cap, uint32_t *len);

/**
 * Print the specified NV graphics data: a logo kept in the printer.
 *
 * - Bytes: 1D 28 4C 06 00 30 45 kc1 kc2 x y
 * - kc1, kc2: key code, 32-126 each.
 * - x, y: horizontal and vertical scale, any; printers know 1 and 2.
 */
KLOV_API int32_t klov_cmd_print_the_specified_NV_graphics_data_gmode(uint32_t printer_class, int32_t kc1, int32_t kc2,
                                                                     int32_t x, int32_t y, uint8_t *buf, uint32_t cap,
                                                                     uint32_t *len);

#endif
