// Command encoders of the library, read back by name: encode, decode, compare.
#include <gtest/gtest.h>
#include <klov/klov.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

#include "preview/reader.h"

namespace {

using Stream = std::vector<uint8_t>;

constexpr uint32_t some_class = 0x19550001;

const uint8_t counting[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
const uint8_t letters[] = {'a', 'b', 'c', 'd'};
const uint8_t tabs[] = {8, 16, 32};
// Two stored images of 8 x 8 dots, each with its size in front.
const uint8_t nv_images[] = {1, 0, 1, 0, 0xFF, 0xFE, 0xFD, 0xFC, 0xFB, 0xFA, 0xF9, 0xF8,
                             1, 0, 1, 0, 0,    1,    2,    3,    4,    5,    6,    7};

template <typename Encoder>
Stream encode(Encoder encoder)
{
    Stream buffer(4096);
    uint32_t length = 0;
    EXPECT_EQ(encoder(buffer.data(), static_cast<uint32_t>(buffer.size()), &length), KLOV_OK);
    buffer.resize(length);
    return buffer;
}

#define ENCODE_AS(printer_class, name, ...)                                              \
    encode([](uint8_t *buf, uint32_t cap, uint32_t *len) {                               \
        return klov_cmd_##name(printer_class __VA_OPT__(, ) __VA_ARGS__, buf, cap, len); \
    })
#define ENCODE(name, ...) ENCODE_AS(some_class, name __VA_OPT__(, ) __VA_ARGS__)

Stream raster_header(uint32_t m, uint32_t width, uint32_t rows)
{
    return encode([=](uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_print_raster_img_cmd_header(some_class, static_cast<int32_t>(m), static_cast<int32_t>(width),
                                                    static_cast<int32_t>(rows), reinterpret_cast<uintptr_t>(buf), cap,
                                                    len);
    });
}

struct Row {
    const char *function;
    Stream bytes;
    std::string expected;  // one command a line: name and arguments
};

// clang-format off
const std::vector<Row> &rows()
{
    static const std::vector<Row> table = {
    {"klov_cmd_print_and_return_standard_mode", ENCODE(print_and_return_standard_mode), "print_and_return_standard_mode"},
    {"klov_cmd_print_and_line_feed", ENCODE(print_and_line_feed), "print_and_line_feed"},
    {"klov_cmd_print_and_carriage_return", ENCODE(print_and_carriage_return), "print_and_carriage_return"},
    {"klov_cmd_horizontal_tab", ENCODE(horizontal_tab), "horizontal_tab"},
    {"klov_cmd_cancel_print_data_in_page_mode", ENCODE(cancel_print_data_in_page_mode), "cancel_print_data_in_page_mode"},
    {"klov_cmd_print_data_in_page_mode", ENCODE(print_data_in_page_mode), "print_data_in_page_mode"},
    {"klov_cmd_select_default_line_spacing", ENCODE(select_default_line_spacing), "select_default_line_spacing"},
    {"klov_cmd_select_kanji_character_mode", ENCODE(select_kanji_character_mode), "select_kanji_character_mode"},
    {"klov_cmd_cancel_kanji_character_mode", ENCODE(cancel_kanji_character_mode), "cancel_kanji_character_mode"},
    {"klov_cmd_print_the_graphics_data_in_the_print_buffer_gmode", ENCODE(print_the_graphics_data_in_the_print_buffer_gmode), "print_the_graphics_data_in_the_print_buffer_gmode"},
    {"klov_cmd_transmit_the_NV_graphics_memory_capacity_gmode", ENCODE(transmit_the_NV_graphics_memory_capacity_gmode), "transmit_the_NV_graphics_memory_capacity_gmode"},
    {"klov_cmd_transmit_the_remaining_capacity_of_the_NV_graphics_memory_gmode", ENCODE(transmit_the_remaining_capacity_of_the_NV_graphics_memory_gmode), "transmit_the_remaining_capacity_of_the_NV_graphics_memory_gmode"},
    {"klov_cmd_transmit_the_key_code_list_for_defined_NV_graphics_gmode", ENCODE(transmit_the_key_code_list_for_defined_NV_graphics_gmode), "transmit_the_key_code_list_for_defined_NV_graphics_gmode"},
    {"klov_cmd_delete_all_NV_graphics_data_gmode", ENCODE(delete_all_NV_graphics_data_gmode), "delete_all_NV_graphics_data_gmode"},
    {"klov_cmd_transmit_the_remaining_capacity_of_the_download_graphics_memory_gmode", ENCODE(transmit_the_remaining_capacity_of_the_download_graphics_memory_gmode), "transmit_the_remaining_capacity_of_the_download_graphics_memory_gmode"},
    {"klov_cmd_transmit_the_key_code_list_for_defined_download_graphics_gmode", ENCODE(transmit_the_key_code_list_for_defined_download_graphics_gmode), "transmit_the_key_code_list_for_defined_download_graphics_gmode"},
    {"klov_cmd_delete_all_memory_graphics_data_gmode", ENCODE(delete_all_memory_graphics_data_gmode), "delete_all_memory_graphics_data_gmode"},
    {"klov_cmd_transmit_peripheral_device_status", ENCODE(transmit_peripheral_device_status), "transmit_peripheral_device_status"},
    {"klov_cmd_transmit_paper_sensor_status", ENCODE(transmit_paper_sensor_status), "transmit_paper_sensor_status"},
    {"klov_cmd_transmit_printer_version", ENCODE(transmit_printer_version), "transmit_printer_version"},
    {"klov_cmd_pdf417_print_the_symbol_data_in_the_symbol_storage_area", ENCODE(pdf417_print_the_symbol_data_in_the_symbol_storage_area), "pdf417_print_the_symbol_data_in_the_symbol_storage_area"},
    {"klov_cmd_pdf417_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area", ENCODE(pdf417_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area), "pdf417_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area"},
    {"klov_cmd_qr_print_the_symbol_data_in_the_symbol_storage_area", ENCODE(qr_print_the_symbol_data_in_the_symbol_storage_area), "qr_print_the_symbol_data_in_the_symbol_storage_area"},
    {"klov_cmd_qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area", ENCODE(qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area), "qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area"},
    {"klov_cmd_set_1track_card_reader_mode", ENCODE(set_1track_card_reader_mode), "set_1track_card_reader_mode"},
    {"klov_cmd_set_2track_card_reader_mode", ENCODE(set_2track_card_reader_mode), "set_2track_card_reader_mode"},
    {"klov_cmd_set_1_2track_card_reader_mode", ENCODE(set_1_2track_card_reader_mode), "set_1_2track_card_reader_mode"},
    {"klov_cmd_set_123track_card_reader_mode", ENCODE(set_123track_card_reader_mode), "set_123track_card_reader_mode"},
    {"klov_cmd_set_3track_card_reader_mode", ENCODE(set_3track_card_reader_mode), "set_3track_card_reader_mode"},
    {"klov_cmd_cancel_track_card_reader_mode", ENCODE(cancel_track_card_reader_mode), "cancel_track_card_reader_mode"},
    {"klov_cmd_selecting_mode_of_reading_smart_card", ENCODE(selecting_mode_of_reading_smart_card), "selecting_mode_of_reading_smart_card"},
    {"klov_cmd_cancel_the_mode_of_read_smart_card", ENCODE(cancel_the_mode_of_read_smart_card), "cancel_the_mode_of_read_smart_card"},
    {"klov_cmd_get_random_data_from_smart_card", ENCODE(get_random_data_from_smart_card), "get_random_data_from_smart_card"},
    {"klov_cmd_eh_reset", ENCODE(eh_reset), "eh_reset"},
    {"klov_cmd_eh_set_default_configuration", ENCODE(eh_set_default_configuration), "eh_set_default_configuration"},
    {"klov_cmd_eh_request_attestation_data", ENCODE(eh_request_attestation_data), "eh_request_attestation_data"},
    {"klov_cmd_eh_return_all_track_data", ENCODE(eh_return_all_track_data), "eh_return_all_track_data"},
    {"klov_cmd_eh_set_encryption_all_track", ENCODE(eh_set_encryption_all_track), "eh_set_encryption_all_track"},
    {"klov_cmd_initialize_printer", ENCODE(initialize_printer), "initialize_printer"},
    {"klov_cmd_select_page_mode", ENCODE(select_page_mode), "select_page_mode"},
    {"klov_cmd_select_standard_mode", ENCODE(select_standard_mode), "select_standard_mode"},
    {"klov_cmd_return_home", ENCODE(return_home), "return_home"},
    {"klov_cmd_partial_cut_one_point_left_uncut", ENCODE(partial_cut_one_point_left_uncut), "partial_cut_one_point_left_uncut"},
    {"klov_cmd_partial_cut_three_point_left_uncut", ENCODE(partial_cut_three_point_left_uncut), "partial_cut_three_point_left_uncut"},
    {"klov_cmd_position_next_label", ENCODE(position_next_label), "position_next_label"},
    {"klov_cmd_execute_power_off_sequence", ENCODE(execute_power_off_sequence), "execute_power_off_sequence"},
    {"klov_cmd_clear_buffer", ENCODE(clear_buffer), "clear_buffer"},
    {"klov_cmd_start_macro_definition", ENCODE(start_macro_definition), "start_macro_definition"},
    {"klov_cmd_clearbuffer", ENCODE(clearbuffer), "clear_buffer"},
    {"klov_cmd_transmit_printer_version", ENCODE_AS(0x00000006, transmit_printer_version), "transmit_printer_version"},
    {"klov_cmd_transmit_printer_version", ENCODE_AS(0x00000002, transmit_printer_version), "transmit_printer_version"},
    {"klov_cmd_set_left_margin", ENCODE(set_left_margin, 0), "set_left_margin n=0"},
    {"klov_cmd_set_left_margin", ENCODE(set_left_margin, 300), "set_left_margin n=300"},
    {"klov_cmd_set_left_margin", ENCODE(set_left_margin, 65535), "set_left_margin n=65535"},
    {"klov_cmd_set_line_spacing", ENCODE(set_line_spacing, 0), "set_line_spacing n=0"},
    {"klov_cmd_set_line_spacing", ENCODE(set_line_spacing, 30), "set_line_spacing n=30"},
    {"klov_cmd_set_line_spacing", ENCODE(set_line_spacing, 255), "set_line_spacing n=255"},
    {"klov_cmd_select_justification", ENCODE(select_justification, 0), "select_justification n=0"},
    {"klov_cmd_select_justification", ENCODE(select_justification, 1), "select_justification n=1"},
    {"klov_cmd_select_justification", ENCODE(select_justification, 2), "select_justification n=2"},
    {"klov_cmd_select_justification", ENCODE(select_justification, 48), "select_justification n=48"},
    {"klov_cmd_select_justification", ENCODE(select_justification, 50), "select_justification n=50"},
    {"klov_cmd_select_the_print_speed", ENCODE(select_the_print_speed, 0), "select_the_print_speed n=0"},
    {"klov_cmd_select_the_print_speed", ENCODE(select_the_print_speed, 9), "select_the_print_speed n=9"},
    {"klov_cmd_select_the_print_density", ENCODE(select_the_print_density, 0), "select_the_print_density n=0"},
    {"klov_cmd_select_the_print_density", ENCODE(select_the_print_density, 7), "select_the_print_density n=7"},
    {"klov_cmd_select_the_print_density", ENCODE(select_the_print_density, 255), "select_the_print_density n=255"},
    {"klov_cmd_print_and_reverse_feed", ENCODE(print_and_reverse_feed, 17), "print_and_reverse_feed n=17"},
    {"klov_cmd_print_and_feed_n_line", ENCODE(print_and_feed_n_line, 3), "print_and_feed_n_line n=3"},
    {"klov_cmd_print_and_reverse_feed_n_line", ENCODE(print_and_reverse_feed_n_line, 3), "print_and_reverse_feed_n_line n=3"},
    {"klov_cmd_print_and_reverse_feed_n_line", ENCODE(print_and_reverse_feed_n_line, 254), "print_and_reverse_feed_n_line n=254"},
    {"klov_cmd_set_right_side_character_spacing", ENCODE(set_right_side_character_spacing, 2), "set_right_side_character_spacing n=2"},
    {"klov_cmd_select_print_modes", ENCODE(select_print_modes, 0), "select_print_modes n=0"},
    {"klov_cmd_select_print_modes", ENCODE(select_print_modes, 56), "select_print_modes n=56"},
    {"klov_cmd_select_or_cancel_defined_charater_set", ENCODE(select_or_cancel_defined_charater_set, 0), "select_or_cancel_defined_charater_set n=0"},
    {"klov_cmd_select_or_cancel_defined_charater_set", ENCODE(select_or_cancel_defined_charater_set, 1), "select_or_cancel_defined_charater_set n=1"},
    {"klov_cmd_cancel_user_defined_characters", ENCODE(cancel_user_defined_characters, 32), "cancel_user_defined_characters n=32"},
    {"klov_cmd_cancel_user_defined_characters", ENCODE(cancel_user_defined_characters, 126), "cancel_user_defined_characters n=126"},
    {"klov_cmd_turn_underline_mode_on_off", ENCODE(turn_underline_mode_on_off, 0), "turn_underline_mode_on_off n=0"},
    {"klov_cmd_turn_underline_mode_on_off", ENCODE(turn_underline_mode_on_off, 2), "turn_underline_mode_on_off n=2"},
    {"klov_cmd_turn_underline_mode_on_off", ENCODE(turn_underline_mode_on_off, 49), "turn_underline_mode_on_off n=49"},
    {"klov_cmd_turn_emphasized_mode_on_off", ENCODE(turn_emphasized_mode_on_off, 1), "turn_emphasized_mode_on_off n=1"},
    {"klov_cmd_turn_double_strike_mode_on_off", ENCODE(turn_double_strike_mode_on_off, 1), "turn_double_strike_mode_on_off n=1"},
    {"klov_cmd_select_character_font", ENCODE(select_character_font, 0), "select_character_font n=0"},
    {"klov_cmd_select_character_font", ENCODE(select_character_font, 1), "select_character_font n=1"},
    {"klov_cmd_select_character_font", ENCODE(select_character_font, 2), "select_character_font n=2"},
    {"klov_cmd_select_character_font", ENCODE(select_character_font, 48), "select_character_font n=48"},
    {"klov_cmd_select_character_font", ENCODE(select_character_font, 49), "select_character_font n=49"},
    {"klov_cmd_select_character_font", ENCODE(select_character_font, 50), "select_character_font n=50"},
    {"klov_cmd_select_an_international_character_set", ENCODE(select_an_international_character_set, 0), "select_an_international_character_set n=0"},
    {"klov_cmd_select_an_international_character_set", ENCODE(select_an_international_character_set, 15), "select_an_international_character_set n=15"},
    {"klov_cmd_turn90_clockwise_rotation_mode_on_off", ENCODE(turn90_clockwise_rotation_mode_on_off, 0), "turn90_clockwise_rotation_mode_on_off n=0"},
    {"klov_cmd_turn90_clockwise_rotation_mode_on_off", ENCODE(turn90_clockwise_rotation_mode_on_off, 50), "turn90_clockwise_rotation_mode_on_off n=50"},
    {"klov_cmd_turn_upside_down_print_mode_on_off", ENCODE(turn_upside_down_print_mode_on_off, 1), "turn_upside_down_print_mode_on_off n=1"},
    {"klov_cmd_select_character_size", ENCODE(select_character_size, 0), "select_character_size n=0"},
    {"klov_cmd_select_character_size", ENCODE(select_character_size, 119), "select_character_size n=119"},
    {"klov_cmd_turn_white_black_reverse_print_mode_on_off", ENCODE(turn_white_black_reverse_print_mode_on_off, 1), "turn_white_black_reverse_print_mode_on_off n=1"},
    {"klov_cmd_turn_smoothing_mode_on_off", ENCODE(turn_smoothing_mode_on_off, 1), "turn_smoothing_mode_on_off n=1"},
    {"klov_cmd_set_absolute_print_position", ENCODE(set_absolute_print_position, 0), "set_absolute_print_position n=0"},
    {"klov_cmd_set_absolute_print_position", ENCODE(set_absolute_print_position, 258), "set_absolute_print_position n=258"},
    {"klov_cmd_set_absolute_print_position", ENCODE(set_absolute_print_position, 65535), "set_absolute_print_position n=65535"},
    {"klov_cmd_set_relative_print_position", ENCODE(set_relative_print_position, -32768), "set_relative_print_position n=-32768"},
    {"klov_cmd_set_relative_print_position", ENCODE(set_relative_print_position, -1), "set_relative_print_position n=-1"},
    {"klov_cmd_set_relative_print_position", ENCODE(set_relative_print_position, 0), "set_relative_print_position n=0"},
    {"klov_cmd_set_relative_print_position", ENCODE(set_relative_print_position, 32767), "set_relative_print_position n=32767"},
    {"klov_cmd_set_print_position_to_the_beginning_of_print_line", ENCODE(set_print_position_to_the_beginning_of_print_line, 0), "set_print_position_to_the_beginning_of_print_line n=0"},
    {"klov_cmd_set_print_position_to_the_beginning_of_print_line", ENCODE(set_print_position_to_the_beginning_of_print_line, 49), "set_print_position_to_the_beginning_of_print_line n=49"},
    {"klov_cmd_set_print_area_width", ENCODE(set_print_area_width, 512), "set_print_area_width n=512"},
    {"klov_cmd_select_print_direction_in_page_mode", ENCODE(select_print_direction_in_page_mode, 0), "select_print_direction_in_page_mode n=0"},
    {"klov_cmd_select_print_direction_in_page_mode", ENCODE(select_print_direction_in_page_mode, 3), "select_print_direction_in_page_mode n=3"},
    {"klov_cmd_select_print_direction_in_page_mode", ENCODE(select_print_direction_in_page_mode, 51), "select_print_direction_in_page_mode n=51"},
    {"klov_cmd_set_absolute_vertical_print_position_in_page_mode", ENCODE(set_absolute_vertical_print_position_in_page_mode, 1000), "set_absolute_vertical_print_position_in_page_mode n=1000"},
    {"klov_cmd_set_relative_vertical_print_position_in_page_mode", ENCODE(set_relative_vertical_print_position_in_page_mode, -2), "set_relative_vertical_print_position_in_page_mode n=-2"},
    {"klov_cmd_set_relative_vertical_print_position_in_page_mode", ENCODE(set_relative_vertical_print_position_in_page_mode, 2), "set_relative_vertical_print_position_in_page_mode n=2"},
    {"klov_cmd_set_the_reference_dot_density_for_graphics_gmode", ENCODE(set_the_reference_dot_density_for_graphics_gmode, 50), "set_the_reference_dot_density_for_graphics_gmode n=50"},
    {"klov_cmd_set_the_reference_dot_density_for_graphics_gmode", ENCODE(set_the_reference_dot_density_for_graphics_gmode, 51), "set_the_reference_dot_density_for_graphics_gmode n=51"},
    {"klov_cmd_transmit_real_time_status", ENCODE(transmit_real_time_status, 1), "transmit_real_time_status n=1"},
    {"klov_cmd_transmit_real_time_status", ENCODE(transmit_real_time_status, 2), "transmit_real_time_status n=2"},
    {"klov_cmd_transmit_real_time_status", ENCODE(transmit_real_time_status, 3), "transmit_real_time_status n=3"},
    {"klov_cmd_transmit_real_time_status", ENCODE(transmit_real_time_status, 4), "transmit_real_time_status n=4"},
    {"klov_cmd_transmit_real_time_status", ENCODE(transmit_real_time_status, 7), "transmit_real_time_status n=7"},
    {"klov_cmd_transmit_specified_status_in_real_time", ENCODE(transmit_specified_status_in_real_time, 1), "transmit_specified_status_in_real_time n=1"},
    {"klov_cmd_transmit_specified_status_in_real_time", ENCODE(transmit_specified_status_in_real_time, 5), "transmit_specified_status_in_real_time n=5"},
    {"klov_cmd_enable_disable_ASB", ENCODE(enable_disable_ASB, 0), "enable_disable_ASB n=0"},
    {"klov_cmd_enable_disable_ASB", ENCODE(enable_disable_ASB, 255), "enable_disable_ASB n=255"},
    {"klov_cmd_transmit_status", ENCODE(transmit_status, 1), "transmit_status n=1"},
    {"klov_cmd_transmit_status", ENCODE(transmit_status, 2), "transmit_status n=2"},
    {"klov_cmd_transmit_status", ENCODE(transmit_status, 49), "transmit_status n=49"},
    {"klov_cmd_transmit_status", ENCODE(transmit_status, 50), "transmit_status n=50"},
    {"klov_cmd_transmit_printer_id", ENCODE(transmit_printer_id, 1), "transmit_printer_id n=1"},
    {"klov_cmd_transmit_printer_id", ENCODE(transmit_printer_id, 3), "transmit_printer_id n=3"},
    {"klov_cmd_transmit_printer_id", ENCODE(transmit_printer_id, 49), "transmit_printer_id n=49"},
    {"klov_cmd_transmit_printer_id", ENCODE(transmit_printer_id, 51), "transmit_printer_id n=51"},
    {"klov_cmd_select_print_position_HRI_characters", ENCODE(select_print_position_HRI_characters, 0), "select_print_position_HRI_characters n=0"},
    {"klov_cmd_select_print_position_HRI_characters", ENCODE(select_print_position_HRI_characters, 2), "select_print_position_HRI_characters n=2"},
    {"klov_cmd_select_print_position_HRI_characters", ENCODE(select_print_position_HRI_characters, 51), "select_print_position_HRI_characters n=51"},
    {"klov_cmd_select_font_HRI_characters", ENCODE(select_font_HRI_characters, 0), "select_font_HRI_characters n=0"},
    {"klov_cmd_select_font_HRI_characters", ENCODE(select_font_HRI_characters, 49), "select_font_HRI_characters n=49"},
    {"klov_cmd_set_bar_code_height", ENCODE(set_bar_code_height, 1), "set_bar_code_height n=1"},
    {"klov_cmd_set_bar_code_height", ENCODE(set_bar_code_height, 255), "set_bar_code_height n=255"},
    {"klov_cmd_set_bar_code_width", ENCODE(set_bar_code_width, 1), "set_bar_code_width n=1"},
    {"klov_cmd_set_bar_code_width", ENCODE(set_bar_code_width, 6), "set_bar_code_width n=6"},
    {"klov_cmd_pdf417_set_the_number_of_columns_in_the_data_region", ENCODE(pdf417_set_the_number_of_columns_in_the_data_region, 0), "pdf417_set_the_number_of_columns_in_the_data_region n=0"},
    {"klov_cmd_pdf417_set_the_number_of_columns_in_the_data_region", ENCODE(pdf417_set_the_number_of_columns_in_the_data_region, 30), "pdf417_set_the_number_of_columns_in_the_data_region n=30"},
    {"klov_cmd_pdf417_set_the_number_of_rows", ENCODE(pdf417_set_the_number_of_rows, 0), "pdf417_set_the_number_of_rows n=0"},
    {"klov_cmd_pdf417_set_the_number_of_rows", ENCODE(pdf417_set_the_number_of_rows, 90), "pdf417_set_the_number_of_rows n=90"},
    {"klov_cmd_pdf417_set_the_width_of_the_module", ENCODE(pdf417_set_the_width_of_the_module, 2), "pdf417_set_the_width_of_the_module n=2"},
    {"klov_cmd_pdf417_set_the_width_of_the_module", ENCODE(pdf417_set_the_width_of_the_module, 8), "pdf417_set_the_width_of_the_module n=8"},
    {"klov_cmd_pdf417_set_the_row_height", ENCODE(pdf417_set_the_row_height, 2), "pdf417_set_the_row_height n=2"},
    {"klov_cmd_pdf417_set_the_row_height", ENCODE(pdf417_set_the_row_height, 8), "pdf417_set_the_row_height n=8"},
    {"klov_cmd_pdf417_select_the_options", ENCODE(pdf417_select_the_options, 0), "pdf417_select_the_options n=0"},
    {"klov_cmd_pdf417_select_the_options", ENCODE(pdf417_select_the_options, 1), "pdf417_select_the_options n=1"},
    {"klov_cmd_qr_select_the_model", ENCODE(qr_select_the_model, 49), "qr_select_the_model n=49"},
    {"klov_cmd_qr_select_the_model", ENCODE(qr_select_the_model, 50), "qr_select_the_model n=50"},
    {"klov_cmd_qr_set_the_size_of_module", ENCODE(qr_set_the_size_of_module, 1), "qr_set_the_size_of_module n=1"},
    {"klov_cmd_qr_set_the_size_of_module", ENCODE(qr_set_the_size_of_module, 16), "qr_set_the_size_of_module n=16"},
    {"klov_cmd_qr_select_the_error_correction_level", ENCODE(qr_select_the_error_correction_level, 48), "qr_select_the_error_correction_level n=48"},
    {"klov_cmd_qr_select_the_error_correction_level", ENCODE(qr_select_the_error_correction_level, 51), "qr_select_the_error_correction_level n=51"},
    {"klov_cmd_selecting_mode_of_operate_smart_card", ENCODE(selecting_mode_of_operate_smart_card, 0), "selecting_mode_of_operate_smart_card n=0"},
    {"klov_cmd_selecting_mode_of_operate_smart_card", ENCODE(selecting_mode_of_operate_smart_card, 48), "selecting_mode_of_operate_smart_card n=48"},
    {"klov_cmd_selecting_mode_of_operate_smart_card", ENCODE(selecting_mode_of_operate_smart_card, 255), "selecting_mode_of_operate_smart_card n=255"},
    {"klov_cmd_smart_card_get_response", ENCODE(smart_card_get_response, 16), "smart_card_get_response n=16"},
    {"klov_cmd_eh_set_encryption_type", ENCODE(eh_set_encryption_type, 48), "eh_set_encryption_type n=48"},
    {"klov_cmd_eh_set_encryption_type", ENCODE(eh_set_encryption_type, 49), "eh_set_encryption_type n=49"},
    {"klov_cmd_eh_enable", ENCODE(eh_enable, 48), "eh_enable n=48"},
    {"klov_cmd_eh_enable", ENCODE(eh_enable, 49), "eh_enable n=49"},
    {"klov_cmd_eh_set_encryption_mode", ENCODE(eh_set_encryption_mode, 48), "eh_set_encryption_mode n=48"},
    {"klov_cmd_eh_set_encryption_mode", ENCODE(eh_set_encryption_mode, 50), "eh_set_encryption_mode n=50"},
    {"klov_cmd_select_unidirectional_print_mode", ENCODE(select_unidirectional_print_mode, 1), "select_unidirectional_print_mode n=1"},
    {"klov_cmd_select_peripheral_device", ENCODE(select_peripheral_device, 1), "select_peripheral_device n=1"},
    {"klov_cmd_select_peripheral_device", ENCODE(select_peripheral_device, 3), "select_peripheral_device n=3"},
    {"klov_cmd_feed_paper_to_the_label_peeling_position", ENCODE(feed_paper_to_the_label_peeling_position, 48), "feed_paper_to_the_label_peeling_position n=48"},
    {"klov_cmd_feed_paper_to_the_label_peeling_position", ENCODE(feed_paper_to_the_label_peeling_position, 49), "feed_paper_to_the_label_peeling_position n=49"},
    {"klov_cmd_feed_paper_to_the_cutting_position", ENCODE(feed_paper_to_the_cutting_position, 48), "feed_paper_to_the_cutting_position n=48"},
    {"klov_cmd_feed_paper_to_the_cutting_position", ENCODE(feed_paper_to_the_cutting_position, 49), "feed_paper_to_the_cutting_position n=49"},
    {"klov_cmd_feed_paper_to_the_print_starting_position", ENCODE(feed_paper_to_the_print_starting_position, 48), "feed_paper_to_the_print_starting_position n=48"},
    {"klov_cmd_feed_paper_to_the_print_starting_position", ENCODE(feed_paper_to_the_print_starting_position, 50), "feed_paper_to_the_print_starting_position n=50"},
    {"klov_cmd_send_real_time_request_to_printer", ENCODE(send_real_time_request_to_printer, 1), "send_real_time_request_to_printer n=1"},
    {"klov_cmd_send_real_time_request_to_printer", ENCODE(send_real_time_request_to_printer, 2), "send_real_time_request_to_printer n=2"},
    {"klov_cmd_set_buzzer", ENCODE(set_buzzer, 0), "set_buzzer n=0"},
    {"klov_cmd_set_buzzer", ENCODE(set_buzzer, 2), "set_buzzer n=2"},
    {"klov_cmd_select_the_print_control_mode", ENCODE(select_the_print_control_mode, 0), "select_the_print_control_mode n=0"},
    {"klov_cmd_select_the_print_control_mode", ENCODE(select_the_print_control_mode, 52), "select_the_print_control_mode n=52"},
    {"klov_cmd_select_the_number_of_parts_for_the_thermal_head_energizing", ENCODE(select_the_number_of_parts_for_the_thermal_head_energizing, 0), "select_the_number_of_parts_for_the_thermal_head_energizing n=0"},
    {"klov_cmd_select_the_number_of_parts_for_the_thermal_head_energizing", ENCODE(select_the_number_of_parts_for_the_thermal_head_energizing, 52), "select_the_number_of_parts_for_the_thermal_head_energizing n=52"},
    {"klov_cmd_select_the_number_of_parts_for_the_thermal_head_energizing", ENCODE(select_the_number_of_parts_for_the_thermal_head_energizing, 128), "select_the_number_of_parts_for_the_thermal_head_energizing n=128"},
    {"klov_cmd_print_downloaded_bit_image", ENCODE(print_downloaded_bit_image, 0), "print_downloaded_bit_image m=0"},
    {"klov_cmd_print_downloaded_bit_image", ENCODE(print_downloaded_bit_image, 3), "print_downloaded_bit_image m=3"},
    {"klov_cmd_print_downloaded_bit_image", ENCODE(print_downloaded_bit_image, 51), "print_downloaded_bit_image m=51"},
    {"klov_cmd_select_cut_mode_and_cut_paper", ENCODE(select_cut_mode_and_cut_paper, 0), "select_cut_mode_and_cut_paper m=0"},
    {"klov_cmd_select_cut_mode_and_cut_paper", ENCODE(select_cut_mode_and_cut_paper, 1), "select_cut_mode_and_cut_paper m=1"},
    {"klov_cmd_select_cut_mode_and_cut_paper", ENCODE(select_cut_mode_and_cut_paper, 48), "select_cut_mode_and_cut_paper m=48"},
    {"klov_cmd_select_cut_mode_and_cut_paper", ENCODE(select_cut_mode_and_cut_paper, 49), "select_cut_mode_and_cut_paper m=49"},
    {"klov_cmd_select_cut_mode_and_feed_paper", ENCODE(select_cut_mode_and_feed_paper, 66, 0), "select_cut_mode_and_feed_paper m=66 n=0"},
    {"klov_cmd_select_cut_mode_and_feed_paper", ENCODE(select_cut_mode_and_feed_paper, 0, 9), "select_cut_mode_and_feed_paper m=65 n=9"},
    {"klov_cmd_select_cut_mode_and_feed_paper", ENCODE(select_cut_mode_and_feed_paper, 1, 9), "select_cut_mode_and_feed_paper m=66 n=9"},
    {"klov_cmd_print_and_feed_paper", ENCODE(print_and_feed_paper, 0), "print_and_feed_paper n=0"},
    {"klov_cmd_print_and_feed_paper", ENCODE(print_and_feed_paper, 1), "print_and_feed_paper n=1"},
    {"klov_cmd_print_and_feed_paper", ENCODE(print_and_feed_paper, 255), "print_and_feed_paper n=255"},
    {"klov_cmd_print_and_feed_paper", ENCODE(print_and_feed_paper, 600), "print_and_feed_paper n=255\nprint_and_feed_paper n=255\nprint_and_feed_paper n=90"},
    {"klov_cmd_beep_integrated_beeper", ENCODE(beep_integrated_beeper, 3, 2, 1), "beep_integrated_beeper n=3 c=2 t=1"},
    {"klov_cmd_generate_pulse", ENCODE(generate_pulse, 0, 80, 80), "generate_pulse m=0 t1=80 t2=80"},
    {"klov_cmd_generate_pulse", ENCODE(generate_pulse, 49, 100, 50), "generate_pulse m=49 t1=100 t2=100"},
    {"klov_cmd_print_the_specified_NV_graphics_data_gmode", ENCODE(print_the_specified_NV_graphics_data_gmode, 48, 49, 1, 2), "print_the_specified_NV_graphics_data_gmode kc1=48 kc2=49 x=1 y=2"},
    {"klov_cmd_print_the_specified_downloaded_graphics_data_gmode", ENCODE(print_the_specified_downloaded_graphics_data_gmode, 126, 32, 2, 1), "print_the_specified_downloaded_graphics_data_gmode kc1=126 kc2=32 x=2 y=1"},
    {"klov_cmd_delete_the_specified_NV_graphics_data_gmode", ENCODE(delete_the_specified_NV_graphics_data_gmode, 48, 49), "delete_the_specified_NV_graphics_data_gmode kc1=48 kc2=49"},
    {"klov_cmd_delete_the_specified_download_memory_graphics_data_gmode", ENCODE(delete_the_specified_download_memory_graphics_data_gmode, 48, 49), "delete_the_specified_download_memory_graphics_data_gmode kc1=48 kc2=49"},
    {"klov_cmd_select_character_code_table", ENCODE(select_character_code_table, 255, 0), "select_character_code_table n=255"},
    {"klov_cmd_select_character_code_table", ENCODE(select_character_code_table, 2, 1), "select_character_code_table n=2"},
    {"klov_cmd_set_horizontal_and_vertical_motion_units", ENCODE(set_horizontal_and_vertical_motion_units, 180, 203), "set_horizontal_and_vertical_motion_units x=180 y=203"},
    {"klov_cmd_set_print_area_in_page_mode", ENCODE(set_print_area_in_page_mode, 1, 300, 576, 65535), "set_print_area_in_page_mode x=1 y=300 dx=576 dy=65535"},
    {"klov_cmd_set_horizontal_tab_positions", ENCODE(set_horizontal_tab_positions, nullptr, 0), "set_horizontal_tab_positions"},
    {"klov_cmd_set_horizontal_tab_positions", ENCODE(set_horizontal_tab_positions, tabs, 3), "set_horizontal_tab_positions data=081020"},
    {"klov_cmd_define_user_defined_characters", ENCODE(define_user_defined_characters, 65, 65, 2, counting, 6), "define_user_defined_characters c1=65 c2=65 x=2 data=000102030405"},
    {"klov_cmd_define_user_defined_characters", ENCODE(define_user_defined_characters, 65, 70, 1, counting, 3), "define_user_defined_characters c1=65 c2=70 x=1 data=000102"},
    {"klov_cmd_select_bit_image_mode", ENCODE(select_bit_image_mode, 0, 2, counting, 2), "select_bit_image_mode m=0 n=2 data=0001"},
    {"klov_cmd_select_bit_image_mode", ENCODE(select_bit_image_mode, 1, 2, counting, 4), "select_bit_image_mode m=1 n=2 data=00010203"},
    {"klov_cmd_select_bit_image_mode", ENCODE(select_bit_image_mode, 32, 2, counting, 2), "select_bit_image_mode m=32 n=2 data=0001"},
    {"klov_cmd_select_bit_image_mode", ENCODE(select_bit_image_mode, 33, 2, counting, 12), "select_bit_image_mode m=33 n=2 data=000102030405060708090A0B"},
    {"klov_cmd_print_NV_bit_image", ENCODE(print_NV_bit_image, 255, 3), "print_NV_bit_image n=255 m=3"},
    {"klov_cmd_define_nv_bit_image_fmode", ENCODE(define_nv_bit_image_fmode, 2, nv_images, 24), "define_nv_bit_image_fmode n=2 data=01000100FFFEFDFCFBFAF9F8010001000001020304050607"},
    {"klov_cmd_define_downloaded_bit_image", ENCODE(define_downloaded_bit_image, 1, 1, counting, 8), "define_downloaded_bit_image x=1 y=1 data=0001020304050607"},
    {"klov_cmd_define_the_NV_graphics_data_raster_gmode", ENCODE(define_the_NV_graphics_data_raster_gmode, 48, 49, 9, 1, counting, 2), "define_the_NV_graphics_data_raster_gmode p=13 kc1=48 kc2=49 x=9 y=1 c=49 data=0001"},
    {"klov_cmd_define_the_NV_graphics_data_column_gmode", ENCODE(define_the_NV_graphics_data_column_gmode, 48, 49, 1, 9, counting, 2), "define_the_NV_graphics_data_column_gmode p=13 kc1=48 kc2=49 x=1 y=9 c=48 data=0001"},
    {"klov_cmd_define_the_downloaded_graphics_data_raster_gmode", ENCODE(define_the_downloaded_graphics_data_raster_gmode, 48, 49, 9, 1, counting, 2), "define_the_downloaded_graphics_data_raster_gmode p=13 kc1=48 kc2=49 x=9 y=1 c=49 data=0001"},
    {"klov_cmd_define_the_downloaded_graphics_data_column_gmode", ENCODE(define_the_downloaded_graphics_data_column_gmode, 48, 49, 1, 9, counting, 2), "define_the_downloaded_graphics_data_column_gmode p=13 kc1=48 kc2=49 x=1 y=9 c=49 data=0001"},
    {"klov_cmd_store_the_graphics_data_in_the_print_buffer_raster_gmode", ENCODE(store_the_graphics_data_in_the_print_buffer_raster_gmode, 1, 2, 9, 1, counting, 2), "store_the_graphics_data_in_the_print_buffer_raster_gmode p=12 bx=1 by=2 x=9 y=1 data=0001"},
    {"klov_cmd_store_the_graphics_data_in_the_print_buffer_column_gmode", ENCODE(store_the_graphics_data_in_the_print_buffer_column_gmode, 2, 1, 1, 9, counting, 2), "store_the_graphics_data_in_the_print_buffer_column_gmode p=13 bx=2 by=1 x=1 y=9 data=0001"},
    {"klov_cmd_print_bar_code", ENCODE(print_bar_code, 0, letters, 4), "print_bar_code m=0 data=61626364"},
    {"klov_cmd_print_bar_code", ENCODE(print_bar_code, 6, letters, 4), "print_bar_code m=6 data=61626364"},
    {"klov_cmd_print_bar_code", ENCODE(print_bar_code, 65, letters, 4), "print_bar_code m=65 k=4 data=61626364"},
    {"klov_cmd_print_bar_code", ENCODE(print_bar_code, 73, letters, 4), "print_bar_code m=73 k=4 data=61626364"},
    {"klov_cmd_pdf417_set_the_error_correction_level", ENCODE(pdf417_set_the_error_correction_level, 48, 56), "pdf417_set_the_error_correction_level m=48 n=56"},
    {"klov_cmd_pdf417_set_the_error_correction_level", ENCODE(pdf417_set_the_error_correction_level, 49, 40), "pdf417_set_the_error_correction_level m=49 n=40"},
    {"klov_cmd_pdf417_store_the_data_in_the_symbol_storage_area", ENCODE(pdf417_store_the_data_in_the_symbol_storage_area, letters, 4), "pdf417_store_the_data_in_the_symbol_storage_area p=7 data=61626364"},
    {"klov_cmd_qr_store_the_data_in_the_symbol_storage_area", ENCODE(qr_store_the_data_in_the_symbol_storage_area, letters, 4), "qr_store_the_data_in_the_symbol_storage_area p=7 data=61626364"},
    {"klov_cmd_qr_store_the_data_in_the_symbol_storage_area", ENCODE(qr_store_the_data_in_the_symbol_storage_area, letters, 0), "qr_store_the_data_in_the_symbol_storage_area p=3"},
    {"klov_cmd_smart_card_select_file", ENCODE(smart_card_select_file, letters, 0), "smart_card_select_file l=6 k=0"},
    {"klov_cmd_smart_card_select_file", ENCODE(smart_card_select_file, letters, 2), "smart_card_select_file l=8 k=2 data=6162"},
    {"klov_cmd_smart_card_read_record", ENCODE(smart_card_read_record, 1, 4, 255), "smart_card_read_record r=1 p=4 le=255"},
    {"klov_cmd_eh_send_attestation_data", ENCODE(eh_send_attestation_data, counting, 8), "eh_send_attestation_data data=0001020304050607"},
    {"klov_cmd_generate_pulse_in_real_time", ENCODE(generate_pulse_in_real_time, 1, 500), "generate_pulse_in_real_time m=1 t=5"},
    {"klov_cmd_execute_macro", ENCODE(execute_macro, 2, 10, 1), "execute_macro r=2 t=10 m=1"},
    {"klov_cmd_execute_test_print", ENCODE(execute_test_print, 0, 2), "execute_test_print n=0 m=2"},
    {"klov_cmd_enable_real_time_command", ENCODE(enable_real_time_command, 3, counting, 2), "enable_real_time_command p=3 data=0001"},
    {"klov_cmd_enable_real_time_command", ENCODE(enable_real_time_command, 5, counting, 4), "enable_real_time_command p=5 data=00010203"},
    {"klov_cmd_draw_line", ENCODE(draw_line, counting, 12), "draw_line data=000102030405060708090A0B"},
    {"klov_cmd_draw_rectangle", ENCODE(draw_rectangle, counting, 14), "draw_rectangle data=000102030405060708090A0B0C0D"},
    {"klov_cmd_write_to_nv_user_memory", ENCODE(write_to_nv_user_memory, 0x010203, 4, letters, 4), "write_to_nv_user_memory a=66051 n=4 data=61626364"},
    {"klov_cmd_read_from_nv_user_memory", ENCODE(read_from_nv_user_memory, 1023, 80), "read_from_nv_user_memory a=1023 n=80"},
    {"klov_cmd_usb_ctl", ENCODE_AS(0x00001001, usb_ctl, 1), "usb_ctl"},
    {"klov_cmd_usb_ctl", ENCODE_AS(0x00001001, usb_ctl, 2), "usb_ctl"},
    {"klov_cmd_print_raster_bit_image", ENCODE(print_raster_bit_image, 0, 2, 3, counting), "print_raster_bit_image m=0 xBytes=2 yDots=3"},
    {"klov_cmd_print_raster_bit_image", ENCODE(print_raster_bit_image, 51, 2, 3, counting), "print_raster_bit_image m=51 xBytes=2 yDots=3"},
    {"klov_cmd_print_raster_img_cmd_header", raster_header(0, 0x0102, 0), "print_raster_bit_image m=0 xBytes=258 yDots=0"},
    {"klov_cmd_print_raster_img_cmd_header", raster_header(32, 1, 300), "print_raster_bit_image m=32 xBytes=1 yDots=300"},
    };
    return table;
}
// clang-format on

std::string in_words(const preview::CommandRecord &record)
{
    std::string text(record.name);
    for (const preview::Arg &arg : record.args) {
        text += ' ' + std::string(arg.name) + '=' + std::to_string(arg.value);
    }
    if (!record.data.empty()) {
        text += " data=";
        for (const uint8_t byte : record.data) {
            char pair[3];
            std::snprintf(pair, sizeof pair, "%02X", static_cast<unsigned>(byte));
            text += pair;
        }
    }
    return text;
}

std::string list_of(const preview::Reader &reader)
{
    std::string list;
    for (const preview::CommandRecord &record : reader.commands()) {
        list += (list.empty() ? "" : "\n") + in_words(record);
    }
    return list;
}

std::string read_back(const Stream &bytes)
{
    preview::Reader reader(preview::Options{});
    reader.feed(bytes);
    EXPECT_TRUE(reader.finish());
    return list_of(reader);
}

}  // namespace

TEST(Encoders, EachIsReadBackByNameAndArguments)
{
    for (const Row &row : rows()) {
        EXPECT_EQ(read_back(row.bytes), row.expected) << row.function;
    }
}

// Between two feeds nothing may swallow a neighbour's bytes.
TEST(Encoders, EachStaysInStepWithItsNeighbours)
{
    const Stream line_feed = {0x0A};
    const Stream initialize = {0x1B, 0x40};
    for (const Row &row : rows()) {
        Stream stream = line_feed;
        stream.insert(stream.end(), row.bytes.begin(), row.bytes.end());
        stream.insert(stream.end(), initialize.begin(), initialize.end());
        EXPECT_EQ(read_back(stream), "print_and_line_feed\n" + row.expected + "\ninitialize_printer") << row.function;
    }
}

TEST(Encoders, RecordsTellOffsetAndLength)
{
    for (const Row &row : rows()) {
        preview::Reader reader(preview::Options{});
        reader.feed(row.bytes);
        reader.finish();
        uint64_t offset = 0;
        for (const preview::CommandRecord &record : reader.commands()) {
            EXPECT_EQ(record.offset, offset) << row.function;
            offset += record.length;
        }
        EXPECT_EQ(offset, row.bytes.size()) << row.function;
    }
}

// A name without an encoder would read back what nobody calls.
TEST(Encoders, EveryRowNamesAPublicEncoder)
{
    std::set<std::string> declared;
    const std::regex name("klov_cmd_[A-Za-z0-9_]+(?=\\()");
    for (const auto &entry : std::filesystem::directory_iterator(KLOV_PUBLIC_HEADERS)) {
        std::ifstream file(entry.path());
        const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        for (std::sregex_iterator it(text.begin(), text.end(), name), end; it != end; ++it) {
            if (it->str().find("klov_cmd_parse_") == std::string::npos) {
                declared.insert(it->str());
            }
        }
    }
    ASSERT_GT(declared.size(), 100U) << "the headers were not found";
    for (const Row &row : rows()) {
        EXPECT_TRUE(declared.contains(row.function)) << row.function;
    }
}

// A printer whose page area command has a byte more: only its reader option can tell.
TEST(Encoders, PaddedPageAreaNeedsItsOption)
{
    const Stream bytes = ENCODE_AS(0x11020001, set_print_area_in_page_mode, 1, 300, 576, 65535);
    preview::Reader reader({.padded_page_area = true});
    reader.feed(bytes);
    EXPECT_TRUE(reader.finish());
    EXPECT_EQ(list_of(reader), "set_print_area_in_page_mode x=1 y=300 dx=576 dy=65535");
}

// 65,536 bytes and more take a 32-bit count, mostly behind the prefix of the 16-bit form.
TEST(Encoders, LongFormsAreReadBack)
{
    const std::vector<uint8_t> data(100000, 0x5A);
    using Define = int32_t (*)(uint32_t, int32_t, int32_t, int32_t, int32_t, const uint8_t *, uint32_t, uint8_t *,
                               uint32_t, uint32_t *);
    struct Long {
        Define encoder;
        int32_t first, second, x, y;
        const char *name;
    };
    const Long table[] = {
        {klov_cmd_define_the_NV_graphics_data_raster_gmode, 48, 49, 800, 1000,
         "define_the_NV_graphics_data_raster_gmode"},
        {klov_cmd_define_the_NV_graphics_data_column_gmode, 48, 49, 1000, 800,
         "define_the_NV_graphics_data_column_gmode"},
        {klov_cmd_define_the_downloaded_graphics_data_raster_gmode, 48, 49, 800, 1000,
         "define_the_downloaded_graphics_data_raster_gmode"},
        {klov_cmd_define_the_downloaded_graphics_data_column_gmode, 48, 49, 1000, 800,
         "define_the_downloaded_graphics_data_column_gmode"},
        {klov_cmd_store_the_graphics_data_in_the_print_buffer_raster_gmode, 1, 1, 800, 1000,
         "store_the_graphics_data_in_the_print_buffer_raster_gmode"},
        {klov_cmd_store_the_graphics_data_in_the_print_buffer_column_gmode, 1, 1, 1000, 800,
         "store_the_graphics_data_in_the_print_buffer_column_gmode"},
    };
    for (const Long &row : table) {
        Stream buffer(200000);
        uint32_t length = 0;
        ASSERT_EQ(row.encoder(some_class, row.first, row.second, row.x, row.y, data.data(), 100000, buffer.data(),
                              static_cast<uint32_t>(buffer.size()), &length),
                  KLOV_OK);
        buffer.resize(length);
        buffer.push_back(0x0A);
        preview::Reader reader(preview::Options{});
        reader.feed(buffer);
        EXPECT_TRUE(reader.finish());
        ASSERT_EQ(reader.commands().size(), 2U) << row.name;
        EXPECT_EQ(reader.commands()[0].name, row.name);
        EXPECT_EQ(reader.commands()[0].data, data) << row.name;
    }
}
