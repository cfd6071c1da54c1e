// Requests to the track card reader, the smart card slot and the encrypting magnetic head.
#include <klov/card.h>

#include "cmds/contract.h"

int32_t klov_cmd_set_1track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4D, 0x43);
}

int32_t klov_cmd_set_2track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4D, 0x44);
}

int32_t klov_cmd_set_1_2track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4D, 0x45);
}

int32_t klov_cmd_set_123track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4D, 0x46);
}

int32_t klov_cmd_set_3track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4D, 0x47);
}

int32_t klov_cmd_cancel_track_card_reader_mode(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x04);
}

int32_t klov_cmd_selecting_mode_of_reading_smart_card(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4E);
}

int32_t klov_cmd_selecting_mode_of_operate_smart_card(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                      uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4E, n);
}

int32_t klov_cmd_cancel_the_mode_of_read_smart_card(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x7E, 0x04, 0x7E);
}

int32_t klov_cmd_get_random_data_from_smart_card(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4E, 0x13, 0x00, 0x00, 0x05, 0x00, 0x84, 0x00, 0x00, 0x08);
}

// Both counts are one byte wide, but all of the name is sent.
int32_t klov_cmd_smart_card_select_file(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf,
                                        uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const int32_t refusal = admit_data(printer_class, out, 12, k);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (!has_data(data, k)) {
        return KLOV_E_PARAMETER;
    }
    append_with_data(out, data, k, 0x1B, 0x4E, 0x15, 0x00, 0x00, k + 6, 0x00, 0xA4, 0x04, 0x00, k);
    append(out, 0x00);
    return KLOV_OK;
}

int32_t klov_cmd_smart_card_get_response(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4E, 0x15, 0x00, 0x00, 0x06, 0x00, 0xC0, 0x00, 0x00, 0x00, n);
}

int32_t klov_cmd_smart_card_read_record(uint32_t printer_class, int32_t r, int32_t p, int32_t le, uint8_t *buf,
                                        uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x4E, 0x15, 0x00, 0x00, 0x06, 0x00, 0xB2, r, p, 0x00, le);
}

// A frame of the encrypting head: ESC M S, the number of bytes that follow (high byte first), STX, the body, ETX and a
// check byte. The check byte is a constant of its command, whatever the parameter is.
template <typename... Byte>
static int32_t emit_head_frame(bool valid, uint32_t printer_class, command_buffer out, uint8_t check, Byte... body)
{
    constexpr uint8_t count = 1 + sizeof...(body) + 2;
    return emit_if(valid, printer_class, out, 0x1B, 0x4D, 0x53, 0x00, count, 0x02, body..., 0x03, check);
}

int32_t klov_cmd_eh_reset(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_head_frame(true, printer_class, {buf, cap, len}, 0x39, 0x38);
}

int32_t klov_cmd_eh_set_default_configuration(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_head_frame(true, printer_class, {buf, cap, len}, 0x4A, 0x53, 0x18);
}

int32_t klov_cmd_eh_request_attestation_data(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_head_frame(true, printer_class, {buf, cap, len}, 0x27, 0x52, 0x74);
}

int32_t klov_cmd_eh_set_encryption_type(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 48, 49);
    return emit_head_frame(valid, printer_class, {buf, cap, len}, 0x3B, 0x53, 0x58, 0x01, n);
}

int32_t klov_cmd_eh_enable(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 48, 49);
    return emit_head_frame(valid, printer_class, {buf, cap, len}, 0x78, 0x53, 0x1A, 0x01, n);
}

int32_t klov_cmd_eh_set_encryption_mode(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 48, 50);
    return emit_head_frame(valid, printer_class, {buf, cap, len}, 0x2E, 0x53, 0x4C, 0x01, n);
}

int32_t klov_cmd_eh_return_all_track_data(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_head_frame(true, printer_class, {buf, cap, len}, 0xE7, 0x53, 0x85, 0x01, 0x31);
}

int32_t klov_cmd_eh_set_encryption_all_track(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit_head_frame(true, printer_class, {buf, cap, len}, 0xD8, 0x53, 0x84, 0x01, 0x0F);
}

// The attestation data go out twice, so both frames are admitted together. k counts as one byte, and the room
// is asked for before it is known to be 8.
int32_t klov_cmd_eh_send_attestation_data(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf,
                                          uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    const uint8_t size = low_byte(k);
    const int32_t refusal = admit_data(printer_class, out, 22, 2U * size);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (size != 8 || !has_data(data, size)) {
        return KLOV_E_PARAMETER;
    }
    // The first frame may be written over the caller's data.
    uint8_t attestation[8];
    memcpy(attestation, data, sizeof attestation);
    for (int frame = 0; frame < 2; ++frame) {
        append_with_data(out, attestation, size, 0x1B, 0x4D, 0x53, 0x00, 0x0E, 0x02, 0x53, 0x74, 0x08);
        append(out, 0x03, 0x48);
    }
    return KLOV_OK;
}
