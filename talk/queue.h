// What CUPS knows of its queues.
#pragma once

#include "talk/health.h"

#include <string>
#include <vector>

namespace talk {

struct Queue {
    std::string name;
    std::string device;  // address
    std::string model;   // as CUPS shows it
    bool printing = false;
    std::vector<std::string> reasons;
};

// False with `error` set when CUPS does not answer or has no such queue.
bool ask_queue(const std::string &name, Queue &queue, std::string &error);

// All of them; none when CUPS does not answer.
std::vector<Queue> all_queues();

// The reasons that the port monitor left with the scheduler, read back.
health health_from(const std::vector<std::string> &reasons);

}  // namespace talk
