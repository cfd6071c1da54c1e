// The streaming decoder: text runs, table commands, raster images, and everything that is none of these.
#include "preview/decoder.h"

#include <algorithm>

namespace preview {
namespace {

constexpr size_t longest_text = 256;    // a longer run of characters is delivered in several pieces
constexpr size_t longest_unknown = 64;  // the same for unknown bytes
constexpr uint32_t coded_mode = 32;

bool is_character(uint8_t byte)
{
    return byte >= 0x20;
}

// Characters that also begin a command.
bool may_begin_command(uint8_t byte)
{
    return byte == '~' || byte == 'Z';
}

}  // namespace

int64_t Command::arg(std::string_view wanted, int64_t missing) const
{
    for (const Arg &candidate : args) {
        if (candidate.name == wanted) {
            return candidate.value;
        }
    }
    return missing;
}

Bytes Decoder::waiting() const
{
    return Bytes(pending_).subspan(head_);
}

void Decoder::consume(size_t count)
{
    head_ += count;
    offset_ += count;
    needed_ = 1;
}

void Decoder::feed(Bytes bytes)
{
    if (head_ > pending_.size() / 2) {
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(head_));
        head_ = 0;
    }
    pending_.insert(pending_.end(), bytes.begin(), bytes.end());
    run(false);
}

bool Decoder::finish()
{
    run(true);
    if (image_.active) {
        if (!image_.row.empty()) {
            image_.row.resize(image_.header.width_bytes);
            row_done(image_.row);
        } else if (image_.coded && image_.decoder.produced > 0) {
            row_done(image_.decoder.row);
        }
        end_image(Kind::truncated);
        return false;
    }
    const Bytes rest = waiting();
    if (rest.empty()) {
        deliver_unknown_bytes();
        return true;
    }
    const MatchResult match = match_command(rest, true, dialect_);
    deliver_unknown_bytes();
    deliver(Kind::truncated, match.row != nullptr ? match.row->name : "truncated", rest.size());
    return false;
}

Decoder::Unfinished Decoder::unfinished() const
{
    const Bytes rest = waiting();
    return {{rest.begin(), rest.end()}, image_};
}

void Decoder::resume(Unfinished from)
{
    pending_ = std::move(from.pending);
    head_ = 0;
    image_ = std::move(from.image);
    if (image_.active) {
        image_.command.offset = offset_;
        sink_.image_begin(image_.header, offset_);
    }
}

void Decoder::run(bool final)
{
    while (sink_.wants_more() && (head_ < pending_.size() || image_.active)) {
        if (image_.active ? !image_step() : !step(final)) {
            return;
        }
    }
}

// The length of the run of characters that the waiting bytes begin with. `waits` is set when the run may go on in bytes
// that have not arrived.
size_t Decoder::text_run(bool final, bool &waits) const
{
    const Bytes bytes = waiting();
    size_t length = 0;
    while (length < bytes.size() && length < longest_text && is_character(bytes[length])) {
        if (may_begin_command(bytes[length])) {
            const MatchResult match = match_command(bytes.subspan(length), final, dialect_);
            if (match.match == Match::full) {
                return length;
            }
            if (match.match == Match::partial && !final) {
                waits = true;
                return length;
            }
        }
        ++length;
    }
    waits = !final && length == bytes.size() && length < longest_text;
    return length;
}

// Decodes what the waiting bytes begin with. False: more bytes are needed first.
bool Decoder::step(bool final)
{
    const Bytes bytes = waiting();
    if (bytes.size() < needed_ && !final) {
        return false;
    }
    if (is_character(bytes[0])) {
        bool waits = false;
        const size_t length = text_run(final, waits);
        if (waits) {
            return false;
        }
        if (length > 0) {
            deliver_unknown_bytes();
            deliver(Kind::text, "text", length);
            return true;
        }
    }
    const MatchResult match = match_command(bytes, final, dialect_);
    if (match.match == Match::partial) {
        needed_ = match.needed;
        return false;
    }
    if (match.match == Match::too_long) {
        sink_.on_too_long(offset_, match.row->name, match.length);
    }
    if (match.match == Match::none || match.match == Match::too_long) {
        unknown_.push_back(bytes[0]);
        consume(1);
        if (unknown_.size() >= longest_unknown) {
            deliver_unknown_bytes();
        }
        return true;
    }
    deliver_unknown_bytes();
    if (match.row->tail == Tail::raster) {
        begin_image(match);
        return true;
    }
    Command command;
    command.offset = offset_;
    command.length = match.length;
    command.kind = match.row->known ? Kind::command : Kind::unknown;
    command.name = match.row->name;
    command.args = match.args;
    command.bytes = bytes.first(match.length);
    command.data = bytes.subspan(match.data_begin, match.data_end - match.data_begin);
    sink_.on_command(command);
    consume(match.length);
    return true;
}

void Decoder::deliver(Kind kind, std::string_view name, size_t length)
{
    Command command;
    command.offset = offset_;
    command.length = length;
    command.kind = kind;
    command.name = name;
    command.bytes = waiting().first(length);
    command.data = kind == Kind::text ? command.bytes : Bytes{};
    sink_.on_command(command);
    consume(length);
}

void Decoder::deliver_unknown_bytes()
{
    if (unknown_.empty()) {
        return;
    }
    Command command;
    command.offset = offset_ - unknown_.size();
    command.length = unknown_.size();
    command.kind = Kind::unknown;
    command.name = "unknown";
    command.bytes = unknown_;
    sink_.on_command(command);
    unknown_.clear();
}

void Decoder::begin_image(const MatchResult &match)
{
    const Bytes header = waiting().first(match.length);
    image_ = Image{};
    image_.active = true;
    image_.header_bytes.assign(header.begin(), header.end());
    image_.command.offset = offset_;
    image_.command.length = match.length;
    image_.command.name = match.row->name;
    image_.command.args = match.args;
    image_.header.mode = static_cast<uint32_t>(image_.command.arg("m"));
    image_.header.width_bytes = static_cast<uint32_t>(image_.command.arg("xBytes"));
    image_.header.rows = static_cast<uint32_t>(image_.command.arg("yDots"));
    image_.coded = image_.header.mode == coded_mode;
    image_.rows_left = image_.header.width_bytes == 0 ? 0 : image_.header.rows;
    consume(match.length);
    const ImageHeader &image = image_.header;
    sink_.image_begin(image, image_.command.offset);
    if (image.width_bytes == 0) {
        sink_.on_warning(image_.command.offset, "raster image with rows of 0 bytes");
    }
    if (image_.coded) {
        start_rows(image_.decoder, image.width_bytes);
        if (image.width_bytes > ambiguous_width) {
            sink_.on_warning(
                image_.command.offset,
                "compressed rows of more than 256 bytes: the code drops literals at the end of such rows, so "
                "where a row ends is ambiguous");
        }
    }
}

// Reads on in the image. False: more bytes are needed first.
bool Decoder::image_step()
{
    if (image_.rows_left == 0) {
        end_image(Kind::command);
        return true;
    }
    const Bytes bytes = waiting();
    if (image_.coded) {
        coded_row_step(bytes);
    } else {
        raw_row_step(bytes);
    }
    const bool rows_without_bytes = image_.coded && image_.header.width_bytes == 1;
    return image_.rows_left == 0 || rows_without_bytes || head_ < pending_.size();
}

void Decoder::raw_row_step(Bytes bytes)
{
    const size_t width = image_.header.width_bytes;
    const size_t taken = std::min(bytes.size(), width - image_.row.size());
    image_.command.length += taken;
    if (image_.row.empty() && taken == width) {
        row_done(bytes.first(width));
    } else {
        image_.row.insert(image_.row.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken));
        if (image_.row.size() == width) {
            row_done(image_.row);
            image_.row.clear();
        }
    }
    consume(taken);
}

void Decoder::coded_row_step(Bytes bytes)
{
    RowDecoder &decoder = image_.decoder;
    const size_t taken = read_row(decoder, bytes);
    image_.command.length += taken;
    consume(taken);
    if (decoder.overshot && !image_.overshoot_told) {
        image_.overshoot_told = true;
        sink_.on_warning(image_.command.offset,
                         decoder.width < ambiguous_width
                             ? "a run of more than 128 bytes repeats a byte too many; the row is cut at its end"
                             : "long runs repeat bytes too many, so where a row of this width ends is ambiguous");
    }
    if (row_complete(decoder)) {
        row_done(decoder.row);
        start_row(decoder);
    }
}

void Decoder::row_done(Bytes row)
{
    sink_.image_row(row);
    --image_.rows_left;
}

void Decoder::end_image(Kind kind)
{
    if (image_.decoder.unused_count) {
        sink_.on_warning(image_.command.offset, "the compressed rows hold the count byte 128, which means nothing");
    }
    image_.active = false;
    image_.command.kind = kind;
    image_.command.bytes = image_.header_bytes;
    sink_.on_command(image_.command);
}

}  // namespace preview
