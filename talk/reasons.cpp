#include "talk/reasons.h"

#include <stdio.h>
#include <string.h>

namespace talk {
namespace {

// One bit of monitor::shown each, in this order.
constexpr const char *keywords[] = {"media-empty-error", "media-low-warning", "cover-open-error", "other-error"};
constexpr unsigned keyword_count = sizeof keywords / sizeof keywords[0];

uint8_t reasons_of(const health &printer)
{
    uint8_t bits = 0;
    bits = static_cast<uint8_t>(bits | (out_of_paper(printer) ? 1 : 0));
    bits = static_cast<uint8_t>(bits | (paper_is_low(printer) ? 2 : 0));
    bits = static_cast<uint8_t>(bits | (printer.cover_open ? 4 : 0));
    bits = static_cast<uint8_t>(bits | (printer.error != fault::none ? 8 : 0));
    return bits;
}

// The word for what somebody has to see to first. An open cover comes before the paper: it has to be open to put a roll
// in, and the sensor says nothing while it is.
word sentence_for(const health &printer)
{
    if (printer.cover_open) {
        return word::cover_open;
    }
    if (out_of_paper(printer)) {
        return word::out_of_paper;
    }
    return printer.error == fault::none ? word::printing : error_word(printer.error);
}

void show_reasons(monitor &it, uint8_t wanted)
{
    for (unsigned i = 0; i < keyword_count; i++) {
        const unsigned bit = 1U << i;
        if (((it.shown ^ wanted) & bit) != 0) {
            tell(it, (wanted & bit) != 0 ? "STATE: +" : "STATE: -", keywords[i]);
        }
    }
    it.shown = wanted;
}

bool lists(const char *reasons, const char *keyword)
{
    const size_t length = strlen(keyword);
    for (const char *at = reasons; (at = strstr(at, keyword)) != nullptr; at += length) {
        const bool begins = at == reasons || strchr(", ", at[-1]) != nullptr;
        if (begins && strchr(", ", at[length]) != nullptr) {
            return true;
        }
    }
    return false;
}

}  // namespace

void tell(monitor &it, const char *prefix, const char *text)
{
    const size_t room = sizeof it.log - it.log_length;
    const int length = snprintf(it.log + it.log_length, room, "%s%s\n", prefix, text);
    if (length > 0 && static_cast<size_t>(length) < room) {
        it.log_length += static_cast<size_t>(length);
    }
}

void adopt_reasons(monitor &it, const char *reasons)
{
    for (unsigned i = 0; reasons != nullptr && i < keyword_count; i++) {
        if (lists(reasons, keywords[i])) {
            it.shown = static_cast<uint8_t>(it.shown | 1U << i);
        }
    }
}

void show_health(monitor &it)
{
    show_reasons(it, reasons_of(it.printer));
    const word sentence = sentence_for(it.printer);
    const int told = static_cast<int>(sentence);
    // "Printing" is worth a line only behind a trouble.
    const bool news = told != it.told_word && (sentence != word::printing || it.told_word >= 0);
    if (news) {
        tell(it, "INFO: ", text_of(sentence, it.speaks));
        it.told_word = told;
    }
}

void withdraw_reasons(monitor &it)
{
    show_reasons(it, 0);
}

}  // namespace talk
