// The TCP listener.
#include "preview/listener.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace preview {
namespace {

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
    const int fd = ::socket(info.ai_family, info.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, info.ai_protocol);
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

}  // namespace preview
