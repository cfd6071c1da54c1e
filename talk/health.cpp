#include "talk/health.h"

#include "talk/reply.h"

#include <klov/status.h>

namespace talk {
namespace {

// The library's record has no room for errors. The third real-time status and the second byte of the automatic status
// carry them in the same bits.
fault fault_of(uint8_t byte)
{
    if ((byte & 0x20) != 0) {
        return fault::unrecoverable;
    }
    if ((byte & 0x08) != 0) {
        return fault::cutter;
    }
    // 0x04 wants somebody to look at the printer, 0x40 (a hot head) goes away by itself.
    return (byte & 0x44) != 0 ? fault::recoverable : fault::none;
}

level level_of(uint8_t flag)
{
    return flag != 0 ? level::high : level::low;
}

// In the second real-time status: printing was stopped by the end of the paper.
constexpr uint8_t stopped_by_paper = 0x20;

}  // namespace

void take_automatic(health &printer, const uint8_t *bytes)
{
    printer_status status = {};
    if (klov_cmd_parse_ASB_status(any_printer, bytes, &status) != KLOV_OK) {
        return;
    }
    printer.paper_end = status.paper_end != 0;
    printer.paper_stop = false;
    printer.paper_near_end = status.paper_near_end != 0;
    printer.cover_open = status.cover_open != 0;
    printer.drawer = level_of(status.drawer_pin3);
    printer.error = fault_of(bytes[1]);
}

void take_real_time(health &printer, int32_t n, uint8_t byte)
{
    printer_status status = {};
    if (klov_cmd_parse_real_time_status(any_printer, n, byte, &status) != KLOV_OK) {
        return;
    }
    switch (n) {
        case 1:
            printer.drawer = level_of(status.drawer_pin3);
            break;
        case 2:
            printer.cover_open = status.cover_open != 0;
            printer.paper_stop = (byte & stopped_by_paper) != 0;
            break;
        case 3:
            printer.error = fault_of(byte);
            break;
        default:
            printer.paper_end = status.paper_end != 0;
            printer.paper_near_end = status.paper_near_end != 0;
            break;
    }
}

}  // namespace talk
