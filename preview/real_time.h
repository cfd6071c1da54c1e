// Real-time commands: the few that a printer obeys the moment they arrive, even while its buffer waits.
#ifndef KLOV_PREVIEW_REAL_TIME_H
#define KLOV_PREVIEW_REAL_TIME_H

#include "preview/command.h"

namespace preview {

constexpr uint8_t real_time_lead = 0x10;  // DLE

enum class RealTime {
    none,         // these bytes are no real-time command
    more,         // they may become one
    status,       // DLE EOT n
    request,      // DLE ENQ n
    pulse,        // DLE DC4 1 m t
    power_off,    // DLE DC4 2
    report,       // DLE DC4 7 n
    clear_buffer  // DLE DC4 8
};

// What the bytes are, from the first one to the last.
RealTime real_time_kind(Bytes bytes);

}  // namespace preview

#endif
