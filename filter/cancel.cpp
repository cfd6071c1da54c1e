// SIGTERM handling.
#include "filter/cancel.h"

#include "diag/trace.h"

#include <string.h>

volatile sig_atomic_t cancel_flag = 0;

namespace {

void change_mask(int how)
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigprocmask(how, &set, nullptr);
}

void set_action(void (*handler)(int))
{
    struct sigaction action;
    memset(&action, 0, sizeof action);
    action.sa_handler = handler;
    sigaction(SIGTERM, &action, nullptr);
}

// Writes to the trace: safe, since it only ever interrupts the reading of a page header, when no lines wait.
void cancel_handler(int signum)
{
    trace_put("+cancel_handler(signum:", signum, ") start.\n");
    cancel_flag = 1;
    trace_put("-cancel_handler finished.");
    trace_flush();
}

}  // namespace

void catch_cancellation()
{
    cancel_flag = 0;
    change_mask(SIG_BLOCK);
    set_action(cancel_handler);
}

void admit_cancellation()
{
    // The handler adds to the trace: it is to find no lines on their way there.
    trace_flush();
    change_mask(SIG_UNBLOCK);
}

void defer_cancellation()
{
    change_mask(SIG_BLOCK);
}

void release_cancellation()
{
    // The last moments of the job stay deferred: a late signal must not turn a printed job into a failed one.
    admit_cancellation();
    defer_cancellation();
    set_action(SIG_DFL);
}
