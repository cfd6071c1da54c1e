// klovctl's command line and what it does.
#pragma once

#include "talk/health.h"
#include "talk/words.h"

#include <cstdint>
#include <string>
#include <vector>

namespace talk {

// Exit statuses.
constexpr int is_ready = 0;
constexpr int cannot_print = 1;
constexpr int no_answer = 2;
constexpr int wrong_use = 3;

struct Wishes {
    std::string queue;
    std::string device;
    std::string model;  // as the catalogue shows it
    bool json = false;
    bool watch = false;
    bool full = false;
    bool ask = false;
    level drawer_open = level::high;
    int timeout_ms = 3000;
    std::vector<std::string> words;  // the command and what follows it
    language speaks = language::english;
};

// Says what is wrong with the command line on standard error.
int complain(const std::string &what);

// status
int show_status(const Wishes &wishes);

// find
int find_printers(const Wishes &wishes);

// All that sends something: identify, test, drawer, cut, feed, beep, reset, logo, send.
bool is_action(const std::string &word);
int act(const Wishes &wishes);

// The number, or -1 when it is none.
int number_in(const std::string &text);

}  // namespace talk
