// Messages to the scheduler: one line each on standard error, with the prefix that tells CUPS what it is. Whatever
// comes from a job or a document goes through foreign_text first, since standard error is the scheduler's control
// channel.
#ifndef KLOV_PAGES_LOG_H
#define KLOV_PAGES_LOG_H

#include <string>
#include <string_view>

namespace pages {

// Bytes below 32, and 127, as \xNN; at most 1,000 bytes are shown, then "...". An escape is never cut.
std::string foreign_text(std::string_view text);

// The text is one line of the program's own words; a line end that slipped in becomes a blank.
void log_error(std::string_view text);
void log_info(std::string_view text);
void log_warning(std::string_view text);
void log_debug(std::string_view text);

}  // namespace pages

#endif
