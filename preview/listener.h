// A TCP port that takes print jobs as a network printer does: one connection a job, one job after another.
#ifndef KLOV_PREVIEW_LISTENER_H
#define KLOV_PREVIEW_LISTENER_H

#include <functional>
#include <string>

#include "preview/command.h"

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

    // Waits for a connection and hands its bytes out until the sender closes it, `idle_seconds` pass without a byte (0:
    // no limit), or `on_bytes` returns false. What on_bytes leaves in `reply` is sent back; a sender that does not read
    // its replies loses them. False when the port itself fails.
    using OnBytes = std::function<bool(Bytes bytes, std::vector<uint8_t> &reply)>;
    bool receive_job(const OnBytes &on_bytes, uint32_t idle_seconds, std::string &error) const;

private:
    int socket_ = -1;
};

}  // namespace preview

#endif
