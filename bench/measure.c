/*
 * Runs programs in turn, many rounds, and prints what each run cost:
 *
 *     measure ROUNDS CASES
 *
 * CASES is a file with one case a line, its fields divided by tabs: name, trace, output, standard input, PPD,
 * recording, program, arguments. Trace is "on"; "off" to put a directory where the trace file would go; or a path, to
 * have the trace written there by way of a symbolic link. Output is "pipe" (as under the scheduler; drained here) or
 * "null". The recording is for the floor program.
 *
 * A line of the result: name, user and system time in microseconds, wall time in microseconds, peak memory in KiB,
 * minor page faults, exit status, bytes that came out.
 *
 * A program of its own because the kernel counts the memory of the starting process into a child's peak: this one is
 * smaller than everything that it measures. The trace's path is one for the machine: start it with a /tmp of its own.
 */
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#define TRACE "/tmp/klov-raster"

enum { max_fields = 24, max_cases = 64, fixed_fields = 6 };

struct bench_case {
    char *fields[max_fields];
    int count;
};

enum { field_name, field_trace, field_output, field_input, field_ppd, field_recording };

static struct bench_case cases[max_cases];
static char text[65536];

static void fail(const char *what)
{
    perror(what);
    exit(1);
}

static int read_cases(const char *path)
{
    FILE *file = fopen(path, "r");
    if (file == NULL) {
        fail(path);
    }
    text[fread(text, 1, sizeof text - 1, file)] = '\0';
    fclose(file);
    int count = 0;
    char *lines = NULL;
    for (char *line = strtok_r(text, "\n", &lines); line != NULL; line = strtok_r(NULL, "\n", &lines)) {
        struct bench_case *one = &cases[count];
        char *fields = NULL;
        for (char *field = strtok_r(line, "\t", &fields); field != NULL; field = strtok_r(NULL, "\t", &fields)) {
            if (one->count == max_fields - 1) {
                break;
            }
            one->fields[one->count++] = field;
        }
        if (one->count <= fixed_fields || count == max_cases - 1) {
            errno = EINVAL;
            fail(line);
        }
        count++;
    }
    return count;
}

static void place_trace(const char *trace)
{
    if (unlink(TRACE) != 0) {
        rmdir(TRACE);
    }
    if (strcmp(trace, "off") == 0 && mkdir(TRACE, 0777) != 0) {
        fail(TRACE);
    }
    if (trace[0] == '/') {
        unlink(trace);
        if (symlink(trace, TRACE) != 0) {
            fail(trace);
        }
    }
}

static double microseconds_between(struct timespec from, struct timespec to)
{
    return (double)(to.tv_sec - from.tv_sec) * 1e6 + (double)(to.tv_nsec - from.tv_nsec) / 1e3;
}

static double microseconds(struct timeval time)
{
    return (double)time.tv_sec * 1e6 + (double)time.tv_usec;
}

/* In the child. */
static void start(const struct bench_case *one, const int *output, const int *errors)
{
    const int input = open(one->fields[field_input], O_RDONLY);
    if (input < 0 || dup2(input, 0) < 0 || dup2(output[1], 1) < 0 || dup2(errors[1], 2) < 0) {
        _exit(125);
    }
    close(input);
    for (int side = 0; side < 2; side++) {
        close(output[side]);
        close(errors[side]);
    }
    char *const *arguments = one->fields + fixed_fields;
    char ppd[512];
    char recording[512];
    snprintf(ppd, sizeof ppd, "PPD=%s", one->fields[field_ppd]);
    snprintf(recording, sizeof recording, "FLOOR_BYTES=%s", one->fields[field_recording]);
    char path[] = "PATH=/usr/bin:/bin";
    char language[] = "LANG=en.UTF-8";
    char *environment[] = {path, language, ppd, recording, NULL};
    execve(arguments[0], arguments, environment);
    _exit(126);
}

/* Reads both pipes to their ends; returns the bytes of the first. */
static unsigned long drain(int output, int errors)
{
    static char buffer[65536];
    struct pollfd ends[2] = {{output, POLLIN, 0}, {errors, POLLIN, 0}};
    unsigned long bytes = 0;
    int open_ends = 2;
    while (open_ends > 0) {
        if (poll(ends, 2, -1) < 0) {
            fail("poll");
        }
        for (int i = 0; i < 2; i++) {
            if (ends[i].fd < 0 || ends[i].revents == 0) {
                continue;
            }
            const ssize_t count = read(ends[i].fd, buffer, sizeof buffer);
            if (count <= 0) {
                ends[i].fd = -1;
                open_ends--;
            } else if (i == 0) {
                bytes += (unsigned long)count;
            }
        }
    }
    return bytes;
}

static void run(const struct bench_case *one, int shown)
{
    int output[2];
    int errors[2];
    if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) {
        fail("pipe");
    }
    if (strcmp(one->fields[field_output], "null") == 0) {
        for (int i = 0; i < 2; i++) {
            const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
            dup3(null, i == 0 ? output[1] : errors[1], O_CLOEXEC);
            close(null);
        }
    }
    place_trace(one->fields[field_trace]);
    struct timespec begin;
    struct timespec end;
    clock_gettime(CLOCK_MONOTONIC, &begin);
    const pid_t child = fork();
    if (child < 0) {
        fail("fork");
    }
    if (child == 0) {
        start(one, output, errors);
    }
    close(output[1]);
    close(errors[1]);
    const unsigned long bytes = drain(output[0], errors[0]);
    close(output[0]);
    close(errors[0]);
    int status = 0;
    struct rusage cost;
    if (wait4(child, &status, 0, &cost) < 0) {
        fail("wait4");
    }
    clock_gettime(CLOCK_MONOTONIC, &end);
    if (shown) {
        printf("%s\t%.0f\t%.0f\t%.0f\t%ld\t%ld\t%d\t%lu\n", one->fields[field_name], microseconds(cost.ru_utime),
               microseconds(cost.ru_stime), microseconds_between(begin, end), cost.ru_maxrss, cost.ru_minflt,
               WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), bytes);
    }
}

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: measure ROUNDS CASES\n");
        return 2;
    }
    const int rounds = atoi(argv[1]);
    const int count = read_cases(argv[2]);
    /* The first round warms the caches. Every other round goes backwards, so that no case always has the same one
       before it. */
    for (int round = 0; round <= rounds; round++) {
        for (int i = 0; i < count; i++) {
            run(&cases[round % 2 == 0 ? i : count - 1 - i], round > 0);
        }
    }
    return 0;
}
