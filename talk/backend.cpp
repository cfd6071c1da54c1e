// One of CUPS's backends as the way to a printer, run as the scheduler runs it: bytes on its standard input, answers on
// its descriptor 3, the side channel on 4.
#include "talk/device.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace talk {
namespace {

constexpr int back_channel = 3;
constexpr int side_channel = 4;
constexpr int out_of_the_way = 10;

struct Pipes {
    int input[2] = {-1, -1};
    int replies[2] = {-1, -1};
    int side[2] = {-1, -1};
};

bool make(Pipes &pipes)
{
    return pipe2(pipes.input, O_CLOEXEC) == 0 && pipe2(pipes.replies, O_CLOEXEC) == 0 &&
           socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pipes.side) == 0;
}

void drop(Pipes &pipes)
{
    for (int *ends : {pipes.input, pipes.replies, pipes.side}) {
        for (int i = 0; i < 2; i++) {
            if (ends[i] >= 0) {
                close(ends[i]);
                ends[i] = -1;
            }
        }
    }
}

// In the child. Only what may be called between fork and exec.
[[noreturn]] void become(const char *program, const char *address, const Pipes &pipes)
{
    const int input = fcntl(pipes.input[0], F_DUPFD_CLOEXEC, out_of_the_way);
    const int replies = fcntl(pipes.replies[1], F_DUPFD_CLOEXEC, out_of_the_way);
    const int side = fcntl(pipes.side[1], F_DUPFD_CLOEXEC, out_of_the_way);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (dup2(input, STDIN_FILENO) < 0 || dup2(nothing, STDOUT_FILENO) < 0 || dup2(nothing, STDERR_FILENO) < 0 ||
        dup2(replies, back_channel) < 0 || dup2(side, side_channel) < 0) {
        _exit(127);
    }
    execl(program, address, "1", "klovctl", "klovctl", "1", "", static_cast<char *>(nullptr));
    _exit(127);
}

// "usb" of "usb://...". Nothing that leads out of the folder of backends.
std::string scheme_of(const std::string &address)
{
    const size_t colon = address.find(':');
    const std::string scheme = colon == std::string::npos ? "" : address.substr(0, colon);
    const bool plain = scheme.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789+-") == std::string::npos;
    return plain ? scheme : "";
}

}  // namespace

std::unique_ptr<Device> start_backend(const std::string &address, std::string &error)
{
    const std::string scheme = scheme_of(address);
    const char *folder = getenv("CUPS_SERVERBIN");
    const std::string program = std::string(folder != nullptr ? folder : KLOV_CUPS_SERVERBIN) + "/backend/" + scheme;
    if (scheme.empty() || access(program.c_str(), X_OK) != 0) {
        error = address + ": there is no backend that this account may run";
        return nullptr;
    }
    Pipes pipes;
    if (!make(pipes)) {
        error = address + ": " + strerror(errno);
        drop(pipes);
        return nullptr;
    }
    setenv("DEVICE_URI", address.c_str(), 1);
    const pid_t child = fork();
    if (child == 0) {
        become(program.c_str(), address.c_str(), pipes);
    }
    if (child < 0) {
        error = address + ": " + strerror(errno);
        drop(pipes);
        return nullptr;
    }
    close(pipes.input[0]);
    close(pipes.replies[1]);
    close(pipes.side[1]);
    // The other end of the side channel stays open as long as this process: the backend takes its end for a command.
    fcntl(pipes.input[1], F_SETFL, O_NONBLOCK);
    fcntl(pipes.replies[0], F_SETFL, O_NONBLOCK);
    return std::make_unique<Device>(connection{pipes.input[1], pipes.replies[0]}, child);
}

}  // namespace talk
