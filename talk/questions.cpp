#include "talk/questions.h"

namespace talk {
namespace {

// Paper first: it is what runs out.
constexpr int32_t numbers[question_count] = {4, 2, 3};

constexpr int64_t round_every_ms = 500;
constexpr int64_t late_after_ms = 2000;

uint8_t bit(int question)
{
    return static_cast<uint8_t>(1U << static_cast<unsigned>(question));
}

int32_t ask(questions &asked, int question, int64_t now_ms)
{
    while (question < question_count && (asked.passed_over & bit(question)) != 0) {
        question++;
    }
    if (question >= question_count) {
        asked.at = -1;
        return 0;
    }
    asked.at = question;
    asked.asked_ms = now_ms;
    return numbers[question];
}

}  // namespace

int32_t waiting_question(const questions &asked)
{
    return asked.at < 0 ? 0 : numbers[asked.at];
}

int32_t begin_round(questions &asked, int64_t now_ms)
{
    asked.stalled = false;
    asked.next_round_ms = now_ms + round_every_ms;
    return ask(asked, 0, now_ms);
}

int32_t next_question(questions &asked, int64_t now_ms)
{
    asked.answered = static_cast<uint8_t>(asked.answered | bit(asked.at));
    if (asked.stalled) {
        // The question was asked more than once. What else is answered to it falls into the pause before the next
        // round.
        asked.at = -1;
        asked.next_round_ms = now_ms + round_every_ms;
        return 0;
    }
    return ask(asked, asked.at + 1, now_ms);
}

int32_t following_question(const questions &asked, int32_t n)
{
    int question = asked.at;
    while (n != 0 && question < question_count && numbers[question] != n) {
        question++;
    }
    question++;
    return question < question_count ? numbers[question] : 0;
}

int64_t question_deadline(const questions &asked)
{
    return asked.asked_ms + late_after_ms;
}

int32_t question_is_late(questions &asked, int64_t now_ms)
{
    const uint8_t late = bit(asked.at);
    if ((asked.answered & late) != 0 || asked.answered == 0) {
        asked.stalled = true;
        return ask(asked, asked.at, now_ms);
    }
    // The printer answers other questions and has never answered this one.
    asked.passed_over = static_cast<uint8_t>(asked.passed_over | late);
    return ask(asked, asked.at + 1, now_ms);
}

}  // namespace talk
