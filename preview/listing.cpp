// Text and JSON listings.
#include "preview/listing.h"

#include <algorithm>
#include <cstdio>

namespace preview {
namespace {

constexpr size_t listed_bytes = 12;

std::string hex(Bytes bytes, const char *between)
{
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", static_cast<unsigned>(bytes[i]));
        text += i == 0 ? "" : between;
        text += pair;
    }
    return text;
}

// ASCII in double quotes, everything else escaped.
std::string quoted(Bytes text)
{
    std::string out = "\"";
    for (const uint8_t byte : text) {
        char escape[8];
        if (byte == '"' || byte == '\\') {
            out += '\\';
            out += static_cast<char>(byte);
        } else if (byte >= 0x20 && byte < 0x7F) {
            out += static_cast<char>(byte);
        } else {
            std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(byte));
            out += escape;
        }
    }
    return out + '"';
}

std::string quoted(std::string_view text)
{
    return quoted(Bytes(reinterpret_cast<const uint8_t *>(text.data()), text.size()));
}

std::string member(const char *name, uint64_t value)
{
    return '"' + std::string(name) + "\":" + std::to_string(value);
}

std::string member(const char *name, std::string_view value)
{
    return '"' + std::string(name) + "\":" + quoted(value);
}

const char *kind_name(Kind kind)
{
    switch (kind) {
        case Kind::command:
            return "command";
        case Kind::text:
            return "text";
        case Kind::unknown:
            return "unknown";
        case Kind::truncated:
            return "truncated";
    }
    return "";
}

}  // namespace

std::string list_line(const Command &command)
{
    const size_t shown = std::min<size_t>(command.bytes.size(), listed_bytes);
    std::string bytes = hex(command.bytes.first(shown), " ");
    if (command.length > shown) {
        bytes += " +" + std::to_string(command.length - shown);
    }
    char columns[80];
    std::snprintf(columns, sizeof columns, "%10llu  %-41s  ", static_cast<unsigned long long>(command.offset),
                  bytes.c_str());
    std::string line = columns;
    if (command.kind == Kind::truncated && command.name != "truncated") {
        line += "truncated ";
    }
    line += command.name;
    for (const Arg &arg : command.args) {
        line += ' ' + std::string(arg.name) + '=' + std::to_string(arg.value);
    }
    if (command.kind == Kind::text) {
        line += ' ' + quoted(command.data);
    } else if (!command.data.empty()) {
        line += " data=" + std::to_string(command.data.size());
    }
    return line;
}

std::string json_command(const Command &command)
{
    const Bytes head = command.bytes.first(std::min(command.bytes.size(), record_head_bytes));
    std::string out = '{' + member("offset", command.offset) + ',' + member("length", command.length) + ',' +
                      member("kind", kind_name(command.kind)) + ',' + member("name", command.name) + ',' +
                      member("bytes", hex(head, "")) + ",\"args\":{";
    const char *separator = "";
    for (const Arg &arg : command.args) {
        out += separator + ('"' + std::string(arg.name)) + "\":" + std::to_string(arg.value);
        separator = ",";
    }
    out += '}';
    if (command.kind == Kind::text) {
        out += ",\"text\":" + quoted(command.data);
    } else if (!command.data.empty()) {
        out += ",\"data\":\"" + hex(command.data, "") + '"';
    }
    return out + '}';
}

std::string json_summary(const Reader &reader)
{
    std::string out = member("length", reader.offset()) + ',' + member("width", reader.options().width) + ',' +
                      member("rows", reader.paper().rows());
    const std::optional<InkExtent> ink = reader.ink();
    if (ink) {
        out += ",\"ink\":{" + member("first_row", ink->first_row) + ',' + member("last_row", ink->last_row) + ',' +
               member("first_dot", ink->first_dot) + ',' + member("last_dot", ink->last_dot) + '}';
    } else {
        out += ",\"ink\":null";
    }
    const char *separator = "";
    out += ",\"cuts\":[";
    for (const Cut &cut : reader.cuts()) {
        out += separator + ('{' + member("offset", cut.offset)) + ',' + member("row", cut.row) +
               ",\"partial\":" + (cut.partial ? "true" : "false") + '}';
        separator = ",";
    }
    separator = "";
    out += "],\"events\":[";
    for (const Event &event : reader.events()) {
        out += separator + ('{' + member("offset", event.offset)) + ',' + member("row", event.row) + ',' +
               member("kind", event.kind) + ',' + member("text", event.text) + '}';
        separator = ",";
    }
    separator = "";
    out += "],\"warnings\":[";
    for (const Warning &warning : reader.warnings()) {
        out += separator + ('{' + member("offset", warning.offset)) + ',' + member("text", warning.text) + '}';
        separator = ",";
    }
    out += "],\"problem\":";
    if (reader.problem()) {
        return out + '{' + member("offset", reader.problem()->offset) + ',' + member("text", reader.problem()->text) +
               '}';
    }
    return out + "null";
}

}  // namespace preview
