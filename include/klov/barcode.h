/**
 * \file
 * Bar codes and two-dimensional symbols: one-dimensional bar codes with their human-readable interpretation (HRI), and
 * the PDF417 and QR Code functions of the GS ( k command.
 *
 * A symbol is made in three steps, in this order: set its parameters, store its data in the printer's symbol storage
 * area, print it.
 *
 * What every command keeps to is in klov/klov.h.
 */
#ifndef KLOV_BARCODE_H
#define KLOV_BARCODE_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>

/**
 * Kinds of bar codes. Each has two numbers: below 7 its data end with a NUL, from 65 on they are counted. The printer,
 * not the library, looks at the alphabet.
 */
enum klov_symbology {
    KLOV_BAR_UPC_A_NUL = 0,   /**< 11 or 12 digits */
    KLOV_BAR_UPC_E_NUL = 1,   /**< 11 or 12 digits, the first 0 */
    KLOV_BAR_EAN13_NUL = 2,   /**< 12 or 13 digits */
    KLOV_BAR_EAN8_NUL = 3,    /**< 7 or 8 digits */
    KLOV_BAR_CODE39_NUL = 4,  /**< 0-9 A-Z blank $ % * + - . / */
    KLOV_BAR_ITF_NUL = 5,     /**< digits, an even number of them */
    KLOV_BAR_CODABAR_NUL = 6, /**< 0-9 $ + - . / :, between two of A-D */
    KLOV_BAR_UPC_A = 65,      /**< 11 or 12 digits */
    KLOV_BAR_UPC_E = 66,      /**< 11 or 12 digits, the first 0 */
    KLOV_BAR_EAN13 = 67,      /**< 12 or 13 digits; the 13th is the check digit */
    KLOV_BAR_EAN8 = 68,       /**< 7 or 8 digits; the 8th is the check digit */
    KLOV_BAR_CODE39 = 69,     /**< 0-9 A-Z blank $ % * + - . / */
    KLOV_BAR_ITF = 70,        /**< digits, an even number of them */
    KLOV_BAR_CODABAR = 71,    /**< 0-9 $ + - . / :, between two of A-D */
    KLOV_BAR_CODE93 = 72,     /**< bytes 0-127 */
    KLOV_BAR_CODE128 = 73 /**< bytes 0-127, behind the choice of a code set: "{A", "{B" (printable text) or "{C" (pairs
                             of digits, one byte 0-99 a pair); "{{" is one brace */
};

/** Where the readable characters of a bar code stand. */
enum klov_hri {
    KLOV_HRI_NONE = 0,  /**< not printed */
    KLOV_HRI_ABOVE = 1, /**< above the bars */
    KLOV_HRI_BELOW = 2, /**< below the bars */
    KLOV_HRI_BOTH = 3   /**< above and below */
};

/** Error correction of a QR Code symbol. */
enum klov_qr_correction {
    KLOV_QR_CORRECTION_L = 48, /**< restores 7 % */
    KLOV_QR_CORRECTION_M = 49, /**< restores 15 % */
    KLOV_QR_CORRECTION_Q = 50, /**< restores 25 % */
    KLOV_QR_CORRECTION_H = 51  /**< restores 30 % */
};

/** Models of the QR Code. */
enum klov_qr_model {
    KLOV_QR_MODEL_1 = 49, /**< the original */
    KLOV_QR_MODEL_2 = 50  /**< what every reader knows */
};

/**
 * Select print position of HRI characters.
 *
 * - Bytes: 1D 48 n
 * - n: enum klov_hri, 0-3 or 48-51. The whole signed value is tested, and every negative value passes and is sent as
 *   its low byte.
 */
KLOV_API int32_t klov_cmd_select_print_position_HRI_characters(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                               uint32_t cap, uint32_t *len);

/**
 * Select font for HRI characters.
 *
 * - Bytes: 1D 66 n
 * - n: 0 or 48 font A, 1 or 49 font B.
 */
KLOV_API int32_t klov_cmd_select_font_HRI_characters(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                     uint32_t *len);

/**
 * Set bar code height.
 *
 * - Bytes: 1D 68 n
 * - n: 1-255, in dots.
 */
KLOV_API int32_t klov_cmd_set_bar_code_height(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                              uint32_t *len);

/**
 * Set bar code width.
 *
 * - Bytes: 1D 77 n
 * - n: width of the module in dots, 1-6.
 */
KLOV_API int32_t klov_cmd_set_bar_code_width(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                             uint32_t *len);

/**
 * Print bar code.
 *
 * - Bytes: m 0-6: 1D 6B m d1...dk 00; m 65-73: 1D 6B m k d1...dk
 * - m: enum klov_symbology, 0-6 (the data end with a NUL) or 65-73 (the data are counted).
 * - data, k: the bar code's data, not tested against the symbology's character set. The count byte is the low 8 bits of
 *   k, but all k bytes are appended: a caller keeps k at 255 or below.
 * - Null data or a k of 0 is a bar code with nothing in it: KLOV_OK before every other check, whatever the class word,
 *   the buffer and m are; nothing is written.
 */
KLOV_API int32_t klov_cmd_print_bar_code(uint32_t printer_class, int32_t m, const uint8_t *data, uint32_t k,
                                         uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * PDF417: Set the number of columns in the data region.
 *
 * - Bytes: 1D 28 6B 03 00 30 41 n
 * - n: 0-30, 0 chosen by the printer.
 */
KLOV_API int32_t klov_cmd_pdf417_set_the_number_of_columns_in_the_data_region(uint32_t printer_class, int32_t n,
                                                                              uint8_t *buf, uint32_t cap,
                                                                              uint32_t *len);

/**
 * PDF417: Set the number of rows.
 *
 * - Bytes: 1D 28 6B 03 00 30 42 n
 * - n: 0 chosen by the printer, or 3-90.
 */
KLOV_API int32_t klov_cmd_pdf417_set_the_number_of_rows(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                        uint32_t *len);

/**
 * PDF417: Set the width of the module.
 *
 * - Bytes: 1D 28 6B 03 00 30 43 n
 * - n: 2-8, in dots.
 */
KLOV_API int32_t klov_cmd_pdf417_set_the_width_of_the_module(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                             uint32_t cap, uint32_t *len);

/**
 * PDF417: Set the row height.
 *
 * - Bytes: 1D 28 6B 03 00 30 44 n
 * - n: 2-8, in module widths.
 */
KLOV_API int32_t klov_cmd_pdf417_set_the_row_height(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                    uint32_t *len);

/**
 * PDF417: Set the error correction level.
 *
 * - Bytes: 1D 28 6B 04 00 30 45 m n
 * - m: 48 by level, 49 by ratio.
 * - n: with m = 48 the level, 48-56; with m = 49 the ratio, 1-40, in tenths of the data.
 */
KLOV_API int32_t klov_cmd_pdf417_set_the_error_correction_level(uint32_t printer_class, int32_t m, int32_t n,
                                                                uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * PDF417: Select the options.
 *
 * - Bytes: 1D 28 6B 03 00 30 46 n
 * - n: 0 standard, 1 truncated.
 */
KLOV_API int32_t klov_cmd_pdf417_select_the_options(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                    uint32_t *len);

/**
 * PDF417: Store the data in the symbol storage area.
 *
 * - Bytes: 1D 28 6B pL pH 30 50 30 d1...dk, p = k + 3
 * - data, k: the symbol's data; k 1-65532, the whole value is tested.
 */
KLOV_API int32_t klov_cmd_pdf417_store_the_data_in_the_symbol_storage_area(uint32_t printer_class, const uint8_t *data,
                                                                           uint32_t k, uint8_t *buf, uint32_t cap,
                                                                           uint32_t *len);

/**
 * PDF417: Print the symbol data in the symbol storage area.
 *
 * - Bytes: 1D 28 6B 03 00 30 51 30
 */
KLOV_API int32_t klov_cmd_pdf417_print_the_symbol_data_in_the_symbol_storage_area(uint32_t printer_class, uint8_t *buf,
                                                                                  uint32_t cap, uint32_t *len);

/**
 * PDF417: Transmit the size information of the symbol data in the symbol storage area.
 *
 * - Bytes: 1D 28 6B 03 00 30 52 30
 */
KLOV_API int32_t klov_cmd_pdf417_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area(
    uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * QR Code: Select the model.
 *
 * - Bytes: 1D 28 6B 04 00 31 41 n 00
 * - n: enum klov_qr_model, 49 or 50.
 */
KLOV_API int32_t klov_cmd_qr_select_the_model(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                              uint32_t *len);

/**
 * QR Code: Set the size of module.
 *
 * - Bytes: 1D 28 6B 03 00 31 43 n
 * - n: 1-16, in dots.
 */
KLOV_API int32_t klov_cmd_qr_set_the_size_of_module(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                    uint32_t *len);

/**
 * QR Code: Select the error correction level.
 *
 * - Bytes: 1D 28 6B 03 00 31 45 n
 * - n: enum klov_qr_correction, 48-51.
 */
KLOV_API int32_t klov_cmd_qr_select_the_error_correction_level(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                               uint32_t cap, uint32_t *len);

/**
 * QR Code: Store the data in the symbol storage area.
 *
 * - Bytes: 1D 28 6B pL pH 31 50 30 d1...dk, p = k + 3 modulo 65536
 * - data, k: the symbol's data; null data is KLOV_E_PARAMETER, with a k of 0 too. k is held to no range; a caller keeps
 *   it at 65532 or below.
 * - Caution: the room test asks for 8 bytes only, whatever k is, but k + 8 bytes are written and *len grows by k + 8.
 *   The caller makes sure that buf has k + 8 bytes of room.
 */
KLOV_API int32_t klov_cmd_qr_store_the_data_in_the_symbol_storage_area(uint32_t printer_class, const uint8_t *data,
                                                                       uint32_t k, uint8_t *buf, uint32_t cap,
                                                                       uint32_t *len);

/**
 * QR Code: Print the symbol data in the symbol storage area.
 *
 * - Bytes: 1D 28 6B 03 00 31 51 30
 */
KLOV_API int32_t klov_cmd_qr_print_the_symbol_data_in_the_symbol_storage_area(uint32_t printer_class, uint8_t *buf,
                                                                              uint32_t cap, uint32_t *len);

/**
 * QR Code: Transmit the size information of the symbol data in the symbol storage area. The reply is text for
 * klov_cmd_parse_qr_code_size() in klov/status.h.
 *
 * - Bytes: 1D 28 6B 03 00 31 52 30
 */
KLOV_API int32_t klov_cmd_qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area(
    uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

#endif
