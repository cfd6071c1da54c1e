// The receiving half of the printer: real-time commands at once, everything else into the buffer.
#include <algorithm>
#include <cstdio>

#include "preview/answer.h"
#include "preview/boundary.h"
#include "preview/printer.h"

namespace preview {
namespace {

std::string hex(Bytes bytes)
{
    std::string text;
    for (const uint8_t byte : bytes) {
        char pair[4];
        std::snprintf(pair, sizeof pair, " %02X", static_cast<unsigned>(byte));
        text += pair;
    }
    return text;
}

// These only ask or steer; the others are part of what is printed, and their marks belong to the paper.
bool is_talk(RealTime kind)
{
    return kind == RealTime::status || kind == RealTime::request || kind == RealTime::report ||
           kind == RealTime::clear_buffer;
}

}  // namespace

size_t Printer::room() const
{
    const size_t used = buffer_.size() + candidate_.size();
    return used < options_.buffer ? options_.buffer - used : 0;
}

void Printer::receive(uint32_t connection, Bytes bytes, Time now)
{
    run(now);
    connection_ = connection;
    while (!bytes.empty()) {
        const auto lead = std::find(bytes.begin(), bytes.end(), real_time_lead);
        const auto plain = candidate_.empty() ? static_cast<size_t>(lead - bytes.begin()) : 0;
        if (plain > 0) {
            pass(bytes.first(plain));
            bytes = bytes.subspan(plain);
            continue;
        }
        take(bytes[0]);
        bytes = bytes.subspan(1);
    }
}

void Printer::end_connection(const std::string &failure, Time now)
{
    run(now);
    if (!candidate_.empty()) {
        pass_candidate();
    }
    connection_ = 0;
    if (open_job_) {
        open_job_ = false;
        waiting_.back().ended = true;
        waiting_.back().end = received_;
        waiting_.back().job.failure = failure;
    }
}

void Printer::take(uint8_t byte)
{
    if (candidate_.empty()) {
        withheld_ = boundary_->here();
    }
    candidate_.push_back(byte);
    if (!withheld_) {
        pass(Bytes(&byte, 1));
    }
    const RealTime kind = real_time_kind(candidate_);
    if (kind == RealTime::more) {
        return;
    }
    if (kind == RealTime::none) {
        // The byte that disappoints may begin a command itself.
        const bool again = candidate_.size() > 1 && byte == real_time_lead;
        if (again) {
            candidate_.pop_back();
        }
        pass_candidate();
        if (again) {
            candidate_.push_back(byte);
        }
        return;
    }
    const std::vector<uint8_t> bytes = candidate_;
    if (is_talk(kind)) {
        candidate_.clear();
    } else {
        pass_candidate();
    }
    obey(kind, bytes);
}

void Printer::pass_candidate()
{
    const std::vector<uint8_t> bytes = std::move(candidate_);
    candidate_.clear();
    if (withheld_) {
        pass(bytes);
    }
}

void Printer::pass(Bytes bytes)
{
    if (!open_job_) {
        open_job_ = true;
        waiting_.push_back({{++jobs_, connection_, {}}});
    }
    boundary_->feed(bytes);
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    received_ += bytes.size();
}

// A mute printer still does as it is told.
void Printer::tell(Bytes reply, const char *what)
{
    if (!health_.mute) {
        host_.note(what + hex(reply));
        host_.send(connection_, reply);
    }
}

void Printer::obey(RealTime kind, Bytes bytes)
{
    host_.note("real-time" + hex(bytes));
    const uint8_t last = bytes.back();
    const Health health = felt();
    switch (kind) {
        case RealTime::status: {
            const uint8_t status = real_time_status(last, health);
            tell(Bytes(&status, 1), "reply");
            break;
        }
        case RealTime::report: {
            const uint8_t second = second_status(health);
            const std::vector<uint8_t> reply = last == 1 ? automatic_status(health) : std::vector<uint8_t>{second};
            tell(reply, "reply");
            break;
        }
        case RealTime::request:
            // 1 goes on behind an error, 2 drops what waits first.
            errors_cleared_ = errors_cleared_ || last == 1 || last == 2;
            if (last == 2) {
                clear_buffer();
            }
            break;
        case RealTime::clear_buffer:
            clear_buffer();
            break;
        case RealTime::none:
        case RealTime::more:
        case RealTime::pulse:
        case RealTime::power_off:
            break;
    }
}

void Printer::clear_buffer()
{
    host_.note("clear " + std::to_string(buffer_.size()) + " bytes");
    buffer_.clear();
    executed_ = received_;
    boundary_->reset();
    unfinished_.reset();
    due_.clear();
    debt_ = 0;
    if (reader_) {
        reader_->drop_unfinished();
    }
    while (!waiting_.empty() && waiting_.front().ended) {
        finish_job();
    }
}

}  // namespace preview
