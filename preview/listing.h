// The stream in words: one line a command for people, JSON for programs.
#ifndef KLOV_PREVIEW_LISTING_H
#define KLOV_PREVIEW_LISTING_H

#include <string>

#include "preview/reader.h"

namespace preview {

// "     123  1D 56 42 00               select_cut_mode_and_feed_paper m=66 n=0"
std::string list_line(const Command &command);

// One JSON object: offset, length, kind, bytes, name, args, data.
std::string json_command(const Command &command);

// The JSON members that close the document: width, rows, cuts, events, warnings, problem, ink.
std::string json_summary(const Reader &reader);

}  // namespace preview

#endif
