// Handlers of fatal signals.
#include "filter/crash.h"

#include "diag/trace.h"

#include <signal.h>
#include <string.h>

namespace {

constexpr int fatal_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

// A stack of their own: the program's may be what has run out.
constexpr size_t stack_size = 65536;
alignas(16) char crash_stack[stack_size];

// By now the signal has its default action again, and is blocked until the handler returns.
void crash_handler(int signum)
{
    trace_rescue();
    raise(signum);
}

}  // namespace

void catch_crashes()
{
    stack_t stack = {};
    stack.ss_sp = crash_stack;
    stack.ss_size = sizeof crash_stack;
    sigaltstack(&stack, nullptr);

    struct sigaction action;
    memset(&action, 0, sizeof action);
    action.sa_handler = crash_handler;
    action.sa_flags = SA_ONSTACK | static_cast<int>(SA_RESETHAND);
    for (const int signum : fatal_signals) {
        sigaction(signum, &action, nullptr);
    }
}
