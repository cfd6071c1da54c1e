// klovctl status and find.
#include "talk/device.h"
#include "talk/find.h"
#include "talk/klovctl.h"
#include "talk/queue.h"
#include "talk/report.h"

#include <poll.h>

#include <cstdio>

namespace talk {
namespace {

// Printers serve one connection. Between two looks others get their turn.
constexpr int watch_every_ms = 2000;

// How the printer is now. Null when it could not even be looked for; that was told.
bool look(const Wishes &wishes, Report &report)
{
    std::string error;
    report = {};
    report.open_level = wishes.drawer_open;
    report.device = wishes.device;
    if (!wishes.queue.empty()) {
        Queue queue;
        if (!ask_queue(wishes.queue, queue, error)) {
            complain(error);
            return false;
        }
        report.device = queue.device;
        if (queue.printing) {
            // The connection is the job's. The port monitor has told CUPS what it knows.
            report.printer = health_from(queue.reasons);
            return true;
        }
    }
    const int64_t deadline = monotonic_ms() + wishes.timeout_ms;
    const auto device = open_device(report.device, deadline, error);
    if (device == nullptr) {
        complain(error);
        return true;
    }
    health printer;
    forget_old_answers(device->line());
    if (ask_health(device->line(), deadline, printer) == ask_result::answered) {
        report.printer = printer;
    }
    return true;
}

void add_found(const Found &printer)
{
    printf("%-8s %s\t%s\t%s\n", printer.place.c_str(), printer.name.c_str(), printer.device.c_str(),
           printer.model.empty() ? "-" : printer.model.c_str());
}

int print_report(const Wishes &wishes, const Report &report, std::string &last)
{
    const std::string text = wishes.json ? as_json(report) : as_text(report, wishes.speaks);
    if (text != last) {
        fputs(text.c_str(), stdout);
        fflush(stdout);
        last = text;
    }
    return status_of(report);
}

}  // namespace

int show_status(const Wishes &wishes)
{
    std::string last;
    for (;;) {
        Report report;
        if (!look(wishes, report)) {
            return no_answer;
        }
        const int status = print_report(wishes, report, last);
        if (!wishes.watch || ferror(stdout) != 0) {
            return status;
        }
        poll(nullptr, 0, watch_every_ms);
    }
}

int find_printers(const Wishes &wishes)
{
    if (wishes.ask) {
        if (wishes.words.size() != 2) {
            return complain("find --ask: name one DEVICE");
        }
        Wishes one = wishes;
        one.queue.clear();
        one.device = wishes.words[1];
        one.words = {"identify"};
        return act(one);
    }
    if (wishes.words.size() != 1) {
        return complain("find takes no more words");
    }
    for (const Found &printer : find_usb("/sys/class/usbmisc")) {
        add_found(printer);
    }
    for (const Found &printer : find_network(wishes.timeout_ms)) {
        add_found(printer);
    }
    for (const Queue &queue : all_queues()) {
        add_found({"queue", queue.name, queue.device, queue.model});
    }
    return is_ready;
}

}  // namespace talk
