// What a printer answers, or line noise: every parser stays within its records.
#include "fuzz/input.h"

#include <klov/printing.h>
#include <klov/status.h>
#include <stdlib.h>

#include <algorithm>
#include <memory>

namespace {

void parse_status(fuzz::Input &input, uint32_t printer_class)
{
    fuzz::Fenced record(sizeof(printer_status));
    printer_status *status = input.byte() % 8 != 0 ? record.as<printer_status>() : nullptr;
    const auto asb = std::make_unique<uint8_t[]>(4);
    for (int i = 0; i < 4; ++i) {
        asb[static_cast<size_t>(i)] = input.byte();
    }
    klov_cmd_parse_ASB_status(printer_class, asb.get(), status);
    const int32_t n = static_cast<int32_t>(input.number());
    const int32_t reply = static_cast<int32_t>(input.number());
    klov_cmd_parse_transmit_status(printer_class, n, reply, status);
    klov_cmd_parse_real_time_status(printer_class, n, reply, status);
    klov_cmd_parse_status2(printer_class, reply, status);
    FUZZ_CHECK(record.intact_outside());
}

// The text in a block of exactly its size, so that reading on is noticed.
std::unique_ptr<char[]> block_of(const std::string &text, size_t least)
{
    auto block = std::make_unique<char[]>(std::max(text.size() + 1, least));
    memcpy(block.get(), text.c_str(), text.size() + 1);
    return block;
}

void parse_texts(fuzz::Input &input, uint32_t printer_class)
{
    const int32_t count = static_cast<int32_t>(input.number());
    const std::string text = input.text();
    fuzz::Fenced numbers(3 * sizeof(uint32_t));
    klov_cmd_parse_printer_version(printer_class, block_of(text, 3).get(), numbers.as<uint32_t>(), count);
    FUZZ_CHECK(numbers.intact_outside());
    fuzz::Fenced first(sizeof(uint32_t));
    fuzz::Fenced second(sizeof(uint32_t));
    klov_cmd_parse_qr_code_size(printer_class, block_of(text, 1).get(), first.as<uint32_t>(), second.as<uint32_t>());
    FUZZ_CHECK(first.intact_outside() && second.intact_outside());
}

// At least the eight bytes of a raster header are there, as the finder asks.
void find_image(fuzz::Input &input, uint32_t printer_class)
{
    std::vector<uint8_t> data = input.rest();
    if (data.size() < 8) {
        return;
    }
    uint8_t m = 0;
    uint32_t numbers[5] = {};
    const uint32_t size = static_cast<uint32_t>(data.size());
    if (klov_cmds_find_raster_imgdata(printer_class, data.data(), size, &m, &numbers[0], &numbers[1], &numbers[2],
                                      &numbers[3], &numbers[4]) == KLOV_OK) {
        FUZZ_CHECK(numbers[3] <= size);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const uint8_t kind = input.byte();
    const uint32_t printer_class = input.number();
    if (kind % 3 == 0) {
        parse_status(input, printer_class);
    } else if (kind % 3 == 1) {
        parse_texts(input, printer_class);
    } else {
        find_image(input, printer_class);
    }
    return 0;
}
