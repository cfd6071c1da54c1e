// The command table: every printer command as a row of bytes, parameters and a name. More special rows stand before the
// general ones that share their first bytes.
#ifndef KLOV_PREVIEW_TABLE_ROWS_H
#define KLOV_PREVIEW_TABLE_ROWS_H

namespace preview {

// How many data bytes follow the bytes that a row's pattern spells out.
enum class Tail {
    none,
    rest16,         // p counts everything after itself: the bytes of the pattern that follow it, then the data
    rest32,         // the same with a 32-bit count
    rest16_be,      // the same, high byte first
    raster,         // a raster image; its rows are read one by one
    counted,        // as many bytes as the last parameter says
    until_nul,      // up to and with a 00 byte
    tab_list,       // up to 32 columns and a 00 byte
    column_image,   // n columns of 1 or 3 bytes (bit 5 of m)
    one_shape,      // x columns of 3 bytes
    blocks_8x8,     // x * y * 8 bytes
    nv_images,      // n images, each with its own size in front
    raster_rows,    // y rows of x dots
    dot_columns,    // x columns of y dots
    store_rows,     // as raster_rows, and p must fit exactly
    store_columns,  // as dot_columns, and p is one more than what follows
    smart_file,     // k name bytes, then 00
    enable_rt,      // p counts the byte before the data too
};

struct TableRow {
    // Bytes as two upper-case hexadecimal digits; parameters as a lower-case name: `n` one byte, `n.2` and `n.4`
    // little-endian, `n.b2` high byte first, `n.s2` signed, `d.8` eight bytes of data. `m=0-3,48-51` takes these values
    // only. `again` repeats a parameter and is not listed.
    const char *pattern;
    const char *name;
    Tail tail = Tail::none;
    bool known = true;  // false: the frame tells its length, but its function is not known
};

// clang-format off
inline constexpr TableRow command_table[] = {
    // One byte.
    {"04", "cancel_track_card_reader_mode"},
    {"09", "horizontal_tab"},
    {"0A", "print_and_line_feed"},
    {"0C", "print_and_return_standard_mode"},
    {"0D", "print_and_carriage_return"},
    {"18", "cancel_print_data_in_page_mode"},
    {"7E 04 7E", "cancel_the_mode_of_read_smart_card"},
    {"5A 5A 5A 47 45 54 56 45 52 53 49 4F 4E", "transmit_printer_version"},

    // DLE and single control codes.
    {"10 04 n", "transmit_real_time_status"},
    {"10 05 n", "send_real_time_request_to_printer"},
    {"10 14 01 m t", "generate_pulse_in_real_time"},
    {"10 14 02 01 08", "execute_power_off_sequence"},
    {"10 14 07 n", "transmit_specified_status_in_real_time"},
    {"10 14 08 01 03 14 01 06 02 08", "clear_buffer"},
    {"12 27 77 10 n 0D 0A", "set_buzzer"},
    {"1E 1E 1E", "usb_ctl"},
    {"1E 10 04", "usb_ctl"},

    // ESC.
    {"1B 0C", "print_data_in_page_mode"},
    {"1B 20 n", "set_right_side_character_spacing"},
    {"1B 21 n", "select_print_modes"},
    {"1B 23 2A 0A 00", "transmit_printer_version"},
    {"1B 24 n.2", "set_absolute_print_position"},
    {"1B 25 n", "select_or_cancel_defined_charater_set"},
    {"1B 26 03 c1 c2 x", "define_user_defined_characters", Tail::one_shape},
    {"1B 28 41 05 00 61 64 n c t", "beep_integrated_beeper"},
    {"1B 2A m=0-1,32-33 n.2", "select_bit_image_mode", Tail::column_image},
    {"1B 2D n", "turn_underline_mode_on_off"},
    {"1B 32", "select_default_line_spacing"},
    {"1B 33 n", "set_line_spacing"},
    {"1B 3C", "return_home"},
    {"1B 3D n", "select_peripheral_device"},
    {"1B 3F n", "cancel_user_defined_characters"},
    {"1B 40", "initialize_printer"},
    {"1B 44", "set_horizontal_tab_positions", Tail::tab_list},
    {"1B 45 n", "turn_emphasized_mode_on_off"},
    {"1B 47 n", "turn_double_strike_mode_on_off"},
    {"1B 4A n", "print_and_feed_paper"},
    {"1B 4B n", "print_and_reverse_feed"},
    {"1B 4C", "select_page_mode"},
    {"1B 4D 43", "set_1track_card_reader_mode"},
    {"1B 4D 44", "set_2track_card_reader_mode"},
    {"1B 4D 45", "set_1_2track_card_reader_mode"},
    {"1B 4D 46", "set_123track_card_reader_mode"},
    {"1B 4D 47", "set_3track_card_reader_mode"},
    {"1B 4D 53 00 04 02 38 03 39", "eh_reset"},
    {"1B 4D 53 00 05 02 53 18 03 4A", "eh_set_default_configuration"},
    {"1B 4D 53 00 05 02 52 74 03 27", "eh_request_attestation_data"},
    {"1B 4D 53 00 07 02 53 58 01 n 03 3B", "eh_set_encryption_type"},
    {"1B 4D 53 00 07 02 53 1A 01 n 03 78", "eh_enable"},
    {"1B 4D 53 00 07 02 53 4C 01 n 03 2E", "eh_set_encryption_mode"},
    {"1B 4D 53 00 07 02 53 85 01 31 03 E7", "eh_return_all_track_data"},
    {"1B 4D 53 00 07 02 53 84 01 0F 03 D8", "eh_set_encryption_all_track"},
    {"1B 4D 53 00 0E 02 53 74 08 data.8 03 48 1B 4D 53 00 0E 02 53 74 08 again.8 03 48", "eh_send_attestation_data"},
    {"1B 4D 53 p.b2", "eh_unknown_frame", Tail::rest16_be, false},
    {"1B 4D n", "select_character_font"},
    {"1B 4E 13 00 00 05 00 84 00 00 08", "get_random_data_from_smart_card"},
    {"1B 4E 15 00 00 l 00 A4 04 00 k", "smart_card_select_file", Tail::smart_file},
    {"1B 4E 15 00 00 06 00 C0 00 00 00 n", "smart_card_get_response"},
    {"1B 4E 15 00 00 06 00 B2 r p 00 le", "smart_card_read_record"},
    // Two commands share these bytes; what follows tells them apart: a byte that begins a command is no parameter.
    {"1B 4E n=0-15,17-26,30-255", "selecting_mode_of_operate_smart_card"},
    {"1B 4E", "selecting_mode_of_reading_smart_card"},
    {"1B 52 n", "select_an_international_character_set"},
    {"1B 53", "select_standard_mode"},
    {"1B 54 n", "select_print_direction_in_page_mode"},
    {"1B 55 n", "select_unidirectional_print_mode"},
    {"1B 56 n", "turn90_clockwise_rotation_mode_on_off"},
    {"1B 57 00 x.2 y.2 dx.2 dy.2", "set_print_area_in_page_mode"},  // only with padded_page_area
    {"1B 57 x.2 y.2 dx.2 dy.2", "set_print_area_in_page_mode"},
    {"1B 5C n.s2", "set_relative_print_position"},
    {"1B 61 n", "select_justification"},
    {"1B 64 n", "print_and_feed_n_line"},
    {"1B 65 n", "print_and_reverse_feed_n_line"},
    {"1B 69", "partial_cut_one_point_left_uncut"},
    {"1B 6D", "partial_cut_three_point_left_uncut"},
    {"1B 70 m t1 t2", "generate_pulse"},
    {"1B 74 n", "select_character_code_table"},
    {"1B 75", "transmit_peripheral_device_status"},
    {"1B 76", "transmit_paper_sensor_status"},
    {"1B 7B n", "turn_upside_down_print_mode_on_off"},
    {"1B 28 fn p.2", "unknown_function", Tail::rest16, false},

    // FS.
    {"1C 26", "select_kanji_character_mode"},
    {"1C 28 4C 02 00 41 n", "feed_paper_to_the_label_peeling_position"},
    {"1C 28 4C 02 00 42 n", "feed_paper_to_the_cutting_position"},
    {"1C 28 4C 02 00 43 n", "feed_paper_to_the_print_starting_position"},
    {"1C 2E", "cancel_kanji_character_mode"},
    {"1C 67 31 00 a.4 n.2", "write_to_nv_user_memory", Tail::counted},
    {"1C 67 32 00 a.4 n.2", "read_from_nv_user_memory"},
    {"1C 70 n m", "print_NV_bit_image"},
    {"1C 71 n", "define_nv_bit_image_fmode", Tail::nv_images},
    {"1C 28 fn p.2", "unknown_function", Tail::rest16, false},

    // GS.
    {"1D 0C", "position_next_label"},
    {"1D 21 n", "select_character_size"},
    {"1D 24 n.2", "set_absolute_vertical_print_position_in_page_mode"},
    {"1D 28 41 02 00 n m", "execute_test_print"},
    {"1D 28 44 p 00 14", "enable_real_time_command", Tail::enable_rt},
    {"1D 28 45 03 00 01 49 4E 1D 28 45 04 00 05 08 n 00 1D 28 45 02 00 06 08 01 49 4E 1D 28 45 04 00 02 4F 55 54",
     "select_character_code_table"},
    {"1D 28 4B 02 00 30 n", "select_the_print_control_mode"},
    {"1D 28 4B 02 00 31 n", "select_the_print_density"},
    {"1D 28 4B 02 00 61 n", "select_the_number_of_parts_for_the_thermal_head_energizing"},
    {"1D 28 4C 02 00 30 30", "transmit_the_NV_graphics_memory_capacity_gmode"},
    {"1D 28 4C 02 00 30 32", "print_the_graphics_data_in_the_print_buffer_gmode"},
    {"1D 28 4C 02 00 30 33", "transmit_the_remaining_capacity_of_the_NV_graphics_memory_gmode"},
    {"1D 28 4C 02 00 30 34", "transmit_the_remaining_capacity_of_the_download_graphics_memory_gmode"},
    {"1D 28 4C 04 00 30 31 n again", "set_the_reference_dot_density_for_graphics_gmode"},
    {"1D 28 4C 04 00 30 40 4B 43", "transmit_the_key_code_list_for_defined_NV_graphics_gmode"},
    {"1D 28 4C 05 00 30 41 43 4C 52", "delete_all_NV_graphics_data_gmode"},
    {"1D 28 4C 04 00 30 42 kc1 kc2", "delete_the_specified_NV_graphics_data_gmode"},
    {"1D 28 4C 06 00 30 45 kc1 kc2 x y", "print_the_specified_NV_graphics_data_gmode"},
    {"1D 28 4C 04 00 30 50 4B 43", "transmit_the_key_code_list_for_defined_download_graphics_gmode"},
    {"1D 28 4C 05 00 30 51 43 4C 52", "delete_all_memory_graphics_data_gmode"},
    {"1D 28 4C 04 00 30 52 kc1 kc2", "delete_the_specified_download_memory_graphics_data_gmode"},
    {"1D 28 4C 06 00 30 55 kc1 kc2 x y", "print_the_specified_downloaded_graphics_data_gmode"},
    {"1D 28 4C p.2 30 43 30 kc1 kc2 01 x.2 y.2 c", "define_the_NV_graphics_data_raster_gmode", Tail::raster_rows},
    {"1D 28 4C p.2 30 44 30 kc1 kc2 01 x.2 y.2 c", "define_the_NV_graphics_data_column_gmode", Tail::dot_columns},
    {"1D 28 4C p.2 30 53 30 kc1 kc2 01 x.2 y.2 c", "define_the_downloaded_graphics_data_raster_gmode", Tail::raster_rows},
    {"1D 28 4C p.2 30 54 30 kc1 kc2 01 x.2 y.2 c", "define_the_downloaded_graphics_data_column_gmode", Tail::dot_columns},
    {"1D 28 4C p.2 30 70 30 bx by 31 x.2 y.2", "store_the_graphics_data_in_the_print_buffer_raster_gmode", Tail::store_rows},
    {"1D 28 4C p.2 30 70 30 bx by 31 x.2 y.2", "store_the_graphics_data_in_the_print_buffer_column_gmode", Tail::store_columns},
    // The long forms keep the prefix of the short ones. No image needs a count with 30 in its third byte, so that byte, the
    // function group of the short form, tells them apart.
    {"1D 28 4C p.4 30 43 30 kc1 kc2 01 x.2 y.2 c", "define_the_NV_graphics_data_raster_gmode", Tail::raster_rows},
    {"1D 28 4C p.4 30 44 30 kc1 kc2 01 x.2 y.2 c", "define_the_NV_graphics_data_column_gmode", Tail::dot_columns},
    {"1D 28 4C p.4 30 53 30 kc1 kc2 01 x.2 y.2 c", "define_the_downloaded_graphics_data_raster_gmode", Tail::raster_rows},
    {"1D 28 4C p.4 30 54 30 kc1 kc2 01 x.2 y.2 c", "define_the_downloaded_graphics_data_column_gmode", Tail::dot_columns},
    {"1D 28 4C p.4 30 70 30 bx by 31 x.2 y.2", "store_the_graphics_data_in_the_print_buffer_column_gmode", Tail::store_columns},
    {"1D 38 4C p.4 30 70 30 bx by 31 x.2 y.2", "store_the_graphics_data_in_the_print_buffer_raster_gmode", Tail::store_rows},
    {"1D 28 51 0C 00 30 data.12", "draw_line"},
    {"1D 28 51 0E 00 31 data.14", "draw_rectangle"},
    {"1D 28 6B 03 00 30 41 n", "pdf417_set_the_number_of_columns_in_the_data_region"},
    {"1D 28 6B 03 00 30 42 n", "pdf417_set_the_number_of_rows"},
    {"1D 28 6B 03 00 30 43 n", "pdf417_set_the_width_of_the_module"},
    {"1D 28 6B 03 00 30 44 n", "pdf417_set_the_row_height"},
    {"1D 28 6B 04 00 30 45 m n", "pdf417_set_the_error_correction_level"},
    {"1D 28 6B 03 00 30 46 n", "pdf417_select_the_options"},
    {"1D 28 6B p.2 30 50 30", "pdf417_store_the_data_in_the_symbol_storage_area", Tail::rest16},
    {"1D 28 6B 03 00 30 51 30", "pdf417_print_the_symbol_data_in_the_symbol_storage_area"},
    {"1D 28 6B 03 00 30 52 30", "pdf417_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area"},
    {"1D 28 6B 04 00 31 41 n 00", "qr_select_the_model"},
    {"1D 28 6B 03 00 31 43 n", "qr_set_the_size_of_module"},
    {"1D 28 6B 03 00 31 45 n", "qr_select_the_error_correction_level"},
    {"1D 28 6B p.2 31 50 30", "qr_store_the_data_in_the_symbol_storage_area", Tail::rest16},
    {"1D 28 6B 03 00 31 51 30", "qr_print_the_symbol_data_in_the_symbol_storage_area"},
    {"1D 28 6B 03 00 31 52 30", "qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area"},
    {"1D 28 fn p.2", "unknown_function", Tail::rest16, false},
    {"1D 2A x y", "define_downloaded_bit_image", Tail::blocks_8x8},
    {"1D 2F m", "print_downloaded_bit_image"},
    {"1D 38 fn p.4", "unknown_function", Tail::rest32, false},
    {"1D 3A", "start_macro_definition"},
    {"1D 42 n", "turn_white_black_reverse_print_mode_on_off"},
    {"1D 45 n", "select_the_print_speed"},
    {"1D 48 n", "select_print_position_HRI_characters"},
    {"1D 49 41", "transmit_printer_version"},
    {"1D 49 n", "transmit_printer_id"},
    {"1D 4C n.2", "set_left_margin"},
    {"1D 50 x y", "set_horizontal_and_vertical_motion_units"},
    {"1D 54 n", "set_print_position_to_the_beginning_of_print_line"},
    {"1D 56 m=65-66 n", "select_cut_mode_and_feed_paper"},
    {"1D 56 m=0-1,48-49", "select_cut_mode_and_cut_paper"},
    {"1D 57 n.2", "set_print_area_width"},
    {"1D 5C n.s2", "set_relative_vertical_print_position_in_page_mode"},
    {"1D 5E r t m", "execute_macro"},
    {"1D 61 n", "enable_disable_ASB"},
    {"1D 62 n", "turn_smoothing_mode_on_off"},
    {"1D 66 n", "select_font_HRI_characters"},
    {"1D 68 n", "set_bar_code_height"},
    {"1D 6B m=0-6", "print_bar_code", Tail::until_nul},
    {"1D 6B m=65-73 k", "print_bar_code", Tail::counted},
    {"1D 72 n", "transmit_status"},
    {"1D 76 30 m xBytes.2 yDots.2", "print_raster_bit_image", Tail::raster},
    {"1D 77 n", "set_bar_code_width"},
};
// clang-format on

}  // namespace preview

#endif
