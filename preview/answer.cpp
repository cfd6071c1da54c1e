// Status replies, byte by byte as libklov's parsers read them.
#include "preview/answer.h"

#include <initializer_list>
#include <string_view>

namespace preview {
namespace {

using Reply = std::vector<uint8_t>;

// Bits 1 and 4 are set in every real-time status byte.
constexpr uint8_t real_time = 0x12;
constexpr uint8_t not_printing = 0x04;  // in the first byte of a status; the drawer has the bit above it
constexpr uint8_t drawer = 0x08;

uint8_t bits(bool condition, uint8_t mask)
{
    return condition ? mask : uint8_t{0};
}

uint8_t paper_sensor(const Health &health)
{
    return static_cast<uint8_t>(bits(health.paper_near_end || health.paper_end, 0x03) | bits(health.paper_end, 0x0C));
}

Reply text(std::string_view characters)
{
    Reply reply(characters.begin(), characters.end());
    reply.push_back(0);
    return reply;
}

Reply version(const Command &command)
{
    return command.bytes[0] == 'Z' ? Reply{1, 0, 0} : text("_1.0.0 ");
}

uint8_t joined(std::initializer_list<int> parts)
{
    int byte = 0;
    for (const int part : parts) {
        byte |= part;
    }
    return static_cast<uint8_t>(byte);
}

// The same bits in the reply to DLE EOT 3 and in the second byte of the automatic status.
uint8_t errors(const Health &health)
{
    return joined({bits(health.cutter_error, 0x08), bits(health.unrecoverable_error, 0x20),
                   bits(health.recoverable_error, 0x40)});
}

}  // namespace

uint8_t real_time_status(int64_t n, const Health &health)
{
    switch (n) {
        case 1:
            return joined({real_time, bits(!health.can_print(), not_printing), bits(health.drawer_open, drawer)});
        case 2:
            return joined({real_time, bits(health.cover_open, 0x04), bits(health.paper_end, 0x20),
                           bits(health.has_error(), 0x40)});
        case 3:
            return joined({real_time, errors(health)});
        case 4:
            return joined({real_time, bits(health.paper_near_end || health.paper_end, 0x0C),
                           bits(health.paper_end, 0x60)});
        default:
            return real_time;
    }
}

std::vector<uint8_t> automatic_status(const Health &health)
{
    const uint8_t first = joined({0x10, bits(!health.can_print(), not_printing), bits(health.drawer_open, drawer),
                                  bits(health.cover_open, 0x20)});
    return {first, errors(health), paper_sensor(health), 0x00};
}

uint8_t second_status(const Health &health)
{
    return joined({0x22, bits(health.cover_open, 0x10), bits(health.drawer_open, drawer)});
}

std::vector<uint8_t> answer(const Command &command, const Health &health)
{
    const std::string_view name = command.name;
    const int64_t n = command.arg("n");
    if (command.kind != Kind::command) {
        return {};
    }
    if (name == "transmit_real_time_status") {
        return {real_time_status(n, health)};
    }
    // One byte: bit 0 tells a printer that can not print, as the library reads it.
    if (name == "transmit_status" && (n == 2 || n == 50)) {
        return {bits(!health.can_print(), 0x01)};
    }
    if (name == "transmit_status" || name == "transmit_paper_sensor_status") {
        return {paper_sensor(health)};
    }
    if (name == "transmit_peripheral_device_status") {
        return {0x00};
    }
    if (name == "enable_disable_ASB") {
        return n == 0 ? Reply{} : automatic_status(health);
    }
    if (name == "transmit_specified_status_in_real_time") {
        return n == 1 ? automatic_status(health) : Reply{second_status(health)};
    }
    if (name == "transmit_printer_id") {
        return {0x02};
    }
    if (name == "transmit_printer_version") {
        return version(command);
    }
    if (name.starts_with("qr_transmit_the_size")) {
        return text(
            "7621\x1F"
            "21\x1F");
    }
    return {};
}

}  // namespace preview
