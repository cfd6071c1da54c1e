// The cutter and everything beside the paper.
#include "preview/machine.h"

namespace preview {

std::span<const Machine::HandlerRow> Machine::device_handlers()
{
    static constexpr HandlerRow rows[] = {
        {"select_cut_mode_and_feed_paper", &Machine::do_cut},
        {"select_cut_mode_and_cut_paper", &Machine::do_cut},
        {"partial_cut_one_point_left_uncut", &Machine::do_cut},
        {"partial_cut_three_point_left_uncut", &Machine::do_cut},
        {"generate_pulse", &Machine::do_pulse},
        {"generate_pulse_in_real_time", &Machine::do_pulse},
        {"beep_integrated_beeper", &Machine::do_buzzer},
        {"set_buzzer", &Machine::do_buzzer},
        {"position_next_label", &Machine::do_label},
        {"feed_paper_to_the_label_peeling_position", &Machine::do_label},
        {"feed_paper_to_the_cutting_position", &Machine::do_label},
        {"feed_paper_to_the_print_starting_position", &Machine::do_label},
        {"execute_power_off_sequence", &Machine::do_power_off},
        {"execute_test_print", &Machine::do_test_print},
        {"execute_macro", &Machine::do_macro},
    };
    return rows;
}

// The cut modes 65 and 66 first feed n units; the distance to the cutter itself is the printer's and is not drawn.
void Machine::do_cut(const Command &command)
{
    end_open_line();
    const int64_t m = command.arg("m", 1);
    const bool partial = m % 2 == (m >= 65 ? 0 : 1);
    advance(to_dots_y(command.arg("n")));
    if (cuts.size() < options_.max_events) {
        cuts.push_back({command.offset, y_, partial});
    }
    last_cut_ = y_;
    event(command, "cut", partial ? "partial cut" : "full cut");
}

void Machine::do_pulse(const Command &command)
{
    const int64_t pin = command.arg("m") % 48;
    const std::string times = command.is("generate_pulse")
                                  ? std::to_string(command.arg("t1")) + "/" + std::to_string(command.arg("t2"))
                                  : std::to_string(command.arg("t"));
    event(command, "drawer", "drawer " + std::to_string(pin + 1) + ", pulse " + times);
}

void Machine::do_buzzer(const Command &command)
{
    const std::string count = std::to_string(command.arg("n"));
    event(command, "buzzer", command.is("set_buzzer") ? "buzzer setting " + count : "buzzer x" + count);
}

void Machine::do_label(const Command &command)
{
    end_open_line();
    const bool peel = command.is("feed_paper_to_the_label_peeling_position");
    const bool cutter = command.is("feed_paper_to_the_cutting_position");
    const bool start = command.is("feed_paper_to_the_print_starting_position");
    event(command, "label",
          peel     ? "to the peeling position"
          : cutter ? "to the cutting position"
          : start  ? "to the start of the label"
                   : "next label");
}

void Machine::do_power_off(const Command &command)
{
    event(command, "power", "power off");
}

void Machine::do_test_print(const Command &command)
{
    event(command, "test", "test print");
}

void Machine::do_macro(const Command &command)
{
    event(command, "macro", "macro x" + std::to_string(command.arg("r")));
}

}  // namespace preview
