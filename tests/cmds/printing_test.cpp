// The commands that print a page.
#include <klov/printing.h>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

const Row rows[] = {
    {"set_left_margin", klov_cmd_set_left_margin, "1D 4C nL nH", {{0, 65535}}, Tested::whole},
    {"print_and_return_standard_mode", with<klov_cmd_print_and_return_standard_mode>, "0C"},
    {"select_the_print_speed", klov_cmd_select_the_print_speed, "1D 45 n"},
    {"select_the_print_density", klov_cmd_select_the_print_density, "1D 28 4B 02 00 31 n"},
    {"set_line_spacing", klov_cmd_set_line_spacing, "1B 33 n"},
    {"select_justification", klov_cmd_select_justification, "1B 61 n", {{0, 2}, {48, 50}}},
    {"beep_integrated_beeper_n",
     with<klov_cmd_beep_integrated_beeper, V, 0x11, 0x22>,
     "1B 28 41 05 00 61 64 n 11 22",
     {{0, 63}}},
    {"beep_integrated_beeper_c", with<klov_cmd_beep_integrated_beeper, 63, V, 0x22>, "1B 28 41 05 00 61 64 3F n 22"},
    {"beep_integrated_beeper_t", with<klov_cmd_beep_integrated_beeper, 0, 0x11, V>, "1B 28 41 05 00 61 64 00 11 n"},
    {"generate_pulse_m", with<klov_cmd_generate_pulse, V, 0x10, 0x20>, "1B 70 n 10 20", {{0, 1}, {48, 49}}},
    {"generate_pulse_t1", with<klov_cmd_generate_pulse, 49, V, 255>, "1B 70 31 n FF"},
    {"generate_pulse_t2", with<klov_cmd_generate_pulse, 1, 0, V>, "1B 70 01 00 n"},
    {"select_cut_mode_and_feed_paper_short", with<klov_cmd_select_cut_mode_and_feed_paper, 1, V>, "1D 56 42 n"},
    {"select_cut_mode_and_feed_paper_n", with<klov_cmd_select_cut_mode_and_feed_paper, 65, V>, "1D 56 41 n"},
    {"print_NV_graphics_kc1",
     with<klov_cmd_print_the_specified_NV_graphics_data_gmode, V, 126, 1, 2>,
     "1D 28 4C 06 00 30 45 n 7E 01 02",
     {{32, 126}}},
    {"print_NV_graphics_kc2",
     with<klov_cmd_print_the_specified_NV_graphics_data_gmode, 32, V, 1, 2>,
     "1D 28 4C 06 00 30 45 20 n 01 02",
     {{32, 126}}},
    {"print_NV_graphics_x", with<klov_cmd_print_the_specified_NV_graphics_data_gmode, 48, 49, V, 2>,
     "1D 28 4C 06 00 30 45 30 31 n 02"},
    {"print_NV_graphics_y", with<klov_cmd_print_the_specified_NV_graphics_data_gmode, 48, 49, 1, V>,
     "1D 28 4C 06 00 30 45 30 31 01 n"},
};

INSTANTIATE_TEST_SUITE_P(Printing, Command, testing::ValuesIn(rows), row_name);

}  // namespace
