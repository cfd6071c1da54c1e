// Opening a printer by its address: the network, a device file, a serial line, or one of CUPS's backends.
#pragma once

#include "talk/ask.h"

#include <sys/types.h>

#include <memory>
#include <string>

namespace talk {

class Device {
public:
    Device(connection line, pid_t backend) : line_(line), backend_(backend) {}
    ~Device();
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;

    const connection &line() const
    {
        return line_;
    }

private:
    connection line_;
    pid_t backend_;  // -1: none
};

// socket://HOST[:PORT], /dev/usb/lp0, serial:/dev/ttyUSB0?baud=115200, or an address that a backend of CUPS knows.
// Null with `error` set when it cannot be opened.
std::unique_ptr<Device> open_device(const std::string &address, int64_t deadline_ms, std::string &error);

// The pieces, for tests.
bool split_socket_address(const std::string &address, std::string &host, std::string &port);
int open_network(const std::string &address, int64_t deadline_ms, std::string &error);
int open_serial(const std::string &address, std::string &error);
std::unique_ptr<Device> start_backend(const std::string &address, std::string &error);

}  // namespace talk
