// How a printer is, gathered from its answers: each answer carries some of it, the newest one counts.
#pragma once

#include <stdint.h>

namespace talk {

enum class fault : uint8_t { none, cutter, recoverable, unrecoverable };

enum class level : uint8_t { unknown, low, high };

struct health {
    bool paper_end = false;   // by the paper sensor
    bool paper_stop = false;  // the printer stopped because of the paper
    bool paper_near_end = false;
    bool cover_open = false;
    fault error = fault::none;
    level drawer = level::unknown;  // of pin 3 of the drawer connector
};

// The four bytes of an automatic status.
void take_automatic(health &printer, const uint8_t *bytes);

// The answer to real-time request n, 1 to 4.
void take_real_time(health &printer, int32_t n, uint8_t byte);

inline bool out_of_paper(const health &printer)
{
    return printer.paper_end || printer.paper_stop;
}

inline bool paper_is_low(const health &printer)
{
    return printer.paper_near_end && !out_of_paper(printer);
}

inline bool can_print(const health &printer)
{
    return !out_of_paper(printer) && !printer.cover_open && printer.error == fault::none;
}

}  // namespace talk
