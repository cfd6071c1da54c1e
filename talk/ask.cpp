#include "talk/ask.h"

#include "talk/reply.h"

#include <errno.h>
#include <klov/status.h>
#include <poll.h>
#include <time.h>
#include <unistd.h>

#include <initializer_list>

namespace talk {
namespace {

// A question that a printer does not know is not to take the time of those it does.
constexpr int64_t patience_for_one_ms = 500;

bool wait_ready(int descriptor, short event, int64_t deadline_ms)
{
    for (;;) {
        const int64_t left = deadline_ms - monotonic_ms();
        pollfd channel = {descriptor, event, 0};
        const int ready = poll(&channel, 1, left > 0 ? static_cast<int>(left) : 0);
        if (ready > 0) {
            return true;
        }
        if (ready == 0 || errno != EINTR) {
            return false;
        }
    }
}

// The next answer of this kind by then.
bool wait_for_reply(const connection &from, reply_kind kind, int64_t deadline_ms, bool *lost, uint8_t *byte)
{
    reply_reader reader;
    for (;;) {
        const int received = receive_by(from, deadline_ms, lost);
        if (received < 0) {
            return false;
        }
        const reply answer = read_reply_byte(reader, static_cast<uint8_t>(received), monotonic_ms());
        if (answer.kind == kind && !answer.doubtful) {
            *byte = answer.bytes[0];
            return true;
        }
        // A printer that never stops talking is not listened to for ever.
        if (monotonic_ms() >= deadline_ms) {
            return false;
        }
    }
}

}  // namespace

int64_t monotonic_ms()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

bool send_by(const connection &to, const uint8_t *bytes, size_t size, int64_t deadline_ms, bool *lost)
{
    while (size > 0) {
        if (!wait_ready(to.out, POLLOUT, deadline_ms)) {
            return false;
        }
        const ssize_t sent = write(to.out, bytes, size);
        if (sent > 0) {
            bytes += sent;
            size -= static_cast<size_t>(sent);
        } else if (sent < 0 && errno != EINTR && errno != EAGAIN) {
            *lost = true;
            return false;
        }
    }
    return true;
}

int receive_by(const connection &from, int64_t deadline_ms, bool *lost)
{
    while (wait_ready(from.in, POLLIN, deadline_ms)) {
        uint8_t byte = 0;
        const ssize_t received = read(from.in, &byte, 1);
        if (received == 1) {
            return byte;
        }
        if (received == 0 || (errno != EINTR && errno != EAGAIN)) {
            *lost = true;
            return -1;
        }
    }
    return -1;
}

void forget_old_answers(const connection &from)
{
    bool lost = false;
    for (int i = 0; i < 4096 && receive_by(from, 0, &lost) >= 0; i++) {
    }
}

ask_result ask_health(const connection &to, int64_t deadline_ms, health &printer)
{
    ask_result result = ask_result::no_answer;
    bool lost = false;
    for (const int32_t n : {4, 2, 3, 1}) {
        uint8_t request[8];
        uint32_t length = 0;
        klov_cmd_transmit_real_time_status(any_printer, n, request, sizeof request, &length);
        // The first question waits for a printer that is busy with somebody else.
        const int64_t patient = result == ask_result::answered ? monotonic_ms() + patience_for_one_ms : deadline_ms;
        const int64_t until = patient < deadline_ms ? patient : deadline_ms;
        uint8_t byte = 0;
        if (send_by(to, request, length, until, &lost) &&
            wait_for_reply(to, reply_kind::real_time, until, &lost, &byte)) {
            take_real_time(printer, n, byte);
            result = ask_result::answered;
        }
        if (lost) {
            return ask_result::lost;
        }
    }
    return result;
}

ask_result wait_until_printed(const connection &to, int64_t deadline_ms)
{
    uint8_t request[8];
    uint32_t length = 0;
    klov_cmd_transmit_status(any_printer, 1, request, sizeof request, &length);
    bool lost = false;
    uint8_t byte = 0;
    if (send_by(to, request, length, deadline_ms, &lost) &&
        wait_for_reply(to, reply_kind::ordered, deadline_ms, &lost, &byte)) {
        return ask_result::answered;
    }
    return lost ? ask_result::lost : ask_result::no_answer;
}

}  // namespace talk
