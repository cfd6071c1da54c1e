// The printer at its port: connections, one after another, as a printer with one connection serves them. A second one
// is accepted and gets its turn when the first has closed; of several that wait, the first that says something.
#ifndef KLOV_PREVIEW_SERVICE_H
#define KLOV_PREVIEW_SERVICE_H

#include <functional>
#include <optional>
#include <vector>

#include "preview/health.h"
#include "preview/listener.h"
#include "preview/printer.h"

namespace preview {

struct ServiceOptions {
    double idle_seconds = 60;       // 0: no limit
    uint64_t drop_after_bytes = 0;  // break the connection there, once; 0: never
    uint64_t drop_after_rows = 0;
    Health state;                   // held from the start, whatever the health file says
    std::string health_path;
};

class Service {
public:
    // The printer's replies go to send() of this service: the host passes them on.
    Service(const Listener &listener, Printer &printer, PrinterHost &host, ServiceOptions options);
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    // Serves until `enough` says so, which is asked again and again. False when the port fails.
    bool run(const std::function<bool()> &enough, std::string &error);

    void send(uint32_t connection, Bytes reply);

private:
    struct Connection {
        int fd = -1;
        uint32_t id = 0;
        Time heard{};
        uint64_t bytes = 0;
        std::vector<uint8_t> out;
    };

    bool wait(std::optional<Time> until, std::string &error);
    bool accept_all(std::string &error);
    void look_at_health(Time now);
    void choose(Time now);
    void read_current(Time now);
    void check_idle(Time now);
    void check_drop(Time now);
    void drop(Time now);
    void end_current(const std::string &failure, Time now);
    void flush(Connection &connection);
    void close_served();
    static void close_connection(Connection &connection);

    const Listener &listener_;
    Printer &printer_;
    PrinterHost &host_;
    ServiceOptions options_;
    std::optional<HealthFile> health_file_;
    std::optional<Connection> current_;
    std::vector<Connection> queue_;    // accepted, without a turn yet
    std::vector<Connection> leaving_;  // have sent everything; their jobs are not printed yet
    uint32_t connections_ = 0;
    Time printer_waits_since_{};
    bool dropped_ = false;
};

}  // namespace preview

#endif
