// klovctl's commands that send something to the printer.
#include "talk/commands.h"
#include "talk/device.h"
#include "talk/klovctl.h"
#include "talk/logo.h"
#include "talk/queue.h"
#include "talk/report.h"
#include "talk/test_page.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace talk {
namespace {

// A logo of no more dots fits on every head of the catalogue.
constexpr int narrowest_head = 384;

// One open printer and the wishes about it.
struct Session {
    const Wishes &wishes;
    std::string address;
    std::string model;  // as CUPS shows it
    std::unique_ptr<Device> device;

    int64_t deadline() const
    {
        return monotonic_ms() + wishes.timeout_ms;
    }
};

bool takes(const Wishes &wishes, size_t least, size_t most)
{
    return wishes.words.size() - 1 >= least && wishes.words.size() - 1 <= most;
}

// The number behind the command, `missing` when there is none.
int argument(const Wishes &wishes, int missing)
{
    return wishes.words.size() < 2 ? missing : number_in(wishes.words[1]);
}

bool add_reset(Commands &commands)
{
    // In real time first: a printer that is stuck takes no others.
    commands.add(klov_cmd_clear_buffer);
    commands.add(klov_cmd_send_real_time_request_to_printer, 2);
    return commands.add(klov_cmd_initialize_printer);
}

// The head's width of a model in dots, 0 when the catalogue has none of this name.
int width_of(const std::string &model)
{
    printer_model *found = nullptr;
    if (klov_printer_model_creator_by_identity(model.c_str(), &found) != KLOV_OK) {
        return 0;
    }
    const int width = found->width;
    klov_printer_model_destroy(found);
    return width;
}

bool add_test(Commands &commands, const std::string &model)
{
    TestPage page;
    page.model = model.empty() ? "Receipt printer" : model;
    page.width = width_of(model) > 0 ? width_of(model) : page.width;
    commands.add(klov_cmd_execute_test_print, 0, 2);
    add_test_page(commands, page);
    return true;
}

// The bytes of a command that needs no answer but "done". False: it was called in a wrong way; `error` may say how.
bool make(const Wishes &wishes, const std::string &known_model, Commands &commands, std::string &error)
{
    const std::string &word = wishes.words[0];
    const std::string &model = wishes.model.empty() ? known_model : wishes.model;
    if (!wishes.model.empty() && width_of(wishes.model) == 0) {
        return false;
    }
    if (word == "logo") {
        const int widest = width_of(model) > 0 ? width_of(model) : narrowest_head;
        return add_logo_command(commands, wishes.words, widest, error);
    }
    if (word == "test") {
        return takes(wishes, 0, 0) && add_test(commands, model);
    }
    if (word == "drawer") {
        return takes(wishes, 0, 1) && add_drawer(commands, argument(wishes, 1));
    }
    if (word == "cut") {
        return takes(wishes, 0, 0) && add_cut(commands, wishes.full);
    }
    if (word == "feed") {
        return takes(wishes, 1, 1) && add_feed(commands, argument(wishes, -1));
    }
    if (word == "beep") {
        return takes(wishes, 0, 1) && add_beep(commands, argument(wishes, 1));
    }
    return word == "reset" && takes(wishes, 0, 0) && add_reset(commands);
}

// 0 when the session can begin, else the exit status, told.
int open_session(Session &session)
{
    std::string error;
    if (!session.wishes.queue.empty()) {
        Queue queue;
        if (!ask_queue(session.wishes.queue, queue, error)) {
            complain(error);
            return no_answer;
        }
        if (queue.printing) {
            complain(session.wishes.queue + ": " + text_of(word::queue_is_printing, session.wishes.speaks));
            return cannot_print;
        }
        session.address = queue.device;
        session.model = queue.model;
    }
    session.device = open_device(session.address, session.deadline(), error);
    if (session.device == nullptr) {
        complain(error);
        return no_answer;
    }
    forget_old_answers(session.device->line());
    return 0;
}

int tell_health(const Session &session, ask_result result, const health &printer)
{
    Report report;
    if (result == ask_result::answered) {
        report.printer = printer;
    }
    const int status = status_of(report);
    if (status != is_ready) {
        fputs(as_text(report, session.wishes.speaks).c_str(), stderr);
    }
    return status;
}

// Is the printer ready? Told when it is not.
int check(const Session &session)
{
    health printer;
    const ask_result result = ask_health(session.device->line(), session.deadline(), printer);
    return tell_health(session, result, printer);
}

// Whether it was carried out; when not, how the printer is.
int wait_for_end(const Session &session)
{
    if (wait_until_printed(session.device->line(), session.deadline()) == ask_result::answered) {
        return is_ready;
    }
    return check(session);
}

bool put(const Session &session, const uint8_t *bytes, size_t size)
{
    constexpr size_t piece = 4096;
    bool lost = false;
    while (size > 0) {
        const size_t now = size < piece ? size : piece;
        // As long as the printer goes on taking bytes there is no hurry.
        if (!send_by(session.device->line(), bytes, now, session.deadline(), &lost)) {
            return false;
        }
        bytes += now;
        size -= now;
    }
    return true;
}

int send_file(const Session &session, int file)
{
    uint8_t block[65536];
    for (;;) {
        const ssize_t received = read(file, block, sizeof block);
        if (received < 0 && errno == EINTR) {
            continue;
        }
        if (received < 0) {
            return complain(session.wishes.words[1] + ": " + strerror(errno));
        }
        if (received == 0) {
            return wait_for_end(session);
        }
        if (!put(session, block, static_cast<size_t>(received))) {
            const int status = check(session);
            return status == is_ready ? cannot_print : status;
        }
    }
}

// What a printer says to an ordered request: bytes up to a NUL or a pause, those that are printed as text.
std::string text_reply(const Session &session)
{
    constexpr int64_t longest_pause_ms = 200;
    std::string text;
    bool lost = false;
    int64_t until = session.deadline();
    while (text.size() < 80) {
        const int byte = receive_by(session.device->line(), until, &lost);
        if (byte <= 0) {
            break;
        }
        text += static_cast<char>(byte);
        until = monotonic_ms() + longest_pause_ms;
    }
    return text;
}

void show_id(const Session &session)
{
    Commands version(any_printer_class);
    version.add(klov_cmd_transmit_printer_version);
    put(session, version.bytes().data(), version.bytes().size());
    std::string text = text_reply(session);
    uint32_t numbers[3] = {};
    if (klov_cmd_parse_printer_version(any_printer_class, text.data(), numbers, 3) == KLOV_OK) {
        printf("firmware: %u.%u.%u\n", numbers[0], numbers[1], numbers[2]);
    }
    static constexpr const char *names[] = {"model id", "type id", "rom id"};
    for (int n = 1; n <= 3; n++) {
        Commands id(any_printer_class);
        id.add(klov_cmd_transmit_printer_id, n);
        put(session, id.bytes().data(), id.bytes().size());
        bool lost = false;
        const int byte = receive_by(session.device->line(), session.deadline(), &lost);
        if (byte >= 0) {
            printf("%s: 0x%02X\n", names[n - 1], static_cast<unsigned>(byte));
        }
    }
}

int identify(const Session &session)
{
    const int status = check(session);
    if (status != is_ready) {
        return status;  // it executes no ordered request now
    }
    printf("device: %s\n", session.address.c_str());
    if (!session.model.empty()) {
        printf("model: %s\n", session.model.c_str());
    }
    show_id(session);
    return is_ready;
}

int run_commands(Session &session, const Commands &commands)
{
    const bool is_reset = session.wishes.words[0] == "reset";
    const int before = is_reset ? is_ready : check(session);
    if (before == cannot_print) {
        return before;  // it would lie in the buffer and come out at some other time
    }
    // A printer that says nothing may all the same do what it is told.
    if (!put(session, commands.bytes().data(), commands.bytes().size())) {
        complain(session.address + ": the printer does not take the command");
        return no_answer;
    }
    return before == no_answer ? no_answer : wait_for_end(session);
}

int open_to_send(const std::string &name)
{
    return name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC);
}

}  // namespace

bool is_action(const std::string &word)
{
    for (const char *known : {"identify", "test", "drawer", "cut", "feed", "beep", "reset", "logo", "send"}) {
        if (word == known) {
            return true;
        }
    }
    return false;
}

int act(const Wishes &wishes)
{
    const std::string &word = wishes.words[0];
    Session session = {wishes, wishes.device, "", nullptr};
    Commands commands(any_printer_class);
    std::string error;
    int file = -1;
    if (word == "send") {
        file = takes(wishes, 1, 1) ? open_to_send(wishes.words[1]) : -1;
        if (file < 0) {
            return complain(takes(wishes, 1, 1) ? wishes.words[1] + ": " + strerror(errno) : "send: name one FILE");
        }
    } else if (word == "identify") {
        if (!takes(wishes, 0, 0)) {
            return complain("identify takes no more words");
        }
    } else if (!make(wishes, "", commands, error)) {
        return complain(error.empty() ? word + ": wrong words behind it; see klovctl --help" : error);
    }
    const int opened = open_session(session);
    if (opened != 0) {
        return opened;
    }
    if (word == "send") {
        return send_file(session, file);
    }
    if (word == "identify") {
        return identify(session);
    }
    if (word == "logo" && wishes.words[1] == "list") {
        return list_logos(session.device->line(), commands, session.deadline());
    }
    if ((word == "test" || word == "logo") && !session.model.empty()) {
        commands = Commands(any_printer_class);
        make(wishes, session.model, commands, error);
    }
    return run_commands(session, commands);
}

}  // namespace talk
