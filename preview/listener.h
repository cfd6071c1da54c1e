// A TCP port, opened by an address in words.
#ifndef KLOV_PREVIEW_LISTENER_H
#define KLOV_PREVIEW_LISTENER_H

#include <cstdint>
#include <string>

namespace preview {

class Listener {
public:
    Listener() = default;
    ~Listener();
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    // "127.0.0.1:9100", "[::1]:9100"; port 0 lets the system choose.
    bool open(const std::string &address, std::string &error);

    // The bound address with its port.
    std::string address() const;
    uint16_t port() const;

    // The listening socket; it does not block.
    int socket() const
    {
        return socket_;
    }

private:
    int socket_ = -1;
};

}  // namespace preview

#endif
