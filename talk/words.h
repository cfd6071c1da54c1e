// What people read, in English and in Simplified Chinese.
#pragma once

#include "talk/health.h"

#include <stdint.h>

namespace talk {

enum class word : uint8_t {
    out_of_paper,
    paper_low,
    cover_open,
    cutter_error,
    recoverable_error,
    unrecoverable_error,
    printing,
    waiting_for_end,
    waiting_for_turn,
    no_answer_any_more,
    connection_lost,
    ready,
    no_answer,
    drawer_open,
    drawer_closed,
    queue_is_printing,
    count
};

enum class language : uint8_t { english, chinese };

// By LC_ALL, LC_MESSAGES or LANG, whichever is set first: Simplified Chinese for zh and zh_CN, else English.
language language_of_environment();

// What to say of an error; there must be one.
word error_word(fault error);

// UTF-8.
const char *text_of(word what, language in);

}  // namespace talk
