// klov-preview --listen: the printer at its port, its jobs reported one by one.
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include "preview/document.h"
#include "preview/report.h"

namespace preview {
namespace {

constexpr double millimetres_an_inch = 25.4;

// What happens, with the time of day in seconds since 1970, a line each.
class Log {
public:
    bool open(const std::string &path)
    {
        if (path.empty()) {
            return true;
        }
        file_.reset(std::fopen(path.c_str(), "we"));
        if (!file_) {
            std::fprintf(stderr, "klov-preview: %s: %s\n", path.c_str(), std::strerror(errno));
        }
        return file_ != nullptr;
    }
    void write(const std::string &line)
    {
        if (!file_) {
            return;
        }
        timespec time{};
        clock_gettime(CLOCK_REALTIME, &time);
        std::fprintf(file_.get(), "%lld.%03ld %s\n", static_cast<long long>(time.tv_sec), time.tv_nsec / 1'000'000,
                     line.c_str());
        std::fflush(file_.get());
    }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file_{nullptr, &std::fclose};
};

class Desk final : public PrinterHost {
public:
    explicit Desk(const ToolSettings &settings) : settings_(settings), progress_(settings.quiet) {}

    bool open_log()
    {
        return log_.open(settings_.log);
    }
    void serve_through(Service &service)
    {
        service_ = &service;
    }
    int worst() const
    {
        return worst_;
    }
    bool enough() const
    {
        return settings_.jobs != 0 && done_ >= settings_.jobs;
    }

    void send(uint32_t connection, Bytes reply) override
    {
        if (service_ != nullptr) {
            service_->send(connection, reply);
        }
    }
    void note(const std::string &line) override
    {
        log_.write(line);
    }
    void job_begins(const Job &job, Reader &reader) override
    {
        first_ = true;
        start_listing(settings_, reader);
        if (!copy_.open(path_of(settings_.save, job.number))) {
            worst_ = not_all_read;
        }
    }
    void job_executes(Bytes bytes) override
    {
        const std::string_view kind = first_ ? document_kind(bytes) : std::string_view();
        if (!kind.empty() && !settings_.quiet) {
            std::fprintf(stderr, "klov-preview: this is %.*s, not what a printer is sent\n",
                         static_cast<int>(kind.size()), kind.data());
        }
        first_ = false;
        copy_.write(bytes);
    }
    void job_ends(const Job &job, Reader &reader) override
    {
        ++done_;
        int status = finish_job(settings_, reader, path_of(settings_.output, job.number), progress_);
        if (!copy_.close() || !job.failure.empty()) {
            status = not_all_read;
        }
        if (!job.failure.empty() && !settings_.quiet) {
            std::fprintf(stderr, "klov-preview: job %u is not complete: %s\n", job.number, job.failure.c_str());
        }
        worst_ = std::max(worst_, status);
        std::fprintf(stderr, "job %u: %llu bytes, %llu rows, %zu cuts\n", job.number,
                     static_cast<unsigned long long>(reader.offset()),
                     static_cast<unsigned long long>(reader.paper().rows()), reader.cuts().size());
    }

private:
    std::string path_of(const std::string &path, uint32_t job) const
    {
        const bool numbered = settings_.jobs != 1 && !path.empty() && path != "-";
        return numbered ? numbered_path(path, job) : path;
    }

    const ToolSettings &settings_;
    ProgressLine progress_;
    Service *service_ = nullptr;
    Log log_;
    Copy copy_;
    bool first_ = true;
    uint32_t done_ = 0;
    int worst_ = all_read;
};

}  // namespace

int listen_for_jobs(const ToolSettings &settings)
{
    Listener listener;
    std::string error;
    if (!listener.open(settings.listen, error)) {
        std::fprintf(stderr, "klov-preview: %s\n", error.c_str());
        return not_all_read;
    }
    Desk desk(settings);
    if (!desk.open_log()) {
        return not_all_read;
    }
    PrinterOptions options;
    options.reader = settings.reader;
    options.rows_a_second = settings.speed_mm / millimetres_an_inch * settings.reader.dpi;
    options.buffer = settings.buffer;
    Printer printer(desk, options);
    Service service(listener, printer, desk, settings.service);
    desk.serve_through(service);
    std::fprintf(stderr, "listening on %s\n", listener.address().c_str());
    std::fflush(stderr);
    if (!service.run([&desk] { return desk.enough(); }, error)) {
        std::fprintf(stderr, "klov-preview: %s\n", error.c_str());
        return not_all_read;
    }
    return desk.worst();
}

}  // namespace preview
