// Asking a printer how it is, once, over two descriptors.
#pragma once

#include "talk/health.h"

#include <stddef.h>
#include <stdint.h>

namespace talk {

// Where bytes for the printer go and where its answers come from; often the same descriptor.
struct connection {
    int out;
    int in;
};

enum class ask_result : uint8_t { answered, no_answer, lost };

int64_t monotonic_ms();

// Send all bytes. False when the printer does not take them by then, or the connection is lost (`lost` is set).
bool send_by(const connection &to, const uint8_t *bytes, size_t size, int64_t deadline_ms, bool *lost);

// One byte that the printer says by then, -1 when there is none.
int receive_by(const connection &from, int64_t deadline_ms, bool *lost);

// Throw away what the printer said before it was asked.
void forget_old_answers(const connection &from);

// The four real-time questions; each is answered at once also by a printer that is out of paper. A printer that answers
// none of them by the deadline has not answered.
ask_result ask_health(const connection &to, int64_t deadline_ms, health &printer);

// One ordered request: whether the printer has come through everything before it by then.
ask_result wait_until_printed(const connection &to, int64_t deadline_ms);

}  // namespace talk
