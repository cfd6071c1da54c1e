// The TCP listener.
#include "preview/listener.h"

#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace preview {
namespace {

constexpr size_t piece = 65536;

bool split_address(const std::string &address, std::string &host, std::string &port)
{
    const size_t colon = address.find_last_of(':');
    if (colon == std::string::npos || colon == 0) {
        return false;
    }
    host = address.substr(0, colon);
    port = address.substr(colon + 1);
    if (host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    const bool digits = !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
    return !host.empty() && digits && std::stoul(port) <= UINT16_MAX;
}

int bound_socket(const addrinfo &info)
{
    const int fd = socket(info.ai_family, info.ai_socktype | SOCK_CLOEXEC, info.ai_protocol);
    if (fd < 0) {
        return -1;
    }
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(fd, info.ai_addr, info.ai_addrlen) == 0 && listen(fd, 8) == 0) {
        return fd;
    }
    const int reason = errno;
    close(fd);
    errno = reason;
    return -1;
}

// True when there is something to read; false when the time is up.
bool wait_for_bytes(int fd, uint32_t idle_seconds)
{
    pollfd entry{fd, POLLIN, 0};
    const int milliseconds = idle_seconds == 0 ? -1 : static_cast<int>(idle_seconds) * 1000;
    int ready = 0;
    do {
        ready = poll(&entry, 1, milliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

void send_reply(int fd, Bytes reply)
{
    while (!reply.empty()) {
        const ssize_t sent = send(fd, reply.data(), reply.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent <= 0) {
            return;
        }
        reply = reply.subspan(static_cast<size_t>(sent));
    }
}

void serve(int fd, const Listener::OnBytes &on_bytes, uint32_t idle_seconds)
{
    std::vector<uint8_t> buffer(piece);
    std::vector<uint8_t> reply;
    while (wait_for_bytes(fd, idle_seconds)) {
        const ssize_t got = recv(fd, buffer.data(), buffer.size(), 0);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return;
        }
        reply.clear();
        const bool more = on_bytes(Bytes(buffer).first(static_cast<size_t>(got)), reply);
        send_reply(fd, reply);
        if (!more) {
            return;
        }
    }
}

}  // namespace

Listener::~Listener()
{
    if (socket_ >= 0) {
        close(socket_);
    }
}

bool Listener::open(const std::string &address, std::string &error)
{
    std::string host;
    std::string port;
    if (!split_address(address, host, port)) {
        error = address + ": not HOST:PORT";
        return false;
    }
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo *found = nullptr;
    const int result = getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
    if (result != 0) {
        error = address + ": " + gai_strerror(result);
        return false;
    }
    for (const addrinfo *info = found; info != nullptr && socket_ < 0; info = info->ai_next) {
        socket_ = bound_socket(*info);
    }
    if (socket_ < 0) {
        error = address + ": " + std::strerror(errno);
    }
    freeaddrinfo(found);
    return socket_ >= 0;
}

std::string Listener::address() const
{
    sockaddr_storage bound{};
    socklen_t size = sizeof bound;
    std::array<char, NI_MAXHOST> host{};
    std::array<char, NI_MAXSERV> service{};
    auto *generic = reinterpret_cast<sockaddr *>(&bound);
    if (getsockname(socket_, generic, &size) != 0 ||
        getnameinfo(generic, size, host.data(), host.size(), service.data(), service.size(),
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return {};
    }
    const std::string name = host.data();
    return (name.find(':') == std::string::npos ? name : '[' + name + ']') + ':' + service.data();
}

uint16_t Listener::port() const
{
    const std::string bound = address();
    const size_t colon = bound.find_last_of(':');
    return colon == std::string::npos ? uint16_t{0} : static_cast<uint16_t>(std::stoul(bound.substr(colon + 1)));
}

bool Listener::receive_job(const OnBytes &on_bytes, uint32_t idle_seconds, std::string &error) const
{
    int fd = -1;
    do {
        fd = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    } while (fd < 0 && (errno == EINTR || errno == ECONNABORTED));
    if (fd < 0) {
        error = std::strerror(errno);
        return false;
    }
    serve(fd, on_bytes, idle_seconds);
    close(fd);
    return true;
}

}  // namespace preview
