// Health words and the file that holds them.
#include "preview/health.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

namespace preview {
namespace {

struct Word {
    std::string_view word;
    bool Health::*flag;
};

constexpr Word words[] = {
    {"paper-out", &Health::paper_end},
    {"paper-low", &Health::paper_near_end},
    {"cover-open", &Health::cover_open},
    {"cutter-error", &Health::cutter_error},
    {"recoverable-error", &Health::recoverable_error},
    {"unrecoverable-error", &Health::unrecoverable_error},
    {"offline", &Health::offline},
    {"drawer-open", &Health::drawer_open},
    {"mute", &Health::mute},
    {"half-mute", &Health::half_mute},
    {"no-asb", &Health::no_asb},
};

constexpr std::string_view blanks = " \t\r\n,";

void read_word(std::string_view wanted, HealthWords &into)
{
    for (const Word &word : words) {
        if (word.word == wanted) {
            into.health.*word.flag = true;
            return;
        }
    }
    if (wanted == "drop") {
        into.drop = true;
    } else if (wanted != "ready" && into.unknown.empty()) {
        into.unknown = wanted;
    }
}

std::string file_text(const std::string &path)
{
    std::array<char, 4096> text{};
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        return {};
    }
    const ssize_t got = read(fd, text.data(), text.size());
    close(fd);
    return got > 0 ? std::string(text.data(), static_cast<size_t>(got)) : std::string();
}

}  // namespace

HealthWords read_health_words(std::string_view text)
{
    HealthWords read;
    while (true) {
        const size_t begin = text.find_first_not_of(blanks);
        if (begin == std::string_view::npos) {
            return read;
        }
        text.remove_prefix(begin);
        const size_t end = std::min(text.find_first_of(blanks), text.size());
        read_word(text.substr(0, end), read);
        text.remove_prefix(end);
    }
}

void Health::merge(const Health &other)
{
    for (const Word &word : words) {
        this->*word.flag = this->*word.flag || other.*word.flag;
    }
}

std::string health_words(const Health &health)
{
    std::string text;
    for (const Word &word : words) {
        if (health.*word.flag) {
            text += (text.empty() ? "" : " ") + std::string(word.word);
        }
    }
    return text.empty() ? "ready" : text;
}

std::optional<HealthWords> HealthFile::poll()
{
    std::string text = file_text(path_);
    const bool settled = text == seen_;
    seen_ = std::move(text);
    if (!settled || told_ == seen_) {
        return std::nullopt;
    }
    told_ = seen_;
    return read_health_words(seen_);
}

}  // namespace preview
