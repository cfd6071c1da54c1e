// Raster images, bit images, and the graphics that the printer stores.
#include <algorithm>

#include "preview/machine.h"

namespace preview {
namespace {

uint32_t number(const Command &command, std::string_view name)
{
    return static_cast<uint32_t>(command.arg(name));
}

bool is_for_nv(const Command &command)
{
    return command.name.find("_NV_") != std::string_view::npos;
}

// The printer takes single and double scale; everything else counts as single.
uint32_t scale(int64_t wanted)
{
    return wanted == 2 ? 2 : 1;
}

std::string key_text(const Command &command)
{
    return {static_cast<char>(command.arg("kc1")), static_cast<char>(command.arg("kc2"))};
}

// One dot becomes two.
uint8_t widened(uint8_t half)
{
    uint8_t wide = 0;
    for (unsigned bit = 0; bit < 4; ++bit) {
        if ((half >> bit & 1) != 0) {
            wide |= static_cast<uint8_t>(3U << (2 * bit));
        }
    }
    return wide;
}

}  // namespace

std::span<const Machine::HandlerRow> Machine::image_handlers()
{
    static constexpr HandlerRow rows[] = {
        {"select_bit_image_mode", &Machine::do_bit_image},
        {"define_the_NV_graphics_data_raster_gmode", &Machine::do_define_graphics},
        {"define_the_NV_graphics_data_column_gmode", &Machine::do_define_graphics},
        {"define_the_downloaded_graphics_data_raster_gmode", &Machine::do_define_graphics},
        {"define_the_downloaded_graphics_data_column_gmode", &Machine::do_define_graphics},
        {"store_the_graphics_data_in_the_print_buffer_raster_gmode", &Machine::do_store_graphics},
        {"store_the_graphics_data_in_the_print_buffer_column_gmode", &Machine::do_store_graphics},
        {"print_the_graphics_data_in_the_print_buffer_gmode", &Machine::do_print_buffer},
        {"print_the_specified_NV_graphics_data_gmode", &Machine::do_print_logo},
        {"print_the_specified_downloaded_graphics_data_gmode", &Machine::do_print_downloaded},
        {"delete_the_specified_NV_graphics_data_gmode", &Machine::do_delete_graphics},
        {"delete_the_specified_download_memory_graphics_data_gmode", &Machine::do_delete_graphics},
        {"delete_all_NV_graphics_data_gmode", &Machine::do_delete_all_nv},
        {"delete_all_memory_graphics_data_gmode", &Machine::do_delete_all_downloaded},
        {"define_nv_bit_image_fmode", &Machine::do_define_nv_images},
        {"print_NV_bit_image", &Machine::do_print_nv_image},
        {"define_downloaded_bit_image", &Machine::do_define_downloaded_image},
        {"print_downloaded_bit_image", &Machine::do_print_downloaded_image},
        {"draw_line", &Machine::do_line_or_rectangle},
        {"draw_rectangle", &Machine::do_line_or_rectangle},
    };
    return rows;
}

void Machine::image_begin(const ImageHeader &header, uint64_t offset)
{
    offset_ = offset;
    if (problem_) {
        return;
    }
    end_open_line();
    image_ = header;
    const uint32_t scaling = header.mode >= 48 && header.mode <= 51 ? header.mode - 48 : header.mode;
    const bool plain = scaling <= 3;
    image_wide_ = plain && (scaling & 1) != 0;
    image_high_ = plain && (scaling & 2) != 0;
    if (!plain && header.mode != 32) {
        warn(offset, "raster mode " + std::to_string(header.mode) + " is not known; read as mode 0");
    }
    const uint64_t width = uint64_t{header.width_bytes} * 8 * (image_wide_ ? 2 : 1);
    image_x_ = justified(width);
    if (static_cast<uint64_t>(image_x_) + width > area_right() && !wide_told_) {
        wide_told_ = true;
        warn(offset, "a raster image is wider than the paper and is cut at its right edge");
    }
}

void Machine::image_row(Bytes row)
{
    const uint64_t copies = image_high_ ? 2 : 1;
    if (problem_ || !spend(20 + row.size() * (image_wide_ ? 10 : 0) + copies * (20 + 2 * row.size()))) {
        return;
    }
    std::vector<uint8_t> doubled;
    if (image_wide_) {
        for (const uint8_t byte : row) {
            doubled.push_back(widened(byte >> 4));
            doubled.push_back(widened(byte & 15));
        }
        row = doubled;
    }
    for (uint64_t copy = 0; copy < copies && !problem_; ++copy) {
        const auto dots = static_cast<uint32_t>(row.size() * 8);
        surface().print(page_mode_ ? page_y_ : y_, image_x_, row, dots, area_left(), area_right());
        advance(1);
    }
}

void Machine::do_bit_image(const Command &command)
{
    const int64_t m = command.arg("m");
    const bool tall = m >= 32;
    const bool narrow = m % 2 == 1;
    const auto columns = static_cast<uint32_t>(command.arg("n") * (narrow ? 2 : 1));
    const Bitmap columns_bitmap = bitmap_from_columns(columns, tall ? 24 : 8, command.data);
    put_in_line(enlarged(columns_bitmap, narrow ? 1 : 2, tall ? 1 : 3));
}

void Machine::do_define_graphics(const Command &command)
{
    const bool by_columns = command.name.find("_column_") != std::string_view::npos;
    const uint32_t x = number(command, "x");
    const uint32_t y = number(command, "y");
    auto &store = is_for_nv(command) ? nv_graphics_ : downloaded_graphics_;
    store[{command.arg("kc1"), command.arg("kc2")}] =
        by_columns ? bitmap_from_columns(x, y, command.data) : bitmap_from_rows(x, y, command.data);
}

void Machine::do_store_graphics(const Command &command)
{
    const bool by_columns = command.name.find("_column_") != std::string_view::npos;
    const uint32_t x = number(command, "x");
    const uint32_t y = number(command, "y");
    print_buffer_.bitmap = by_columns ? bitmap_from_columns(x, y, command.data) : bitmap_from_rows(x, y, command.data);
    print_buffer_.horizontal = scale(command.arg("bx"));
    print_buffer_.vertical = scale(command.arg("by"));
    if (by_columns) {
        warn(command.offset,
             "the column form announces one byte more than it carries; a printer may take the next byte");
    }
}

void Machine::do_print_buffer(const Command &)
{
    print_block(enlarged(print_buffer_.bitmap, print_buffer_.horizontal, print_buffer_.vertical));
    print_buffer_ = StoredImage{};
}

// A logo that was not defined in this stream is in the printer's memory, which nobody can see from here: it gets its
// mark beside the paper and no rows.
void Machine::do_print_logo(const Command &command)
{
    end_open_line();
    event(command, "logo", "logo \"" + key_text(command) + "\"");
    const auto found = nv_graphics_.find({command.arg("kc1"), command.arg("kc2")});
    if (found != nv_graphics_.end()) {
        print_block(enlarged(found->second, scale(command.arg("x")), scale(command.arg("y"))));
    }
}

void Machine::do_print_downloaded(const Command &command)
{
    end_open_line();
    event(command, "logo", "downloaded \"" + key_text(command) + "\"");
    const auto found = downloaded_graphics_.find({command.arg("kc1"), command.arg("kc2")});
    if (found != downloaded_graphics_.end()) {
        print_block(enlarged(found->second, scale(command.arg("x")), scale(command.arg("y"))));
    }
}

void Machine::do_delete_graphics(const Command &command)
{
    auto &store = is_for_nv(command) ? nv_graphics_ : downloaded_graphics_;
    store.erase({command.arg("kc1"), command.arg("kc2")});
}

void Machine::do_delete_all_nv(const Command &)
{
    nv_graphics_.clear();
}

void Machine::do_delete_all_downloaded(const Command &)
{
    downloaded_graphics_.clear();
}

// Each image: width and height in units of 8 dots, then its columns.
void Machine::do_define_nv_images(const Command &command)
{
    nv_images_.clear();
    Bytes rest = command.data;
    while (rest.size() >= 4) {
        const uint32_t width = (rest[0] + 256U * rest[1]) * 8;
        const uint32_t height = (rest[2] + 256U * rest[3]) * 8;
        const size_t size = size_t{width} * height / 8;
        if (rest.size() < 4 + size) {
            break;
        }
        nv_images_.push_back(bitmap_from_columns(width, height, rest.subspan(4, size)));
        rest = rest.subspan(4 + size);
    }
}

void Machine::do_print_nv_image(const Command &command)
{
    end_open_line();
    const auto n = static_cast<size_t>(command.arg("n"));
    const int64_t m = command.arg("m") % 48;
    event(command, "logo", "stored image " + std::to_string(n));
    if (n >= 1 && n <= nv_images_.size()) {
        print_block(enlarged(nv_images_[n - 1], (m & 1) != 0 ? 2 : 1, (m & 2) != 0 ? 2 : 1));
    }
}

void Machine::do_define_downloaded_image(const Command &command)
{
    downloaded_image_ = bitmap_from_columns(number(command, "x") * 8, number(command, "y") * 8, command.data);
}

void Machine::do_print_downloaded_image(const Command &command)
{
    const int64_t m = command.arg("m") % 48;
    print_block(enlarged(downloaded_image_, (m & 1) != 0 ? 2 : 1, (m & 2) != 0 ? 2 : 1));
}

// Two corners, each x and y as 16-bit numbers; the style bytes behind them are not interpreted.
void Machine::do_line_or_rectangle(const Command &command)
{
    if (!page_mode_ || command.data.size() < 8) {
        return;
    }
    uint32_t corner[4];
    for (size_t i = 0; i < 4; ++i) {
        const uint32_t value = command.data[2 * i] + 256U * command.data[2 * i + 1];
        corner[i] = std::min(value, i % 2 == 0 ? options_.width - 1 : 4095U);
    }
    const auto [x1, y1, x2, y2] = corner;
    if (command.name == "draw_line") {
        draw_segment(x1, y1, x2, y2);
        return;
    }
    draw_segment(x1, y1, x2, y1);
    draw_segment(x1, y2, x2, y2);
    draw_segment(x1, y1, x1, y2);
    draw_segment(x2, y1, x2, y2);
}

void Machine::draw_segment(int64_t x1, int64_t y1, int64_t x2, int64_t y2)
{
    constexpr uint8_t dot = 0x80;
    const int64_t steps = std::max({std::abs(x2 - x1), std::abs(y2 - y1), int64_t{1}});
    if (!spend(static_cast<uint64_t>(steps) * 20)) {
        return;
    }
    for (int64_t i = 0; i <= steps; ++i) {
        const int64_t x = area_left() + x1 + (x2 - x1) * i / steps;
        const auto y = static_cast<uint64_t>(area_.y + y1 + (y2 - y1) * i / steps);
        page_.print(y, x, Bytes(&dot, 1), 1, area_left(), area_right());
    }
}

}  // namespace preview
