// What the port monitor does, apart from reading and writing: which bytes of its own it sends and when, whether the
// job's bytes may flow, what it tells the scheduler, and when the job is done.
//
// Its own bytes stand in front of the job's first byte and behind its last one, never between.
#pragma once

#include "talk/monitor_state.h"

#include <stddef.h>
#include <stdint.h>

namespace talk {

// `reasons` is what the scheduler shows of the printer from before (PRINTER_STATE_REASONS), or null. Call it when the
// job's first byte is there.
void start_monitor(monitor &it, const char *reasons, int64_t now_ms);

void hear_printer(monitor &it, const uint8_t *bytes, size_t size, int64_t now_ms);

// Some of the job's bytes could be handed on.
void note_progress(monitor &it, int64_t now_ms);

// The job's last byte was handed on.
void end_job(monitor &it, int64_t now_ms);

// The job was cancelled.
void cancel_job(monitor &it, int64_t now_ms);

// Nobody takes bytes for the printer any more.
void lose_connection(monitor &it);

// Time has passed; to be called when the deadline is reached, harmless at any time.
void watch_clock(monitor &it, int64_t now_ms);

// When watch_clock() is to be called next, -1: not until something else happens.
int64_t next_deadline(const monitor &it);

}  // namespace talk
