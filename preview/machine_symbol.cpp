// Bar codes, PDF417 and QR symbols.
#include <algorithm>

#include "preview/machine.h"

namespace preview {
namespace {

constexpr size_t pdf417 = 0;
constexpr size_t qr = 1;
constexpr size_t longest_hri = 64;

bool is_qr(const Command &command)
{
    return command.name.starts_with("qr_");
}

// What people read at a bar code: the data without the marks that choose the code set.
std::vector<uint8_t> readable(Bytes data)
{
    std::vector<uint8_t> text;
    for (size_t i = 0; i < data.size() && text.size() < longest_hri; ++i) {
        if (data[i] == '{' && i + 1 < data.size()) {
            ++i;
            if (data[i] != '{') {
                continue;
            }
        }
        text.push_back(data[i] >= 0x20 && data[i] < 0x7F ? data[i] : ' ');
    }
    return text;
}

// Stands for a symbol that can not be drawn.
Bitmap placeholder(uint32_t width, uint32_t height)
{
    Bitmap box = make_bitmap(width, height);
    for (uint32_t x = 0; x < width; ++x) {
        for (uint32_t y = 0; y < height; ++y) {
            const bool frame = x < 2 || y < 2 || x + 2 >= width || y + 2 >= height;
            if (frame || (x + y) % 12 == 0) {
                box.set(x, y);
            }
        }
    }
    return box;
}

}  // namespace

std::span<const Machine::HandlerRow> Machine::symbol_handlers()
{
    static constexpr HandlerRow rows[] = {
        {"select_print_position_HRI_characters", &Machine::do_symbol_setting},
        {"select_font_HRI_characters", &Machine::do_symbol_setting},
        {"set_bar_code_height", &Machine::do_symbol_setting},
        {"set_bar_code_width", &Machine::do_symbol_setting},
        {"pdf417_set_the_number_of_columns_in_the_data_region", &Machine::do_symbol_setting},
        {"pdf417_set_the_width_of_the_module", &Machine::do_symbol_setting},
        {"pdf417_set_the_row_height", &Machine::do_symbol_setting},
        {"pdf417_set_the_error_correction_level", &Machine::do_symbol_setting},
        {"qr_set_the_size_of_module", &Machine::do_symbol_setting},
        {"qr_select_the_error_correction_level", &Machine::do_symbol_setting},
        {"print_bar_code", &Machine::do_bar_code},
        {"pdf417_store_the_data_in_the_symbol_storage_area", &Machine::do_store_symbol},
        {"qr_store_the_data_in_the_symbol_storage_area", &Machine::do_store_symbol},
        {"pdf417_print_the_symbol_data_in_the_symbol_storage_area", &Machine::do_print_symbol},
        {"qr_print_the_symbol_data_in_the_symbol_storage_area", &Machine::do_print_symbol},
    };
    return rows;
}

void Machine::do_symbol_setting(const Command &command)
{
    const auto n = static_cast<uint32_t>(command.arg("n"));
    const uint32_t digit = n >= 48 ? n - 48 : n;
    Settings &to = settings_;
    struct Row {
        std::string_view name;
        uint32_t &setting;
        uint32_t value;
    };
    uint32_t hri_font = to.hri_small ? 1 : 0;
    const Row rows[] = {
        {"select_print_position_HRI_characters", to.hri_position, digit},
        {"select_font_HRI_characters", hri_font, digit},
        {"set_bar_code_height", to.bar_height, std::max(n, 1U)},
        {"set_bar_code_width", to.bar_width, std::clamp(n, 1U, 8U)},
        {"pdf417_set_the_number_of_columns_in_the_data_region", to.pdf_columns, std::min(n, 30U)},
        {"pdf417_set_the_width_of_the_module", to.pdf_module, std::clamp(n, 1U, 8U)},
        {"pdf417_set_the_row_height", to.pdf_row_height, std::clamp(n, 1U, 8U)},
        // Level 48 to 56, or with m = 49 a share of the data in steps of a tenth, drawn as the nearest level.
        {"pdf417_set_the_error_correction_level", to.pdf_level,
         std::min(command.arg("m") == 48 ? digit : 1 + n / 8, 8U)},
        {"qr_set_the_size_of_module", to.qr_module, std::clamp(n, 1U, 16U)},
        {"qr_select_the_error_correction_level", to.qr_level, std::min(digit, 3U)},
    };
    for (const Row &row : rows) {
        if (row.name == command.name) {
            row.setting = row.value;
        }
    }
    to.hri_small = hri_font == 1;
}

// QR costs most by far: its masks are tried one after another.
bool Machine::encode(const Command &command, const SymbolRequest &request, Bitmap &modules)
{
    const bool square = request.type == SymbolRequest::Type::qr;
    if (options_.symbols != nullptr && !spend(50'000 + request.data.size() * (square ? 5000 : 500))) {
        return false;
    }
    if (options_.symbols != nullptr && options_.symbols(request, modules)) {
        return true;
    }
    warn(command.offset, options_.symbols == nullptr ? "symbols are drawn as boxes"
                                                     : "the symbol's data can not be encoded; drawn as a box");
    return false;
}

void Machine::do_bar_code(const Command &command)
{
    SymbolRequest request;
    const auto m = static_cast<uint32_t>(command.arg("m"));
    request.symbology = m <= 6 ? m + 65 : m;
    request.data = command.data;
    Bitmap modules;
    const bool drawn = encode(command, request, modules);
    if (!spend(uint64_t{200} * settings_.bar_width * settings_.bar_height + 4 * longest_hri * 12 * 24)) {
        return;
    }
    const Bitmap bars = drawn ? enlarged(modules, settings_.bar_width, settings_.bar_height)
                              : placeholder(settings_.bar_width * 100, settings_.bar_height);
    const std::vector<uint8_t> text = readable(command.data);
    const Bitmap reading = text_bitmap(text, settings_.hri_small);
    const int64_t x = justified(std::max(bars.width, reading.width));
    const int64_t middle = x + std::max(bars.width, reading.width) / 2;
    end_open_line();
    const auto put = [&](const Bitmap &bitmap) {
        draw(middle - bitmap.width / 2, page_mode_ ? page_y_ : y_, bitmap);
        advance(bitmap.height);
    };
    if ((settings_.hri_position & 1) != 0) {
        put(reading);
    }
    put(bars);
    if ((settings_.hri_position & 2) != 0) {
        put(reading);
    }
}

void Machine::do_store_symbol(const Command &command)
{
    symbol_data_[is_qr(command) ? qr : pdf417].assign(command.data.begin(), command.data.end());
}

void Machine::do_print_symbol(const Command &command)
{
    const bool square = is_qr(command);
    SymbolRequest request;
    request.type = square ? SymbolRequest::Type::qr : SymbolRequest::Type::pdf417;
    request.level = square ? settings_.qr_level : settings_.pdf_level;
    request.columns = settings_.pdf_columns;
    request.data = symbol_data_[square ? qr : pdf417];
    Bitmap modules;
    const bool drawn = encode(command, request, modules);
    const uint32_t module = square ? settings_.qr_module : settings_.pdf_module;
    const uint32_t height = square ? module : module * settings_.pdf_row_height;
    print_block(drawn ? enlarged(modules, module, height) : placeholder(module * 29, module * 29));
}

}  // namespace preview
