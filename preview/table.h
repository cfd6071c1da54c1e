// Which row of the command table a stream's bytes are.
#ifndef KLOV_PREVIEW_TABLE_H
#define KLOV_PREVIEW_TABLE_H

#include "preview/command.h"
#include "preview/table_rows.h"

namespace preview {

enum class Match {
    none,     // no command starts with these bytes
    partial,  // a command starts like this, but more bytes are needed
    full,
    too_long,  // a command that announces more bytes than the printer can hold
};

struct MatchResult {
    Match match = Match::none;
    const TableRow *row =
        nullptr;        // full: the row; partial: the row that is being read, when its constant start is there
    size_t length = 0;  // full: the command's length (the header's for a raster image); too_long: the announced one
    size_t needed = 0;  // partial: no answer can change before so many bytes are there
    std::vector<Arg> args;
    size_t data_begin = 0;  // full: where the data starts; equal to data_end when there is none
    size_t data_end = 0;
};

// What the printer is like, as far as commands depend on it.
struct Dialect {
    bool padded_page_area = false;     // its page area command carries an extra byte
    size_t longest_command = 1 << 23;  // bytes; more than that no printer of this family holds
};

// Looks for the command that the bytes begin with. Rows are tried in the table's order; while a row may still match and
// `final` is false, later rows wait, so that the result never depends on how the stream was cut into pieces.
MatchResult match_command(Bytes bytes, bool final, const Dialect &dialect);

}  // namespace preview

#endif
