// Preloaded into the filter: it crashes in mid job. When a block of FAULT_SIZE bytes is asked for, the signal
// FAULT_SIGNAL comes; without that variable the block is given, but nobody may touch it, so that whoever uses it first
// crashes.
#define _GNU_SOURCE
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>

extern void *__libc_malloc(size_t size);

void *malloc(size_t size)
{
    static size_t awaited;
    if (awaited == 0) {
        const char *text = getenv("FAULT_SIZE");
        awaited = text != NULL ? strtoul(text, NULL, 10) : 1;
    }
    if (size != awaited) {
        return __libc_malloc(size);
    }
    const char *number = getenv("FAULT_SIGNAL");
    if (number != NULL) {
        raise(atoi(number));
    }
    return mmap(NULL, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}
