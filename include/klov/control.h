/**
 * \file
 * Device control: the printer's mechanism and state. Initialising, page and standard mode, cutting, label positions,
 * drawer and buzzer pulses, real-time requests, buffer clearing, power-off, macros, test print, print control and head
 * energising, line and rectangle drawing, the NV user memory and the USB control sequences.
 *
 * What every command keeps to is in klov/klov.h.
 */
#ifndef KLOV_CONTROL_H
#define KLOV_CONTROL_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>

/** Modes of klov_cmd_select_cut_mode_and_cut_paper(), which cuts where the paper stands. */
enum klov_cut {
    KLOV_CUT_FULL = 0,   /**< cut through */
    KLOV_CUT_PARTIAL = 1 /**< leave a bridge */
};

/** What a label feed does when the label stands where it is to go already. */
enum klov_label_feed {
    KLOV_LABEL_FEED_TO_POSITION = 48, /**< nothing: the label is there */
    KLOV_LABEL_FEED_TO_NEXT = 49      /**< go on to the next label */
};

/** Requests of klov_cmd_send_real_time_request_to_printer(), after an error that can be recovered from. */
enum klov_request {
    KLOV_REQUEST_CONTINUE = 1, /**< go on with the line at which printing stopped */
    KLOV_REQUEST_CLEAR = 2     /**< drop what was received, then go on */
};

/** Patterns of klov_cmd_execute_test_print(). */
enum klov_test_pattern {
    KLOV_TEST_HEX_DUMP = 1, /**< print what comes in as hexadecimal numbers from now on */
    KLOV_TEST_STATUS = 2,   /**< print the printer's settings */
    KLOV_TEST_ROLLING = 3   /**< print all characters, shifted from line to line */
};

/**
 * Initialize printer.
 *
 * - Bytes: 1B 40
 */
KLOV_API int32_t klov_cmd_initialize_printer(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Select page mode.
 *
 * - Bytes: 1B 4C
 */
KLOV_API int32_t klov_cmd_select_page_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Select standard mode.
 *
 * - Bytes: 1B 53
 */
KLOV_API int32_t klov_cmd_select_standard_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Return home.
 *
 * - Bytes: 1B 3C
 */
KLOV_API int32_t klov_cmd_return_home(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Select unidirectional print mode.
 *
 * - Bytes: 1B 55 n
 * - n: bit 0 switches it on: any.
 */
KLOV_API int32_t klov_cmd_select_unidirectional_print_mode(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                           uint32_t cap, uint32_t *len);

/**
 * Select peripheral device.
 *
 * - Bytes: 1B 3D n
 * - n: 1-3, one bit per device.
 */
KLOV_API int32_t klov_cmd_select_peripheral_device(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                   uint32_t *len);

/**
 * Partial cut (one point left uncut).
 *
 * - Bytes: 1B 69
 */
KLOV_API int32_t klov_cmd_partial_cut_one_point_left_uncut(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                           uint32_t *len);

/**
 * Partial cut (three points left uncut).
 *
 * - Bytes: 1B 6D
 */
KLOV_API int32_t klov_cmd_partial_cut_three_point_left_uncut(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                             uint32_t *len);

/**
 * Select cut mode and cut paper, without a feed before it.
 *
 * - Bytes: 1D 56 m
 * - m: enum klov_cut, 0 or 48, 1 or 49.
 */
KLOV_API int32_t klov_cmd_select_cut_mode_and_cut_paper(uint32_t printer_class, int32_t m, uint8_t *buf, uint32_t cap,
                                                        uint32_t *len);

/**
 * Position next label.
 *
 * - Bytes: 1D 0C
 */
KLOV_API int32_t klov_cmd_position_next_label(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Feed paper to the label peeling position.
 *
 * - Bytes: 1C 28 4C 02 00 41 n
 * - n: enum klov_label_feed, 48 or 49.
 */
KLOV_API int32_t klov_cmd_feed_paper_to_the_label_peeling_position(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                   uint32_t cap, uint32_t *len);

/**
 * Feed paper to the cutting position.
 *
 * - Bytes: 1C 28 4C 02 00 42 n
 * - n: enum klov_label_feed, 48 or 49.
 */
KLOV_API int32_t klov_cmd_feed_paper_to_the_cutting_position(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                             uint32_t cap, uint32_t *len);

/**
 * Feed paper to the print starting position.
 *
 * - Bytes: 1C 28 4C 02 00 43 n
 * - n: enum klov_label_feed, 48 or 49; or 50, in the printer's own meaning.
 */
KLOV_API int32_t klov_cmd_feed_paper_to_the_print_starting_position(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                    uint32_t cap, uint32_t *len);

/**
 * Send real-time request to printer.
 *
 * - Bytes: 10 05 n
 * - n: enum klov_request, 1 or 2.
 */
KLOV_API int32_t klov_cmd_send_real_time_request_to_printer(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                            uint32_t cap, uint32_t *len);

/**
 * Generate pulse in real time, on the drawer kick-out connector.
 *
 * - Bytes: 10 14 01 m t'
 * - m: enum klov_pin (klov/printing.h), any.
 * - t: on time, and off time after it: 1-8 in units of 100 ms (t' = t), or 101-899 in milliseconds (t' = t / 100,
 *   remainder dropped). The whole value is tested; 9-100 are refused.
 */
KLOV_API int32_t klov_cmd_generate_pulse_in_real_time(uint32_t printer_class, int32_t m, int32_t t, uint8_t *buf,
                                                      uint32_t cap, uint32_t *len);

/**
 * Execute power-off sequence.
 *
 * - Bytes: 10 14 02 01 08
 */
KLOV_API int32_t klov_cmd_execute_power_off_sequence(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Clear buffer: drop what the printer has received and not printed yet.
 *
 * - Bytes: 10 14 08 01 03 14 01 06 02 08
 */
KLOV_API int32_t klov_cmd_clear_buffer(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/** The same command as klov_cmd_clear_buffer(), under its other name. */
KLOV_API int32_t klov_cmd_clearbuffer(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Set buzzer.
 *
 * - Bytes: 12 27 77 10 n 0D 0A
 * - n: 0 or 2, in the printer's own meaning; the whole value is tested, so that 256 is refused.
 */
KLOV_API int32_t klov_cmd_set_buzzer(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Start macro definition; once more to end it.
 *
 * - Bytes: 1D 3A
 */
KLOV_API int32_t klov_cmd_start_macro_definition(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Execute macro.
 *
 * - Bytes: 1D 5E r t m
 * - r: times to execute, 1-255.
 * - t: wait before each time, in units of 100 ms: any.
 * - m: 0 at once, 1 after the feed button.
 */
KLOV_API int32_t klov_cmd_execute_macro(uint32_t printer_class, int32_t r, int32_t t, int32_t m, uint8_t *buf,
                                        uint32_t cap, uint32_t *len);

/**
 * Execute test print.
 *
 * - Bytes: 1D 28 41 02 00 n m
 * - n: paper: 0 or 48 the printer's basic one, 1 or 49 and 2 or 50 the roll.
 * - m: enum klov_test_pattern, 1-3 or 49-51.
 */
KLOV_API int32_t klov_cmd_execute_test_print(uint32_t printer_class, int32_t n, int32_t m, uint8_t *buf, uint32_t cap,
                                             uint32_t *len);

/**
 * Enable/disable real-time command.
 *
 * - Bytes: 1D 28 44 p 00 14 d1...dk
 * - p: length of the command's parameters, 3 or 5.
 * - data, k: the parameters behind the function byte 14; k is taken as its low 8 bits and not compared with p. A caller
 *   passes k = p - 1.
 * - Caution: the room test comes before the test of p and asks for 6 bytes plus the low 8 bits of k.
 */
KLOV_API int32_t klov_cmd_enable_real_time_command(uint32_t printer_class, int32_t p, const uint8_t *data, uint32_t k,
                                                   uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Select the print control mode.
 *
 * - Bytes: 1D 28 4B 02 00 30 n
 * - n: 0-4 or 48-52.
 */
KLOV_API int32_t klov_cmd_select_the_print_control_mode(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                        uint32_t *len);

/**
 * Select the number of parts for the thermal head energizing.
 *
 * - Bytes: 1D 28 4B 02 00 61 n
 * - n: 0-4, 48-52 or 128.
 */
KLOV_API int32_t klov_cmd_select_the_number_of_parts_for_the_thermal_head_energizing(uint32_t printer_class, int32_t n,
                                                                                     uint8_t *buf, uint32_t cap,
                                                                                     uint32_t *len);

/**
 * Draw line.
 *
 * - Bytes: 1D 28 51 0C 00 30 d1...d12
 * - data, k: the coordinates and the style as the printer defines them, sent untested; k must be 12, the whole value is
 *   tested.
 * - Caution: the room test comes before the test of k and asks for k + 6 bytes.
 */
KLOV_API int32_t klov_cmd_draw_line(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf, uint32_t cap,
                                    uint32_t *len);

/**
 * Draw rectangle.
 *
 * - Bytes: 1D 28 51 0E 00 31 d1...d14
 * - data, k: the coordinates and the style as the printer defines them, sent untested; k must be 14, the whole value is
 *   tested.
 * - Caution: the room test comes before the test of k and asks for k + 6 bytes.
 */
KLOV_API int32_t klov_cmd_draw_rectangle(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf,
                                         uint32_t cap, uint32_t *len);

/**
 * Write to NV user memory. The printer takes printable data only.
 *
 * - Bytes: 1C 67 31 00 a1 a2 a3 a4 nL nH d1...dk
 * - a: address, any value, sent low byte first.
 * - n: number of bytes, 1-1024; the whole value is tested.
 * - data, k: the bytes, each 0x20 or above; k must equal n.
 * - Caution: the room test comes before these tests and asks for k + 10 bytes.
 */
KLOV_API int32_t klov_cmd_write_to_nv_user_memory(uint32_t printer_class, uint32_t a, int32_t n, const uint8_t *data,
                                                  uint32_t k, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Read from NV user memory.
 *
 * - Bytes: 1C 67 32 00 a1 a2 a3 a4 nL nH
 * - a: address, 0-1023; n: number of bytes, 1-80. The whole values are tested.
 */
KLOV_API int32_t klov_cmd_read_from_nv_user_memory(uint32_t printer_class, uint32_t a, int32_t n, uint8_t *buf,
                                                   uint32_t cap, uint32_t *len);

/**
 * USB control.
 *
 * - Bytes: op 1: 1E 1E 1E; op 2: 1E 10 04
 * - op: the whole value is tested.
 * - KLOV_E_MODEL_TYPE unless both bit 0 and bit 12 (0x1000) of the class are set.
 * - Caution: any other op returns KLOV_OK and raises *len by 3 although nothing is written: the three bytes are
 *   whatever the buffer held.
 */
KLOV_API int32_t klov_cmd_usb_ctl(uint32_t printer_class, int32_t op, uint8_t *buf, uint32_t cap, uint32_t *len);

#endif
