// Requests for the printer's status, identity and firmware version.
#include <klov/status.h>

#include "cmds/contract.h"
#include "cmds/version_class.h"

int32_t klov_cmd_transmit_real_time_status(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = in_range(low_byte(n), 1, 4) || low_byte(n) == 7;
    return emit_if(valid, printer_class, {buf, cap, len}, 0x10, 0x04, n);
}

int32_t klov_cmd_transmit_specified_status_in_real_time(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap,
                                                        uint32_t *len)
{
    const bool valid = low_byte(n) == 1 || low_byte(n) == 5;
    return emit_if(valid, printer_class, {buf, cap, len}, 0x10, 0x14, 0x07, n);
}

int32_t klov_cmd_transmit_peripheral_device_status(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x75);
}

int32_t klov_cmd_transmit_paper_sensor_status(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1B, 0x76);
}

int32_t klov_cmd_enable_disable_ASB(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return emit(printer_class, {buf, cap, len}, 0x1D, 0x61, n);
}

// The whole value is tested: callers keep n to read the reply by it, and the parser knows no aliases either.
int32_t klov_cmd_transmit_status(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = n == 1 || n == 2 || n == 49 || n == 50;
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x72, n);
}

int32_t klov_cmd_transmit_printer_id(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const bool valid = number_or_digit(low_byte(n), 1, 3);
    return emit_if(valid, printer_class, {buf, cap, len}, 0x1D, 0x49, n);
}

// A printer without the ESC/POS-type command set can still tell its version when its class knows one of two other
// queries, so the class test is a choice here and only a class without any of the three is refused.
int32_t klov_cmd_transmit_printer_version(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    const command_buffer out = {buf, cap, len};
    if ((printer_class & class_escpos) != 0) {
        return emit(printer_class, out, 0x1D, 0x49, 0x41);
    }
    if ((printer_class & class_version_command) != 0) {
        return emit(class_escpos, out, 0x1B, 0x23, 0x2A, 0x0A, 0x00);
    }
    if ((printer_class & class_version_text) != 0) {
        return emit(class_escpos, out, 'Z', 'Z', 'Z', 'G', 'E', 'T', 'V', 'E', 'R', 'S', 'I', 'O', 'N');
    }
    return KLOV_E_MODEL_TYPE;
}
