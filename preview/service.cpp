// The loop around the sockets.
#include "preview/service.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace preview {
namespace {

constexpr auto health_period = std::chrono::milliseconds(10);
constexpr size_t most_connections = 64;
constexpr size_t most_unread_replies = 65536;  // a sender that does not read its replies loses them

Time now()
{
    return std::chrono::steady_clock::now();
}

Time::duration seconds(double count)
{
    return std::chrono::duration_cast<Time::duration>(std::chrono::duration<double>(count));
}

int milliseconds_until(const std::optional<Time> &until)
{
    if (!until) {
        return -1;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(*until - now());
    return static_cast<int>(std::clamp<int64_t>(left.count() + 1, 0, 60'000));
}

void sooner(std::optional<Time> &until, Time other)
{
    until = until ? std::min(*until, other) : other;
}

bool readable(int fd)
{
    pollfd entry{fd, POLLIN, 0};
    return poll(&entry, 1, 0) > 0;
}

}  // namespace

Service::Service(const Listener &listener, Printer &printer, PrinterHost &host, ServiceOptions options)
    : listener_(listener), printer_(printer), host_(host), options_(std::move(options))
{
    if (!options_.health_path.empty()) {
        health_file_.emplace(options_.health_path);
    }
    printer_.set_health(options_.state, now());
}

Service::~Service()
{
    if (current_) {
        close_connection(*current_);
    }
    std::for_each(queue_.begin(), queue_.end(), close_connection);
    std::for_each(leaving_.begin(), leaving_.end(), close_connection);
}

void Service::close_connection(Connection &connection)
{
    close(connection.fd);
    connection.fd = -1;
}

bool Service::run(const std::function<bool()> &enough, std::string &error)
{
    while (!enough()) {
        std::optional<Time> until = printer_.run(now());
        close_served();
        if (enough()) {
            break;
        }
        if (health_file_) {
            sooner(until, now() + health_period);
        }
        const bool watched = options_.idle_seconds > 0 && (current_ || !queue_.empty());
        if (watched) {
            sooner(until, now() + std::min(seconds(options_.idle_seconds / 4), seconds(1)));
        }
        if (!wait(until, error)) {
            return false;
        }
        const Time at = now();
        look_at_health(at);
        choose(at);
        read_current(at);
        check_drop(at);
        check_idle(at);
    }
    return true;
}

bool Service::wait(std::optional<Time> until, std::string &error)
{
    std::vector<pollfd> entries;
    entries.push_back({listener_.socket(), POLLIN, 0});
    if (current_) {
        const int in = printer_.room() > 0 ? POLLIN : 0;
        const int out = current_->out.empty() ? 0 : POLLOUT;
        entries.push_back({current_->fd, static_cast<short>(in | out), 0});
    } else {
        for (const Connection &waiting : queue_) {
            entries.push_back({waiting.fd, POLLIN, 0});
        }
    }
    if (poll(entries.data(), entries.size(), milliseconds_until(until)) < 0 && errno != EINTR) {
        error = std::strerror(errno);
        return false;
    }
    return (entries[0].revents & POLLIN) == 0 || accept_all(error);
}

bool Service::accept_all(std::string &error)
{
    while (true) {
        const int fd = accept4(listener_.socket(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (fd >= 0 && queue_.size() >= most_connections) {
            close(fd);
        } else if (fd >= 0) {
            queue_.push_back({fd, ++connections_, now(), 0, {}});
            host_.note("connection " + std::to_string(connections_) + " opened");
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return true;
        } else if (errno != EINTR && errno != ECONNABORTED) {
            error = std::strerror(errno);
            return false;
        }
    }
}

void Service::look_at_health(Time at)
{
    if (!health_file_) {
        return;
    }
    const std::optional<HealthWords> words = health_file_->poll();
    if (!words) {
        return;
    }
    if (!words->unknown.empty()) {
        host_.note("unknown health word " + words->unknown);
    }
    Health health = words->health;
    health.merge(options_.state);
    printer_.set_health(health, at);
    if (words->drop) {
        drop(at);
    }
}

// A connection without a word does not keep the others waiting.
void Service::choose(Time at)
{
    if (current_) {
        return;
    }
    const auto talks = [](const Connection &waiting) { return readable(waiting.fd); };
    const auto found = std::find_if(queue_.begin(), queue_.end(), talks);
    if (found != queue_.end()) {
        current_ = std::move(*found);
        current_->heard = at;
        queue_.erase(found);
    }
}

void Service::read_current(Time at)
{
    if (!current_) {
        return;
    }
    flush(*current_);
    std::vector<uint8_t> bytes(std::min<size_t>(printer_.room(), 65536));
    if (bytes.empty()) {
        return;
    }
    const ssize_t got = recv(current_->fd, bytes.data(), bytes.size(), 0);
    if (got > 0) {
        current_->heard = at;
        current_->bytes += static_cast<uint64_t>(got);
        printer_.receive(current_->id, Bytes(bytes).first(static_cast<size_t>(got)), at);
    } else if (got == 0) {
        end_current("", at);
    } else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
        end_current("the connection was broken: " + std::string(std::strerror(errno)), at);
    }
    if (current_ && printer_.refuses()) {
        end_current("", at);
    }
}

// The turn is over. The connection stays open for its replies until its job is printed.
void Service::end_current(const std::string &failure, Time at)
{
    host_.note("connection " + std::to_string(current_->id) + (failure.empty() ? " ended" : " failed: " + failure));
    printer_.end_connection(failure, at);
    leaving_.push_back(std::move(*current_));
    current_.reset();
}

void Service::close_served()
{
    for (Connection &connection : leaving_) {
        if (!printer_.holds(connection.id)) {
            flush(connection);
            close_connection(connection);
        }
    }
    std::erase_if(leaving_, [](const Connection &connection) { return connection.fd < 0; });
}

// Time counts only while the printer could go on and has nothing to print.
void Service::check_idle(Time at)
{
    if (!printer_.is_waiting()) {
        printer_waits_since_ = at;
    }
    if (options_.idle_seconds <= 0) {
        return;
    }
    const auto expired = [&](const Connection &connection) {
        return at - std::max(connection.heard, printer_waits_since_) >= seconds(options_.idle_seconds);
    };
    if (current_ && expired(*current_)) {
        end_current(printer_.receiving_job() ? "nothing came for too long" : "", at);
    }
    // While one has the turn, the others have to wait, whatever they have to say.
    if (current_) {
        return;
    }
    for (Connection &waiting : queue_) {
        if (expired(waiting) && !readable(waiting.fd)) {
            host_.note("connection " + std::to_string(waiting.id) + " closed: silent");
            close_connection(waiting);
        }
    }
    std::erase_if(queue_, [](const Connection &waiting) { return waiting.fd < 0; });
}

void Service::check_drop(Time at)
{
    const bool bytes = options_.drop_after_bytes > 0 && current_ && current_->bytes >= options_.drop_after_bytes;
    const bool rows = options_.drop_after_rows > 0 && printer_.printed_rows() >= options_.drop_after_rows;
    if (!dropped_ && (bytes || rows)) {
        dropped_ = true;
        drop(at);
    }
}

// As when the cable is pulled: the sender learns it by a reset.
void Service::drop(Time at)
{
    const linger at_once{1, 0};
    if (current_) {
        end_current("the connection was dropped", at);
    }
    for (Connection &connection : leaving_) {
        setsockopt(connection.fd, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        host_.note("connection " + std::to_string(connection.id) + " dropped");
        close_connection(connection);
    }
    leaving_.clear();
}

void Service::send(uint32_t connection, Bytes reply)
{
    const auto put = [&](Connection &to) {
        if (to.id == connection && to.out.size() + reply.size() <= most_unread_replies) {
            to.out.insert(to.out.end(), reply.begin(), reply.end());
            flush(to);
        }
    };
    if (current_) {
        put(*current_);
    }
    std::for_each(leaving_.begin(), leaving_.end(), put);
}

void Service::flush(Connection &connection)
{
    while (!connection.out.empty()) {
        const ssize_t sent =
            ::send(connection.fd, connection.out.data(), connection.out.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent <= 0) {
            return;
        }
        connection.out.erase(connection.out.begin(), connection.out.begin() + sent);
    }
}

}  // namespace preview
