// Cancellation: the scheduler sends SIGTERM, the page in progress still completes.
#pragma once

#include <signal.h>

// 0 running, 1 cancelled. Set by the handler, read between pages.
extern volatile sig_atomic_t cancel_flag;

// Clear the flag, keep SIGTERM waiting, install the handler.
void catch_cancellation();

// SIGTERM is let through only between these two: never while bytes are on their way to the printer or to the trace.
void admit_cancellation();
void defer_cancellation();

// Let a waiting SIGTERM through to the handler once more, then give it its default action back.
void release_cancellation();
