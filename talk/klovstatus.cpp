// klovstatus: the port monitor of CUPS for printers that answer.
//
// CUPS runs it between the last filter and the backend. The job's bytes come on standard input and leave unchanged on
// standard output; the printer's answers come on descriptor 3. What to send and when the job is done is decided in
// monitor.cpp; this is the loop around it. Nothing here waits but ppoll().
#include "talk/mark.h"
#include "talk/monitor.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr int back_channel = 3;
constexpr int64_t turn_every_ms = 100;

volatile sig_atomic_t cancelled = 0;

void note_cancel(int)
{
    cancelled = 1;
}

// The job's bytes on their way through.
struct passage {
    int input = STDIN_FILENO;
    int output = STDOUT_FILENO;
    int replies = back_channel;  // -1 when there are none (any more)
    sigset_t waiting_mask = {};
    uint8_t bytes[65536];
    size_t begin = 0;
    size_t end = 0;
    bool input_ended = false;
    bool input_failed = false;
    bool output_lost = false;
    bool passes_only = false;  // somebody else listens to the printer
};

passage way;
talk::monitor monitor;

int64_t now_ms()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// What the scheduler does not take is lost: it must not hold up the job.
void send_log()
{
    if (monitor.log_length > 0) {
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, monitor.log, monitor.log_length);
        monitor.log_length = 0;
    }
}

bool bytes_wait()
{
    return way.begin < way.end;
}

// As many bytes as are taken now. Returns how many.
size_t hand_on(const uint8_t *bytes, size_t size)
{
    const ssize_t written = write(way.output, bytes, size);
    if (written > 0) {
        return static_cast<size_t>(written);
    }
    if (written < 0 && errno != EAGAIN && errno != EINTR) {
        way.output_lost = true;
    }
    return 0;
}

void send_own_bytes()
{
    const size_t sent = hand_on(monitor.out, monitor.out_length);
    monitor.out_length -= static_cast<uint32_t>(sent);
    memmove(monitor.out, monitor.out + sent, monitor.out_length);
}

void send_job_bytes()
{
    const size_t sent = hand_on(way.bytes + way.begin, way.end - way.begin);
    way.begin += sent;
    if (sent > 0) {
        talk::note_progress(monitor, now_ms());
    }
}

void read_job()
{
    const ssize_t received = read(way.input, way.bytes, sizeof way.bytes);
    if (received > 0) {
        way.begin = 0;
        way.end = static_cast<size_t>(received);
        return;
    }
    if (received == 0 || (errno != EINTR && errno != EAGAIN)) {
        way.input_ended = true;
        way.input_failed = received != 0;
    }
}

void read_replies()
{
    uint8_t replies[1024];
    const ssize_t received = read(way.replies, replies, sizeof replies);
    if (received > 0) {
        talk::hear_printer(monitor, replies, static_cast<size_t>(received), now_ms());
        return;
    }
    if (received == 0 || (errno != EINTR && errno != EAGAIN)) {
        way.replies = -1;
    }
}

// Wait for the descriptors that are not -1. The output is always watched, because its end must be noticed.
void wait_for(int input, int replies, bool has_output, int64_t deadline, short *ready)
{
    pollfd channels[3] = {
        {input, POLLIN, 0}, {replies, POLLIN, 0}, {way.output, static_cast<short>(has_output ? POLLOUT : 0), 0}};
    const int64_t left = deadline - now_ms();
    const timespec time = {left > 0 ? left / 1000 : 0, left > 0 ? left % 1000 * 1000000 : 0};
    const int count = ppoll(channels, 3, deadline < 0 ? nullptr : &time, &way.waiting_mask);
    for (int i = 0; i < 3; i++) {
        ready[i] = count > 0 ? channels[i].revents : short{0};
    }
    if ((ready[2] & POLLERR) != 0) {
        way.output_lost = true;
    }
}

// One wait, and what it brought.
void step()
{
    const bool flows = monitor.now == talk::phase::job && monitor.out_length == 0;
    const bool reads_job = flows && !bytes_wait() && !way.input_ended;
    const bool sends_job = flows && bytes_wait();
    short ready[3];
    wait_for(reads_job ? way.input : -1, way.replies, sends_job || monitor.out_length > 0, talk::next_deadline(monitor),
             ready);
    if (ready[1] != 0) {
        read_replies();
    }
    if ((ready[2] & POLLOUT) != 0) {
        if (monitor.out_length > 0) {
            send_own_bytes();
        } else if (sends_job) {
            send_job_bytes();
        }
    }
    if (ready[0] != 0) {
        read_job();
    }
    if (way.input_ended && !bytes_wait() && monitor.now == talk::phase::job && monitor.out_length == 0) {
        talk::end_job(monitor, now_ms());
    }
}

// Bytes for the printer that are left when all is decided. After a cancel nobody waits for that.
void send_last_bytes()
{
    while (monitor.out_length > 0 && !way.output_lost && monitor.status == 0) {
        short ready[3];
        const bool in_haste = monitor.cancelled || cancelled != 0;
        wait_for(-1, -1, true, in_haste ? now_ms() : -1, ready);
        if ((ready[2] & POLLOUT) == 0 && in_haste) {
            return;
        }
        send_own_bytes();
    }
}

// Of a command file the command filter reads the answers itself, and two readers would take them from each other.
bool is_command_file()
{
    const char *type = getenv("CONTENT_TYPE");
    return type != nullptr && strcmp(type, "application/vnd.cups-command") == 0;
}

// Nothing goes to the printer before the job's first byte is there: a filter that fails at once leaves no trace.
bool wait_for_first_byte()
{
    while (!bytes_wait() && !way.input_ended && cancelled == 0 && !way.output_lost) {
        short ready[3];
        wait_for(way.input, -1, false, -1, ready);
        if (ready[0] != 0) {
            read_job();
        }
    }
    return bytes_wait() && cancelled == 0;
}

bool wait_for_turn(const talk::mark &printer)
{
    bool told = false;
    while (!talk::lock_mark(printer)) {
        if (!told) {
            told = true;
            const char *text = talk::text_of(talk::word::waiting_for_turn, monitor.speaks);
            dprintf(STDERR_FILENO, "INFO: %s\n", text);
        }
        short ready[3];
        wait_for(-1, -1, false, now_ms() + turn_every_ms, ready);
        if (cancelled != 0 || way.output_lost) {
            return false;
        }
    }
    return true;
}

int run_job(const talk::mark &printer)
{
    if (monitor.has_back_channel) {
        monitor.clears_first = talk::is_marked(printer);
        talk::set_mark(printer);
    }
    talk::start_monitor(monitor, way.passes_only ? nullptr : getenv("PRINTER_STATE_REASONS"), now_ms());
    while (monitor.now != talk::phase::over) {
        send_log();
        step();
        if (cancelled != 0) {
            talk::cancel_job(monitor, now_ms());
        }
        if (!bytes_wait()) {
            talk::note_progress(monitor, now_ms());
        }
        if (way.output_lost) {
            talk::lose_connection(monitor);
        }
        talk::watch_clock(monitor, now_ms());
    }
    send_log();
    send_last_bytes();
    if (monitor.has_back_channel && monitor.left_clean && !way.input_failed) {
        talk::remove_mark(printer);
    }
    return way.input_failed ? 1 : monitor.status;
}

// Standard streams that were closed before the start must not come back as the mark's file.
void occupy_standard_streams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

void prepare_signals()
{
    signal(SIGPIPE, SIG_IGN);
    struct sigaction action = {};
    action.sa_handler = note_cancel;
    sigaction(SIGTERM, &action, nullptr);
    // SIGTERM comes in while the program waits and at no other time.
    sigset_t term;
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    sigprocmask(SIG_BLOCK, &term, &way.waiting_mask);
    sigdelset(&way.waiting_mask, SIGTERM);
}

// Where CUPS itself writes the bytes to a file there is no backend, and nobody on the back channel.
bool prepare_channels(const char *device_uri)
{
    const int flags = fcntl(way.output, F_GETFL);
    if (flags != -1) {
        fcntl(way.output, F_SETFL, flags | O_NONBLOCK);
    }
    const bool is_file = device_uri != nullptr && strncmp(device_uri, "file:", 5) == 0;
    if (is_file || fcntl(back_channel, F_GETFD) == -1) {
        way.replies = -1;
    }
    return way.replies != -1;
}

}  // namespace

int main(int argc, char **argv)
{
    occupy_standard_streams();
    prepare_signals();
    if (argc < 6 || argc > 7) {
        dprintf(STDERR_FILENO, "ERROR: klovstatus job-id user title copies options [file]\n");
        return 1;
    }
    const char *device_uri = getenv("DEVICE_URI");
    monitor.speaks = talk::language_of_environment();
    monitor.has_back_channel = prepare_channels(device_uri);
    if (argc == 7) {
        way.input = open(argv[6], O_RDONLY | O_CLOEXEC);
        if (way.input == -1) {
            dprintf(STDERR_FILENO, "ERROR: klovstatus: the job's file cannot be read: %s\n", strerror(errno));
            return 1;
        }
    }
    if (!wait_for_first_byte()) {
        return way.input_failed ? 1 : 0;
    }
    talk::mark printer;
    if (monitor.has_back_channel) {
        // Also jobs that are only passed on take their turn.
        printer = talk::open_mark(getenv("CUPS_CACHEDIR"), device_uri);
        if (!wait_for_turn(printer)) {
            return way.output_lost && cancelled == 0 ? 1 : 0;
        }
    }
    if (is_command_file()) {
        way.passes_only = true;
        way.replies = -1;
        monitor.has_back_channel = false;
    }
    return run_job(printer);
}
