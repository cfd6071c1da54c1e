#include "talk/commands.h"

namespace talk {
namespace {

constexpr int longest_feed = 1000;  // millimetres
constexpr int dots_per_inch = 203;

}  // namespace

bool add_cut(Commands &commands, bool full)
{
    return commands.add(klov_cmd_select_cut_mode_and_feed_paper, full ? 65 : 66, 0);
}

bool add_feed(Commands &commands, int millimetres)
{
    if (millimetres < 1 || millimetres > longest_feed) {
        return false;
    }
    // In pieces, because one command of the encoder holds no more than its buffer.
    for (int dots = millimetres * dots_per_inch * 10 / 254; dots > 0; dots -= 255) {
        if (!commands.add(klov_cmd_print_and_feed_paper, dots < 255 ? dots : 255)) {
            return false;
        }
    }
    return true;
}

bool add_beep(Commands &commands, int times)
{
    return times >= 1 && times <= 9 && commands.add(klov_cmd_beep_integrated_beeper, times, 1, 1);
}

bool add_drawer(Commands &commands, int drawer)
{
    // 80 units of 2 ms on: what the filter's drawer options send.
    return drawer >= 1 && drawer <= 2 && commands.add(klov_cmd_generate_pulse, drawer - 1, 80, 80);
}

}  // namespace talk
