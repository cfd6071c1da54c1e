#include "talk/device.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace talk {
namespace {

constexpr const char *raw_port = "9100";

// Whether the connection is there by then.
bool wait_for_connection(int descriptor, int64_t deadline_ms)
{
    const int64_t left = deadline_ms - monotonic_ms();
    pollfd channel = {descriptor, POLLOUT, 0};
    if (poll(&channel, 1, left > 0 ? static_cast<int>(left) : 0) != 1) {
        errno = ETIMEDOUT;
        return false;
    }
    int problem = 0;
    socklen_t size = sizeof problem;
    getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &problem, &size);
    errno = problem;
    return problem == 0;
}

int connect_to(const addrinfo &place, int64_t deadline_ms)
{
    const int descriptor = socket(place.ai_family, place.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return -1;
    }
    if (connect(descriptor, place.ai_addr, place.ai_addrlen) == 0 ||
        (errno == EINPROGRESS && wait_for_connection(descriptor, deadline_ms))) {
        return descriptor;
    }
    const int problem = errno;
    close(descriptor);
    errno = problem;
    return -1;
}

// A file is no printer: writing to it would only spoil it.
int open_file(const std::string &path, std::string &error)
{
    const int descriptor = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    struct stat kind = {};
    if (descriptor < 0 || fstat(descriptor, &kind) != 0) {
        error = path + ": " + strerror(errno);
        return -1;
    }
    if (!S_ISCHR(kind.st_mode)) {
        error = path + ": is no device";
        close(descriptor);
        return -1;
    }
    termios line = {};
    if (tcgetattr(descriptor, &line) == 0) {
        cfmakeraw(&line);
        tcsetattr(descriptor, TCSANOW, &line);
    }
    return descriptor;
}

}  // namespace

Device::~Device()
{
    if (line_.out >= 0) {
        close(line_.out);
    }
    if (backend_ > 0) {
        // Its input has ended. The backend for the network waits for the printer to hang up, which may take long.
        for (int i = 0; i < 20; i++) {
            if (waitpid(backend_, nullptr, WNOHANG) == backend_) {
                backend_ = -1;
                break;
            }
            poll(nullptr, 0, 10);
        }
    }
    if (backend_ > 0) {
        kill(backend_, SIGKILL);
        waitpid(backend_, nullptr, 0);
    }
    if (line_.in >= 0 && line_.in != line_.out) {
        close(line_.in);
    }
}

// socket://HOST, socket://HOST:PORT, socket://[1:2::3]:PORT, with anything behind a slash or question mark.
bool split_socket_address(const std::string &address, std::string &host, std::string &port)
{
    constexpr const char *scheme = "socket://";
    if (address.compare(0, strlen(scheme), scheme) != 0) {
        return false;
    }
    std::string place = address.substr(strlen(scheme));
    place = place.substr(0, place.find_first_of("/?"));
    const size_t bracket = place.find(']');
    const size_t colon = place.find(':', bracket == std::string::npos ? 0 : bracket);
    host = place.substr(0, colon);
    port = colon == std::string::npos ? raw_port : place.substr(colon + 1);
    if (!host.empty() && host[0] == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    return !host.empty() && !port.empty() && port.find_first_not_of("0123456789") == std::string::npos &&
           port.size() <= 5;
}

int open_network(const std::string &address, int64_t deadline_ms, std::string &error)
{
    std::string host;
    std::string port;
    if (!split_socket_address(address, host, port)) {
        error = address + ": is not socket://HOST[:PORT]";
        return -1;
    }
    addrinfo wanted = {};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *places = nullptr;
    const int result = getaddrinfo(host.c_str(), port.c_str(), &wanted, &places);
    if (result != 0) {
        error = address + ": " + gai_strerror(result);
        return -1;
    }
    int descriptor = -1;
    for (const addrinfo *place = places; place != nullptr && descriptor < 0; place = place->ai_next) {
        descriptor = connect_to(*place, deadline_ms);
    }
    if (descriptor < 0) {
        error = address + ": " + strerror(errno);
    }
    freeaddrinfo(places);
    return descriptor;
}

std::unique_ptr<Device> open_device(const std::string &address, int64_t deadline_ms, std::string &error)
{
    int descriptor = -1;
    if (address.compare(0, 9, "socket://") == 0) {
        descriptor = open_network(address, deadline_ms, error);
    } else if (address.compare(0, 7, "serial:") == 0) {
        descriptor = open_serial(address, error);
    } else if (!address.empty() && address[0] == '/') {
        descriptor = open_file(address, error);
    } else {
        return start_backend(address, error);
    }
    return descriptor < 0 ? nullptr : std::make_unique<Device>(connection{descriptor, descriptor}, -1);
}

}  // namespace talk
