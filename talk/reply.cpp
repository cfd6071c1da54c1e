#include "talk/reply.h"

#include <klov/status.h>
#include <string.h>

namespace talk {
namespace {

// The bytes of one answer follow each other without a pause; what comes later is no part of it.
constexpr int64_t longest_pause_ms = 500;

// What is left of an automatic status whose first byte was damaged.
constexpr uint8_t rest_of_automatic = 3;

// A printer on a serial line holds up its host with these; they are no answers.
bool is_flow_control(uint8_t byte)
{
    return byte == 0x11 || byte == 0x13;
}

bool is_real_time(uint8_t byte)
{
    return klov_cmd_parse_real_time_status(any_printer, 1, byte, nullptr) == KLOV_OK;
}

bool begins_automatic(uint8_t byte)
{
    const uint8_t status[4] = {byte, 0, 0, 0};
    return klov_cmd_parse_ASB_status(any_printer, status, nullptr) == KLOV_OK;
}

// An ordered answer, or one of the last three bytes of an automatic status.
bool is_plain(uint8_t byte)
{
    return (byte & 0x90) == 0;
}

void note_damage(reply_reader &reader)
{
    reader.held = 0;
    reader.doubtful = rest_of_automatic;
    reader.lost_something = true;
}

void note_pause(reply_reader &reader, int64_t now_ms)
{
    if (now_ms - reader.last_ms > longest_pause_ms) {
        if (reader.held > 0) {
            note_damage(reader);
        }
        reader.doubtful = 0;
        reader.clear_answer = 0;
    }
    reader.last_ms = now_ms;
}

// Printers confirm a buffer clear with 37 25 00, of which the last two look like ordered answers.
bool belongs_to_clear(reply_reader &reader, uint8_t byte)
{
    static const uint8_t answer[] = {0x37, 0x25, 0x00};
    if (!reader.expects_clear || reader.held > 0) {
        return false;
    }
    if (byte != answer[reader.clear_answer]) {
        reader.clear_answer = 0;
        return false;
    }
    reader.clear_answer++;
    if (reader.clear_answer == sizeof answer) {
        reader.expects_clear = false;
        reader.clear_answer = 0;
    }
    return true;
}

reply take_plain(reply_reader &reader, uint8_t byte)
{
    if (reader.held == 0) {
        const bool doubtful = reader.doubtful > 0;
        if (doubtful) {
            reader.doubtful--;
        }
        return {reply_kind::ordered, doubtful, {byte}};
    }
    reader.automatic[reader.held] = byte;
    reader.held++;
    if (reader.held < sizeof reader.automatic) {
        return {};
    }
    reader.held = 0;
    reader.doubtful = 0;
    reply whole = {reply_kind::automatic, false, {}};
    memcpy(whole.bytes, reader.automatic, sizeof whole.bytes);
    return whole;
}

}  // namespace

reply read_reply_byte(reply_reader &reader, uint8_t byte, int64_t now_ms)
{
    note_pause(reader, now_ms);
    if (is_flow_control(byte) || belongs_to_clear(reader, byte)) {
        return {};
    }
    if (is_real_time(byte)) {
        // It may come in the middle of an automatic status, which then goes on.
        return {reply_kind::real_time, false, {byte}};
    }
    if (is_plain(byte)) {
        return take_plain(reader, byte);
    }
    if (reader.held > 0 || !begins_automatic(byte)) {
        note_damage(reader);
    }
    if (begins_automatic(byte)) {
        reader.automatic[0] = byte;
        reader.held = 1;
    }
    return {};
}

}  // namespace talk
