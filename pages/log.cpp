#include "pages/log.h"

#include <unistd.h>
#include <cerrno>
#include <cstdio>

namespace pages {

namespace {

constexpr std::size_t shown_bytes = 1000;
// A line longer than this is cut: CUPS reads lines of at most 2,048 bytes.
constexpr std::size_t line_bytes = 1900;

// One write a line: every write wakes the scheduler.
void write_line(std::string_view prefix, std::string_view text)
{
    std::string line(prefix);
    line += text.substr(0, line_bytes);
    for (char &byte : line) {
        if (byte == '\n' || byte == '\r' || byte == '\0')
            byte = ' ';
    }
    line += '\n';
    std::string_view left = line;
    while (!left.empty()) {
        const ssize_t written = write(STDERR_FILENO, left.data(), left.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        left.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

std::string foreign_text(std::string_view text)
{
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool control = byte < 32 || byte == 127;
        if (shown.size() + (control ? 4 : 1) > shown_bytes)
            return shown + "...";
        if (!control) {
            shown += c;
            continue;
        }
        char escape[5];
        snprintf(escape, sizeof escape, "\\x%02x", byte);
        shown += escape;
    }
    return shown;
}

void log_error(std::string_view text)
{
    write_line("ERROR: ", text);
}

void log_info(std::string_view text)
{
    write_line("INFO: ", text);
}

void log_warning(std::string_view text)
{
    write_line("WARNING: ", text);
}

void log_debug(std::string_view text)
{
    write_line("DEBUG: ", text);
}

}  // namespace pages
