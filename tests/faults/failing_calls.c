// Runs a program and lets its n-th read or write go wrong, whatever part of it or of its libraries makes the call:
//
//     failing_calls REPORT read|write N HOW PROGRAM ARGUMENTS...
//
// Calls are counted from the moment at which the program opens its trace. HOW is an errno value for this one call,
// "short" for half of its bytes, or "+" and an errno value for this call and all that follow on the same descriptor. N
// 0 lets everything pass. REPORT receives "CALLS DESCRIPTOR END", DESCRIPTOR that of the call that failed (-1: none),
// END the status, or 128 and the number of the signal. x86-64 only.
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

struct plan {
    unsigned long long call;  // number of the system call
    long n;
    long error;  // 0: short
    int for_good;
};

struct progress {
    int counting;
    int failing;
    long calls;
    long descriptor;  // of the call that went wrong
};

static int opens_trace(pid_t child, const struct user_regs_struct *registers)
{
    char path[24] = "";
    for (size_t at = 0; at < sizeof path - 1; at += sizeof(long)) {
        errno = 0;
        const long word = ptrace(PTRACE_PEEKDATA, child, registers->rsi + at, 0);
        if (errno != 0) {
            break;
        }
        memcpy(path + at, &word, sizeof word);
    }
    path[sizeof path - 1] = '\0';
    return strncmp(path, "/tmp/klov-raster", 16) == 0;
}

static int is_to_fail(const struct plan *plan, const struct progress *state, const struct user_regs_struct *registers)
{
    if (state->calls == plan->n) {
        return 1;
    }
    return plan->for_good && plan->n > 0 && state->calls > plan->n && (long)registers->rdi == state->descriptor;
}

static void at_entry(pid_t child, const struct plan *plan, struct progress *state, struct user_regs_struct *registers)
{
    if (!state->counting) {
        state->counting = registers->orig_rax == SYS_openat && opens_trace(child, registers);
        return;
    }
    if (registers->orig_rax != plan->call) {
        return;
    }
    state->calls += 1;
    if (!is_to_fail(plan, state, registers)) {
        return;
    }
    state->descriptor = (long)registers->rdi;
    if (plan->error == 0) {
        registers->rdx = registers->rdx > 1 ? registers->rdx / 2 : registers->rdx;
    } else {
        registers->orig_rax = (unsigned long long)-1;  // no call at all
        state->failing = 1;
    }
    ptrace(PTRACE_SETREGS, child, 0, registers);
}

static void at_return(pid_t child, const struct plan *plan, struct progress *state, struct user_regs_struct *registers)
{
    if (state->failing) {
        state->failing = 0;
        registers->rax = (unsigned long long)-plan->error;
        ptrace(PTRACE_SETREGS, child, 0, registers);
    }
}

// Returns the end: a status, or 128 and a signal.
static int follow(pid_t child, const struct plan *plan, struct progress *state)
{
    int status = 0;
    waitpid(child, &status, 0);
    ptrace(PTRACE_SETOPTIONS, child, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    long signal_to_pass = 0;
    for (;;) {
        ptrace(PTRACE_SYSCALL, child, 0, signal_to_pass);
        if (waitpid(child, &status, 0) < 0) {
            return 126;
        }
        if (WIFEXITED(status)) {
            return WEXITSTATUS(status);
        }
        if (WIFSIGNALED(status)) {
            return 128 + WTERMSIG(status);
        }
        signal_to_pass = 0;
        if (WSTOPSIG(status) != (SIGTRAP | 0x80)) {
            signal_to_pass = WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
            continue;
        }
        struct user_regs_struct registers;
        ptrace(PTRACE_GETREGS, child, 0, &registers);
        struct __ptrace_syscall_info info;
        ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            at_entry(child, plan, state, &registers);
        } else {
            at_return(child, plan, state, &registers);
        }
    }
}

int main(int argc, char **argv)
{
    if (argc < 6) {
        fputs("usage: failing_calls REPORT read|write N HOW PROGRAM ARGUMENTS...\n", stderr);
        return 125;
    }
    const int for_good = argv[4][0] == '+';
    const struct plan plan = {
        .call = strcmp(argv[2], "read") == 0 ? SYS_read : SYS_write,
        .n = strtol(argv[3], NULL, 10),
        .error = strcmp(argv[4], "short") == 0 ? 0 : strtol(argv[4] + for_good, NULL, 10),
        .for_good = for_good,
    };
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, 0, 0);
        execv(argv[5], argv + 5);
        _exit(127);
    }
    struct progress state = {.descriptor = -1};
    const int end = child > 0 ? follow(child, &plan, &state) : 126;
    FILE *report = fopen(argv[1], "w");
    if (report == NULL) {
        return 125;
    }
    fprintf(report, "%ld %ld %d\n", state.calls, state.descriptor, end);
    fclose(report);
    return end;
}
