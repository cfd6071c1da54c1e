// What the virtual printer is told, and what it notes down beside the paper.
#ifndef KLOV_PREVIEW_RECORDS_H
#define KLOV_PREVIEW_RECORDS_H

#include <memory>

#include "preview/command.h"
#include "preview/logos.h"
#include "preview/symbols.h"

namespace preview {

struct Options {
    uint32_t width = 576;                    // printable dots a row
    uint32_t dpi = 203;                      // turns motion units into dots
    uint64_t max_rows = 700'000;             // the paper ends here; 87 m at 203 dpi, longer than any roll
    size_t max_events = 50'000;              // longest list of commands, events or warnings that is kept
    uint32_t margin_unit = 1;                // dots that one unit of the left margin stands for
    bool padded_page_area = false;           // the page area command carries an extra byte
    bool keep_commands = true;               // keep every command for commands()
    SymbolEncoder symbols = nullptr;         // without one, symbols are drawn as boxes
    std::shared_ptr<Logos> logos = nullptr;  // the printer's memory; without one, it begins and ends with the job
};

// A command, kept. `head` holds the first bytes as they stood in the stream.
struct CommandRecord {
    uint64_t offset;
    uint64_t length;
    Kind kind;
    std::string_view name;
    std::vector<Arg> args;
    std::vector<uint8_t> head;
    std::vector<uint8_t> data;
};

constexpr size_t record_head_bytes = 64;

struct Cut {
    uint64_t offset;  // of the command
    uint64_t row;     // the first row below the cut
    bool partial;
};

// Something that happens beside the paper or that puts no ink on it. Cuts are events, too.
struct Event {
    uint64_t offset;
    uint64_t row;
    std::string_view kind;  // cut, drawer, buzzer, logo, ticket, label, page, power, test, macro
    std::string text;
};

struct Warning {
    uint64_t offset;
    std::string text;
};

// Why the picture is not complete.
struct Problem {
    uint64_t offset;
    std::string text;
};

struct InkExtent {
    uint64_t first_row, last_row;
    uint32_t first_dot, last_dot;
};

}  // namespace preview

#endif
