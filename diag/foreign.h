// Texts from outside, as log and trace may show them.
//
// Standard error is a channel of control: the scheduler obeys lines that begin with STATE:, ATTR:, PPD: or PAGE:, and
// it splits lines of more than 2,047 bytes. What a job brings (the texts of page headers, the option string), and every
// name and path from the command line, the environment and the PPD, is shown through shown() and in no other way.
#pragma once

#include <stddef.h>
#include <stdint.h>

constexpr size_t longest_shown = 1000;

struct foreign_text {
    char text[longest_shown + sizeof "..."];
};

// The text up to its end, or its first most bytes. Every byte below 32, and 127, becomes "\x1b"; all others stay what
// they are. Only so much is shown, never a part of an escape, and then "..." follows. A null text reads "(null)".
foreign_text shown(const char *text, size_t most = SIZE_MAX);
