// What a printer of this family answers to status requests.
#ifndef KLOV_PREVIEW_ANSWER_H
#define KLOV_PREVIEW_ANSWER_H

#include "preview/command.h"

namespace preview {

struct Health {
    bool paper_end = false;
    bool paper_near_end = false;
    bool cover_open = false;
};

// The reply's bytes; empty when the command asks nothing or the printer would not answer.
std::vector<uint8_t> answer(const Command &command, const Health &health);

}  // namespace preview

#endif
