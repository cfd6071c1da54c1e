// The paper machine: executes commands on the paper. It knows positions, margins, the line buffer and the stored
// graphics, and writes down what happens beside the paper.
#ifndef KLOV_PREVIEW_MACHINE_H
#define KLOV_PREVIEW_MACHINE_H

#include <array>
#include <map>

#include "preview/font.h"
#include "preview/reader.h"

namespace preview {

struct TextStyle {
    bool small_font = false;
    bool emphasized = false;
    bool double_strike = false;
    bool reverse = false;
    bool rotated = false;
    bool user_characters = false;
    uint32_t underline = 0;  // thickness
    uint32_t horizontal = 1;
    uint32_t vertical = 1;
    uint32_t spacing = 0;  // at each character's right
};

// Settings that the initialise command puts back.
struct Settings {
    TextStyle style;
    bool upside_down = false;
    uint32_t justification = 0;
    uint32_t line_spacing = 0;
    uint32_t unit_x = 0;  // motion units an inch; 0: one dot
    uint32_t unit_y = 0;
    uint32_t left_margin = 0;
    uint32_t area_width = 0;
    std::vector<uint8_t> tabs;
    // Bar codes and symbols.
    uint32_t hri_position = 0;
    bool hri_small = false;
    uint32_t bar_height = 162;
    uint32_t bar_width = 3;
    uint32_t pdf_columns = 0;
    uint32_t pdf_module = 3;
    uint32_t pdf_row_height = 3;
    uint32_t pdf_level = 1;
    uint32_t qr_module = 3;
    uint32_t qr_level = 0;
};

struct PageArea {
    uint32_t x = 0, y = 0, width = 0, height = 0;
};

class Machine {
public:
    explicit Machine(const Options &options);

    void execute(const Command &command);
    void image_begin(const ImageHeader &header, uint64_t offset);
    void image_row(Bytes row);
    void finish();
    void drop_unfinished();  // the line and the page that are not printed yet
    void warn(uint64_t offset, std::string text);

    const Paper &paper() const
    {
        return paper_;
    }
    // Nothing more is executed, for this reason.
    void stop(uint64_t offset, std::string reason);
    const std::optional<Problem> &problem() const
    {
        return problem_;
    }

    std::vector<Cut> cuts;
    std::vector<Event> events;
    std::vector<Warning> warnings;

    using Handler = void (Machine::*)(const Command &);
    struct HandlerRow {
        const char *name;
        Handler handler;
    };

    // The commands that each file of the machine executes.
    static std::span<const HandlerRow> layout_handlers();
    static std::span<const HandlerRow> text_handlers();
    static std::span<const HandlerRow> image_handlers();
    static std::span<const HandlerRow> symbol_handlers();
    static std::span<const HandlerRow> device_handlers();

private:
    struct LineItem {
        int64_t x;
        Bitmap bitmap;
    };
    struct StoredImage {
        Bitmap bitmap;
        uint32_t horizontal = 1, vertical = 1;
    };
    using ImageKey = std::pair<int64_t, int64_t>;

    // Positions and the line buffer (machine.cpp).
    bool spend(uint64_t work);
    bool draw(int64_t x, uint64_t y, const Bitmap &bitmap);
    Bitmap enlarged(const Bitmap &bitmap, uint32_t horizontal, uint32_t vertical);
    void drop_line();
    Paper &surface();
    uint32_t area_left() const;
    uint32_t area_right() const;
    uint32_t area_width() const;
    uint32_t to_dots_x(int64_t units) const;
    uint32_t to_dots_y(int64_t units) const;
    int64_t justified(uint64_t width) const;
    void advance(uint64_t rows);
    void back(uint64_t rows);
    uint32_t draw_line_buffer();
    void end_line(uint64_t advance_by);
    void end_open_line();
    void put_in_line(Bitmap bitmap);
    void print_block(const Bitmap &bitmap);
    void event(const Command &command, std::string_view kind, std::string text);
    void initialize();

    // Layout (machine_layout.cpp).
    void do_line_feed(const Command &command);
    void do_feed(const Command &command);
    void do_feed_lines(const Command &command);
    void do_reverse_feed(const Command &command);
    void do_reverse_feed_lines(const Command &command);
    void do_initialize(const Command &command);
    void do_line_spacing(const Command &command);
    void do_default_line_spacing(const Command &command);
    void do_justification(const Command &command);
    void do_left_margin(const Command &command);
    void do_area_width(const Command &command);
    void do_motion_units(const Command &command);
    void do_absolute_position(const Command &command);
    void do_relative_position(const Command &command);
    void do_line_start(const Command &command);
    void do_tab(const Command &command);
    void do_tab_positions(const Command &command);
    void do_page_mode(const Command &command);
    void do_standard_mode(const Command &command);
    void do_page_area(const Command &command);
    void do_page_direction(const Command &command);
    void do_page_vertical(const Command &command);
    void do_page_vertical_relative(const Command &command);
    void do_print_page(const Command &command);
    void do_cancel_page(const Command &command);
    void do_form_feed(const Command &command);
    void print_page();
    void leave_page_mode();

    // Text (machine_text.cpp).
    void do_text(const Command &command);
    void do_print_modes(const Command &command);
    void do_character_size(const Command &command);
    void do_emphasized(const Command &command);
    void do_double_strike(const Command &command);
    void do_underline(const Command &command);
    void do_reverse(const Command &command);
    void do_rotation(const Command &command);
    void do_upside_down(const Command &command);
    void do_font(const Command &command);
    void do_spacing(const Command &command);
    void do_user_set(const Command &command);
    void do_define_character(const Command &command);
    void do_cancel_character(const Command &command);
    Bitmap character(uint8_t code);
    Bitmap text_bitmap(Bytes text, bool small_font) const;

    // Images (machine_image.cpp).
    void do_bit_image(const Command &command);
    void do_define_graphics(const Command &command);
    void do_store_graphics(const Command &command);
    void do_print_buffer(const Command &command);
    void do_print_logo(const Command &command);
    void do_print_downloaded(const Command &command);
    void do_delete_graphics(const Command &command);
    void do_delete_all_nv(const Command &command);
    void do_delete_all_downloaded(const Command &command);
    void do_define_nv_images(const Command &command);
    void do_print_nv_image(const Command &command);
    void do_define_downloaded_image(const Command &command);
    void do_print_downloaded_image(const Command &command);
    void do_line_or_rectangle(const Command &command);
    void draw_segment(int64_t x1, int64_t y1, int64_t x2, int64_t y2);

    // Symbols (machine_symbol.cpp).
    void do_symbol_setting(const Command &command);
    void do_bar_code(const Command &command);
    void do_store_symbol(const Command &command);
    void do_print_symbol(const Command &command);
    bool encode(const Command &command, const SymbolRequest &request, Bitmap &modules);

    // Cutter, drawer, buzzer and the rest of the device (machine_device.cpp).
    void do_cut(const Command &command);
    void do_pulse(const Command &command);
    void do_buzzer(const Command &command);
    void do_label(const Command &command);
    void do_power_off(const Command &command);
    void do_test_print(const Command &command);
    void do_macro(const Command &command);

    const Options &options_;
    Settings settings_;
    Paper paper_;
    uint64_t y_ = 0;         // on the paper
    uint64_t last_cut_ = 0;  // reverse feeds stop here
    std::optional<Problem> problem_;
    uint64_t offset_ = 0;  // of the command being executed
    uint64_t work_ = 0;    // spent so far; about a nanosecond a unit
    std::vector<LineItem> line_;
    size_t line_bytes_ = 0;  // of its bitmaps
    int64_t cursor_ = 0;  // in the line, from the area's left edge

    bool page_mode_ = false;
    Paper page_;
    PageArea area_;
    uint64_t page_y_ = 0;

    ImageHeader image_{};
    int64_t image_x_ = 0;
    bool image_wide_ = false;
    bool image_high_ = false;
    bool wide_told_ = false;

    std::map<ImageKey, Bitmap> nv_graphics_;
    std::map<ImageKey, Bitmap> downloaded_graphics_;
    std::vector<Bitmap> nv_images_;
    Bitmap downloaded_image_;
    StoredImage print_buffer_;
    std::map<uint8_t, Bitmap> user_characters_;
    std::array<std::vector<uint8_t>, 2> symbol_data_;  // PDF417, QR
};

}  // namespace preview

#endif
