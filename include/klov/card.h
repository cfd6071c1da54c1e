/**
 * \file
 * Cards: the magnetic track card reader, the smart card slot (command frames of the card standard carried inside ESC N)
 * and the encrypting magnetic head (frames inside ESC M S). These encoders build the requests; the caller reads the
 * replies.
 *
 * What every command keeps to is in klov/klov.h.
 */
#ifndef KLOV_CARD_H
#define KLOV_CARD_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>

/**
 * Set 1 track card reader mode: the next card's track 1 is read.
 *
 * - Bytes: 1B 4D 43
 */
KLOV_API int32_t klov_cmd_set_1track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Set 2 track card reader mode: track 2.
 *
 * - Bytes: 1B 4D 44
 */
KLOV_API int32_t klov_cmd_set_2track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Set 1, 2 track card reader mode: tracks 1 and 2.
 *
 * - Bytes: 1B 4D 45
 */
KLOV_API int32_t klov_cmd_set_1_2track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                        uint32_t *len);

/**
 * Set 1, 2, 3 track card reader mode: all three tracks.
 *
 * - Bytes: 1B 4D 46
 */
KLOV_API int32_t klov_cmd_set_123track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                        uint32_t *len);

/**
 * Set 3 track card reader mode: track 3.
 *
 * - Bytes: 1B 4D 47
 */
KLOV_API int32_t klov_cmd_set_3track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Cancel track card reader mode.
 *
 * - Bytes: 04
 */
KLOV_API int32_t klov_cmd_cancel_track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                        uint32_t *len);

/**
 * Selecting mode of reading smart card.
 *
 * - Bytes: 1B 4E
 */
KLOV_API int32_t klov_cmd_selecting_mode_of_reading_smart_card(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                               uint32_t *len);

/**
 * Selecting mode of operate smart card.
 *
 * - Bytes: 1B 4E n
 * - n: the operation, by the printer's manual; any.
 */
KLOV_API int32_t klov_cmd_selecting_mode_of_operate_smart_card(uint32_t printer_class, int32_t n, uint8_t *buf,
                                                               uint32_t cap, uint32_t *len);

/**
 * Cancel the mode of read smart card.
 *
 * - Bytes: 7E 04 7E
 */
KLOV_API int32_t klov_cmd_cancel_the_mode_of_read_smart_card(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                             uint32_t *len);

/**
 * Get random data from smart card: 8 bytes.
 *
 * - Bytes: 1B 4E 13 00 00 05 00 84 00 00 08
 */
KLOV_API int32_t klov_cmd_get_random_data_from_smart_card(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                          uint32_t *len);

/**
 * Smart card: Select file, by name.
 *
 * - Bytes: 1B 4E 15 00 00 L 00 A4 04 00 k d1...dk 00, L = k + 6
 * - data, k: the file's name. k is not tested: both count bytes are the low 8 bits of k + 6 and of k, but all k bytes
 *   are appended. A caller keeps k at 249 or below. With k = 0 data may be null.
 */
KLOV_API int32_t klov_cmd_smart_card_select_file(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf,
                                                 uint32_t cap, uint32_t *len);

/**
 * Smart card: Get response.
 *
 * - Bytes: 1B 4E 15 00 00 06 00 C0 00 00 00 n
 * - n: expected length of the response in bytes: any.
 */
KLOV_API int32_t klov_cmd_smart_card_get_response(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                  uint32_t *len);

/**
 * Smart card: Read record.
 *
 * - Bytes: 1B 4E 15 00 00 06 00 B2 r p 00 le
 * - r: record number; p: reference byte; le: expected length in bytes. Any values.
 */
KLOV_API int32_t klov_cmd_smart_card_read_record(uint32_t printer_class, int32_t r, int32_t p, int32_t le, uint8_t *buf,
                                                 uint32_t cap, uint32_t *len);

/**
 * Encrypting head: Reset.
 *
 * - Bytes: 1B 4D 53 00 04 02 38 03 39
 */
KLOV_API int32_t klov_cmd_eh_reset(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Encrypting head: Set default configuration.
 *
 * - Bytes: 1B 4D 53 00 05 02 53 18 03 4A
 */
KLOV_API int32_t klov_cmd_eh_set_default_configuration(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                       uint32_t *len);

/**
 * Encrypting head: Request attestation data.
 *
 * - Bytes: 1B 4D 53 00 05 02 52 74 03 27
 */
KLOV_API int32_t klov_cmd_eh_request_attestation_data(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Encrypting head: Set encryption type.
 *
 * - Bytes: 1B 4D 53 00 07 02 53 58 01 n 03 3B
 * - n: 48 or 49. The last byte is the same for both.
 */
KLOV_API int32_t klov_cmd_eh_set_encryption_type(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                 uint32_t *len);

/**
 * Encrypting head: Enable.
 *
 * - Bytes: 1B 4D 53 00 07 02 53 1A 01 n 03 78
 * - n: 48 or 49. The last byte is the same for both.
 */
KLOV_API int32_t klov_cmd_eh_enable(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Encrypting head: Set encryption mode.
 *
 * - Bytes: 1B 4D 53 00 07 02 53 4C 01 n 03 2E
 * - n: 48-50. The last byte is the same for all.
 */
KLOV_API int32_t klov_cmd_eh_set_encryption_mode(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                 uint32_t *len);

/**
 * Encrypting head: Return all track data.
 *
 * - Bytes: 1B 4D 53 00 07 02 53 85 01 31 03 E7
 */
KLOV_API int32_t klov_cmd_eh_return_all_track_data(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len);

/**
 * Encrypting head: Set encryption all track.
 *
 * - Bytes: 1B 4D 53 00 07 02 53 84 01 0F 03 D8
 */
KLOV_API int32_t klov_cmd_eh_set_encryption_all_track(uint32_t printer_class, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len);

/**
 * Encrypting head: Send attestation data. The frame is sent twice, back to back.
 *
 * - Bytes: 1B 4D 53 00 0E 02 53 74 08 d1...d8 03 48, and the same 19 bytes once more
 * - data, k: the caller's eight bytes; the library stores no key. k must be 8, taken as its low 8 bits.
 * - Caution: the room test comes before the test of k and asks for 2 * (k + 11) bytes.
 */
KLOV_API int32_t klov_cmd_eh_send_attestation_data(uint32_t printer_class, const uint8_t *data, uint32_t k,
                                                   uint8_t *buf, uint32_t cap, uint32_t *len);

#endif
