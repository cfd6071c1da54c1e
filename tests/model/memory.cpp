#include "tests/model/memory.h"

#include <cstddef>

namespace {

int calls = 0;
int calls_until_failure = 0;  // 0: none fails

}  // namespace

// The linker sends calls of calloc here (--wrap=calloc).
extern "C" void *__real_calloc(size_t count, size_t size);
extern "C" void *__wrap_calloc(size_t count, size_t size);

void *__wrap_calloc(size_t count, size_t size)
{
    calls++;
    if (calls_until_failure > 0 && --calls_until_failure == 0) {
        return nullptr;
    }
    return __real_calloc(count, size);
}

int calloc_calls()
{
    return calls;
}

void reset_calloc_calls()
{
    calls = 0;
}

calloc_failure::calloc_failure(int nth)
{
    calls_until_failure = nth;
}

calloc_failure::~calloc_failure()
{
    calls_until_failure = 0;
}
