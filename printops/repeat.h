// Commands that an option repeats, up to two billion times.
#pragma once

#include <stdint.h>

// Whether one more of them is to be sent when so many were. Between two commands a job ends whose bytes were lost or
// that was cancelled: SIGTERM waits while a job prints. To ask the system costs more than a command, so it is asked
// once in a while.
bool may_repeat(int32_t sent);
