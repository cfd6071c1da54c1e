// How the printer is: in words, as its owner puts them into a file while it runs.
#ifndef KLOV_PREVIEW_HEALTH_H
#define KLOV_PREVIEW_HEALTH_H

#include <optional>
#include <string>
#include <string_view>

namespace preview {

struct Health {
    bool paper_end = false;
    bool paper_near_end = false;
    bool cover_open = false;
    bool cutter_error = false;
    bool recoverable_error = false;
    bool unrecoverable_error = false;
    bool offline = false;  // by its button
    bool drawer_open = false;
    bool mute = false;       // answers nothing at all
    bool half_mute = false;  // answers real-time requests and tells changes, but leaves ordered requests unanswered
    bool no_asb = false;     // never tells a change by itself

    bool operator==(const Health &) const = default;
    // Takes over what is wrong with the other, too.
    void merge(const Health &other);
    bool has_error() const
    {
        return cutter_error || recoverable_error || unrecoverable_error;
    }
    bool can_print() const
    {
        return !paper_end && !cover_open && !offline && !has_error();
    }
};

struct HealthWords {
    Health health;
    bool drop = false;  // break the connection
    std::string unknown;  // the first word that means nothing
};

HealthWords read_health_words(std::string_view text);

// The words that tell this health, for the log; "ready" without any.
std::string health_words(const Health &health);

// A file of such words. Without a file the printer is healthy.
class HealthFile {
public:
    explicit HealthFile(std::string path) : path_(std::move(path)) {}

    // To be called again and again: the words, once after they have changed. A text counts when it was read twice, so
    // that a file that is just being written does not.
    std::optional<HealthWords> poll();

private:
    std::string path_;
    std::string seen_;
    std::optional<std::string> told_;
};

}  // namespace preview

#endif
