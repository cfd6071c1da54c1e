#include "tests/filter/wrapped_memory.h"

#include <stddef.h>

extern "C" void *__real_calloc(size_t count, size_t size);
extern "C" void __real_free(void *block);
extern "C" void *__wrap_calloc(size_t count, size_t size);
extern "C" void __wrap_free(void *block);

static bool counting = false;
static int requests = 0;
static int failing = 0;
static int freed = 0;

extern "C" void *__wrap_calloc(size_t count, size_t size)
{
    if (!counting) {
        return __real_calloc(count, size);
    }
    requests += 1;
    return requests == failing ? nullptr : __real_calloc(count, size);
}

extern "C" void __wrap_free(void *block)
{
    freed += counting && block != nullptr ? 1 : 0;
    __real_free(block);
}

namespace wrapped {

void start_counting(int failing_block)
{
    counting = true;
    requests = 0;
    failing = failing_block;
    freed = 0;
}

void stop_counting()
{
    counting = false;
}

int blocks_made()
{
    return requests - (failing != 0 && requests >= failing ? 1 : 0);
}

int blocks_freed()
{
    return freed;
}

}  // namespace wrapped
