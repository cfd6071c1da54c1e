// Positions, the line buffer, and which file's function executes which command.
#include "preview/machine.h"

#include <algorithm>
#include <unordered_map>

namespace preview {
namespace {

constexpr uint32_t page_rows = 65535;  // the page area's height is a 16-bit number

// Characters can be printed over each other without end; a line buffer of this size is printed.
constexpr size_t most_line_items = 4096;
constexpr size_t most_line_bytes = 4 << 20;

// Work that a job may cause, in units of about a nanosecond. Ink on new paper ends with the paper; drawing over what is
// drawn already, in page mode, after a reverse feed or in one line, would not end. Real receipts need a tenth of it.
constexpr uint64_t free_work = 500'000'000;
constexpr uint64_t work_a_byte = 1000;
constexpr uint64_t work_a_row = 2000;

using HandlerIndex = std::unordered_map<std::string_view, Machine::Handler>;

const HandlerIndex &handlers()
{
    static const HandlerIndex index = [] {
        HandlerIndex built;
        for (const auto rows : {Machine::layout_handlers(), Machine::text_handlers(), Machine::image_handlers(),
                                Machine::symbol_handlers(), Machine::device_handlers()}) {
            for (const Machine::HandlerRow &row : rows) {
                built.emplace(row.name, row.handler);
            }
        }
        return built;
    }();
    return index;
}

}  // namespace

Machine::Machine(const Options &options)
    : options_(options), paper_(options.width, options.max_rows), page_(options.width, page_rows)
{
    initialize();
}

void Machine::initialize()
{
    settings_ = Settings{};
    settings_.line_spacing = options_.dpi / 6;
    settings_.area_width = options_.width;
}

void Machine::execute(const Command &command)
{
    const auto found = handlers().find(command.name);
    if (found == handlers().end() || problem_ || command.kind == Kind::truncated) {
        return;
    }
    offset_ = command.offset;
    (this->*found->second)(command);
}

void Machine::stop(uint64_t offset, std::string reason)
{
    if (!problem_) {
        problem_ = Problem{offset, std::move(reason)};
    }
}

// False when the job has no work left to spend.
bool Machine::spend(uint64_t work)
{
    work_ += work;
    if (work_ > free_work + work_a_byte * offset_ + work_a_row * paper_.rows()) {
        stop(offset_, "too much is drawn on top of itself; no printer would do that");
    }
    return !problem_;
}

void Machine::finish()
{
    if (!problem_) {
        leave_page_mode();
        end_open_line();
    }
}

void Machine::drop_unfinished()
{
    drop_line();
    page_mode_ = false;
    page_.clear();
}

void Machine::warn(uint64_t offset, std::string text)
{
    if (warnings.size() < options_.max_events) {
        warnings.push_back({offset, std::move(text)});
    }
}

void Machine::event(const Command &command, std::string_view kind, std::string text)
{
    if (events.size() < options_.max_events) {
        events.push_back({command.offset, y_, kind, std::move(text)});
    } else if (events.size() == options_.max_events) {
        events.push_back({command.offset, y_, kind, "more events, not listed"});
        warn(command.offset, "too many events; the later ones are not listed");
    }
}

Paper &Machine::surface()
{
    return page_mode_ ? page_ : paper_;
}

uint32_t Machine::area_left() const
{
    return std::min(page_mode_ ? area_.x : settings_.left_margin, options_.width);
}

uint32_t Machine::area_width() const
{
    return std::min(page_mode_ ? area_.width : settings_.area_width, options_.width - area_left());
}

uint32_t Machine::area_right() const
{
    return area_left() + area_width();
}

uint32_t Machine::to_dots_x(int64_t units) const
{
    const int64_t unit = settings_.unit_x;
    return static_cast<uint32_t>(unit == 0 ? units : units * options_.dpi / unit);
}

uint32_t Machine::to_dots_y(int64_t units) const
{
    const int64_t unit = settings_.unit_y;
    return static_cast<uint32_t>(unit == 0 ? units : units * options_.dpi / unit);
}

// Where something of this width starts on the paper.
int64_t Machine::justified(uint64_t width) const
{
    const int64_t left = area_left();
    const int64_t spare = static_cast<int64_t>(area_width()) - static_cast<int64_t>(width);
    if (page_mode_ || spare <= 0) {
        return left;
    }
    return left + spare * settings_.justification / 2;
}

void Machine::advance(uint64_t rows)
{
    if (page_mode_) {
        page_y_ = std::min<uint64_t>(page_y_ + rows, page_rows);
        return;
    }
    y_ += rows;
    if (!paper_.extend(y_)) {
        y_ = paper_.rows();
        stop(offset_, "the paper is at its limit of " + std::to_string(options_.max_rows) + " rows");
    }
}

void Machine::back(uint64_t rows)
{
    if (page_mode_) {
        page_y_ -= std::min(rows, page_y_);
        return;
    }
    y_ -= std::min(rows, y_ - last_cut_);
}

bool Machine::draw(int64_t x, uint64_t y, const Bitmap &bitmap)
{
    const uint64_t rows = surface().rows();
    const uint64_t grown = y + bitmap.height > rows ? y + bitmap.height - rows : 0;
    if (!spend(uint64_t{bitmap.height} * (10 + 2 * bitmap.stride()) + grown)) {
        return false;
    }
    surface().print(x, y, bitmap, area_left(), area_right());
    return true;
}

Bitmap Machine::enlarged(const Bitmap &bitmap, uint32_t horizontal, uint32_t vertical)
{
    const uint64_t row_dots = uint64_t{bitmap.width} * horizontal;
    return spend(bitmap.height * row_dots * (2 + vertical / 8)) ? scaled(bitmap, horizontal, vertical) : Bitmap{};
}

void Machine::drop_line()
{
    line_.clear();
    line_bytes_ = 0;
    cursor_ = 0;
}

// Draws the line buffer at the current row and empties it; returns its height.
uint32_t Machine::draw_line_buffer()
{
    uint32_t height = 0;
    int64_t width = 0;
    for (const LineItem &item : line_) {
        height = std::max(height, item.bitmap.height);
        width = std::max(width, item.x + item.bitmap.width);
    }
    const int64_t left = justified(static_cast<uint64_t>(std::max<int64_t>(width, 0)));
    const uint64_t top = page_mode_ ? page_y_ : y_;
    for (const LineItem &item : line_) {
        if (settings_.upside_down) {
            const int64_t x = left + width - item.x - item.bitmap.width;
            if (spend(uint64_t{6} * item.bitmap.width * item.bitmap.height)) {
                draw(x, top, turned(turned(item.bitmap)));
            }
        } else {
            draw(left + item.x, top + height - item.bitmap.height, item.bitmap);
        }
    }
    drop_line();
    return height;
}

void Machine::end_line(uint64_t advance_by)
{
    const uint64_t height = draw_line_buffer();
    advance(std::max(advance_by, height));
}

// Blocks start on a line of their own.
void Machine::end_open_line()
{
    if (!line_.empty()) {
        end_line(settings_.line_spacing);
    }
    cursor_ = 0;
}

void Machine::put_in_line(Bitmap bitmap)
{
    const int64_t width = bitmap.width;
    const bool too_long = cursor_ + width > static_cast<int64_t>(area_width()) || line_.size() >= most_line_items ||
                          line_bytes_ >= most_line_bytes;
    if (!line_.empty() && too_long) {
        end_line(settings_.line_spacing);
    }
    line_bytes_ += bitmap.bits.size();
    line_.push_back({cursor_, std::move(bitmap)});
    cursor_ += width;
}

void Machine::print_block(const Bitmap &bitmap)
{
    end_open_line();
    draw(justified(bitmap.width), page_mode_ ? page_y_ : y_, bitmap);
    advance(bitmap.height);
}

}  // namespace preview
