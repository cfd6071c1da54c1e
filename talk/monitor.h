// What the port monitor does, apart from reading and writing: which bytes of its own it sends and when, whether the
// job's bytes may flow, what it tells the scheduler, and when the job is done.
//
// Its own bytes stand in front of the job's first byte and behind its last one, never between.
#pragma once

#include "talk/health.h"
#include "talk/questions.h"
#include "talk/reply.h"
#include "talk/words.h"

#include <stddef.h>
#include <stdint.h>

namespace talk {

enum class phase : uint8_t {
    asking,    // real-time questions in front of the first byte
    held,      // the printer cannot print; the job waits
    greeting,  // automatic status is on; one ordered request looks whether they are answered
    job,       // the job's bytes flow
    ending,    // the last byte was handed on; the printer is still at it
    over
};

struct monitor {
    // Settings.
    bool has_back_channel = true;
    bool clears_first = false;  // the last job on this printer may have left a command unfinished
    language speaks = language::english;

    // Bytes of ours for the printer, and lines for the scheduler; the caller takes both away.
    uint8_t out[128] = {};
    uint32_t out_length = 0;
    char log[2048] = {};
    size_t log_length = 0;

    // The outcome, once `now` is phase::over.
    int status = 0;
    bool left_clean = false;  // the printer waits for the rest of no command

    phase now = phase::asking;
    int64_t flows_at_ms = 0;  // until then answers are waited for in front of the first byte
    reply_reader reader;
    questions asked;
    bool asked_ahead = false;  // the rest of the round was sent without waiting for answers
    health printer;
    bool has_answered = false;
    int64_t heard_ms = 0;

    // Ordered requests. Before the end: those without an answer. At the end: answers still to come.
    int orders_open = 0;
    bool answers_orders = false;
    bool ask_again = false;

    // At the end, of a printer that answers only real-time questions: since when it is ready, and how often it said so.
    int64_t ready_ms = 0;
    int ready_rounds = 0;
    bool told_waiting = false;

    uint8_t shown = 0;  // reasons that the scheduler shows, one bit each
    int told_word = -1;
    bool cancelled = false;
    int64_t cancel_ms = 0;  // when the printer last took some of the job, or the job was cancelled or ended
};

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
