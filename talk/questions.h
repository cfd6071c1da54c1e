// Real-time questions: is there paper, is the cover closed, is there an error? One after the other, because nothing in
// an answer says which question it belongs to.
#pragma once

#include <stdint.h>

namespace talk {

constexpr int question_count = 3;

struct questions {
    int at = -1;  // the question that waits for its answer, -1: none
    int64_t asked_ms = 0;
    int64_t next_round_ms = 0;
    bool stalled = false;     // the answer is so late that it may come twice
    uint8_t answered = 0;     // one bit for each question that was ever answered
    uint8_t passed_over = 0;  // one bit for each question that only others are answered of
};

// The library's number of the question that waits, 0 when none does.
int32_t waiting_question(const questions &asked);

// Begin a round. The number of the question to ask.
int32_t begin_round(questions &asked, int64_t now_ms);

// The waiting question was answered. The number of the next one, 0 when the round is over.
int32_t next_question(questions &asked, int64_t now_ms);

// The question of the round behind number n, behind the one that waits for 0. 0 when there is none.
int32_t following_question(const questions &asked, int32_t n);

// When question_is_late() is to be called; only while a question waits.
int64_t question_deadline(const questions &asked);

// The answer is late. The number of the question to ask now, 0 when the round is over.
int32_t question_is_late(questions &asked, int64_t now_ms);

}  // namespace talk
