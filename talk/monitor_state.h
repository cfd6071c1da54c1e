// What the port monitor knows at any moment.
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

}  // namespace talk
