// commandtoklov: the filter for CUPS's command files (application/vnd.cups-command).
//
// Who may print may send such a file. So nothing in it opens a drawer unless the administrator has said so in the
// queue's PPD; options of the job are not looked at.
#include "talk/ask.h"
#include "talk/commands.h"
#include "talk/reasons.h"
#include "talk/test_page.h"

#include <cups/ppd.h>
#include <fcntl.h>
#include <signal.h>
#include <strings.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int back_channel = 3;
constexpr size_t longest_file = 65536;
constexpr int64_t status_patience_ms = 3000;
constexpr int64_t printing_patience_ms = 60'000;

struct Printer {
    talk::TestPage page;
    uint32_t printer_class = talk::any_printer;
    bool drawer_allowed = false;
    talk::connection line = {STDOUT_FILENO, back_channel};
};

// Texts of the file reach the scheduler's log without control characters, which would make lines of their own.
std::string harmless(std::string_view text)
{
    std::string result;
    for (const char c : text.substr(0, 80)) {
        const auto byte = static_cast<unsigned char>(c);
        result += byte < 0x20 || byte == 0x7F ? '?' : c;
    }
    return result;
}

bool refuse(std::string_view what, std::string_view command)
{
    fprintf(stderr, "ERROR: commandtoklov: %s: \"%s\"\n", std::string(what).c_str(), harmless(command).c_str());
    return false;
}

// The PPD as the administrator left it: defaults are marked, nothing else.
bool read_ppd(Printer &printer)
{
    const char *path = getenv("PPD");
    ppd_file_t *ppd = path != nullptr ? ppdOpenFile(path) : nullptr;
    if (ppd == nullptr) {
        fprintf(stderr, "ERROR: commandtoklov: the queue's PPD file cannot be read\n");
        return false;
    }
    ppdMarkDefaults(ppd);
    const ppd_choice_t *drawer = ppdFindMarkedChoice(ppd, "DrawerCommand");
    printer.drawer_allowed = drawer != nullptr && strcmp(drawer->choice, "1") == 0;
    printer.page.cuts = ppdFindOption(ppd, "CutMode") != nullptr;
    printer_model *model = nullptr;
    if (ppd->shortnickname != nullptr && klov_printer_model_creator2(ppd->shortnickname, &model) == KLOV_OK) {
        printer.printer_class = model->type;
        printer.page.model = model->identity;
        printer.page.width = model->width;
        klov_printer_model_destroy(model);
    }
    ppdClose(ppd);
    if (model == nullptr) {
        fprintf(stderr, "ERROR: commandtoklov: the queue's PPD file names no model of the catalogue\n");
    }
    return model != nullptr;
}

bool send(const Printer &printer, const talk::Commands &commands)
{
    bool lost = false;
    const auto &bytes = commands.bytes();
    const int64_t deadline = talk::monotonic_ms() + printing_patience_ms;
    if (talk::send_by(printer.line, bytes.data(), bytes.size(), deadline, &lost)) {
        return true;
    }
    fprintf(stderr, "ERROR: commandtoklov: the printer does not take the command\n");
    return false;
}

bool report_status(const Printer &printer)
{
    static talk::monitor report;
    report = {};
    report.speaks = talk::language_of_environment();
    talk::adopt_reasons(report, getenv("PRINTER_STATE_REASONS"));
    talk::ask_result result = talk::ask_result::no_answer;
    const char *uri = getenv("DEVICE_URI");
    const bool is_file = uri != nullptr && strncmp(uri, "file:", 5) == 0;
    if (!is_file && fcntl(printer.line.in, F_GETFD) != -1) {
        result = talk::ask_health(printer.line, talk::monotonic_ms() + status_patience_ms, report.printer);
    }
    if (result == talk::ask_result::answered) {
        talk::show_health(report);
        if (talk::can_print(report.printer)) {
            talk::tell(report, "INFO: ", talk::text_of(talk::word::ready, report.speaks));
        }
    } else {
        talk::tell(report, "INFO: ", talk::text_of(talk::word::no_answer, report.speaks));
    }
    return write(STDERR_FILENO, report.log, report.log_length) >= 0;
}

// The number behind a command, `missing` when there is none, -1 when it is no number.
int number_of(std::string_view argument, int missing)
{
    if (argument.empty()) {
        return missing;
    }
    int number = -1;
    const auto [end, error] = std::from_chars(argument.data(), argument.data() + argument.size(), number);
    return error == std::errc() && end == argument.data() + argument.size() ? number : -1;
}

bool is(std::string_view word, const char *command)
{
    return word.size() == strlen(command) && strncasecmp(word.data(), command, word.size()) == 0;
}

bool run_command(const Printer &printer, std::string_view word, std::string_view argument)
{
    talk::Commands commands(printer.printer_class);
    bool understood = true;
    if (is(word, "ReportStatus")) {
        return report_status(printer);
    }
    if (is(word, "PrintSelfTestPage")) {
        commands.add(klov_cmd_execute_test_print, 0, 2);
        talk::add_test_page(commands, printer.page);
    } else if (is(word, "org.klov.cut")) {
        understood = argument.empty() || is(argument, "full");
        talk::add_cut(commands, !argument.empty());
    } else if (is(word, "org.klov.feed")) {
        understood = talk::add_feed(commands, number_of(argument, 10));
    } else if (is(word, "org.klov.beep")) {
        understood = talk::add_beep(commands, number_of(argument, 1));
    } else if (is(word, "org.klov.drawer")) {
        if (!printer.drawer_allowed) {
            return refuse("this queue does not let commands open a drawer", word);
        }
        understood = talk::add_drawer(commands, number_of(argument, 1));
    } else {
        return refuse("unknown command", word);
    }
    if (!understood) {
        return refuse("the command does not take this", argument);
    }
    return send(printer, commands);
}

std::string_view without_blanks(std::string_view text)
{
    constexpr const char *blanks = " \t\r\n";
    const size_t begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

bool run_line(const Printer &printer, std::string_view line)
{
    line = without_blanks(line);
    if (line.empty() || line[0] == '#') {
        return true;
    }
    const size_t end = line.find_first_of(" \t");
    if (end == std::string_view::npos) {
        return run_command(printer, line, {});
    }
    return run_command(printer, line.substr(0, end), without_blanks(line.substr(end)));
}

bool read_all(int input, std::string &text)
{
    char block[4096];
    for (;;) {
        const ssize_t received = read(input, block, sizeof block);
        if (received > 0) {
            text.append(block, static_cast<size_t>(received));
        }
        if (text.size() > longest_file) {
            return false;
        }
        if (received == 0 || (received < 0 && errno != EINTR)) {
            return received == 0;
        }
    }
}

}  // namespace

int main(int argc, char **argv)
{
    signal(SIGPIPE, SIG_IGN);
    if (argc < 6 || argc > 7) {
        fprintf(stderr, "ERROR: commandtoklov job-id user title copies options [file]\n");
        return 1;
    }
    const int input = argc == 7 ? open(argv[6], O_RDONLY | O_CLOEXEC) : STDIN_FILENO;
    std::string text;
    if (input < 0 || !read_all(input, text)) {
        fprintf(stderr, "ERROR: commandtoklov: the command file cannot be read or is too long\n");
        return 1;
    }
    Printer printer;
    if (!read_ppd(printer)) {
        return 1;
    }
    bool good = true;
    for (std::string_view rest = text; !rest.empty();) {
        const size_t end = rest.find('\n');
        good = run_line(printer, rest.substr(0, end)) && good;
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    return good ? 0 : 1;
}
