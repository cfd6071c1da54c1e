/*
 * How is the printer? Asks for the four real-time statuses, which a printer answers even while it is busy or offline,
 * and prints the answers in words.
 *
 *     status [-t MILLISECONDS] DEVICE
 *     status /dev/usb/lp0
 *     bash -c 'status - <>/dev/tcp/192.0.2.7/9100'   ("-" is descriptor 0, open for reading and writing)
 *
 * Ends with 0 when all four were answered, 2 when one was not, 1 when the printer could not be asked.
 */
#include <errno.h>
#include <fcntl.h>
#include <klov/klov.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

/* Any printer with the ESC/POS-type command set. */
static const uint32_t printer_class = 0x1;

static int64_t now_ms(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (int64_t)now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

/* Wait until the printer takes or gives bytes. 0 when it does, else -1: an error, or the deadline (ETIMEDOUT). */
static int wait_for(int fd, short event, int64_t deadline)
{
    for (;;) {
        const int64_t left = deadline - now_ms();
        struct pollfd printer = {.fd = fd, .events = event};
        const int ready = poll(&printer, 1, left > 0 ? (int)left : 0);
        if (ready > 0) {
            return 0;
        }
        if (ready == 0) {
            errno = ETIMEDOUT;
            return -1;
        }
        if (errno != EINTR) {
            return -1;
        }
    }
}

static int send_bytes(int fd, const uint8_t *bytes, size_t size, int64_t deadline)
{
    while (size > 0) {
        if (wait_for(fd, POLLOUT, deadline) != 0) {
            return -1;
        }
        const ssize_t sent = write(fd, bytes, size);
        if (sent > 0) {
            bytes += sent;
            size -= (size_t)sent;
        } else if (sent < 0 && errno != EINTR && errno != EAGAIN) {
            return -1;
        }
    }
    return 0;
}

static int receive_byte(int fd, uint8_t *byte, int64_t deadline)
{
    for (;;) {
        if (wait_for(fd, POLLIN, deadline) != 0) {
            return -1;
        }
        const ssize_t received = read(fd, byte, 1);
        if (received == 1) {
            return 0;
        }
        if (received == 0) {
            errno = ECONNRESET;
            return -1;
        }
        if (errno != EINTR && errno != EAGAIN) {
            return -1;
        }
    }
}

/* Throw away what the printer said before it was asked, so that no old answer is taken for a new one. */
static void forget_old_answers(int fd)
{
    uint8_t byte;
    for (int i = 0; i < 4096 && receive_byte(fd, &byte, now_ms()) == 0; i++) {
    }
}

/* One question and its answer. Bytes that are no real-time status are somebody else's answers and are passed over. */
static int ask(int fd, int32_t n, int timeout_ms, uint8_t *reply)
{
    uint8_t request[3];
    uint32_t length = 0;
    if (klov_cmd_transmit_real_time_status(printer_class, n, request, sizeof request, &length) != KLOV_OK) {
        errno = EINVAL;
        return -1;
    }
    const int64_t deadline = now_ms() + timeout_ms;
    if (send_bytes(fd, request, length, deadline) != 0) {
        return -1;
    }
    while (now_ms() <= deadline) {
        if (receive_byte(fd, reply, deadline) != 0) {
            return -1;
        }
        if (klov_cmd_parse_real_time_status(printer_class, n, *reply, NULL) == KLOV_OK) {
            return 0;
        }
    }
    errno = ETIMEDOUT;
    return -1;
}

static const char *paper_in_words(const printer_status *status)
{
    if (status->paper_end != 0) {
        return "at its end";
    }
    return status->paper_near_end != 0 ? "near its end" : "there";
}

static void tell(int32_t n, uint8_t reply)
{
    printer_status status = {0};
    klov_cmd_parse_real_time_status(printer_class, n, reply, &status);
    switch (n) {
        case 1:
            printf("drawer connector, pin 3: %s\n", status.drawer_pin3 != 0 ? "high" : "low");
            break;
        case 2:
            printf("cover: %s\n", status.cover_open != 0 ? "open" : "closed");
            break;
        case 3:
            printf("error status: 0x%02X\n", reply);
            break;
        default:
            printf("paper: %s\n", paper_in_words(&status));
            break;
    }
}

/* "-" is descriptor 0. A serial line must neither echo nor wait for the end of a line. */
static int open_printer(const char *path)
{
    const int fd = strcmp(path, "-") == 0 ? STDIN_FILENO : open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    struct termios line;
    if (fd >= 0 && tcgetattr(fd, &line) == 0) {
        cfmakeraw(&line);
        tcsetattr(fd, TCSANOW, &line);
    }
    return fd;
}

static int usage(void)
{
    fputs("usage: status [-t MILLISECONDS] DEVICE\n", stderr);
    return 1;
}

int main(int argc, char **argv)
{
    static const char *const names[] = {"printer status", "offline status", "error status", "paper status"};
    long timeout_ms = 1000;
    int option;
    while ((option = getopt(argc, argv, "t:")) != -1) {
        char *end = NULL;
        if (option == 't') {
            timeout_ms = strtol(optarg, &end, 10);
        }
        if (option != 't' || end == optarg || *end != '\0' || timeout_ms < 1 || timeout_ms > 600000) {
            return usage();
        }
    }
    if (optind + 1 != argc) {
        return usage();
    }
    signal(SIGPIPE, SIG_IGN);
    const int fd = open_printer(argv[optind]);
    if (fd < 0) {
        fprintf(stderr, "status: %s: %s\n", argv[optind], strerror(errno));
        return 1;
    }
    forget_old_answers(fd);
    int result = 0;
    for (int32_t n = 1; n <= 4; n++) {
        uint8_t reply = 0;
        if (ask(fd, n, (int)timeout_ms, &reply) == 0) {
            tell(n, reply);
        } else if (errno == ETIMEDOUT) {
            printf("%s: no answer\n", names[n - 1]);
            result = 2;
        } else {
            fprintf(stderr, "status: %s: %s\n", argv[optind], strerror(errno));
            return 1;
        }
    }
    return result;
}
