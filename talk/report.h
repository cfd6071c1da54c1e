// A printer's health for people and for programs.
#pragma once

#include "talk/health.h"
#include "talk/words.h"

#include <optional>
#include <string>

namespace talk {

struct Report {
    std::string device;
    std::optional<health> printer;   // nothing: no answer
    level open_level = level::high;  // of the drawer connector's pin 3 while the drawer is open
};

// One line.
std::string as_json(const Report &report);

// A line for each thing.
std::string as_text(const Report &report, language in);

// 0 ready, 1 answers but cannot print, 2 no answer.
int status_of(const Report &report);

}  // namespace talk
