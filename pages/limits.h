// Limits for programs that decode what strangers send: a document that takes too much memory or time, or that breaks
// the decoder, ends the job with one line in words instead of a crash.
#ifndef KLOV_PAGES_LIMITS_H
#define KLOV_PAGES_LIMITS_H

#include <cstddef>

namespace pages {

// Sets the limits of the process and catches the signals in which going beyond them ends.
void set_limits();

// What is being worked on, for the message, and the time for it begins anew. 0: the document as a whole.
void begin_work_on_page(unsigned number);

// Set once CUPS has asked the job to end.
bool is_cancelled();

}  // namespace pages

#endif
