#include "talk/queue.h"

#include <cups/cups.h>

#include <cstring>
#include <memory>

namespace talk {
namespace {

constexpr const char *wanted[] = {"printer-name", "device-uri", "printer-state", "printer-state-reasons",
                                  "printer-make-and-model"};

struct IppDelete {
    void operator()(ipp_t *message) const
    {
        ippDelete(message);
    }
};
using Message = std::unique_ptr<ipp_t, IppDelete>;

Message request_of(ipp_op_t operation)
{
    Message request(ippNewRequest(operation));
    ippAddStrings(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                  static_cast<int>(sizeof wanted / sizeof wanted[0]), nullptr, wanted);
    return request;
}

Message answer_to(Message request)
{
    return Message(cupsDoRequest(CUPS_HTTP_DEFAULT, request.release(), "/"));
}

void take(Queue &queue, ipp_attribute_t *attribute)
{
    const char *name = ippGetName(attribute);
    const char *text = ippGetString(attribute, 0, nullptr);
    if (strcmp(name, "printer-name") == 0 && text != nullptr) {
        queue.name = text;
    } else if (strcmp(name, "device-uri") == 0 && text != nullptr) {
        queue.device = text;
    } else if (strcmp(name, "printer-make-and-model") == 0 && text != nullptr) {
        queue.model = text;
    } else if (strcmp(name, "printer-state") == 0) {
        queue.printing = ippGetInteger(attribute, 0) == IPP_PSTATE_PROCESSING;
    } else if (strcmp(name, "printer-state-reasons") == 0) {
        for (int i = 0; i < ippGetCount(attribute); i++) {
            const char *reason = ippGetString(attribute, i, nullptr);
            queue.reasons.emplace_back(reason != nullptr ? reason : "");
        }
    }
}

// One queue a group of attributes.
std::vector<Queue> queues_in(ipp_t *message)
{
    std::vector<Queue> queues;
    bool within = false;
    for (ipp_attribute_t *at = ippFirstAttribute(message); at != nullptr; at = ippNextAttribute(message)) {
        const bool belongs = ippGetGroupTag(at) == IPP_TAG_PRINTER && ippGetName(at) != nullptr;
        if (belongs && !within) {
            queues.emplace_back();
        }
        within = belongs;
        if (belongs) {
            take(queues.back(), at);
        }
    }
    return queues;
}

}  // namespace

bool ask_queue(const std::string &name, Queue &queue, std::string &error)
{
    char address[HTTP_MAX_URI];
    if (httpAssembleURIf(HTTP_URI_CODING_ALL, address, sizeof address, "ipp", nullptr, "localhost", 0, "/printers/%s",
                         name.c_str()) != HTTP_URI_STATUS_OK) {
        error = name + ": is no name of a queue";
        return false;
    }
    Message request = request_of(IPP_OP_GET_PRINTER_ATTRIBUTES);
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, address);
    const Message answer = answer_to(std::move(request));
    const std::vector<Queue> queues = queues_in(answer.get());
    if (queues.empty() || queues[0].device.empty()) {
        error = name + ": " + cupsLastErrorString();
        return false;
    }
    queue = queues[0];
    return true;
}

std::vector<Queue> all_queues()
{
    const Message answer = answer_to(request_of(IPP_OP_CUPS_GET_PRINTERS));
    return queues_in(answer.get());
}

health health_from(const std::vector<std::string> &reasons)
{
    health printer;
    for (const std::string &reason : reasons) {
        printer.paper_end = printer.paper_end || reason == "media-empty-error";
        printer.paper_near_end = printer.paper_near_end || reason == "media-low-warning";
        printer.cover_open = printer.cover_open || reason == "cover-open-error";
        if (reason == "other-error") {
            printer.error = fault::recoverable;
        }
    }
    return printer;
}

}  // namespace talk
