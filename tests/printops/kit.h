// Test kit for everything that prints: a device without a PPD, and what a call sent to the printer, to the scheduler
// and to the trace.
#pragma once

#include "printops/device.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kit {

// A device with the built-in options and buffers to match. Options may be changed at any time; call make_buffers()
// when width or strip height changed.
struct Device {
    Device();
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;

    void make_buffers();

    dev_options options = {};
    render_state state = {};
    printer_dev dev = {};

private:
    std::vector<uint8_t> strip_;
    std::vector<uint8_t> work_;
};

// What one call left behind.
struct Seen {
    std::string out;    // bytes on standard output
    std::string err;    // the scheduler's lines
    std::string trace;  // the trace file
};

Seen observe(const std::function<void()> &call);
Seen observe_untraced(const std::function<void()> &call);

// The same for a call that is to end its process; it runs in a process of its own.
struct Ended {
    int status;  // exit status, came_back when the call returned, or the negative signal that killed the process
    std::string out;
    std::string err;
    std::string trace;
};

constexpr int came_back = 77;

Ended run_to_end(const std::function<void()> &call);

// The scheduler's line of a fatal error.
std::string fatal_line(const std::string &text);

// "error(-3):text" with the catalogue's text.
std::string code_text(int32_t code);

// Bytes as "1B 4A 00", and back. Blanks in between do not count on the way back.
std::string hex(std::string_view bytes);
std::string bytes(std::string_view hex_text);

// What the output channel traces for a block of bytes.
std::string traced(std::string_view block);

// One raster command as it goes to the printer.
std::string raster(int mode, size_t width, size_t rows, std::string_view data);

// White images that feed this many dots.
std::string feed(int dots);

// A file in memory, with a name under which this process and its children can open it.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view contents = "");
    ~MemoryFile();
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    int descriptor() const
    {
        return descriptor_;
    }
    std::string path() const;
    std::string contents() const;

private:
    int descriptor_;
};

// Tells of every write to standard output at the moment when it would leave the process; it does not leave then.
class WatchedOutput {
public:
    using Watcher = std::function<void(std::string_view)>;
    explicit WatchedOutput(Watcher watcher);
    ~WatchedOutput();
    WatchedOutput(const WatchedOutput &) = delete;
    WatchedOutput &operator=(const WatchedOutput &) = delete;
};

// The same for the scheduler's log, in whose place it puts a stream of its own.
class WatchedLog {
public:
    using Watcher = std::function<void(std::string_view)>;
    explicit WatchedLog(Watcher watcher);
    ~WatchedLog();
    WatchedLog(const WatchedLog &) = delete;
    WatchedLog &operator=(const WatchedLog &) = delete;

private:
    FILE *saved_;
    Watcher watcher_;
};

}  // namespace kit
