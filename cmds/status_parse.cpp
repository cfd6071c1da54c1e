// Parsers of what a printer answers: status bytes into flags, version and symbol size texts into numbers.
#include <klov/status.h>
#include <stdlib.h>

#include "cmds/contract.h"
#include "cmds/version_class.h"

static uint8_t any_bit(int32_t byte, int32_t mask)
{
    return (byte & mask) != 0 ? 1 : 0;
}

static uint8_t all_bits(int32_t byte, int32_t mask)
{
    return (byte & mask) == mask ? 1 : 0;
}

static bool is_escpos(uint32_t printer_class)
{
    return (printer_class & class_escpos) != 0;
}

// Bits that are fixed in a status byte tell the kinds of status apart; a byte that has them otherwise is line noise or
// the answer to another request.
int32_t klov_cmd_parse_ASB_status(uint32_t printer_class, const uint8_t *asb, printer_status *status)
{
    const bool fixed_bits_fit =
        is_escpos(printer_class) && (asb[0] & 0x93) == 0x10 && ((asb[1] | asb[2] | asb[3]) & 0x90) == 0;
    if (!fixed_bits_fit) {
        return KLOV_E_PARAMETER;
    }
    if (status == nullptr) {
        return KLOV_OK;
    }
    status->drawer_pin3 = any_bit(asb[0], 0x08);
    status->cover_open = any_bit(asb[0], 0x20);
    status->paper_near_end = all_bits(asb[2], 0x03);
    status->paper_end = all_bits(asb[2], 0x0C);
    return KLOV_OK;
}

// Unlike the other parsers this one needs the record, even just to test the byte. The reply to n = 2 carries the drawer
// level in bit 0, which goes to paper_end and cover_open and not to drawer_pin3.
int32_t klov_cmd_parse_transmit_status(uint32_t printer_class, int32_t n, int32_t reply, printer_status *status)
{
    if (!is_escpos(printer_class) || !in_range(n, 1, 2) || (reply & 0x90) != 0 || status == nullptr) {
        return KLOV_E_PARAMETER;
    }
    if (n == 1) {
        status->paper_near_end = all_bits(reply, 0x03);
        status->paper_end = all_bits(reply, 0x0C);
        return KLOV_OK;
    }
    status->paper_end = any_bit(reply, 0x01);
    status->cover_open = any_bit(reply, 0x01);
    return KLOV_OK;
}

int32_t klov_cmd_parse_real_time_status(uint32_t printer_class, int32_t n, int32_t reply, printer_status *status)
{
    if (!is_escpos(printer_class) || !in_range(n, 1, 4) || (reply & 0x93) != 0x12) {
        return KLOV_E_PARAMETER;
    }
    if (status == nullptr) {
        return KLOV_OK;
    }
    if (n == 1) {
        status->drawer_pin3 = any_bit(reply, 0x08);
    } else if (n == 2) {
        status->cover_open = any_bit(reply, 0x04);
    } else if (n == 4) {
        status->paper_near_end = all_bits(reply, 0x0C);
        status->paper_end = all_bits(reply, 0x60);
    }
    return KLOV_OK;
}

// aux0 and aux1 report bits that are set in a healthy printer (0x22 is the byte without any complaint); aux2,
// drawer_pin3 and cover_open keep the bit where it stands, so that they are not 1 when set.
int32_t klov_cmd_parse_status2(uint32_t printer_class, int32_t s, printer_status *status)
{
    if (!is_escpos(printer_class) || status == nullptr) {
        return KLOV_E_PARAMETER;
    }
    status->aux0 = all_bits(~s, 0x20);
    status->aux1 = all_bits(~s, 0x02);
    status->aux2 = low_byte(s & 0x04);
    status->aux3 = low_byte(s & 0x01);
    status->drawer_pin3 = low_byte(s & 0x08);
    status->cover_open = low_byte(s & 0x10);
    return KLOV_OK;
}

// A number as atoi reads it, but with the same result on every machine when it does not fit: the nearest value.
static int32_t decimal(const char *text)
{
    const long long value = strtoll(text, nullptr, 10);
    if (value > INT32_MAX) {
        return INT32_MAX;
    }
    return value < INT32_MIN ? INT32_MIN : static_cast<int32_t>(value);
}

// Put a NUL at the first separator. Returns the place behind it, or null without one.
static char *cut_at(char *text, char separator)
{
    char *const found = strchr(text, separator);
    if (found == nullptr) {
        return nullptr;
    }
    *found = '\0';
    return found + 1;
}

static int32_t parse_version_text(char *text, uint32_t *numbers, int32_t count)
{
    constexpr size_t longest = 64;
    if (text == nullptr || text[0] != '_' || strnlen(text, longest + 1) > longest) {
        return KLOV_E_REPLY_FORMAT;
    }
    char *position = text + 1;
    for (int32_t i = 0; i < 3; ++i) {
        char *const next = cut_at(position, i < 2 ? '.' : ' ');
        if (next != nullptr) {
            const int32_t number = decimal(position);
            if (number > 254) {
                return KLOV_OK;
            }
            numbers[i] = static_cast<uint32_t>(number);
            position = next;
        }
        // Asked after the element, so that a count of 1 reads two: callers size their arrays for three.
        if (count <= i) {
            return KLOV_OK;
        }
    }
    return KLOV_OK;
}

static void copy_version_bytes(const char *text, uint32_t *numbers, int32_t count)
{
    for (int32_t i = 0; i < 3; ++i) {
        numbers[i] = low_byte(text[i]);
        if (count <= i) {
            return;
        }
    }
}

int32_t klov_cmd_parse_printer_version(uint32_t printer_class, char *text, uint32_t *numbers, int32_t count)
{
    if (is_escpos(printer_class)) {
        return parse_version_text(text, numbers, count);
    }
    if ((printer_class & class_version_command) != 0) {
        return KLOV_OK;
    }
    if ((printer_class & class_version_text) == 0) {
        return KLOV_E_MODEL_TYPE;
    }
    if (text == nullptr) {
        return KLOV_E_REPLY_FORMAT;
    }
    copy_version_bytes(text, numbers, count);
    return KLOV_OK;
}

int32_t klov_cmd_parse_qr_code_size(uint32_t printer_class, char *text, uint32_t *first, uint32_t *second)
{
    constexpr size_t longest = 18;
    constexpr char unit_separator = 0x1F;
    if (!is_escpos(printer_class)) {
        return KLOV_E_MODEL_TYPE;
    }
    if (text == nullptr || strncmp(text, "76", 2) != 0 || strnlen(text, longest + 1) > longest) {
        return KLOV_E_REPLY_FORMAT;
    }
    char *const first_text = text + 2;
    char *const second_text = cut_at(first_text, unit_separator);
    if (second_text == nullptr) {
        return KLOV_E_REPLY_FORMAT;
    }
    *first = static_cast<uint32_t>(decimal(first_text));
    if (cut_at(second_text, unit_separator) == nullptr) {
        return KLOV_E_REPLY_FORMAT;
    }
    *second = static_cast<uint32_t>(decimal(second_text));
    return KLOV_OK;
}
