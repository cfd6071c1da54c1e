// The reader of a printer's command stream: the virtual printer without a picture format. Feed it bytes, then ask what
// stands on the paper and what happened.
//
//     preview::Reader reader({.width = 384});
//     reader.feed(job);
//     reader.finish();
//     reader.paper().rows();  reader.cuts();  reader.events();  reader.commands();
//
// Memory grows with the paper: at most `max_rows` rows of `width` dots, plus `max_events` records of each list, plus
// the longest single command of the input.
#ifndef KLOV_PREVIEW_READER_H
#define KLOV_PREVIEW_READER_H

#include <functional>
#include <memory>
#include <optional>

#include "preview/paper.h"
#include "preview/symbols.h"

namespace preview {

struct Options {
    uint32_t width = 576;             // printable dots a row
    uint32_t dpi = 203;               // turns motion units into dots
    uint64_t max_rows = 1'000'000;    // the paper ends here; 125 m at 203 dpi
    size_t max_events = 50'000;       // longest list of commands, events or warnings that is kept
    uint32_t margin_unit = 1;         // dots that one unit of the left margin stands for
    bool padded_page_area = false;    // the page area command carries an extra byte
    bool keep_commands = true;        // keep every command for commands()
    SymbolEncoder symbols = nullptr;  // without one, symbols are drawn as boxes
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

class Reader {
public:
    explicit Reader(Options options);
    ~Reader();
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    // Called with every command as soon as it is complete; all watchers are, in the order they came.
    void watch(std::function<void(const Command &)> watcher);

    // Reads a piece of the stream. False once the paper or the printer is at a limit: the rest is not looked at.
    bool feed(Bytes bytes);

    // The stream is over: prints what is left in the line buffer. False when the input or the paper ended too early.
    bool finish();

    // The command that the stream broke off in, for resume() of the reader that gets the next stream; null when the
    // stream ended between two commands. To be asked after finish().
    struct Unfinished;
    std::shared_ptr<Unfinished> unfinished() const;
    void resume(const Unfinished &from);

    // Drops the command and the line that are not complete.
    void drop_unfinished();

    const Options &options() const;
    const Paper &paper() const;
    const std::vector<CommandRecord> &commands() const;
    const std::vector<Cut> &cuts() const;
    const std::vector<Event> &events() const;
    const std::vector<Warning> &warnings() const;
    const std::optional<Problem> &problem() const;
    uint64_t offset() const;  // bytes read

    bool dot(uint64_t row, uint32_t column) const;
    std::optional<InkExtent> ink() const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace preview

#endif
