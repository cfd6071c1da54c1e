// Listing, warnings, picture and progress.
#include "preview/report.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "preview/document.h"
#include "preview/listing.h"

namespace preview {
namespace {

constexpr size_t warnings_shown = 20;

void tell_warnings(const Reader &reader)
{
    const std::vector<Warning> &warnings = reader.warnings();
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

}  // namespace

ProgressLine::ProgressLine(bool quiet) : shown_(!quiet && isatty(STDERR_FILENO) != 0) {}

ProgressLine::~ProgressLine()
{
    clear();
}

void ProgressLine::say(const char *what, unsigned long long done, const char *unit)
{
    const auto now = std::chrono::steady_clock::now();
    if (!shown_ || now - last_ < std::chrono::milliseconds(250)) {
        return;
    }
    last_ = now;
    dirty_ = true;
    std::fprintf(stderr, "\r%s %llu %s ", what, done, unit);
}

void ProgressLine::clear()
{
    if (dirty_) {
        std::fprintf(stderr, "\r%40s\r", "");
        dirty_ = false;
    }
}

bool Copy::open(const std::string &path)
{
    path_ = path;
    if (path.empty()) {
        return true;
    }
    file_.reset(std::fopen(path.c_str(), "wbe"));
    if (!file_) {
        std::fprintf(stderr, "klov-preview: %s: %s\n", path.c_str(), std::strerror(errno));
    }
    return file_ != nullptr;
}

void Copy::write(Bytes bytes)
{
    if (file_) {
        lost_ = std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size() || lost_;
    }
}

bool Copy::close()
{
    if (!file_) {
        return true;
    }
    lost_ = std::fflush(file_.get()) != 0 || lost_;
    file_.reset();
    if (lost_) {
        std::fprintf(stderr, "klov-preview: %s: not all of the job could be written\n", path_.c_str());
    }
    return !lost_;
}

void start_listing(const ToolSettings &settings, Reader &reader)
{
    bool first = true;
    reader.watch([&settings, first](const Command &command) mutable {
        if (settings.json) {
            std::printf("%s\n%s", first ? "" : ",", json_command(command).c_str());
        } else if (settings.list) {
            std::printf("%s\n", list_line(command).c_str());
        }
        first = false;
    });
    if (settings.json) {
        std::printf("{\"commands\":[");
    }
}

int finish_job(const ToolSettings &settings, Reader &reader, const std::string &path, ProgressLine &progress)
{
    const bool complete = reader.finish();
    if (settings.json) {
        std::printf("\n],%s}\n", json_summary(reader).c_str());
    }
    std::fflush(stdout);
    progress.clear();
    if (!settings.quiet) {
        tell_warnings(reader);
    }
    int status = complete ? all_read : not_all_read;
    if (!path.empty()) {
        PictureOptions picture = settings.picture;
        picture.path = path;
        std::string error;
        const auto painting = [&progress](uint64_t done, uint64_t) { progress.say("painted", done, "rows"); };
        if (!paint(reader, picture, painting, error)) {
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

int read_file(const ToolSettings &settings)
{
    std::FILE *file = settings.input == "-" ? stdin : std::fopen(settings.input.c_str(), "rbe");
    if (file == nullptr) {
        std::fprintf(stderr, "klov-preview: %s: %s\n", settings.input.c_str(), std::strerror(errno));
        return not_all_read;
    }
    Copy copy;
    if (!copy.open(settings.save)) {
        return not_all_read;
    }
    ProgressLine progress(settings.quiet);
    Reader reader(settings.reader);
    std::vector<uint8_t> buffer(65536);
    size_t got = std::fread(buffer.data(), 1, buffer.size(), file);
    const std::string_view kind = document_kind(Bytes(buffer).first(got));
    if (!kind.empty()) {
        std::fprintf(stderr, "klov-preview: %s: this is %.*s, not what a printer is sent; print it to a file first\n",
                     settings.input.c_str(), static_cast<int>(kind.size()), kind.data());
        return not_all_read;
    }
    start_listing(settings, reader);
    bool more = true;
    for (; more && got > 0; got = std::fread(buffer.data(), 1, buffer.size(), file)) {
        copy.write(Bytes(buffer).first(got));
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
    const bool saved = copy.close();
    return unreadable || !saved ? not_all_read : status;
}

}  // namespace preview
