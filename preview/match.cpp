// Matches stream bytes against the command table. The table's patterns are compiled once into tokens.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "preview/table.h"

namespace preview {
namespace {

struct Range {
    uint8_t first;
    uint8_t last;
};

struct Token {
    bool constant = false;
    uint8_t value = 0;  // of a constant
    size_t size = 1;    // bytes
    bool big = false;   // high byte first
    bool is_signed = false;
    bool data = false;  // more than four bytes: caller data
    std::vector<Range> allowed;
    std::string_view name;
};

struct Pattern {
    const TableRow *row = nullptr;
    std::vector<Token> tokens;
    size_t size = 0;
};

// The longest data that is looked through for its closing 00. No bar code is near it; it bounds what a stray command
// can eat, and the work: each of many such commands in a row looks through the same bytes again.
constexpr size_t longest_nul_data = 4096;
constexpr size_t most_tab_columns = 32;
constexpr size_t endless = SIZE_MAX / 2;  // no memory holds a command of that length: it is never complete

Token parse_token(std::string_view word)
{
    Token token;
    const bool constant = word.size() == 2 && std::strchr("0123456789ABCDEF", word[0]) != nullptr;
    if (constant) {
        token.constant = true;
        token.value = static_cast<uint8_t>(std::strtoul(std::string(word).c_str(), nullptr, 16));
        return token;
    }
    const size_t name_end = std::min(word.find_first_of(".="), word.size());
    token.name = word.substr(0, name_end);
    std::string rest(word.substr(name_end));
    if (!rest.empty() && rest[0] == '.') {
        token.big = rest[1] == 'b';
        token.is_signed = rest[1] == 's';
        token.size = std::strtoul(rest.c_str() + (token.big || token.is_signed ? 2 : 1), nullptr, 10);
        token.data = token.size > 4;
    }
    const char *cursor = rest.c_str();
    while (*cursor == '=' || *cursor == ',') {
        char *end = nullptr;
        const unsigned long first = std::strtoul(cursor + 1, &end, 10);
        const unsigned long last = *end == '-' ? std::strtoul(end + 1, &end, 10) : first;
        token.allowed.push_back({static_cast<uint8_t>(first), static_cast<uint8_t>(last)});
        cursor = end;
    }
    return token;
}

Pattern compile(const TableRow &row)
{
    Pattern pattern{&row, {}, 0};
    std::string_view text = row.pattern;
    while (!text.empty()) {
        const size_t end = std::min(text.find(' '), text.size());
        pattern.tokens.push_back(parse_token(text.substr(0, end)));
        pattern.size += pattern.tokens.back().size;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pattern;
}

using PatternIndex = std::array<std::vector<Pattern>, 256>;

const PatternIndex &patterns()
{
    static const PatternIndex index = [] {
        PatternIndex built;
        for (const TableRow &row : command_table()) {
            Pattern pattern = compile(row);
            built[pattern.tokens[0].value].push_back(std::move(pattern));
        }
        return built;
    }();
    return index;
}

int64_t read_number(Bytes bytes, const Token &token)
{
    uint32_t value = 0;
    for (size_t i = 0; i < token.size; ++i) {
        const size_t shift = 8 * (token.big ? token.size - 1 - i : i);
        value |= static_cast<uint32_t>(bytes[i]) << shift;
    }
    return token.is_signed ? static_cast<int16_t>(value) : static_cast<int64_t>(value);
}

bool is_allowed(const Token &token, uint8_t value)
{
    return token.allowed.empty() || std::any_of(token.allowed.begin(), token.allowed.end(), [value](Range range) {
               return range.first <= value && value <= range.last;
           });
}

// What follows a pattern: a length, "more bytes needed", or "these bytes are not this command".
struct TailLength {
    Match match = Match::full;
    size_t length = 0;
    size_t needed = 0;  // partial only; counted from the tail's start
};

// Announced lengths may be more than a small machine can address.
size_t addressable(uint64_t length)
{
    return length < endless ? static_cast<size_t>(length) : endless;
}

TailLength full(int64_t length)
{
    return length < 0 ? TailLength{Match::none, 0, 0}
                      : TailLength{Match::full, addressable(static_cast<uint64_t>(length)), 0};
}

TailLength find_nul(Bytes tail, size_t longest)
{
    const size_t window = std::min(tail.size(), longest + 1);
    const void *found = window == 0 ? nullptr : std::memchr(tail.data(), 0, window);
    if (found != nullptr) {
        return full(static_cast<const uint8_t *>(found) - tail.data() + 1);
    }
    return window > longest ? TailLength{Match::none, 0, 0} : TailLength{Match::partial, 0, tail.size() + 1};
}

TailLength nv_images_length(Bytes tail, int64_t count)
{
    uint64_t length = 0;
    for (int64_t i = 0; i < count; ++i) {
        if (tail.size() < length + 4) {
            return {Match::partial, 0, addressable(length + 4)};
        }
        const Bytes size = tail.subspan(static_cast<size_t>(length), 4);
        const uint64_t x = size[0] + 256U * size[1];
        const uint64_t y = size[2] + 256U * size[3];
        length += 4 + x * y * 8;
    }
    return full(static_cast<int64_t>(length));
}

int64_t arg_of(const std::vector<Arg> &args, std::string_view name)
{
    for (const Arg &arg : args) {
        if (arg.name == name) {
            return arg.value;
        }
    }
    return 0;
}

// Bytes of the pattern that stand behind its count p.
size_t counted_by_p(const Pattern &pattern)
{
    size_t position = 0;
    for (const Token &token : pattern.tokens) {
        position += token.size;
        if (token.name == "p") {
            break;
        }
    }
    return pattern.size - position;
}

TailLength image_tail(const Pattern &pattern, const std::vector<Arg> &args, int64_t one_more)
{
    const int64_t x = arg_of(args, "x");
    const int64_t y = arg_of(args, "y");
    const Tail tail = pattern.row->tail;
    const bool by_rows = tail == Tail::raster_rows || tail == Tail::store_rows;
    const int64_t length = by_rows ? y * ((x + 7) / 8) : x * ((y + 7) / 8);
    const int64_t announced = arg_of(args, "p");
    return announced == length + static_cast<int64_t>(counted_by_p(pattern)) + one_more ? full(length) : full(-1);
}

TailLength tail_length(const Pattern &pattern, const std::vector<Arg> &args, Bytes tail)
{
    const int64_t counted = static_cast<int64_t>(counted_by_p(pattern));
    const int64_t x = arg_of(args, "x");
    switch (pattern.row->tail) {
        case Tail::none:
        case Tail::raster:
            return full(0);
        case Tail::rest16:
        case Tail::rest32:
        case Tail::rest16_be:
            return full(arg_of(args, "p") - counted);
        case Tail::enable_rt:
            return full(arg_of(args, "p") - 1);
        case Tail::counted:
            return full(args.back().value);
        case Tail::smart_file:
            return full(arg_of(args, "k") + 1);
        case Tail::until_nul:
            return find_nul(tail, longest_nul_data);
        case Tail::tab_list:
            return find_nul(tail, most_tab_columns);
        case Tail::column_image: {
            const int64_t m = arg_of(args, "m");
            return full(arg_of(args, "n") * (m < 33 ? 1 : 3) * (m % 2 == 1 ? 2 : 1));
        }
        case Tail::one_shape:
            return full(3 * x);
        case Tail::blocks_8x8:
            return full(x * arg_of(args, "y") * 8);
        case Tail::nv_images:
            return nv_images_length(tail, arg_of(args, "n"));
        case Tail::raster_rows:
        case Tail::dot_columns:
        case Tail::store_rows:
            return image_tail(pattern, args, 0);
        case Tail::store_columns:
            return image_tail(pattern, args, 1);
    }
    return full(-1);
}

// How far the data at a tail's end reach without the closing byte that is no data.
size_t closing_bytes(Tail tail)
{
    return tail == Tail::until_nul || tail == Tail::tab_list || tail == Tail::smart_file ? 1 : 0;
}

MatchResult partial(const Pattern &pattern, size_t needed, bool certain)
{
    MatchResult result;
    result.match = Match::partial;
    result.row = certain ? pattern.row : nullptr;
    result.needed = needed;
    return result;
}

MatchResult match_pattern(const Pattern &pattern, Bytes bytes, size_t longest)
{
    MatchResult result;
    size_t position = 0;
    bool parameters_begun = false;
    for (const Token &token : pattern.tokens) {
        parameters_begun |= !token.constant;
        if (position + token.size > bytes.size()) {
            return partial(pattern, position + token.size, parameters_begun);
        }
        if (token.constant ? bytes[position] != token.value : !is_allowed(token, bytes[position])) {
            return {};
        }
        if (token.data && result.data_end == 0) {
            result.data_begin = position;
            result.data_end = position + token.size;
        } else if (!token.constant && !token.data && token.name != "again") {
            result.args.push_back({token.name, read_number(bytes.subspan(position), token)});
        }
        position += token.size;
    }
    const TailLength tail = tail_length(pattern, result.args, bytes.subspan(position));
    if (tail.match == Match::none) {
        return {};
    }
    if (position + std::max(tail.length, tail.needed) > longest) {
        result.match = Match::too_long;
        result.row = pattern.row;
        result.length = position + std::max(tail.length, tail.needed);
        return result;
    }
    if (tail.match == Match::partial || position + tail.length > bytes.size()) {
        return partial(pattern, position + (tail.match == Match::partial ? tail.needed : tail.length), true);
    }
    result.match = Match::full;
    result.row = pattern.row;
    result.length = position + tail.length;
    if (tail.length > 0) {
        result.data_begin = position;
        result.data_end = result.length - closing_bytes(pattern.row->tail);
    }
    return result;
}

}  // namespace

MatchResult match_command(Bytes bytes, bool final, const Dialect &dialect)
{
    if (bytes.empty()) {
        return {};
    }
    std::optional<MatchResult> waiting;
    std::optional<MatchResult> too_long;
    bool padded_row_skipped = dialect.padded_page_area;
    for (const Pattern &pattern : patterns()[bytes[0]]) {
        if (!padded_row_skipped && std::string_view(pattern.row->pattern).starts_with("1B 57 00")) {
            padded_row_skipped = true;
            continue;
        }
        MatchResult result = match_pattern(pattern, bytes, dialect.longest_command);
        if (result.match == Match::too_long && !too_long) {
            too_long = std::move(result);
            continue;
        }
        if (result.match == Match::full) {
            return waiting && !final ? *waiting : result;
        }
        if (result.match == Match::partial) {
            if (!waiting) {
                waiting = std::move(result);
            } else if (waiting->row == nullptr || result.needed < waiting->needed) {
                const size_t needed = std::min(waiting->needed, result.needed);
                const TableRow *row = waiting->row != nullptr ? waiting->row : result.row;
                waiting->needed = needed;
                waiting->row = row;
            }
        }
    }
    if (waiting) {
        return *waiting;
    }
    return too_long ? *too_long : MatchResult{};
}

}  // namespace preview
