// Preloaded into the filter: the n-th request for memory fails, counted from the moment at which the filter opens its
// trace. FAULT_N is n (0: none fails), FAULT_SIZE, if set, counts only blocks of that many bytes. FAULT_REPORT names a
// file that receives the number of requests, the files and functions that led to the failing one, innermost first, and,
// if the process crashed, those that led there:
//
//     requests 109
//     failed libcups.so.2:ppdOpen2 rastertoklov:? libc.so.6:?
//     crashed libcups.so.2:ppdOpen2 rastertoklov:?
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { deepest = 24 };

static int counting;
static unsigned long requests, failing, only_size;
static void *failed_at[deepest];
static int failed_depth;
static FILE *report_file;

static void on_crash(int number);

extern void *__libc_malloc(size_t size);
extern void *__libc_calloc(size_t count, size_t size);
extern void *__libc_realloc(void *block, size_t size);

__attribute__((noinline)) static int fails(size_t size)
{
    if (!counting || (only_size != 0 && size != only_size)) {
        return 0;
    }
    requests += 1;
    if (requests != failing) {
        return 0;
    }
    counting = 0;
    failed_depth = backtrace(failed_at, deepest);
    counting = 1;
    errno = ENOMEM;
    return 1;
}

void *malloc(size_t size)
{
    return fails(size) ? NULL : __libc_malloc(size);
}

void *calloc(size_t count, size_t size)
{
    return fails(count * size) ? NULL : __libc_calloc(count, size);
}

void *realloc(void *block, size_t size)
{
    return fails(size) ? NULL : __libc_realloc(block, size);
}

static void start_counting(const char *path)
{
    if (!counting && strcmp(path, "/tmp/klov-raster") == 0) {
        const char *n = getenv("FAULT_N");
        const char *size = getenv("FAULT_SIZE");
        failing = n != NULL ? strtoul(n, NULL, 10) : 0;
        only_size = size != NULL ? strtoul(size, NULL, 10) : 0;
        void *frames[1];
        backtrace(frames, 1);  // its first call asks for memory
        const struct sigaction action = {.sa_handler = on_crash, .sa_flags = (int)SA_RESETHAND};
        sigaction(SIGSEGV, &action, NULL);
        sigaction(SIGABRT, &action, NULL);
        counting = 1;
    }
}

// The trace is the first thing that the filter opens. Both names are in use, as the size of file offsets has it.
int open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    start_counting(path);
    return openat(AT_FDCWD, path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    start_counting(path);
    return openat64(AT_FDCWD, path, flags, mode);
}

static void put_chain(const char *word, void *const *frames, int count)
{
    fprintf(report_file, "%s", word);
    for (int i = 0; i < count; ++i) {
        Dl_info place = {0};
        dladdr(frames[i], &place);
        const char *file = place.dli_fname != NULL ? strrchr(place.dli_fname, '/') : NULL;
        fprintf(report_file, " %s:%s", file != NULL ? file + 1 : "?", place.dli_sname != NULL ? place.dli_sname : "?");
    }
    fputc('\n', report_file);
}

// The innermost frames are this file's own and, after a signal, the system's way into the handler.
__attribute__((noinline)) static void write_report(int end_signal)
{
    counting = 0;
    const char *path = getenv("FAULT_REPORT");
    report_file = path != NULL ? fopen(path, "w") : NULL;
    if (report_file == NULL) {
        return;
    }
    fprintf(report_file, "requests %lu\n", requests);
    if (failed_depth > 0) {
        put_chain("failed", failed_at + 2, failed_depth - 2);
    }
    if (end_signal != 0) {
        void *frames[deepest];
        put_chain("crashed", frames + 3, backtrace(frames, deepest) - 3);
    }
    fclose(report_file);
}

__attribute__((noinline)) static void on_crash(int number)
{
    write_report(number);
    raise(number);
}

__attribute__((destructor)) static void on_exit_report(void)
{
    write_report(0);
}
