// The printing half of the printer: bytes from the buffer to the paper, at the mechanism's speed.
#include "preview/printer.h"

#include <algorithm>

#include "preview/answer.h"
#include "preview/boundary.h"

namespace preview {
namespace {

// Bytes that are executed in one go. A printer with a speed stops within a few rows when something happens to it.
constexpr size_t whole_piece = 65536;
constexpr size_t timed_piece = 16;

// What a change must touch to be told: the bits of GS a n.
bool concerns(uint8_t asb, const Health &before, const Health &after)
{
    const bool drawer = before.drawer_open != after.drawer_open;
    const bool online = before.can_print() != after.can_print() || before.cover_open != after.cover_open;
    const bool error = before.cutter_error != after.cutter_error ||
                       before.recoverable_error != after.recoverable_error ||
                       before.unrecoverable_error != after.unrecoverable_error;
    const bool paper = before.paper_end != after.paper_end || before.paper_near_end != after.paper_near_end;
    return (drawer && (asb & 1) != 0) || (online && (asb & 2) != 0) || (error && (asb & 4) != 0) ||
           (paper && (asb & 8) != 0);
}

double seconds(Time::duration time)
{
    return std::chrono::duration<double>(time).count();
}

}  // namespace

Printer::Printer(PrinterHost &host, const PrinterOptions &options)
    : host_(host), options_(options), boundary_(std::make_unique<Boundary>(Dialect{options.reader.padded_page_area}))
{
}

Printer::~Printer() = default;

// The health as the printer feels it: an error that DLE ENQ has cleared is over.
Health Printer::felt() const
{
    Health health = health_;
    if (errors_cleared_) {
        health.cutter_error = false;
        health.recoverable_error = false;
    }
    return health;
}

void Printer::set_health(const Health &health, Time now)
{
    run(now);
    const Health before = felt();
    health_ = health;
    errors_cleared_ = errors_cleared_ && (health.cutter_error || health.recoverable_error);
    const Health after = felt();
    if (before == after) {
        return;
    }
    host_.note("health " + health_words(after));
    if (concerns(asb_, before, after) && !after.no_asb && !after.mute) {
        const uint32_t to = connection_ != 0 || waiting_.empty() ? connection_ : waiting_.front().job.connection;
        const std::vector<uint8_t> status = automatic_status(after);
        host_.note("status " + health_words(after));
        host_.send(to, status);
    }
}

bool Printer::holds(uint32_t connection) const
{
    return std::any_of(waiting_.begin(), waiting_.end(),
                       [connection](const Waiting &waiting) { return waiting.job.connection == connection; });
}

bool Printer::is_waiting() const
{
    return felt().can_print() && buffer_.empty() && debt_ <= 0;
}

uint64_t Printer::printed_rows() const
{
    return reader_ ? reader_->paper().rows() : 0;
}

std::optional<Time> Printer::run(Time now)
{
    const double elapsed = last_run_ == Time{} ? 0 : seconds(now - last_run_);
    last_run_ = now;
    if (!felt().can_print()) {
        return std::nullopt;
    }
    const double speed = options_.rows_a_second;
    credit_ += elapsed * speed;
    while (true) {
        if (speed > 0 && debt_ > credit_) {
            debt_ -= credit_;
            credit_ = 0;
            const std::chrono::duration<double> rest(debt_ / speed);
            return now + std::chrono::duration_cast<Time::duration>(rest) + std::chrono::microseconds(1);
        }
        credit_ = std::max(0.0, credit_ - debt_);
        debt_ = 0;
        release_due();
        if (!step()) {
            credit_ = 0;
            return std::nullopt;
        }
    }
}

void Printer::release_due()
{
    for (const Due &due : due_) {
        if (!due.note.empty()) {
            host_.note(due.note);
        }
        if (!due.reply.empty() && !waiting_.empty()) {
            host_.send(waiting_.front().job.connection, due.reply);
        }
    }
    due_.clear();
}

// Executes a few bytes. False when there is nothing to do.
bool Printer::step()
{
    if (waiting_.empty()) {
        return false;
    }
    const Waiting &front = waiting_.front();
    const uint64_t left = (front.ended ? front.end : received_) - executed_;
    if (left == 0) {
        if (front.ended) {
            finish_job();
        }
        return front.ended;
    }
    if (!reader_) {
        begin_job();
    }
    const bool timed = options_.rows_a_second > 0;
    const auto count = static_cast<size_t>(std::min<uint64_t>(left, timed ? timed_piece : whole_piece));
    const auto end = buffer_.begin() + static_cast<std::ptrdiff_t>(count);
    const std::vector<uint8_t> piece(buffer_.begin(), end);
    buffer_.erase(buffer_.begin(), end);
    executed_ += count;
    if (refusing_) {
        return true;
    }
    const uint64_t rows = reader_->paper().rows();
    refusing_ = !reader_->feed(piece);
    debt_ = timed ? static_cast<double>(reader_->paper().rows() - rows) : 0;
    host_.job_executes(piece);
    for (; cuts_noted_ < reader_->cuts().size(); ++cuts_noted_) {
        const Cut &cut = reader_->cuts()[cuts_noted_];
        due_.push_back({{}, "cut " + std::to_string(cuts_noted_ + 1) + " row " + std::to_string(cut.row)});
    }
    return true;
}

void Printer::begin_job()
{
    const Job &job = waiting_.front().job;
    reader_ = std::make_unique<Reader>(options_.reader);
    cuts_noted_ = 0;
    refusing_ = false;
    host_.note("job " + std::to_string(job.number) + " begins");
    host_.job_begins(job, *reader_);
    reader_->watch([this](const Command &command) { watch(command); });
    if (unfinished_) {
        reader_->resume(*unfinished_);
        unfinished_.reset();
    }
}

void Printer::finish_job()
{
    if (!reader_) {
        begin_job();
    }
    const Job job = waiting_.front().job;
    reader_->finish();
    release_due();
    unfinished_ = reader_->unfinished();
    host_.note("job " + std::to_string(job.number) + " ends rows " + std::to_string(reader_->paper().rows()) +
               " cuts " + std::to_string(reader_->cuts().size()));
    host_.job_ends(job, *reader_);
    reader_.reset();
    refusing_ = false;
    waiting_.pop_front();
}

// Ordered requests are answered when the printer gets to them. Real-time requests that stand in the buffer are parts of
// something else; they have been answered.
void Printer::watch(const Command &command)
{
    if (command.is("initialize_printer")) {
        asb_ = 0;
        return;
    }
    if (command.bytes.empty() || command.bytes[0] == real_time_lead) {
        return;
    }
    const Health health = felt();
    if (command.is("enable_disable_ASB")) {
        asb_ = static_cast<uint8_t>(command.arg("n"));
    }
    const bool kept = health.mute || health.half_mute || (health.no_asb && command.is("enable_disable_ASB"));
    std::vector<uint8_t> reply = answer(command, health);
    if (!reply.empty() && !kept) {
        due_.push_back({std::move(reply), "reply to " + std::string(command.name)});
    }
}

}  // namespace preview
