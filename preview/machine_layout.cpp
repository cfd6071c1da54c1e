// Feeds, margins, positions, tabs and page mode.
#include <algorithm>

#include "preview/machine.h"

namespace preview {

std::span<const Machine::HandlerRow> Machine::layout_handlers()
{
    static constexpr HandlerRow rows[] = {
        {"print_and_line_feed", &Machine::do_line_feed},
        {"print_and_feed_paper", &Machine::do_feed},
        {"print_and_feed_n_line", &Machine::do_feed_lines},
        {"print_and_reverse_feed", &Machine::do_reverse_feed},
        {"print_and_reverse_feed_n_line", &Machine::do_reverse_feed_lines},
        {"initialize_printer", &Machine::do_initialize},
        {"set_line_spacing", &Machine::do_line_spacing},
        {"select_default_line_spacing", &Machine::do_default_line_spacing},
        {"select_justification", &Machine::do_justification},
        {"set_left_margin", &Machine::do_left_margin},
        {"set_print_area_width", &Machine::do_area_width},
        {"set_horizontal_and_vertical_motion_units", &Machine::do_motion_units},
        {"set_absolute_print_position", &Machine::do_absolute_position},
        {"set_relative_print_position", &Machine::do_relative_position},
        {"set_print_position_to_the_beginning_of_print_line", &Machine::do_line_start},
        {"horizontal_tab", &Machine::do_tab},
        {"set_horizontal_tab_positions", &Machine::do_tab_positions},
        {"select_page_mode", &Machine::do_page_mode},
        {"select_standard_mode", &Machine::do_standard_mode},
        {"set_print_area_in_page_mode", &Machine::do_page_area},
        {"select_print_direction_in_page_mode", &Machine::do_page_direction},
        {"set_absolute_vertical_print_position_in_page_mode", &Machine::do_page_vertical},
        {"set_relative_vertical_print_position_in_page_mode", &Machine::do_page_vertical_relative},
        {"print_data_in_page_mode", &Machine::do_print_page},
        {"cancel_print_data_in_page_mode", &Machine::do_cancel_page},
        {"print_and_return_standard_mode", &Machine::do_form_feed},
    };
    return rows;
}

void Machine::do_line_feed(const Command &)
{
    end_line(settings_.line_spacing);
}

void Machine::do_feed(const Command &command)
{
    end_line(to_dots_y(command.arg("n")));
}

void Machine::do_feed_lines(const Command &command)
{
    end_line(static_cast<uint64_t>(command.arg("n")) * settings_.line_spacing);
}

void Machine::do_reverse_feed(const Command &command)
{
    end_line(0);
    back(to_dots_y(command.arg("n")));
}

void Machine::do_reverse_feed_lines(const Command &command)
{
    end_line(0);
    back(static_cast<uint64_t>(command.arg("n")) * settings_.line_spacing);
}

void Machine::do_initialize(const Command &)
{
    drop_line();
    page_mode_ = false;
    page_.clear();
    initialize();
}

void Machine::do_line_spacing(const Command &command)
{
    settings_.line_spacing = to_dots_y(command.arg("n"));
}

void Machine::do_default_line_spacing(const Command &)
{
    settings_.line_spacing = options_.dpi / 6;
}

void Machine::do_justification(const Command &command)
{
    const int64_t n = command.arg("n");
    const int64_t choice = n >= 48 ? n - 48 : n;
    if (choice <= 2) {
        settings_.justification = static_cast<uint32_t>(choice);
    }
}

void Machine::do_left_margin(const Command &command)
{
    settings_.left_margin = to_dots_x(command.arg("n") * options_.margin_unit);
}

void Machine::do_area_width(const Command &command)
{
    settings_.area_width = to_dots_x(command.arg("n"));
}

void Machine::do_motion_units(const Command &command)
{
    settings_.unit_x = static_cast<uint32_t>(command.arg("x"));
    settings_.unit_y = static_cast<uint32_t>(command.arg("y"));
}

void Machine::do_absolute_position(const Command &command)
{
    cursor_ = to_dots_x(command.arg("n"));
}

void Machine::do_relative_position(const Command &command)
{
    const int64_t unit = settings_.unit_x;
    const int64_t n = command.arg("n");
    cursor_ = std::max<int64_t>(0, cursor_ + (unit == 0 ? n : n * options_.dpi / unit));
}

void Machine::do_line_start(const Command &command)
{
    const int64_t n = command.arg("n");
    if (n == 1 || n == 49) {
        end_open_line();
        return;
    }
    drop_line();
}

void Machine::do_tab(const Command &)
{
    const Font &font = settings_.style.small_font ? font_b : font_a;
    const int64_t cell = font.cell_width * settings_.style.horizontal + settings_.style.spacing;
    if (settings_.tabs.empty()) {
        cursor_ = (cursor_ / (8 * cell) + 1) * 8 * cell;
        return;
    }
    for (const uint8_t column : settings_.tabs) {
        if (column * cell > cursor_) {
            cursor_ = column * cell;
            return;
        }
    }
}

void Machine::do_tab_positions(const Command &command)
{
    settings_.tabs.assign(command.data.begin(), command.data.end());
}

void Machine::do_page_mode(const Command &command)
{
    end_open_line();
    page_mode_ = true;
    page_.clear();
    page_y_ = 0;
    area_ = {0, 0, options_.width, UINT16_MAX};
    event(command, "page", "page mode");
}

void Machine::do_standard_mode(const Command &command)
{
    if (page_mode_) {
        drop_line();
        page_mode_ = false;
        page_.clear();
        event(command, "page", "standard mode");
    }
}

void Machine::do_page_area(const Command &command)
{
    if (!page_mode_) {
        return;
    }
    draw_line_buffer();
    area_.x = to_dots_x(command.arg("x"));
    area_.y = to_dots_y(command.arg("y"));
    area_.width = to_dots_x(command.arg("dx"));
    area_.height = to_dots_y(command.arg("dy"));
    page_y_ = area_.y;
}

void Machine::do_page_direction(const Command &command)
{
    const int64_t n = command.arg("n");
    if (n != 0 && n != 48) {
        warn(command.offset, "page mode is drawn in its upright direction only");
    }
}

void Machine::do_page_vertical(const Command &command)
{
    if (page_mode_) {
        draw_line_buffer();
        page_y_ = std::min<uint64_t>(uint64_t{area_.y} + to_dots_y(command.arg("n")), UINT16_MAX);
    }
}

void Machine::do_page_vertical_relative(const Command &command)
{
    const int64_t n = command.arg("n");
    if (page_mode_) {
        draw_line_buffer();
        n < 0 ? back(to_dots_y(-n)) : advance(to_dots_y(n));
    }
}

// The page reaches down to the lowest of its areas' contents.
void Machine::print_page()
{
    draw_line_buffer();
    const uint64_t top = y_;
    if (!spend(page_.rows() * (10 + 2 * ((options_.width + 7U) / 8)))) {
        return;
    }
    page_mode_ = false;
    for (uint64_t row = 0; row < page_.rows(); ++row) {
        paper_.print(top + row, 0, page_.row(row), options_.width, 0, options_.width);
    }
    const uint64_t height = page_.rows();
    advance(height);
    page_mode_ = true;
}

void Machine::leave_page_mode()
{
    if (page_mode_) {
        print_page();
        page_mode_ = false;
        page_.clear();
    }
}

void Machine::do_print_page(const Command &command)
{
    if (page_mode_) {
        print_page();
        event(command, "page", "page printed");
    }
}

void Machine::do_cancel_page(const Command &)
{
    if (page_mode_) {
        drop_line();
        page_.clear();
    }
}

// In page mode: print the page and leave the mode. In standard mode label and ticket printers move to the next one; how
// far that is only the printer's sensor knows, so the paper gets a mark and no rows.
void Machine::do_form_feed(const Command &command)
{
    if (page_mode_) {
        leave_page_mode();
        event(command, "page", "page printed");
        return;
    }
    end_open_line();
    event(command, "ticket", "next ticket");
}

}  // namespace preview
