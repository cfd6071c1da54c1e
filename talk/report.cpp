#include "talk/report.h"

namespace talk {
namespace {

const char *paper_of(const health &printer)
{
    if (out_of_paper(printer)) {
        return "out";
    }
    return printer.paper_near_end ? "low" : "ok";
}

const char *error_of(const health &printer)
{
    switch (printer.error) {
        case fault::cutter:
            return "cutter";
        case fault::recoverable:
            return "recoverable";
        case fault::unrecoverable:
            return "unrecoverable";
        default:
            return nullptr;
    }
}

const char *drawer_of(const Report &report)
{
    if (!report.printer || report.printer->drawer == level::unknown) {
        return "unknown";
    }
    return report.printer->drawer == report.open_level ? "open" : "closed";
}

std::string quoted(const char *text)
{
    return text == nullptr ? "null" : "\"" + std::string(text) + "\"";
}

// Addresses come from a command line or from CUPS: any bytes.
std::string escaped(const std::string &text)
{
    static constexpr char hex[] = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (byte < 0x20 || byte >= 0x7F) {
            result += "\\u00";
            result += hex[byte >> 4];
            result += hex[byte & 15];
        } else {
            result += c;
        }
    }
    return result;
}

void add_line(std::string &text, word what, language in)
{
    text += text_of(what, in);
    text += '\n';
}

}  // namespace

std::string as_json(const Report &report)
{
    std::string json = "{\"device\":\"" + escaped(report.device) + "\",\"ready\":";
    if (!report.printer) {
        return json + "false,\"paper\":null,\"cover\":null,\"drawer\":\"unknown\",\"error\":\"no answer\"}\n";
    }
    const health &printer = *report.printer;
    json += can_print(printer) ? "true" : "false";
    json += ",\"paper\":" + quoted(paper_of(printer));
    json += ",\"cover\":" + quoted(printer.cover_open ? "open" : "closed");
    json += ",\"drawer\":" + quoted(drawer_of(report));
    json += ",\"error\":" + quoted(error_of(printer));
    return json + "}\n";
}

std::string as_text(const Report &report, language in)
{
    std::string text;
    if (!report.printer) {
        add_line(text, word::no_answer, in);
        return text;
    }
    const health &printer = *report.printer;
    if (can_print(printer)) {
        add_line(text, word::ready, in);
    }
    if (printer.cover_open) {
        add_line(text, word::cover_open, in);
    }
    if (out_of_paper(printer)) {
        add_line(text, word::out_of_paper, in);
    }
    if (paper_is_low(printer)) {
        add_line(text, word::paper_low, in);
    }
    if (printer.error != fault::none) {
        add_line(text, error_word(printer.error), in);
    }
    if (printer.drawer != level::unknown) {
        add_line(text, printer.drawer == report.open_level ? word::drawer_open : word::drawer_closed, in);
    }
    return text;
}

int status_of(const Report &report)
{
    if (!report.printer) {
        return 2;
    }
    return can_print(*report.printer) ? 0 : 1;
}

}  // namespace talk
