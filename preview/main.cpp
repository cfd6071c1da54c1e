// klov-preview: reads a printer's command stream and shows what it would do to the paper.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "preview/settings.h"

namespace {

constexpr double millimetres_an_inch = 25.4;
constexpr double default_paper_margin = 4.0;

struct CommandLine {
    preview::ToolSettings settings;
    double paper_mm = 0;
    double margin_mm = default_paper_margin;
    std::string state;
    std::string drop_after;
};

// Range checks let "nan" through: no comparison with it holds.
std::string finite_number(const std::string &text)
{
    return std::isfinite(std::strtod(text.c_str(), nullptr)) ? std::string() : text + " is no number to work with";
}

const CLI::Validator finite(finite_number, "");

void add_options(CLI::App &app, CommandLine &line)
{
    preview::ToolSettings &settings = line.settings;
    app.set_version_flag("--version", "klov-preview " KLOV_VERSION);
    app.add_option("FILE", settings.input, "Command stream to read; - or nothing is standard input");
    CLI::Option *output = app.add_option("-o,--output", settings.output, "Write the paper to this PNG file (- is standard output)");
    app.add_flag("--list", settings.list, "List the commands, one a line");
    app.add_flag("--json", settings.json, "List the commands, events and cuts as JSON");
    app.add_flag("-q,--quiet", settings.quiet, "No warnings and no progress line");
    app.add_flag("--bare", settings.picture.bare,
                 "Picture for programs: one pixel a dot, printable width, every row, no frame")
        ->needs(output);
    app.add_flag("--split", settings.picture.split, "One picture a receipt: OUT-1.png, OUT-2.png, ...")
        ->needs(output);
    app.add_option("--save", settings.save, "Keep the bytes in this file");
    app.add_option("--width", settings.reader.width, "Printable width in dots")
        ->check(CLI::Range(1, 16384))
        ->capture_default_str();
    app.add_option("--dpi", settings.reader.dpi, "Dots per inch")->check(CLI::Range(50, 2400))->capture_default_str();
    app.add_option("--paper", line.paper_mm, "Paper width in millimetres")
        ->check(CLI::Range(10.0, 500.0))
        ->check(finite);
    app.add_option("--paper-margin", line.margin_mm, "Margin beside the printable width, in millimetres")
        ->check(CLI::Range(0.0, 100.0))
        ->check(finite)
        ->capture_default_str();
    app.add_option("--margin-unit", settings.reader.margin_unit, "Dots that one unit of the left margin moves")
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
    app.add_flag("--padded-page-area", settings.reader.padded_page_area, "The page area command carries an extra byte");
    app.add_option("--max-rows", settings.reader.max_rows, "Longest paper in rows")
        ->check(CLI::Range(1, 1'000'000'000))
        ->capture_default_str();
}

void add_printer_options(CLI::App &app, CommandLine &line)
{
    preview::ToolSettings &settings = line.settings;
    CLI::Option *listen =
        app.add_option("--listen", settings.listen, "Be a network printer on HOST:PORT; port 0 lets the system choose");
    app.add_option("--jobs", settings.jobs, "Stop listening after so many jobs")->needs(listen);
    app.add_option("--idle", settings.service.idle_seconds,
                   "End a connection after so many seconds in which the printer could print and nothing came; 0: never")
        ->check(CLI::Range(0.0, 86400.0))
        ->check(finite)
        ->capture_default_str()
        ->needs(listen);
    app.add_option("--health", settings.service.health_path, "File of words that say how the printer is, read again and again")
        ->needs(listen);
    app.add_option("--state", line.state, "The same words on the command line, for all the time")->needs(listen);
    app.add_option("--speed", settings.speed_mm, "Millimetres of paper a second; without it printing takes no time")
        ->check(CLI::Range(0.1, 10000.0))
        ->check(finite)
        ->needs(listen);
    app.add_option("--buffer", settings.buffer, "Bytes that the printer takes ahead of its paper")
        ->check(CLI::Range(64, 1 << 24))
        ->capture_default_str()
        ->needs(listen);
    app.add_option("--drop-after", line.drop_after, "Break the connection after so many bytes, or with 'mm' so much paper; once")
        ->needs(listen);
    app.add_option("--log", settings.log, "Write what happens, with its time, to this file")->needs(listen);
}

// Paper, margin and printable width hang together: each is derived from the others when it is not given.
// "4096" is bytes, "120mm" is paper.
const char *settle_drop(CommandLine &line)
{
    if (line.drop_after.empty()) {
        return nullptr;
    }
    const bool paper = line.drop_after.ends_with("mm");
    const std::string number = paper ? line.drop_after.substr(0, line.drop_after.size() - 2) : line.drop_after;
    const bool digits = !number.empty() && number.size() <= 9 && number.find_first_not_of("0123456789") == number.npos;
    if (!digits || std::stoul(number) == 0) {
        return "--drop-after takes a number of bytes, or millimetres as 120mm";
    }
    preview::ServiceOptions &service = line.settings.service;
    if (paper) {
        service.drop_after_rows = preview::to_dots(std::stod(number), line.settings.reader.dpi);
    } else {
        service.drop_after_bytes = std::stoul(number);
    }
    return nullptr;
}

const char *settle_printer(CommandLine &line)
{
    const preview::HealthWords words = preview::read_health_words(line.state);
    if (!words.unknown.empty() || words.drop) {
        return "--state has a word that is no state";
    }
    line.settings.service.state = words.health;
    return settle_drop(line);
}

const char *settle(CLI::App &app, CommandLine &line)
{
    preview::ToolSettings &settings = line.settings;
    const uint32_t dpi = settings.reader.dpi;
    const uint32_t margin = preview::to_dots(line.margin_mm, dpi);
    settings.picture.paper_margin = margin;
    if (line.paper_mm > 0) {
        const uint32_t paper = preview::to_dots(line.paper_mm, dpi);
        if (app.count("--width") == 0) {
            settings.reader.width = paper > 2 * margin + 8 ? (paper - 2 * margin) / 8 * 8 : 8;
        } else if (paper >= settings.reader.width) {
            settings.picture.paper_margin = (paper - settings.reader.width) / 2;
        } else {
            return "--paper is narrower than --width";
        }
    }
    if (!settings.listen.empty() && app.count("FILE") > 0) {
        return "--listen and FILE exclude each other";
    }
    if (settings.picture.split && settings.output == "-") {
        return "--split needs a file name";
    }
    if ((settings.list || settings.json) && settings.output == "-") {
        return "a listing and a picture can not share standard output";
    }
    if (settings.list && settings.json) {
        return "--list and --json exclude each other";
    }
    const char *printer = settle_printer(line);
    if (printer != nullptr) {
        return printer;
    }
    // Something should be seen.
    settings.list = settings.list || (!settings.json && settings.output.empty());
    settings.reader.keep_commands = false;
    settings.reader.symbols = preview::encode_symbol;
    return nullptr;
}

}  // namespace

uint32_t preview::to_dots(double millimetres, uint32_t dpi)
{
    return static_cast<uint32_t>(std::lround(millimetres / millimetres_an_inch * dpi));
}

int main(int argc, char **argv)
try {
    CommandLine line;
    CLI::App app("Shows what a receipt printer's command stream does to the paper.", "klov-preview");
    add_options(app, line);
    add_printer_options(app, line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &problem) {
        return app.exit(problem) == 0 ? preview::all_read : preview::bad_usage;
    }
    const char *contradiction = settle(app, line);
    if (contradiction != nullptr) {
        std::fprintf(stderr, "klov-preview: %s\n", contradiction);
        return preview::bad_usage;
    }
    return line.settings.listen.empty() ? preview::read_file(line.settings) : preview::listen_for_jobs(line.settings);
} catch (const std::exception &problem) {
    std::fprintf(stderr, "klov-preview: %s\n", problem.what());
    return preview::not_all_read;
}
