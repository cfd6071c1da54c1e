// klovctl: ask and command a printer, for people and scripts.
#include "talk/klovctl.h"

#include <getopt.h>
#include <klov/version.h>
#include <signal.h>

#include <charconv>
#include <cstdio>
#include <cstring>

namespace talk {
namespace {

constexpr const char *usage_text =
    "usage: klovctl [-p QUEUE | -d DEVICE] [--timeout SECONDS] COMMAND\n"
    "\n"
    "  status [--json] [--watch] [--drawer-open high|low]\n"
    "  identify                  what the printer says it is\n"
    "  test [--model NAME]       the printer's own test page and ours\n"
    "  drawer [1|2]              open a cash drawer\n"
    "  cut [--full]\n"
    "  feed MM                   1 to 1000 millimetres\n"
    "  beep [N]                  1 to 9 times\n"
    "  reset                     drop what waits in the printer, clear its errors\n"
    "  logo list | add N PICTURE | print N | delete N      [--model NAME]\n"
    "  send FILE                 the bytes of a file (- is standard input)\n"
    "  find [--ask DEVICE]       printers on USB, the network and in CUPS\n"
    "\n"
    "DEVICE: socket://HOST[:PORT], /dev/usb/lp0, serial:/dev/ttyUSB0?baud=115200, or any address that a backend of "
    "CUPS\n"
    "knows. Ends with 0 when the printer is ready, 1 when it answers but cannot print, 2 without an answer, 3 when it "
    "was\n"
    "called in a wrong way.\n";

enum LongOption {
    option_json = 256,
    option_watch,
    option_full,
    option_ask,
    option_timeout,
    option_drawer,
    option_model,
    option_help,
    option_version
};

const option long_options[] = {{"json", no_argument, nullptr, option_json},
                               {"watch", no_argument, nullptr, option_watch},
                               {"full", no_argument, nullptr, option_full},
                               {"ask", no_argument, nullptr, option_ask},
                               {"timeout", required_argument, nullptr, option_timeout},
                               {"drawer-open", required_argument, nullptr, option_drawer},
                               {"model", required_argument, nullptr, option_model},
                               {"help", no_argument, nullptr, option_help},
                               {"version", no_argument, nullptr, option_version},
                               {nullptr, 0, nullptr, 0}};

bool read_timeout(const char *text, int &timeout_ms)
{
    double seconds = 0;
    const auto [end, problem] = std::from_chars(text, text + strlen(text), seconds);
    if (problem != std::errc() || *end != '\0' || !(seconds >= 0.01 && seconds <= 3600)) {
        return false;
    }
    timeout_ms = static_cast<int>(seconds * 1000);
    return true;
}

bool read_level(const char *text, level &open)
{
    open = strcmp(text, "low") == 0 ? level::low : level::high;
    return open == level::low || strcmp(text, "high") == 0;
}

// -1: go on. Else the exit status.
int take_option(Wishes &wishes, int letter)
{
    switch (letter) {
        case 'p':
            wishes.queue = optarg;
            return -1;
        case 'd':
            wishes.device = optarg;
            return -1;
        case option_json:
            wishes.json = true;
            return -1;
        case option_watch:
            wishes.watch = true;
            return -1;
        case option_full:
            wishes.full = true;
            return -1;
        case option_ask:
            wishes.ask = true;
            return -1;
        case option_model:
            wishes.model = optarg;
            return -1;
        case option_timeout:
            return read_timeout(optarg, wishes.timeout_ms) ? -1 : complain("--timeout: 0.01 to 3600 seconds");
        case option_drawer:
            return read_level(optarg, wishes.drawer_open) ? -1 : complain("--drawer-open: high or low");
        case option_help:
            fputs(usage_text, stdout);
            return 0;
        case option_version:
            printf("klovctl %d.%d.%d\n", KLOV_VERSION_MAJOR, KLOV_VERSION_MINOR, KLOV_VERSION_PATCH);
            return 0;
        default:
            return complain("see klovctl --help");
    }
}

int run(const Wishes &wishes)
{
    if (wishes.words.empty()) {
        return complain("what is to be done? See klovctl --help");
    }
    const std::string &command = wishes.words[0];
    if (command == "find") {
        return find_printers(wishes);
    }
    if (command != "status" && !is_action(command)) {
        return complain(command + ": unknown command; see klovctl --help");
    }
    if (wishes.queue.empty() == wishes.device.empty()) {
        return complain("name one printer: -p QUEUE or -d DEVICE");
    }
    if (command == "status") {
        return wishes.words.size() == 1 ? show_status(wishes) : complain("status takes no more words");
    }
    return act(wishes);
}

}  // namespace

}  // namespace talk

int main(int argc, char **argv)
{
    signal(SIGPIPE, SIG_IGN);
    talk::Wishes wishes;
    wishes.speaks = talk::language_of_environment();
    int letter = 0;
    while ((letter = getopt_long(argc, argv, "p:d:", talk::long_options, nullptr)) != -1) {
        const int status = talk::take_option(wishes, letter);
        if (status >= 0) {
            return status;
        }
    }
    wishes.words.assign(argv + optind, argv + argc);
    return talk::run(wishes);
}
