// Positions, the line buffer, and which file's function executes which command.
#include "preview/machine.h"

#include <algorithm>
#include <unordered_map>

namespace preview {
namespace {

constexpr uint32_t page_rows = 65535;  // the page area's height is a 16-bit number

// Characters can be printed over each other without end; a line buffer of this size is printed.
constexpr size_t most_line_items = 4096;

using HandlerIndex = std::unordered_map<std::string_view, Machine::Handler>;

const HandlerIndex &handlers()
{
    static const HandlerIndex index = [] {
        HandlerIndex built;
        for (const auto rows : {Machine::layout_handlers(), Machine::text_handlers(), Machine::image_handlers(),
                                Machine::symbol_handlers(), Machine::device_handlers()}) {
            for (const Machine::HandlerRow &row : rows) {
                built.emplace(row.name.text(), row.handler);
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
    if (found == handlers().end() || full_ || command.kind == Kind::truncated) {
        return;
    }
    offset_ = command.offset;
    (this->*found->second)(command);
}

void Machine::finish()
{
    if (!full_) {
        leave_page_mode();
        end_open_line();
    }
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
        full_ = true;
        full_offset_ = offset_;
        y_ = paper_.rows();
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
            surface().print(x, top, turned(turned(item.bitmap)), area_left(), area_right());
        } else {
            surface().print(left + item.x, top + height - item.bitmap.height, item.bitmap, area_left(), area_right());
        }
    }
    line_.clear();
    cursor_ = 0;
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
    const bool too_long = cursor_ + width > static_cast<int64_t>(area_width()) || line_.size() >= most_line_items;
    if (!line_.empty() && too_long) {
        end_line(settings_.line_spacing);
    }
    line_.push_back({cursor_, std::move(bitmap)});
    cursor_ += width;
}

void Machine::print_block(const Bitmap &bitmap)
{
    end_open_line();
    surface().print(justified(bitmap.width), page_mode_ ? page_y_ : y_, bitmap, area_left(), area_right());
    advance(bitmap.height);
}

}  // namespace preview
