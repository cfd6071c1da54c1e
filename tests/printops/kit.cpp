#include "tests/printops/kit.h"

#include "filter/device.h"

#include "printops/output.h"

#include <cups/cups.h>
#include <gtest/gtest.h>
#include <klov/error.h>
#include <klov/trace.h>
#include <stdio.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

namespace kit {

namespace {

// A standard stream on its way to a file.
class Redirection {
public:
    explicit Redirection(FILE *stream) : stream_(stream)
    {
        fflush(stream_);
        saved_ = dup(fileno(stream_));
        dup2(file_.descriptor(), fileno(stream_));
    }
    ~Redirection()
    {
        fflush(stream_);
        dup2(saved_, fileno(stream_));
        close(saved_);
    }
    Redirection(const Redirection &) = delete;
    Redirection &operator=(const Redirection &) = delete;

    std::string contents()
    {
        fflush(stream_);
        return file_.contents();
    }

private:
    FILE *stream_;
    MemoryFile file_;
    int saved_;
};

WatchedOutput::Watcher output_watcher;

void close_trace()
{
    klov_trace_exit();
    klov_trace_handle = nullptr;
}

}  // namespace

Device::Device()
{
    init_dev_mode(&options);
    dev.devOptions = &options;
    dev.state = &state;
    make_buffers();
}

void Device::make_buffers()
{
    const size_t size = static_cast<size_t>(options.printer_width) * static_cast<size_t>(options.max_render_height);
    strip_.assign(size, 0);
    work_.assign(size + 20, 0);
    dev.render_data = strip_.data();
    dev.render_data_size = static_cast<uint32_t>(strip_.size());
    dev.data_buf = work_.data();
    dev.data_buf_size = static_cast<uint32_t>(work_.size());
}

Seen observe(const std::function<void()> &call)
{
    const MemoryFile trace;
    klov_trace_init(trace.path().c_str());
    Seen seen = observe_untraced(call);
    close_trace();
    seen.trace = trace.contents();
    return seen;
}

Seen observe_untraced(const std::function<void()> &call)
{
    Redirection out(stdout);
    Redirection err(stderr);
    call();
    send_output();
    return {out.contents(), err.contents(), ""};
}

Ended run_to_end(const std::function<void()> &call)
{
    const MemoryFile trace;
    Redirection out(stdout);
    Redirection err(stderr);
    const pid_t child = fork();
    if (child == 0) {
        klov_trace_init(trace.path().c_str());
        call();
        flush_output();
        fflush(nullptr);
        _exit(came_back);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), out.contents(), err.contents(),
            trace.contents()};
}

std::string fatal_line(const std::string &text)
{
    return "ERROR:Raster(" + text + ", cups:" + ippErrorString(cupsLastError()) + ")\n";
}

std::string code_text(int32_t code)
{
    char text[1024] = {};
    klov_format_error_ansi(code, 0, text, 0, sizeof text);
    return "error(" + std::to_string(code) + "):" + text;
}

std::string hex(std::string_view block)
{
    std::string text;
    for (const char byte : block) {
        char word[4];
        snprintf(word, sizeof word, "%s%02X", text.empty() ? "" : " ", static_cast<unsigned char>(byte));
        text += word;
    }
    return text;
}

std::string bytes(std::string_view hex_text)
{
    std::string digits;
    for (const char sign : hex_text) {
        if (sign != ' ') {
            digits += sign;
        }
    }
    std::string block;
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        block += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return block;
}

std::string traced(std::string_view block)
{
    std::string text = "+write_bytes start(data_size:" + std::to_string(block.size()) + "):\n";
    for (const char byte : block) {
        char word[8];
        snprintf(word, sizeof word, "0x%x ", static_cast<unsigned char>(byte));
        text += word;
    }
    return text + "\n-write_bytes finished(writed:" + (block.empty() ? "0" : "1") + ").\n";
}

std::string raster(int mode, size_t width, size_t rows, std::string_view data)
{
    std::string command = bytes("1D 76 30");
    command += static_cast<char>(mode);
    command += static_cast<char>(width & 0xFF);
    command += static_cast<char>(width >> 8);
    command += static_cast<char>(rows & 0xFF);
    command += static_cast<char>(rows >> 8);
    return command.append(data);
}

std::string feed(int dots)
{
    std::string commands;
    while (dots > 0) {
        const int chunk = dots < 255 ? dots : 255;
        commands += raster(0, 1, static_cast<size_t>(chunk), std::string(static_cast<size_t>(chunk), '\0'));
        dots -= chunk;
    }
    return commands;
}

MemoryFile::MemoryFile(std::string_view contents) : descriptor_(memfd_create("kit", 0))
{
    EXPECT_EQ(write(descriptor_, contents.data(), contents.size()), static_cast<ssize_t>(contents.size()));
    lseek(descriptor_, 0, SEEK_SET);
}

MemoryFile::~MemoryFile()
{
    close(descriptor_);
}

std::string MemoryFile::path() const
{
    return "/proc/self/fd/" + std::to_string(descriptor_);
}

std::string MemoryFile::contents() const
{
    std::string all;
    std::array<char, 65536> piece;
    for (;;) {
        const ssize_t count = pread(descriptor_, piece.data(), piece.size(), static_cast<off_t>(all.size()));
        if (count <= 0) {
            return all;
        }
        all.append(piece.data(), static_cast<size_t>(count));
    }
}

WatchedOutput::WatchedOutput(Watcher watcher)
{
    output_watcher = std::move(watcher);
}

WatchedOutput::~WatchedOutput()
{
    output_watcher = nullptr;
}

WatchedLog::WatchedLog(Watcher watcher) : saved_(stderr), watcher_(std::move(watcher))
{
    cookie_io_functions_t functions = {};
    functions.write = [](void *owner, const char *block, size_t size) {
        static_cast<WatchedLog *>(owner)->watcher_({block, size});
        return static_cast<ssize_t>(size);
    };
    stderr = fopencookie(this, "w", functions);
    setbuf(stderr, nullptr);
}

WatchedLog::~WatchedLog()
{
    fclose(stderr);
    stderr = saved_;
}

}  // namespace kit

// The program is linked with --wrap=write.
extern "C" ssize_t __real_write(int descriptor, const void *block, size_t size);
extern "C" ssize_t __wrap_write(int descriptor, const void *block, size_t size);

extern "C" ssize_t __wrap_write(int descriptor, const void *block, size_t size)
{
    if (descriptor == STDOUT_FILENO && kit::output_watcher) {
        kit::output_watcher({static_cast<const char *>(block), size});
        return static_cast<ssize_t>(size);
    }
    return __real_write(descriptor, block, size);
}
