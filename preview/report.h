// What the tool tells about a stream: listing, warnings, picture, progress.
#ifndef KLOV_PREVIEW_REPORT_H
#define KLOV_PREVIEW_REPORT_H

#include <chrono>
#include <cstdio>

#include "preview/settings.h"

namespace preview {

// A line on the terminal that says how far a long job has come; nothing elsewhere.
class ProgressLine {
public:
    explicit ProgressLine(bool quiet);
    ~ProgressLine();
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    void say(const char *what, unsigned long long done, const char *unit);
    void clear();

private:
    bool shown_;
    bool dirty_ = false;
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

// A copy of a job's bytes; nothing without a path.
class Copy {
public:
    // False and a message on standard error when the file can not be made.
    bool open(const std::string &path);
    void write(Bytes bytes);
    // False and a message when some of the bytes were lost.
    bool close();

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file_{nullptr, &std::fclose};
    std::string path_;
    bool lost_ = false;
};

void start_listing(const ToolSettings &settings, Reader &reader);

// Ends the listing and writes the picture; the job's exit status.
int finish_job(const ToolSettings &settings, Reader &reader, const std::string &path, ProgressLine &progress);

}  // namespace preview

#endif
