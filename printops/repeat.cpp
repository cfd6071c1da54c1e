// When repeated commands end early.
#include "printops/repeat.h"

#include "printops/output.h"

#include <signal.h>

namespace {

constexpr int32_t commands_between_looks = 256;

bool is_cancelled()
{
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, SIGTERM) == 1;
}

}  // namespace

bool may_repeat(int32_t sent)
{
    // The first command belongs to a step that has begun.
    if (sent == 0 || sent % commands_between_looks != 0) {
        return true;
    }
    return !output_failed() && !is_cancelled();
}
