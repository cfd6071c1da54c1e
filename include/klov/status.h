/**
 * \file
 * Status: asking a printer how it is, who it is and which firmware it runs, and reading its answers.
 *
 * The requests are commands like all others; klov/klov.h says what they keep to.
 *
 * The parsers take what the printer sent back. They do no input of their own: the caller reads the reply, and clears
 * the record before it hands it over, because a parser writes only the flags that its reply carries.
 */
#ifndef KLOV_STATUS_H
#define KLOV_STATUS_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>

/** What a printer reports. A flag is set when it is not zero. */
typedef struct KLOV_RECORD(printer_status) {
    uint8_t aux0;           /**< bit 5 of the second status byte is clear (0 or 1) */
    uint8_t aux1;           /**< bit 1 of the second status byte is clear (0 or 1) */
    uint8_t aux2;           /**< bit 2 of the second status byte (0 or 4) */
    uint8_t aux3;           /**< bit 0 of the second status byte (0 or 1) */
    uint8_t drawer_pin3;    /**< level of pin 3 of the drawer kick-out connector */
    uint8_t cover_open;     /**< the cover is open */
    uint8_t paper_near_end; /**< the roll is nearly used up */
    uint8_t paper_end;      /**< no paper */
} klov_printer_status;

#ifndef KLOV_NO_SHORT_NAMES
typedef klov_printer_status printer_status; /**< what a printer reports, by its short name */
#endif

/** What klov_cmd_transmit_real_time_status() asks for. */
enum klov_real_time {
    KLOV_REAL_TIME_PRINTER = 1, /**< the printer: drawer level, online or not */
    KLOV_REAL_TIME_OFFLINE = 2, /**< why it is offline: cover open, paper end, error */
    KLOV_REAL_TIME_ERROR = 3,   /**< the error's kind: the library's parser stores nothing of it */
    KLOV_REAL_TIME_PAPER = 4    /**< the roll: near its end, at its end */
};

/** What klov_cmd_transmit_status() asks for. */
enum klov_status_kind {
    KLOV_STATUS_PAPER = 1, /**< the roll: near its end, at its end */
    KLOV_STATUS_DRAWER = 2 /**< the level at the drawer connector */
};

/** Kinds of changes that a printer tells by itself; klov_cmd_enable_disable_ASB() takes their sum. */
enum klov_automatic_status {
    KLOV_ASB_DRAWER = 0x01, /**< the drawer connector's level */
    KLOV_ASB_ONLINE = 0x02, /**< online and offline, with the cover */
    KLOV_ASB_ERROR = 0x04,  /**< errors */
    KLOV_ASB_PAPER = 0x08,  /**< the paper sensors */
    KLOV_ASB_PANEL = 0x40   /**< the panel's switch */
};

/** What klov_cmd_transmit_printer_id() asks for. */
enum klov_printer_id {
    KLOV_ID_MODEL = 1,   /**< the model's number */
    KLOV_ID_TYPE = 2,    /**< what is fitted: cutter, two-byte characters */
    KLOV_ID_FIRMWARE = 3 /**< the firmware's number */
};

/**
 * Transmit real-time status. Answered at once, even while the printer is busy or offline, with one byte for
 * klov_cmd_parse_real_time_status().
 *
 * - Bytes: 10 04 n
 * - n: enum klov_real_time, 1-4; or 7, whose answer has no parser here.
 */
KLOV_API int32_t klov_cmd_transmit_real_time_status(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                    uint32_t *len);

/**
 * Transmit specified status in real time.
 *
 * - Bytes: 10 14 07 n
 * - n: 1 or 5; the answers have no parser here.
 */
KLOV_API int32_t klov_cmd_transmit_specified_status_in_real_time(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                                 uint32_t cap, uint32_t *len);

/**
 * Transmit peripheral device status.
 *
 * - Bytes: 1B 75
 */
KLOV_API int32_t klov_cmd_transmit_peripheral_device_status(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                            uint32_t *len);

/**
 * Transmit paper sensor status.
 *
 * - Bytes: 1B 76
 */
KLOV_API int32_t klov_cmd_transmit_paper_sensor_status(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                       uint32_t *len);

/**
 * Enable/disable Automatic Status Back (ASB): from now on the printer sends four bytes for klov_cmd_parse_ASB_status()
 * whenever one of the chosen kinds of status changes.
 *
 * - Bytes: 1D 61 n
 * - n: a sum of enum klov_automatic_status, 0 to switch off; any.
 */
KLOV_API int32_t klov_cmd_enable_disable_ASB(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                             uint32_t *len);

/**
 * Transmit status. Answered when the printer gets to it, with one byte for klov_cmd_parse_transmit_status().
 *
 * - Bytes: 1D 72 n
 * - n: enum klov_status_kind, 1 or 49, 2 or 50; the whole value is tested, so that 257 is refused.
 */
KLOV_API int32_t klov_cmd_transmit_status(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Transmit printer ID.
 *
 * - Bytes: 1D 49 n
 * - n: enum klov_printer_id, 1-3 or 49-51.
 */
KLOV_API int32_t klov_cmd_transmit_printer_id(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                              uint32_t *len);

/**
 * Transmit printer version: ask for the firmware version in the form that the printer class knows. The reply is text
 * for klov_cmd_parse_printer_version().
 *
 * - Bytes: class bit 0 set: 1D 49 41; else bit 2 set: 1B 23 2A 0A 00; else bit 1 set: the 13 characters
 *   "ZZZGETVERSION".
 * - This is the only command that a class without bit 0 may get; KLOV_E_MODEL_TYPE when none of the three bits is set.
 */
KLOV_API int32_t klov_cmd_transmit_printer_version(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Read the four bytes of an automatic status back.
 *
 * - asb: the four bytes.
 * - status: written are drawer_pin3, cover_open, paper_near_end and paper_end, each 0 or 1; null only tests the bytes.
 * - Returns KLOV_OK, or KLOV_E_PARAMETER when class bit 0 is clear or the bytes are no automatic status (fixed bits
 *   wrong); then nothing is written.
 */
KLOV_API int32_t klov_cmd_parse_ASB_status(uint32_t printer_class, const uint8_t *asb, klov_printer_status *status);

/**
 * Read the reply byte to klov_cmd_transmit_status().
 *
 * - n: the request's number, as 1 or 2; the whole value is tested (49 and 50 are refused).
 * - reply: the byte; only its low 8 bits count.
 * - status: n = 1 writes paper_near_end and paper_end, each 0 or 1. n = 2 writes bit 0 of the reply, the drawer level,
 *   to paper_end and to cover_open, not to drawer_pin3.
 * - Returns KLOV_OK, or KLOV_E_PARAMETER, with nothing written, when class bit 0 is clear, n is neither 1 nor 2, the
 *   fixed bits of the reply are wrong or status is null.
 */
KLOV_API int32_t klov_cmd_parse_transmit_status(uint32_t printer_class, int32_t n, int32_t reply,
                                                klov_printer_status *status);

/**
 * Read the reply byte to klov_cmd_transmit_real_time_status().
 *
 * - n: the request's number, 1-4; the whole value is tested.
 * - reply: the byte; only its low 8 bits count.
 * - status: written are n = 1 drawer_pin3, n = 2 cover_open, n = 3 nothing, n = 4 paper_near_end and paper_end, each 0
 *   or 1; null only tests the byte.
 * - Returns KLOV_OK, or KLOV_E_PARAMETER, with nothing written, when class bit 0 is clear, n is outside 1-4 or the
 *   fixed bits of the reply are wrong.
 */
KLOV_API int32_t klov_cmd_parse_real_time_status(uint32_t printer_class, int32_t n, int32_t reply,
                                                 klov_printer_status *status);

/**
 * Read the second status byte that some printers add to a status reply. What its bits mean is the printer's matter.
 *
 * - s: the byte; only its low 8 bits count.
 * - status: written are aux0 (bit 5 clear), aux1 (bit 1 clear), aux3 (bit 0), each 0 or 1, and as masked values aux2 (0
 *   or 4), drawer_pin3 (0 or 8) and cover_open (0 or 0x10). The byte 0x22 makes all six 0.
 * - Returns KLOV_OK, or KLOV_E_PARAMETER when class bit 0 is clear or status is null.
 */
KLOV_API int32_t klov_cmd_parse_status2(uint32_t printer_class, int32_t s, klov_printer_status *status);

/**
 * Read the reply to klov_cmd_transmit_printer_version(), by the same class bits as the request.
 *
 * Class bit 0 set: "_" and three decimal numbers, "_1.2.30 " with the space at the end, 64 characters at most, ended by
 * a NUL. The separators become NULs. A number that has no separator behind it leaves its element as it was, and the
 * next one is looked for from the same place. A number above 254 ends the reading there, with KLOV_OK. Negative numbers
 * are stored as their two's complement. Class bit 2 set, bit 0 clear: KLOV_OK, nothing is read. Class bit 1 alone: the
 * first bytes of the text, one to an element; the caller has up to three readable bytes there.
 *
 * - numbers: three elements; those that are not read stay as they were, so clear them first.
 * - count: how many elements to go for. The reading stops after the element with index count: 0 (or less) reads one
 *   element, 1 reads two, 2 and more read three. numbers must have room for that.
 * - Returns KLOV_OK; KLOV_E_REPLY_FORMAT when the text is null, does not begin with "_" or is too long;
 *   KLOV_E_MODEL_TYPE when none of the three class bits is set.
 */
KLOV_API int32_t klov_cmd_parse_printer_version(uint32_t printer_class, char *text, uint32_t *numbers, int32_t count);

/**
 * Read the reply to klov_cmd_qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area().
 *
 * - text: "76" and two decimal numbers, each ended by the byte 1F, 18 characters at most, ended by a NUL. Each 1F
 *   becomes a NUL. What follows the second number is not read.
 * - first, second: the two numbers, in the printer's order.
 * - Returns KLOV_OK; KLOV_E_MODEL_TYPE when class bit 0 is clear; KLOV_E_REPLY_FORMAT when the text is null, begins
 *   otherwise, is too long or lacks a 1F. When only the second 1F is missing, first has been written.
 */
KLOV_API int32_t klov_cmd_parse_qr_code_size(uint32_t printer_class, char *text, uint32_t *first, uint32_t *second);

#endif
