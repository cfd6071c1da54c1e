// The command table: every printer command as a row of bytes, parameters and a name.
#ifndef KLOV_PREVIEW_TABLE_H
#define KLOV_PREVIEW_TABLE_H

#include "preview/command.h"

namespace preview {

// How many data bytes follow the bytes that a row's pattern spells out.
enum class Tail {
    none,
    rest16,         // p counts everything after itself: the bytes of the pattern that follow it, then the data
    rest32,         // the same with a 32-bit count
    rest16_be,      // the same, high byte first
    raster,         // a raster image; its rows are read one by one
    counted,        // as many bytes as the last parameter says
    until_nul,      // up to and with a 00 byte
    tab_list,       // up to 32 columns and a 00 byte
    column_image,   // n columns of 1 or 3 bytes (bit 5 of m)
    one_shape,      // x columns of 3 bytes
    blocks_8x8,     // x * y * 8 bytes
    nv_images,      // n images, each with its own size in front
    raster_rows,    // y rows of x dots
    dot_columns,    // x columns of y dots
    store_rows,     // as raster_rows, and p must fit exactly
    store_columns,  // as dot_columns, and p is one more than what follows
    smart_file,     // k name bytes, then 00
    enable_rt,      // p counts the byte before the data too
};

struct TableRow {
    // Bytes as two upper-case hexadecimal digits; parameters as a lower-case name: `n` one byte, `n.2` and `n.4`
    // little-endian,
    // `n.b2` high byte first, `n.s2` signed, `d.8` eight bytes of data. `m=0-3,48-51` takes these values only. `again`
    // repeats a parameter and is not listed.
    const char *pattern;
    const char *name;
    Tail tail = Tail::none;
    bool known = true;  // false: the frame tells its length, but its function is not known
};

std::span<const TableRow> command_table();

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
    bool padded_page_area = false;    // its page area command carries an extra byte
    size_t longest_command = 1 << 23;  // bytes; more than that no printer of this family holds
};

// Looks for the command that the bytes begin with. Rows are tried in the table's order; while a row may still match and
// `final` is false, later rows wait, so that the result never depends on how the stream was cut into pieces.
MatchResult match_command(Bytes bytes, bool final, const Dialect &dialect);

}  // namespace preview

#endif
