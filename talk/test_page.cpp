#include "talk/test_page.h"

#include "talk/picture_rows.h"

#include <string>

namespace talk {
namespace {

constexpr int dots_per_inch = 203;
constexpr int digit_width = 6;  // with the gap
constexpr int digit_height = 7;

// Rows of the digits 0 to 9, five dots each, the leftmost in bit 4.
constexpr uint8_t digits[10][digit_height] = {
    {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}, {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
    {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F}, {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E},
    {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}, {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
    {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}, {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
    {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}, {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C}};

// Twice its size, centred on x and kept on the paper.
void draw_number(Rows &rows, int x, int y, int number, int width)
{
    const std::string text = std::to_string(number);
    const int length = static_cast<int>(text.size()) * digit_width * 2;
    int left = x - length / 2;
    left = left + length > width ? width - length : left;
    left = left < 0 ? 0 : left;
    for (size_t i = 0; i < text.size(); i++) {
        for (int row = 0; row < digit_height; row++) {
            const unsigned dots = digits[text[i] - '0'][row];
            for (int column = 0; column < 5; column++) {
                if ((dots >> (4 - column) & 1U) != 0) {
                    rows.fill(left + (static_cast<int>(i) * digit_width + column) * 2, y + row * 2, 2, 2);
                }
            }
        }
    }
}

int dots_of(int millimetres)
{
    return (millimetres * dots_per_inch * 10 + 127) / 254;
}

int length_of_tick(int millimetre)
{
    if (millimetre % 10 == 0) {
        return 24;
    }
    return millimetre % 5 == 0 ? 16 : 8;
}

// Millimetres above the line, hundreds of dots below it.
Rows draw_scale(int width)
{
    constexpr int line = 44;
    Rows rows(width, 98);  // with some white below
    rows.fill(0, line, width, 2);
    for (int mm = 0; dots_of(mm) < width; mm++) {
        const int length = length_of_tick(mm);
        rows.fill(dots_of(mm), line - length, 1, length);
        if (mm % 10 == 0) {
            draw_number(rows, dots_of(mm), 2, mm, width);
        }
    }
    for (int dot = 0; dot < width; dot += 100) {
        rows.fill(dot, line + 2, 1, 24);
        draw_number(rows, dot, line + 30, dot, width);
    }
    rows.fill(width - 1, 20, 1, 50);  // the last dot of the head
    return rows;
}

// Eight steps from white to black, as dots in a fixed order.
Rows draw_greys(int width)
{
    static constexpr int order[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    constexpr int steps = 9;
    Rows rows(width, 64);
    for (int y = 0; y < rows.height(); y++) {
        for (int x = 0; x < width; x++) {
            if (order[y % 4][x % 4] < x * steps / width * 2) {
                rows.set(x, y);
            }
        }
    }
    return rows;
}

void add_rows(Commands &commands, const Rows &rows)
{
    commands.add_data(rows.bits().size(), klov_cmd_print_raster_bit_image, 0, rows.stride(), rows.height(),
                      rows.bits().data());
}

void add_line(Commands &commands, const std::string &text)
{
    commands.add_text(text.c_str());
    commands.add(klov_cmd_print_and_line_feed);
}

// The catalogue's names are plain, but a PPD can name anything: only what the printer prints as it stands.
std::string printable(const std::string &text)
{
    std::string result;
    for (const char c : text.substr(0, 40)) {
        result += c >= 0x20 && c < 0x7F ? c : '?';
    }
    return result;
}

void add_bar_code(Commands &commands)
{
    static constexpr uint8_t code[] = {'{', 'B', 'K', 'L', 'O', 'V', '-', '0', '1', '2', '3'};
    commands.add(klov_cmd_set_bar_code_height, 60);
    commands.add(klov_cmd_set_bar_code_width, 2);
    commands.add(klov_cmd_select_print_position_HRI_characters, 2);
    commands.add_data(sizeof code, klov_cmd_print_bar_code, 73, code, static_cast<uint32_t>(sizeof code));
    commands.add(klov_cmd_print_and_line_feed);
}

void add_qr_code(Commands &commands, const std::string &text)
{
    commands.add(klov_cmd_qr_select_the_model, 50);
    commands.add(klov_cmd_qr_set_the_size_of_module, 5);
    commands.add(klov_cmd_qr_select_the_error_correction_level, 48);
    commands.add_data(text.size(), klov_cmd_qr_store_the_data_in_the_symbol_storage_area,
                      reinterpret_cast<const uint8_t *>(text.data()), static_cast<uint32_t>(text.size()));
    commands.add(klov_cmd_qr_print_the_symbol_data_in_the_symbol_storage_area);
}

}  // namespace

void add_test_page(Commands &commands, const TestPage &page)
{
    const std::string model = printable(page.model);
    const int width = page.width - page.width % 8;
    commands.add(klov_cmd_initialize_printer);
    commands.add(klov_cmd_select_justification, 1);
    commands.add(klov_cmd_select_character_size, 0x11);
    add_line(commands, model);
    commands.add(klov_cmd_select_character_size, 0);
    add_line(commands, std::to_string(width) + " dots, " + std::to_string(width * 254 / dots_per_inch / 10) + " mm");
    commands.add(klov_cmd_select_justification, 0);
    add_rows(commands, draw_scale(width));
    add_rows(commands, draw_greys(width));
    commands.add(klov_cmd_select_character_font, 1);
    add_line(commands, "The smallest text 0123456789");
    commands.add(klov_cmd_select_character_font, 0);
    commands.add(klov_cmd_select_justification, 1);
    add_bar_code(commands);
    add_qr_code(commands, "klov test page " + model);
    commands.add(klov_cmd_initialize_printer);
    add_feed(commands, 10);
    if (page.cuts) {
        add_cut(commands, false);
    }
}

}  // namespace talk
