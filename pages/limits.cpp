#include "pages/limits.h"

#include <malloc.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace pages {

namespace {

constexpr rlim_t most_memory = rlim_t{1} << 30;
// CPU seconds for one page: a page of 30 m takes a few on a desktop machine and ten times as many on a small board.
constexpr long most_seconds = 120;

volatile sig_atomic_t cancelled = 0;
volatile sig_atomic_t page_number = 0;

void write_text(const char *text)
{
    // Nothing can be done about a log that does not take its last line.
    if (write(STDERR_FILENO, text, strlen(text)) < 0)
        return;
}

void write_number(unsigned number)
{
    char digits[12];
    char *at = digits + sizeof digits - 1;
    *at = '\0';
    do {
        *--at = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number);
    write_text(at);
}

// Only calls that are safe in a signal handler.
extern "C" void end_of_decoder(int signum)
{
    write_text("ERROR: ");
    if (page_number) {
        write_text("Page ");
        write_number(static_cast<unsigned>(page_number));
        write_text(" of the document");
    } else {
        write_text("The document");
    }
    if (signum == SIGPROF) {
        write_text(" takes too long to draw.\n");
    } else if (signum == SIGABRT) {
        write_text(" needs more memory than a print job may use, or is damaged.\n");
    } else {
        write_text(" is damaged and cannot be drawn.\n");
    }
    _exit(1);
}

extern "C" void cancel(int)
{
    cancelled = 1;
}

}  // namespace

void set_limits()
{
    // Buffers of one slice after the other come from the same memory instead of fresh pages from the kernel each time.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);

#if !defined(__SANITIZE_ADDRESS__)
    const rlimit memory{most_memory, most_memory};
    setrlimit(RLIMIT_AS, &memory);
#endif
    const rlimit no_core{0, 0};
    setrlimit(RLIMIT_CORE, &no_core);

    // A document nested too deeply ends the stack, so the handler needs one of its own.
    static char handler_stack[64 * 1024];
    stack_t stack{};
    stack.ss_sp = handler_stack;
    stack.ss_size = sizeof handler_stack;
    sigaltstack(&stack, nullptr);

    struct sigaction action {};
    action.sa_handler = end_of_decoder;
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGPROF, &action, nullptr);
#if !defined(__SANITIZE_ADDRESS__)
    for (const int signum : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        sigaction(signum, &action, nullptr);
#endif
    action.sa_handler = cancel;
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

void begin_work_on_page(unsigned number)
{
    page_number = static_cast<sig_atomic_t>(number);
    const itimerval timer{{0, 0}, {most_seconds, 0}};
    setitimer(ITIMER_PROF, &timer, nullptr);
}

bool is_cancelled()
{
    return cancelled != 0;
}

}  // namespace pages

#if defined(__SANITIZE_ADDRESS__)
// What fontconfig keeps of its configuration to the end is no leak of ours.
extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}
#endif
