// What a printer of this family answers to status requests.
#ifndef KLOV_PREVIEW_ANSWER_H
#define KLOV_PREVIEW_ANSWER_H

#include "preview/command.h"
#include "preview/health.h"

namespace preview {

// The reply's bytes; empty when the command asks nothing or no printer of this family answers.
std::vector<uint8_t> answer(const Command &command, const Health &health);

// To DLE EOT n.
uint8_t real_time_status(int64_t n, const Health &health);

// The four bytes that tell a change, or answer GS a and DLE DC4 7 1.
std::vector<uint8_t> automatic_status(const Health &health);

// The one byte of DLE DC4 7 5.
uint8_t second_status(const Health &health);

}  // namespace preview

#endif
