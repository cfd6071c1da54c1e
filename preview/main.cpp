// klov-preview: reads a printer's command stream and shows what it would do to the paper.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "preview/answer.h"
#include "preview/listener.h"
#include "preview/listing.h"
#include "preview/painter.h"

namespace {

using preview::Bytes;

constexpr double millimetres_an_inch = 25.4;
constexpr double default_paper_margin = 4.0;
constexpr size_t warnings_shown = 20;

// Exit statuses.
constexpr int all_read = 0;
constexpr int not_all_read = 1;  // broken or too long input, or a file or port that fails
constexpr int bad_usage = 2;

struct Settings {
    std::string input = "-";
    std::string listen;
    std::string output;
    bool list = false;
    bool json = false;
    bool quiet = false;
    preview::Options reader;
    preview::PictureOptions picture;
    preview::Health health;
    double paper_mm = 0;
    double margin_mm = default_paper_margin;
    uint32_t jobs = 0;
    uint32_t idle_seconds = 0;
};

// A line on the terminal that says how far a long job has come; nothing elsewhere.
class ProgressLine {
public:
    explicit ProgressLine(bool quiet) : shown_(!quiet && isatty(STDERR_FILENO) != 0) {}
    ~ProgressLine()
    {
        clear();
    }
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    void say(const char *what, unsigned long long done, const char *unit)
    {
        const auto now = std::chrono::steady_clock::now();
        if (!shown_ || now - last_ < std::chrono::milliseconds(250)) {
            return;
        }
        last_ = now;
        dirty_ = true;
        std::fprintf(stderr, "\r%s %llu %s ", what, done, unit);
    }
    void clear()
    {
        if (dirty_) {
            std::fprintf(stderr, "\r%40s\r", "");
            dirty_ = false;
        }
    }

private:
    bool shown_;
    bool dirty_ = false;
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

uint32_t to_dots(double millimetres, uint32_t dpi)
{
    return static_cast<uint32_t>(std::lround(millimetres / millimetres_an_inch * dpi));
}

void start_listing(const Settings &settings, preview::Reader &reader, std::vector<uint8_t> *reply)
{
    bool first = true;
    reader.watch([&settings, reply, first](const preview::Command &command) mutable {
        if (settings.json) {
            std::printf("%s\n%s", first ? "" : ",", preview::json_command(command).c_str());
        } else if (settings.list) {
            std::printf("%s\n", preview::list_line(command).c_str());
        }
        first = false;
        if (reply != nullptr) {
            const std::vector<uint8_t> bytes = preview::answer(command, settings.health);
            reply->insert(reply->end(), bytes.begin(), bytes.end());
        }
    });
    if (settings.json) {
        std::printf("{\"commands\":[");
    }
}

void tell_warnings(const preview::Reader &reader)
{
    const std::vector<preview::Warning> &warnings = reader.warnings();
    for (size_t i = 0; i < std::min(warnings.size(), warnings_shown); ++i) {
        std::fprintf(stderr, "klov-preview: offset %llu: %s\n", static_cast<unsigned long long>(warnings[i].offset),
                     warnings[i].text.c_str());
    }
    if (warnings.size() > warnings_shown) {
        std::fprintf(stderr, "klov-preview: %zu more warnings\n", warnings.size() - warnings_shown);
    }
    if (reader.problem()) {
        std::fprintf(stderr, "klov-preview: offset %llu: %s\n",
                     static_cast<unsigned long long>(reader.problem()->offset), reader.problem()->text.c_str());
    }
}

// Ends the listing and writes the picture; the job's exit status.
int finish_job(const Settings &settings, preview::Reader &reader, const std::string &path, ProgressLine &progress)
{
    const bool complete = reader.finish();
    if (settings.json) {
        std::printf("\n],%s}\n", preview::json_summary(reader).c_str());
    }
    std::fflush(stdout);
    progress.clear();
    if (!settings.quiet) {
        tell_warnings(reader);
    }
    int status = complete ? all_read : not_all_read;
    if (!path.empty()) {
        preview::PictureOptions picture = settings.picture;
        picture.path = path;
        std::string error;
        const auto painting = [&progress](uint64_t done, uint64_t) { progress.say("painted", done, "rows"); };
        if (!preview::paint(reader, picture, painting, error)) {
            progress.clear();
            std::fprintf(stderr, "klov-preview: %s\n", error.c_str());
            status = not_all_read;
        }
    }
    if (std::ferror(stdout) != 0) {
        std::fprintf(stderr, "klov-preview: standard output can not be written\n");
        status = not_all_read;
    }
    return status;
}

int read_file(const Settings &settings)
{
    std::FILE *file = settings.input == "-" ? stdin : std::fopen(settings.input.c_str(), "rbe");
    if (file == nullptr) {
        std::fprintf(stderr, "klov-preview: %s: %s\n", settings.input.c_str(), std::strerror(errno));
        return not_all_read;
    }
    ProgressLine progress(settings.quiet);
    preview::Reader reader(settings.reader);
    start_listing(settings, reader, nullptr);
    std::vector<uint8_t> buffer(65536);
    size_t got = 0;
    bool more = true;
    while (more && (got = std::fread(buffer.data(), 1, buffer.size(), file)) > 0) {
        more = reader.feed(Bytes(buffer).first(got));
        progress.say("read", reader.offset(), "bytes");
    }
    const bool unreadable = std::ferror(file) != 0;
    if (unreadable) {
        std::fprintf(stderr, "klov-preview: %s: %s\n", settings.input.c_str(), std::strerror(errno));
    }
    const int status = finish_job(settings, reader, settings.output, progress);
    if (file != stdin) {
        std::fclose(file);
    }
    return unreadable ? not_all_read : status;
}

int listen_for_jobs(const Settings &settings)
{
    preview::Listener listener;
    std::string error;
    if (!listener.open(settings.listen, error)) {
        std::fprintf(stderr, "klov-preview: %s\n", error.c_str());
        return not_all_read;
    }
    std::fprintf(stderr, "listening on %s\n", listener.address().c_str());
    std::fflush(stderr);
    int worst = all_read;
    for (uint32_t job = 1; settings.jobs == 0 || job <= settings.jobs; ++job) {
        ProgressLine progress(settings.quiet);
        preview::Reader reader(settings.reader);
        std::vector<uint8_t> answers;
        bool started = false;
        const auto on_bytes = [&](Bytes bytes, std::vector<uint8_t> &reply) {
            if (!started) {
                start_listing(settings, reader, &answers);
                started = true;
            }
            answers.clear();
            const bool more = reader.feed(bytes);
            reply = answers;
            progress.say("received", reader.offset(), "bytes");
            return more;
        };
        if (!listener.receive_job(on_bytes, settings.idle_seconds, error)) {
            std::fprintf(stderr, "klov-preview: %s\n", error.c_str());
            return not_all_read;
        }
        if (!started) {
            start_listing(settings, reader, &answers);
        }
        const bool numbered = settings.jobs != 1 && !settings.output.empty() && settings.output != "-";
        const std::string path = numbered ? preview::numbered_path(settings.output, job) : settings.output;
        worst = std::max(worst, finish_job(settings, reader, path, progress));
        std::fprintf(stderr, "job %u: %llu bytes, %llu rows, %zu cuts\n", job,
                     static_cast<unsigned long long>(reader.offset()),
                     static_cast<unsigned long long>(reader.paper().rows()), reader.cuts().size());
    }
    return worst;
}

void add_options(CLI::App &app, Settings &settings)
{
    app.add_option("FILE", settings.input, "Command stream to read; - or nothing is standard input");
    app.add_option("-o,--output", settings.output, "Write the paper to this PNG file (- is standard output)");
    app.add_flag("--list", settings.list, "List the commands, one a line");
    app.add_flag("--json", settings.json, "List the commands, events and cuts as JSON");
    app.add_flag("-q,--quiet", settings.quiet, "No warnings and no progress line");
    app.add_flag("--bare", settings.picture.bare,
                 "Picture for programs: one pixel a dot, printable width, every row, no frame");
    app.add_flag("--split", settings.picture.split, "One picture a receipt: OUT-1.png, OUT-2.png, ...");
    app.add_option("--width", settings.reader.width, "Printable width in dots")
        ->check(CLI::Range(1, 16384))
        ->capture_default_str();
    app.add_option("--dpi", settings.reader.dpi, "Dots per inch")->check(CLI::Range(50, 2400))->capture_default_str();
    app.add_option("--paper", settings.paper_mm, "Paper width in millimetres")->check(CLI::Range(10.0, 500.0));
    app.add_option("--paper-margin", settings.margin_mm, "Margin beside the printable width, in millimetres")
        ->check(CLI::Range(0.0, 100.0))
        ->capture_default_str();
    app.add_option("--margin-unit", settings.reader.margin_unit, "Dots that one unit of the left margin moves")
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
    app.add_flag("--padded-page-area", settings.reader.padded_page_area, "The page area command carries an extra byte");
    app.add_option("--max-rows", settings.reader.max_rows, "Longest paper in rows")
        ->check(CLI::Range(1, 1'000'000'000))
        ->capture_default_str();
    app.add_option("--listen", settings.listen, "Be a network printer on HOST:PORT; port 0 lets the system choose");
    app.add_option("--jobs", settings.jobs, "Stop listening after so many jobs");
    app.add_option("--idle", settings.idle_seconds, "End a job after so many seconds without a byte")
        ->check(CLI::Range(0, 86400));
    app.add_flag("--paper-end", settings.health.paper_end, "Answer status requests as a printer without paper");
    app.add_flag("--near-end", settings.health.paper_near_end, "Answer as a printer whose paper is near its end");
    app.add_flag("--cover-open", settings.health.cover_open, "Answer as a printer whose cover is open");
}

// Paper, margin and printable width hang together: each is derived from the others when it is not given.
const char *settle(CLI::App &app, Settings &settings)
{
    const uint32_t dpi = settings.reader.dpi;
    const uint32_t margin = to_dots(settings.margin_mm, dpi);
    settings.picture.paper_margin = margin;
    if (settings.paper_mm > 0) {
        const uint32_t paper = to_dots(settings.paper_mm, dpi);
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
    // Something should be seen.
    settings.list = settings.list || (!settings.json && settings.output.empty());
    settings.reader.keep_commands = false;
    settings.reader.symbols = preview::encode_symbol;
    return nullptr;
}

}  // namespace

int main(int argc, char **argv)
try {
    Settings settings;
    CLI::App app("Shows what a receipt printer's command stream does to the paper.", "klov-preview");
    add_options(app, settings);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &problem) {
        return app.exit(problem) == 0 ? all_read : bad_usage;
    }
    const char *contradiction = settle(app, settings);
    if (contradiction != nullptr) {
        std::fprintf(stderr, "klov-preview: %s\n", contradiction);
        return bad_usage;
    }
    return settings.listen.empty() ? read_file(settings) : listen_for_jobs(settings);
} catch (const std::exception &problem) {
    std::fprintf(stderr, "klov-preview: %s\n", problem.what());
    return not_all_read;
}
