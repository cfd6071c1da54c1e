/**
 * \file
 * Text and layout: setting up text printing (character modes, fonts, code tables, user-defined characters, kanji), line
 * spacing and feeds, positions, tabs and the print area of page mode. Line spacing in dots, justification, the left
 * margin, forward feeds in dots and the return to standard mode are in klov/printing.h.
 *
 * What every command keeps to is in klov/klov.h.
 */
#ifndef KLOV_LAYOUT_H
#define KLOV_LAYOUT_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>

/** Character code tables of klov_cmd_select_character_code_table(), as most printers of this type number them. */
enum klov_code_table {
    KLOV_CODE_TABLE_437 = 0,   /**< PC437: USA, standard Europe */
    KLOV_CODE_TABLE_850 = 2,   /**< PC850: multilingual */
    KLOV_CODE_TABLE_860 = 3,   /**< PC860: Portuguese */
    KLOV_CODE_TABLE_863 = 4,   /**< PC863: Canadian French */
    KLOV_CODE_TABLE_865 = 5,   /**< PC865: Nordic */
    KLOV_CODE_TABLE_1252 = 16, /**< Windows 1252: Western Europe */
    KLOV_CODE_TABLE_866 = 17,  /**< PC866: Cyrillic */
    KLOV_CODE_TABLE_852 = 18,  /**< PC852: Latin 2 */
    KLOV_CODE_TABLE_858 = 19   /**< PC858: PC850 with the euro sign */
};

/** Bits of klov_cmd_select_print_modes(). */
enum klov_print_mode {
    KLOV_PRINT_FONT_B = 0x01,        /**< the small font */
    KLOV_PRINT_EMPHASIZED = 0x08,    /**< bold */
    KLOV_PRINT_DOUBLE_HEIGHT = 0x10, /**< twice as high */
    KLOV_PRINT_DOUBLE_WIDTH = 0x20,  /**< twice as wide */
    KLOV_PRINT_UNDERLINED = 0x80     /**< underlined */
};

/* ---- Line and page data ---- */

/**
 * Print and line feed.
 *
 * - Bytes: 0A
 */
KLOV_API int32_t klov_cmd_print_and_line_feed(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Print and carriage return.
 *
 * - Bytes: 0D
 */
KLOV_API int32_t klov_cmd_print_and_carriage_return(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Horizontal tab: moves to the next tab position.
 *
 * - Bytes: 09
 */
KLOV_API int32_t klov_cmd_horizontal_tab(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Cancel print data in page mode: deletes what is in the print area.
 *
 * - Bytes: 18
 */
KLOV_API int32_t klov_cmd_cancel_print_data_in_page_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                         uint32_t *len);

/**
 * Print data in page mode; the printer stays in page mode and keeps the data.
 *
 * - Bytes: 1B 0C
 */
KLOV_API int32_t klov_cmd_print_data_in_page_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/* ---- Line spacing and feeds ---- */

/**
 * Select default line spacing.
 *
 * - Bytes: 1B 32
 */
KLOV_API int32_t klov_cmd_select_default_line_spacing(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Print and reverse feed.
 *
 * - Bytes: 1B 4B n
 * - n: motion units, any.
 */
KLOV_API int32_t klov_cmd_print_and_reverse_feed(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                 uint32_t *len);

/**
 * Print and feed n lines.
 *
 * - Bytes: 1B 64 n
 * - n: lines, any.
 */
KLOV_API int32_t klov_cmd_print_and_feed_n_line(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                uint32_t *len);

/**
 * Print and reverse feed n lines.
 *
 * - Bytes: 1B 65 FF while more than 255 lines remain, then 1B 65 r with the rest (1-255). So 300 gives 1B 65 FF 1B 65
 *   2D.
 * - n: lines, any. 0 and below write nothing and give KLOV_OK.
 * - Caution: only from 1 to 254 is the room tested and *len raised (by 3). From 255 on the groups are written at
 *   buf + *len without a room test and *len stays: bring 3 * ((n + 254) / 255) bytes, and add that number to *len to
 *   keep them.
 */
KLOV_API int32_t klov_cmd_print_and_reverse_feed_n_line(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                        uint32_t *len);

/* ---- Characters ---- */

/**
 * Set right-side character spacing.
 *
 * - Bytes: 1B 20 n
 * - n: motion units, any.
 */
KLOV_API int32_t klov_cmd_set_right_side_character_spacing(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                           uint32_t cap, uint32_t *len);

/**
 * Select print modes.
 *
 * - Bytes: 1B 21 n
 * - n: bits of enum klov_print_mode, any.
 */
KLOV_API int32_t klov_cmd_select_print_modes(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                             uint32_t *len);

/**
 * Select or cancel the user-defined character set.
 *
 * - Bytes: 1B 25 n
 * - n: any; the printer looks at bit 0.
 */
KLOV_API int32_t klov_cmd_select_or_cancel_defined_charater_set(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                uint32_t cap, uint32_t *len);

/**
 * Define user-defined characters: one shape of x columns, 24 dots high.
 *
 * - Bytes: 1B 26 03 c1 c2 x, then k bytes of data (6 + k in all).
 * - c1, c2: first and last character code, 32-126, c1 not above c2.
 * - x: columns.
 * - data: 3 bytes a column.
 * - k: bytes of data, exactly 3 * x; its low 8 bits count, so that x reaches 85.
 * - The room for header and data is tested before the parameters. One shape is sent however many codes c1 to c2 spans.
 */
KLOV_API int32_t klov_cmd_define_user_defined_characters(uint32_t printer_class, int32_t c1, int32_t c2, int32_t x,
                                                         const uint8_t *data, int32_t k, uint8_t *buf, uint32_t cap,
                                                         uint32_t *len);

/**
 * Cancel user-defined characters.
 *
 * - Bytes: 1B 3F n
 * - n: character code, 32-126.
 */
KLOV_API int32_t klov_cmd_cancel_user_defined_characters(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                         uint32_t *len);

/**
 * Turn underline mode on or off.
 *
 * - Bytes: 1B 2D n
 * - n: 0 or 48 off, 1 or 49 thin, 2 or 50 thick.
 */
KLOV_API int32_t klov_cmd_turn_underline_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                     uint32_t *len);

/**
 * Turn emphasized mode on or off.
 *
 * - Bytes: 1B 45 n
 * - n: any; the printer looks at bit 0.
 */
KLOV_API int32_t klov_cmd_turn_emphasized_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Turn double-strike mode on or off.
 *
 * - Bytes: 1B 47 n
 * - n: any; the printer looks at bit 0.
 */
KLOV_API int32_t klov_cmd_turn_double_strike_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                         uint32_t *len);

/**
 * Select character font.
 *
 * - Bytes: 1B 4D n
 * - n: 0 or 48 font A (12 by 24 dots on most models), 1 or 49 font B (9 by 17), 2 or 50 font C.
 */
KLOV_API int32_t klov_cmd_select_character_font(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                uint32_t *len);

/**
 * Select an international character set.
 *
 * - Bytes: 1B 52 n
 * - n: 0 USA, 1 France, 2 Germany, 3 United Kingdom, 4 Denmark I, 5 Sweden, 6 Italy, 7 Spain I, 8 Japan, 9 Norway,
 *   10 Denmark II, 11 Spain II, 12 Latin America, 13 Korea, 14 Slovenia and Croatia, 15 China.
 */
KLOV_API int32_t klov_cmd_select_an_international_character_set(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                uint32_t cap, uint32_t *len);

/**
 * Turn 90 degree clockwise rotation mode on or off.
 *
 * - Bytes: 1B 56 n
 * - n: 0-2 or 48-50, 0 and 48 off.
 */
KLOV_API int32_t klov_cmd_turn90_clockwise_rotation_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                uint32_t cap, uint32_t *len);

/**
 * Select character code table, for now or as the printer's customised setting.
 *
 * - Bytes, mode 0: 1B 74 n
 * - Bytes, mode 1: 1D 28 45 03 00 01 49 4E, 1D 28 45 04 00 05 08 n 00, 1D 28 45 02 00 06 08, 01 49 4E, 1D 28 45 04 00
 *   02 4F 55 54 (36 bytes)
 * - n: enum klov_code_table or another number of the printer's, any.
 * - mode: 0 or 1, tested whole.
 * - Caution: the room is not tested. Bring 3 bytes for mode 0, 36 for mode 1.
 */
KLOV_API int32_t klov_cmd_select_character_code_table(uint32_t printer_class, int32_t n, int32_t mode, uint8_t *buf,
                                                      uint32_t cap, uint32_t *len);

/**
 * Turn upside-down print mode on or off.
 *
 * - Bytes: 1B 7B n
 * - n: any; the printer looks at bit 0.
 */
KLOV_API int32_t klov_cmd_turn_upside_down_print_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                             uint32_t cap, uint32_t *len);

/**
 * Select character size.
 *
 * - Bytes: 1D 21 n
 * - n: bits 4-6 horizontal, bits 0-2 vertical magnification less 1; bits 3 and 7 must be clear.
 */
KLOV_API int32_t klov_cmd_select_character_size(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                uint32_t *len);

/**
 * Turn white/black reverse print mode on or off.
 *
 * - Bytes: 1D 42 n
 * - n: any; the printer looks at bit 0.
 */
KLOV_API int32_t klov_cmd_turn_white_black_reverse_print_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                     uint32_t cap, uint32_t *len);

/**
 * Turn smoothing mode on or off.
 *
 * - Bytes: 1D 62 n
 * - n: any; the printer looks at bit 0.
 */
KLOV_API int32_t klov_cmd_turn_smoothing_mode_on_off(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                     uint32_t *len);

/* ---- Positions and tabs ---- */

/**
 * Set absolute print position.
 *
 * - Bytes: 1B 24 nL nH
 * - n: motion units from the left margin, 0-65535.
 */
KLOV_API int32_t klov_cmd_set_absolute_print_position(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Set relative print position.
 *
 * - Bytes: 1B 5C nL nH (two's complement)
 * - n: motion units, -32768 to 32767, negative to the left.
 */
KLOV_API int32_t klov_cmd_set_relative_print_position(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Set horizontal tab positions.
 *
 * - Bytes: 1B 44, then k bytes of data, then 00 (3 + k in all). k = 0 clears all tabs.
 * - data: tab columns in rising order, not tested.
 * - k: number of tabs, 0-32; its low 8 bits count.
 * - The room is tested before k.
 */
KLOV_API int32_t klov_cmd_set_horizontal_tab_positions(uint32_t printer_class, const uint8_t *data, int32_t k,
                                                       uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Set print position to the beginning of print line.
 *
 * - Bytes: 1D 54 n
 * - n: 0 or 48 deletes the line buffered so far, 1 or 49 prints it.
 */
KLOV_API int32_t klov_cmd_set_print_position_to_the_beginning_of_print_line(uint32_t printer_class, int32_t n,
                                                                            uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Set print area width.
 *
 * - Bytes: 1D 57 nL nH
 * - n: motion units, 0-65535.
 */
KLOV_API int32_t klov_cmd_set_print_area_width(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                               uint32_t *len);

/**
 * Set horizontal and vertical motion units.
 *
 * - Bytes: 1D 50 x y
 * - x, y: units per inch, any; 0 is the default of the printer.
 */
KLOV_API int32_t klov_cmd_set_horizontal_and_vertical_motion_units(uint32_t printer_class, int32_t x, int32_t y,
                                                                   uint8_t *buf, uint32_t cap, uint32_t *len);

/* ---- Page mode ---- */

/**
 * Select print direction in page mode.
 *
 * - Bytes: 1B 54 n
 * - n: starting corner and direction: 0 or 48 upper left to the right, 1 or 49 lower left upwards, 2 or 50 lower right
 *   to the left, 3 or 51 upper right downwards.
 */
KLOV_API int32_t klov_cmd_select_print_direction_in_page_mode(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                              uint32_t cap, uint32_t *len);

/**
 * Set print area in page mode.
 *
 * - Bytes: 1B 57 xL xH yL yH dxL dxH dyL dyH (10); with 0x1102 in bits 16-31 of printer_class a 00 follows 1B 57
 *   (11). No class word of the catalogue has that number.
 * - x, y: origin, dx, dy: width and height in motion units, 0-65535 each.
 * - Caution: 11 bytes of room are asked for on every model.
 */
KLOV_API int32_t klov_cmd_set_print_area_in_page_mode(uint32_t printer_class, int32_t x, int32_t y, int32_t dx,
                                                      int32_t dy, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Set absolute vertical print position in page mode.
 *
 * - Bytes: 1D 24 nL nH
 * - n: motion units, 0-65535.
 */
KLOV_API int32_t klov_cmd_set_absolute_vertical_print_position_in_page_mode(uint32_t printer_class, int32_t n,
                                                                            uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Set relative vertical print position in page mode.
 *
 * - Bytes: 1D 5C nL nH (two's complement)
 * - n: motion units, -32768 to 32767.
 */
KLOV_API int32_t klov_cmd_set_relative_vertical_print_position_in_page_mode(uint32_t printer_class, int32_t n,
                                                                            uint8_t *buf, uint32_t cap, uint32_t *len);

/* ---- Kanji mode ---- */

/**
 * Select kanji character mode.
 *
 * - Bytes: 1C 26
 */
KLOV_API int32_t klov_cmd_select_kanji_character_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Cancel kanji character mode.
 *
 * - Bytes: 1C 2E
 */
KLOV_API int32_t klov_cmd_cancel_kanji_character_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

#endif
