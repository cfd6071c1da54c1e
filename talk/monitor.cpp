#include "talk/monitor.h"

#include "talk/reasons.h"

#include <klov/control.h>
#include <klov/status.h>

namespace talk {
namespace {

// A printer that says nothing costs a job no more than this in front of its first byte.
constexpr int64_t patience_in_front_ms = 300;
// A printer that has answered before and says nothing for so long is gone.
constexpr int64_t longest_silence_ms = 60'000;
// What a printer that answers only real-time questions has to say before its job is done.
constexpr int ready_rounds_needed = 3;
constexpr int64_t ready_time_needed_ms = 2000;
// A printer that is ready all the time prints more in so many minutes than any buffer holds: when the ordered request
// behind the last byte is not answered by then, it was lost, and some of the job with it.
constexpr int64_t longest_printing_ms = 300'000;
// After a cancel: how long bytes may wait for the printer to take them, and the last answer to come.
constexpr int64_t cancel_patience_ms = 1000;

// Automatic status for going on and off line, errors and the paper sensors.
constexpr int32_t automatic_kinds = 0x0E;

// A request for which there is no room is left out: then the printer has not taken those before it.
void ask_real_time(monitor &it, int32_t n)
{
    klov_cmd_transmit_real_time_status(any_printer, n, it.out, sizeof it.out, &it.out_length);
}

void ask_in_order(monitor &it)
{
    klov_cmd_transmit_status(any_printer, 1, it.out, sizeof it.out, &it.out_length);
}

void switch_automatic_status(monitor &it, int32_t kinds)
{
    klov_cmd_enable_disable_ASB(any_printer, kinds, it.out, sizeof it.out, &it.out_length);
}

void ask_round(monitor &it, int64_t now_ms)
{
    ask_real_time(it, begin_round(it.asked, now_ms));
}

// The job's bytes are about to flow though the printer has not answered. The rest of the questions goes in front of
// them: a printer that cannot print does not even switch automatic status on, and these answers are all that it will
// say.
void ask_ahead(monitor &it)
{
    for (int32_t n = following_question(it.asked, 0); n != 0; n = following_question(it.asked, n)) {
        ask_real_time(it, n);
    }
    it.asked_ahead = true;
}

void finish(monitor &it, int status, bool left_clean)
{
    it.now = phase::over;
    it.status = status;
    it.left_clean = left_clean;
}

void give_up(monitor &it, word why)
{
    tell(it, "ERROR: ", text_of(why, it.speaks));
    finish(it, 1, false);
}

void hold(monitor &it, int64_t now_ms)
{
    it.now = phase::held;
    show_health(it);
    it.heard_ms = now_ms;
    it.asked.next_round_ms = now_ms;
}

void greet(monitor &it, int64_t now_ms)
{
    if (it.now == phase::held) {
        it.flows_at_ms = now_ms + patience_in_front_ms;
    }
    switch_automatic_status(it, automatic_kinds);
    ask_in_order(it);
    it.orders_open++;
    it.now = phase::greeting;
}

// Ready or not: where the monitor goes on from the questions in front of the first byte.
void look_at_health(monitor &it, bool round_is_over, int64_t now_ms)
{
    switch (it.now) {
        case phase::asking:
        case phase::held:
            if (!round_is_over) {
                break;
            }
            if (can_print(it.printer)) {
                greet(it, now_ms);
            } else if (it.now == phase::asking) {
                hold(it, now_ms);
            }
            break;
        case phase::greeting:
            if (!can_print(it.printer)) {
                hold(it, now_ms);
            }
            break;
        case phase::job:
            if (it.cancelled && !can_print(it.printer)) {
                finish(it, 0, false);
            }
            break;
        case phase::ending:
            if (!can_print(it.printer)) {
                it.ready_rounds = 0;
            }
            break;
        default:
            break;
    }
}

void count_ready_round(monitor &it, int64_t now_ms)
{
    if (!can_print(it.printer)) {
        return;
    }
    if (it.ready_rounds == 0) {
        it.ready_ms = now_ms;
    }
    it.ready_rounds++;
    const int64_t ready_for = now_ms - it.ready_ms;
    if (it.answers_orders) {
        if (ready_for >= longest_printing_ms) {
            give_up(it, word::no_answer_any_more);
        }
        return;
    }
    if (it.ready_rounds >= ready_rounds_needed && ready_for >= ready_time_needed_ms) {
        tell(it, "DEBUG: ", "klovstatus: the printer is ready; it does not say when it has printed what it was sent");
        finish(it, 0, true);
    }
}

void take_real_time_answer(monitor &it, uint8_t byte, int64_t now_ms)
{
    const int32_t n = waiting_question(it.asked);
    if (n == 0) {
        return;
    }
    take_real_time(it.printer, n, byte);
    const int32_t next = next_question(it.asked, now_ms);
    if (next != 0) {
        if (!it.asked_ahead) {
            ask_real_time(it, next);
        }
        return;
    }
    it.asked_ahead = false;
    show_health(it);  // not in mid round: one trouble may have given way to another
    if (it.now == phase::ending) {
        count_ready_round(it, now_ms);
    }
    look_at_health(it, true, now_ms);
}

void take_ordered_answer(monitor &it, const reply &answer)
{
    if (answer.doubtful) {
        it.ask_again = true;
        return;
    }
    it.answers_orders = true;
    if (it.orders_open == 0) {
        return;
    }
    it.orders_open--;
    if (it.now == phase::greeting && it.orders_open == 0) {
        it.now = phase::job;
    }
    if (it.now != phase::ending) {
        return;
    }
    if (it.orders_open == 0) {
        finish(it, 0, true);
        return;
    }
    // One from in front of the job was open as well. Whether this answer belongs to it, or it was lost and this is the
    // answer behind the job, only one more request can tell.
    ask_in_order(it);
}

void take_answer(monitor &it, const reply &answer, int64_t now_ms)
{
    if (answer.kind == reply_kind::nothing) {
        return;
    }
    it.has_answered = true;
    it.heard_ms = now_ms;
    switch (answer.kind) {
        case reply_kind::real_time:
            take_real_time_answer(it, answer.bytes[0], now_ms);
            break;
        case reply_kind::automatic:
            take_automatic(it.printer, answer.bytes);
            show_health(it);
            look_at_health(it, false, now_ms);
            break;
        default:
            take_ordered_answer(it, answer);
            break;
    }
}

}  // namespace

void start_monitor(monitor &it, const char *reasons, int64_t now_ms)
{
    adopt_reasons(it, reasons);
    it.heard_ms = now_ms;
    it.flows_at_ms = now_ms + patience_in_front_ms;
    if (!it.has_back_channel) {
        // Nobody would hear an answer: the printer gets the job's bytes and nothing else.
        it.now = phase::job;
        return;
    }
    if (it.clears_first) {
        klov_cmd_clear_buffer(any_printer, it.out, sizeof it.out, &it.out_length);
        it.reader.expects_clear = true;
        tell(it, "DEBUG: ", "klovstatus: the last job may have ended within a command; clearing the printer's buffer");
    }
    it.now = phase::asking;
    ask_round(it, now_ms);
}

void hear_printer(monitor &it, const uint8_t *bytes, size_t size, int64_t now_ms)
{
    for (size_t i = 0; i < size && it.now != phase::over; i++) {
        take_answer(it, read_reply_byte(it.reader, bytes[i], now_ms), now_ms);
    }
    if (it.reader.lost_something) {
        it.reader.lost_something = false;
        it.ask_again = true;
    }
}

void note_progress(monitor &it, int64_t now_ms)
{
    if (it.now == phase::job) {
        it.cancel_ms = now_ms;
    }
}

void end_job(monitor &it, int64_t now_ms)
{
    if (!it.has_answered) {
        if (it.has_back_channel) {
            switch_automatic_status(it, 0);
        }
        tell(it, "DEBUG: ", "klovstatus: the printer does not answer; nobody knows when the job is printed");
        withdraw_reasons(it);
        finish(it, 0, !it.cancelled);
        return;
    }
    it.now = phase::ending;
    it.heard_ms = now_ms;
    it.cancel_ms = now_ms;
    it.ask_again = false;
    it.asked_ahead = false;
    ask_in_order(it);
    it.orders_open++;
    switch_automatic_status(it, 0);
    ask_round(it, now_ms);
}

void cancel_job(monitor &it, int64_t now_ms)
{
    if (it.cancelled || it.now == phase::over) {
        return;
    }
    it.cancelled = true;
    it.cancel_ms = now_ms;
    if (it.now == phase::ending || (it.now == phase::job && can_print(it.printer))) {
        return;  // the filter completes its page, and the printer its paper
    }
    if (it.now == phase::greeting) {
        switch_automatic_status(it, 0);
    }
    const bool nothing_sent = it.now != phase::job;
    finish(it, 0, nothing_sent && !it.clears_first);
}

void lose_connection(monitor &it)
{
    if (it.now == phase::over) {
        return;
    }
    if (it.cancelled) {
        finish(it, 0, false);
        return;
    }
    give_up(it, word::connection_lost);
}

namespace {

bool waits_for_printer(const monitor &it)
{
    return it.now == phase::held || it.now == phase::ending;
}

// While a printer at the end of a job cannot print, its buffer may be full and our questions wait behind the job's
// bytes: then its silence says nothing.
bool silence_counts(const monitor &it)
{
    return it.now == phase::held || (it.now == phase::ending && can_print(it.printer));
}

void keep_asking(monitor &it, int64_t now_ms)
{
    if (waiting_question(it.asked) != 0) {
        if (now_ms >= question_deadline(it.asked)) {
            const int32_t n = question_is_late(it.asked, now_ms);
            if (n != 0) {
                ask_real_time(it, n);
            }
        }
        return;
    }
    if (now_ms < it.asked.next_round_ms) {
        return;
    }
    if (it.now == phase::ending) {
        if (it.ask_again) {
            it.ask_again = false;
            ask_in_order(it);
        }
        if (!it.told_waiting && can_print(it.printer)) {
            it.told_waiting = true;
            tell(it, "INFO: ", text_of(word::waiting_for_end, it.speaks));
        }
    }
    ask_round(it, now_ms);
}

}  // namespace

void watch_clock(monitor &it, int64_t now_ms)
{
    if (it.now == phase::asking && now_ms >= it.flows_at_ms) {
        if (can_print(it.printer)) {
            ask_ahead(it);
            greet(it, now_ms);
        } else {
            hold(it, now_ms);
        }
    }
    if (it.now == phase::greeting && now_ms >= it.flows_at_ms) {
        it.now = phase::job;
    }
    if (it.cancelled && it.now != phase::over && now_ms >= it.cancel_ms + cancel_patience_ms) {
        finish(it, 0, false);
    }
    if (!waits_for_printer(it)) {
        return;
    }
    if (silence_counts(it) && now_ms >= it.heard_ms + longest_silence_ms) {
        give_up(it, word::no_answer_any_more);
        return;
    }
    keep_asking(it, now_ms);
}

int64_t next_deadline(const monitor &it)
{
    int64_t deadline = -1;
    const auto at = [&deadline](int64_t when) { deadline = deadline < 0 || when < deadline ? when : deadline; };
    if (it.now == phase::asking || it.now == phase::greeting) {
        at(it.flows_at_ms);
    }
    if (it.cancelled && it.now != phase::over) {
        at(it.cancel_ms + cancel_patience_ms);
    }
    if (waits_for_printer(it)) {
        at(waiting_question(it.asked) != 0 ? question_deadline(it.asked) : it.asked.next_round_ms);
        if (silence_counts(it)) {
            at(it.heard_ms + longest_silence_ms);
        }
    }
    return deadline;
}

}  // namespace talk
