// The reader: a decoder whose commands go to the paper machine, to the kept list and to the watcher.
#include "preview/reader.h"

#include <algorithm>
#include <bit>

#include "preview/decoder.h"
#include "preview/machine.h"

namespace preview {
namespace {

// No command holds more than the paper does or the printer's memory, whichever is less; short ones are never refused.
Dialect dialect_of(const Options &options)
{
    constexpr uint64_t short_command = 1 << 17;
    const uint64_t paper_bytes = (options.width + 7U) / 8 * options.max_rows;
    Dialect dialect;
    dialect.padded_page_area = options.padded_page_area;
    dialect.longest_command =
        static_cast<size_t>(std::min<uint64_t>(std::max(paper_bytes, short_command), dialect.longest_command));
    return dialect;
}

CommandRecord keep(const Command &command)
{
    const Bytes head = command.bytes.first(std::min(command.bytes.size(), record_head_bytes));
    return {command.offset,
            command.length,
            command.kind,
            command.name,
            command.args,
            {head.begin(), head.end()},
            {command.data.begin(), command.data.end()}};
}

}  // namespace

struct Reader::Parts final : Sink {
    explicit Parts(Options wanted) : options(wanted), machine(options), decoder(*this, dialect_of(options)) {}

    void on_command(const Command &command) override
    {
        machine.execute(command);
        cut_off = cut_off || command.kind == Kind::truncated;
        if (command.kind == Kind::truncated && !problem) {
            problem = Problem{command.offset, "the input ends inside " + std::string(command.name) + " after " +
                                                  std::to_string(command.length) + " bytes of it"};
        }
        if (command.kind == Kind::unknown) {
            machine.warn(command.offset, std::string(command.name) + ", " + std::to_string(command.length) + " bytes");
        }
        if (options.keep_commands && commands.size() < options.max_events) {
            commands.push_back(keep(command));
        }
        for (const auto &watcher : watchers) {
            watcher(command);
        }
    }
    void image_begin(const ImageHeader &header, uint64_t offset) override
    {
        machine.image_begin(header, offset);
    }
    void image_row(Bytes row) override
    {
        machine.image_row(row);
    }
    bool wants_more() const override
    {
        return !machine.problem();
    }
    void on_too_long(uint64_t offset, std::string_view name, uint64_t announced) override
    {
        if (!problem) {
            problem = Problem{offset, std::string(name) + " announces " + std::to_string(announced) +
                                          " bytes, more than the printer can hold"};
        }
    }
    void on_warning(uint64_t offset, std::string text) override
    {
        machine.warn(offset, std::move(text));
    }

    Options options;
    Machine machine;
    Decoder decoder;
    std::vector<CommandRecord> commands;
    std::vector<std::function<void(const Command &)>> watchers;
    std::optional<Problem> problem;
    bool cut_off = false;
    std::shared_ptr<Unfinished> unfinished;
};

struct Reader::Unfinished {
    Decoder::Unfinished decoder;
};

Reader::Reader(Options options) : parts_(std::make_unique<Parts>(options)) {}

Reader::~Reader() = default;

void Reader::watch(std::function<void(const Command &)> watcher)
{
    parts_->watchers.push_back(std::move(watcher));
}

bool Reader::feed(Bytes bytes)
{
    if (!parts_->machine.problem()) {
        parts_->decoder.feed(bytes);
    }
    return !parts_->machine.problem();
}

bool Reader::finish()
{
    if (!parts_->machine.problem()) {
        auto rest = std::make_shared<Unfinished>(Unfinished{parts_->decoder.unfinished()});
        parts_->decoder.finish();
        parts_->machine.finish();
        parts_->unfinished = parts_->cut_off ? std::move(rest) : nullptr;
    }
    if (parts_->machine.problem()) {
        parts_->problem = parts_->machine.problem();
    }
    return !parts_->problem.has_value();
}

std::shared_ptr<Reader::Unfinished> Reader::unfinished() const
{
    return parts_->unfinished;
}

void Reader::resume(const Unfinished &from)
{
    parts_->decoder.resume(from.decoder);
}

void Reader::drop_unfinished()
{
    parts_->decoder.resume({});
    parts_->machine.drop_unfinished();
}

const Options &Reader::options() const
{
    return parts_->options;
}

const Paper &Reader::paper() const
{
    return parts_->machine.paper();
}

const std::vector<CommandRecord> &Reader::commands() const
{
    return parts_->commands;
}

const std::vector<Cut> &Reader::cuts() const
{
    return parts_->machine.cuts;
}

const std::vector<Event> &Reader::events() const
{
    return parts_->machine.events;
}

const std::vector<Warning> &Reader::warnings() const
{
    return parts_->machine.warnings;
}

const std::optional<Problem> &Reader::problem() const
{
    return parts_->problem;
}

uint64_t Reader::offset() const
{
    return parts_->decoder.offset();
}

bool Reader::dot(uint64_t row, uint32_t column) const
{
    const Bytes bits = paper().row(row);
    return column / 8 < bits.size() && (bits[column / 8] >> (7 - column % 8) & 1) != 0;
}

std::optional<InkExtent> Reader::ink() const
{
    std::optional<InkExtent> extent;
    for (uint64_t row = 0; row < paper().rows(); ++row) {
        const Bytes bits = paper().row(row);
        for (uint32_t at = 0; at < bits.size(); ++at) {
            if (bits[at] == 0) {
                continue;
            }
            const uint32_t first = at * 8 + static_cast<uint32_t>(std::countl_zero(bits[at]));
            const uint32_t last = at * 8 + 7 - static_cast<uint32_t>(std::countr_zero(bits[at]));
            if (!extent) {
                extent = InkExtent{row, row, first, last};
            }
            extent->last_row = row;
            extent->first_dot = std::min(extent->first_dot, first);
            extent->last_dot = std::max(extent->last_dot, last);
        }
    }
    return extent;
}

}  // namespace preview
