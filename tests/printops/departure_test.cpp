// The trace tells the truth when the process dies: bytes leave only after their trace has reached its file.
#include "printops/band.h"
#include "printops/blank.h"
#include "printops/finishing.h"
#include "printops/output.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <klov/trace.h>

using namespace kit;

namespace {

size_t bytes_in_trace(const std::string &trace)
{
    size_t count = 0;
    for (size_t at = trace.find("0x"); at != std::string::npos; at = trace.find("0x", at + 2)) {
        count += 1;
    }
    return count;
}

struct Departures {
    size_t bytes = 0;
    size_t untraced = 0;  // departures whose bytes were not all in the trace file at that moment
};

Departures departures_of(const std::function<void()> &call)
{
    const MemoryFile trace;
    klov_trace_init(trace.path().c_str());
    Departures seen;
    {
        const WatchedOutput out([&](std::string_view block) {
            seen.bytes += block.size();
            seen.untraced += bytes_in_trace(trace.contents()) < seen.bytes ? 1 : 0;
        });
        call();
    }
    klov_trace_exit();
    klov_trace_handle = nullptr;
    return seen;
}

void print_everything()
{
    Device device;
    device.options.printlogo = 1;
    device.options.logoindex = 1;
    device.options.logoalign = 2;
    device.options.finalcut = 1;
    device.options.externalbeeptimes = 3;
    const std::vector<uint8_t> rows(48U * 300U, 0x5A);
    printer_set_align(&device.dev);
    print_logo(&device.dev);
    print_dotline(&device.dev, rows.data(), 48, 300);
    print_blank(&device.dev, 5000);
    print_external_beep(&device.dev);
    write_string("text");
    print_cut_page(&device.dev);
    flush_output();
}

TEST(Departure, EveryByteIsTracedBeforeItLeaves)
{
    const Departures seen = departures_of(print_everything);
    EXPECT_GT(seen.bytes, 48U * 300U + 5000U);
    EXPECT_EQ(seen.untraced, 0U);
}

// When standard output is flushed, the lines that tell of finished writes are in the file as well.
TEST(Departure, AFlushOfTheOutputBringsTheWholeTraceAlong)
{
    const MemoryFile trace;
    klov_trace_init(trace.path().c_str());
    std::string trace_at_departure;
    {
        const WatchedOutput out([&](std::string_view) { trace_at_departure = trace.contents(); });
        const uint8_t block[2] = {1, 2};
        write_bytes(block, 2);
        flush_output();
    }
    klov_trace_exit();
    klov_trace_handle = nullptr;
    EXPECT_EQ(trace_at_departure, traced(bytes("01 02")));
}

}  // namespace
