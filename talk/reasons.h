// What the scheduler shows of the printer: its reasons ("media-empty-error") and one sentence.
#pragma once

#include "talk/monitor_state.h"

namespace talk {

// Take over what the scheduler shows from before, so that it is removed when it is no longer true.
void adopt_reasons(monitor &it, const char *reasons);

// Tell the scheduler what has changed.
void show_health(monitor &it);

// Nothing is known of the printer: show nothing.
void withdraw_reasons(monitor &it);

// One line to the scheduler, `prefix` in front; left out when there is no room.
void tell(monitor &it, const char *prefix, const char *text);

}  // namespace talk
