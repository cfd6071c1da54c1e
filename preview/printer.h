// A printer that lives: a receive buffer, a mechanism that takes its time, a health that changes, and a voice. It knows
// no sockets and no clock of its own, so that tests can be exact.
//
// Real-time commands are obeyed as they are received, wherever they stand, as a printer does that looks at every byte.
// Everything else goes through the buffer, in order, and only while the printer can print.
#ifndef KLOV_PREVIEW_PRINTER_H
#define KLOV_PREVIEW_PRINTER_H

#include <chrono>
#include <deque>
#include <memory>
#include <optional>

#include "preview/decoder.h"
#include "preview/health.h"
#include "preview/reader.h"
#include "preview/real_time.h"

namespace preview {

using Time = std::chrono::steady_clock::time_point;

struct PrinterOptions {
    Options reader;
    double rows_a_second = 0;  // 0: at once
    size_t buffer = 65536;     // bytes
};

// A job is what one connection sent to be printed.
struct Job {
    uint32_t number = 0;
    uint32_t connection = 0;
    std::string failure;  // why it is not complete, as far as the connection tells
};

class Boundary;

// What a printer does to the world.
class PrinterHost {
public:
    virtual ~PrinterHost() = default;
    virtual void send(uint32_t connection, Bytes reply) = 0;
    virtual void note(const std::string &line) = 0;
    virtual void job_begins(const Job &job, Reader &reader) = 0;
    virtual void job_executes(Bytes bytes) = 0;
    virtual void job_ends(const Job &job, Reader &reader) = 0;
};

class Printer {
public:
    Printer(PrinterHost &host, const PrinterOptions &options);
    ~Printer();
    Printer(const Printer &) = delete;
    Printer &operator=(const Printer &) = delete;

    // Bytes that the buffer has room for.
    size_t room() const;
    // Takes bytes of a connection, at most room().
    void receive(uint32_t connection, Bytes bytes, Time now);
    // Nothing more comes from the connection; `failure` is why, when it did not end in order.
    void end_connection(const std::string &failure, Time now);
    // True when the connection has sent something to print, not only asked.
    bool receiving_job() const
    {
        return open_job_;
    }
    // True when bytes of the connection still wait to be printed.
    bool holds(uint32_t connection) const;

    void set_health(const Health &health, Time now);
    // Works until now. Tells when it wants to be called again; nothing: when bytes come or the health changes.
    std::optional<Time> run(Time now);

    // Could print, and has nothing to print.
    bool is_waiting() const;
    uint64_t printed_rows() const;  // by the job in work
    // The job in work is at a limit of the paper: what it still sends is thrown away.
    bool refuses() const
    {
        return refusing_;
    }

private:
    struct Waiting {
        Job job;
        uint64_t end = 0;  // in the stream of all bytes, once it is known
        bool ended = false;
    };
    // Something that happens when the paper has moved as far as the commands before it say.
    struct Due {
        std::vector<uint8_t> reply;
        std::string note;
    };

    // Receiving (printer_receive.cpp).
    void take(uint8_t byte);
    void pass(Bytes bytes);
    void pass_candidate();
    void obey(RealTime kind, Bytes bytes);
    void clear_buffer();
    void tell(Bytes reply, const char *what);

    // Printing (printer.cpp).
    Health felt() const;
    bool step();
    void begin_job();
    void finish_job();
    void watch(const Command &command);
    void release_due();

    PrinterHost &host_;
    PrinterOptions options_;
    Health health_;
    bool errors_cleared_ = false;  // by DLE ENQ, until the health no longer has them
    uint8_t asb_ = 0;              // kinds of change that are told

    uint32_t connection_ = 0;  // that the last bytes came from
    bool open_job_ = false;
    uint32_t jobs_ = 0;
    std::vector<uint8_t> candidate_;  // bytes that may become a real-time command
    bool withheld_ = false;           // the candidate is not in the buffer
    std::unique_ptr<Boundary> boundary_;

    std::deque<uint8_t> buffer_;
    uint64_t received_ = 0;  // bytes that went into the buffer
    uint64_t executed_ = 0;
    std::deque<Waiting> waiting_;  // jobs, the one in work first
    std::unique_ptr<Reader> reader_;
    std::shared_ptr<Reader::Unfinished> unfinished_;  // the command that the last job broke off in
    size_t cuts_noted_ = 0;
    bool refusing_ = false;
    std::vector<Due> due_;

    Time last_run_{};
    double credit_ = 0;  // rows that the mechanism could have moved since
    double debt_ = 0;    // rows that it still has to move
};

}  // namespace preview

#endif
