// The device object: its buffers, and what happens when one of its blocks cannot be had.
#include "filter/device.h"

#include "tests/filter/ppd_text.h"
#include "tests/filter/wrapped_memory.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <klov/result.h>
#include <stdlib.h>

#include <algorithm>

using namespace kit;

namespace {

// A device made from a PPD, given back at the end.
class CreatedDevice {
public:
    CreatedDevice(const Ppd &ppd, const char *job)
    {
        const MemoryFile file(ppd.text());
        const PpdInEnvironment environment(file.path());
        seen = observe([&] { status = klov_printer_dev_creator(job, &dev); });
    }
    ~CreatedDevice()
    {
        klov_printer_dev_destroy(dev);
    }
    CreatedDevice(const CreatedDevice &) = delete;
    CreatedDevice &operator=(const CreatedDevice &) = delete;

    printer_dev *dev = nullptr;
    int32_t status = 99;
    Seen seen;
};

TEST(Device, OfThreeHundredAndEightyFourDots)
{
    const CreatedDevice device({.short_nick_name = "KLR-5813"}, "");
    EXPECT_EQ(device.status, 0);
    EXPECT_EQ(device.dev->render_data_size, 672U);
    EXPECT_EQ(device.dev->data_buf_size, 692U);
}

TEST(Device, OfFiveHundredAndSeventySixDots)
{
    const CreatedDevice device({.short_nick_name = "QX-100"}, nullptr);
    EXPECT_EQ(device.dev->render_data_size, 1008U);
    EXPECT_EQ(device.dev->data_buf_size, 1028U);
}

TEST(Device, StartsWithBuffersAndCountersOfZero)
{
    const CreatedDevice device({}, "");
    const auto zero = [](const uint8_t byte) { return byte == 0; };
    EXPECT_TRUE(std::all_of(device.dev->render_data, device.dev->render_data + 672, zero));
    EXPECT_TRUE(std::all_of(device.dev->data_buf, device.dev->data_buf + 692, zero));
    EXPECT_EQ(device.dev->state->reserved, 0);
    EXPECT_EQ(device.dev->state->unfed_blank_rows, 0);
    EXPECT_EQ(device.dev->state->lastStripBlanksHeight, 0);
}

TEST(Device, ThePageSizeMakesTheBuffers)
{
    const CreatedDevice device({}, "PageSize=100x50");
    EXPECT_EQ(device.dev->render_data_size, 1000U);
    EXPECT_EQ(device.dev->data_buf_size, 1020U);
}

TEST(Device, AnEmptyStripBufferIsNoFaultHere)
{
    const CreatedDevice device({}, "PageSize=2000");
    EXPECT_EQ(device.status, 0);
    EXPECT_EQ(device.dev->render_data_size, 0U);
    EXPECT_EQ(device.dev->data_buf_size, 20U);
}

TEST(Device, ListsItsOptions)
{
    const CreatedDevice device({}, "CutMode=2");
    EXPECT_NE(device.seen.err.find("DEBUG: CutMode=2 \nDEBUG: CUPS printing options \nDEBUG: model "),
              std::string::npos);
    EXPECT_NE(device.seen.err.find("DEBUG: finalcut         = 2 \n"), std::string::npos);
    const std::string end = "DEBUG: papersavebottom        = 1\n-dump options finished.\n";
    ASSERT_GE(device.seen.trace.size(), end.size());
    EXPECT_EQ(device.seen.trace.substr(device.seen.trace.size() - end.size()), end);
    EXPECT_EQ(device.seen.out, "");
}

TEST(Device, DestroyFreesExactlyFiveBlocks)
{
    const MemoryFile file(Ppd{}.text());
    const PpdInEnvironment environment(file.path());
    printer_dev *dev = nullptr;
    observe_untraced([&] { klov_printer_dev_creator("", &dev); });
    wrapped::start_counting();
    const int32_t status = klov_printer_dev_destroy(dev);
    wrapped::stop_counting();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(wrapped::blocks_freed(), 5);
    EXPECT_EQ(wrapped::blocks_made(), 0);
}

// What exit() finds still in use, on standard output.
void report_blocks_in_use()
{
    printf("%d in use", wrapped::blocks_made() - wrapped::blocks_freed());
    wrapped::stop_counting();
}

Ended end_without_block(int block)
{
    const MemoryFile file(Ppd{}.text());
    const PpdInEnvironment environment(file.path());
    return run_to_end([&] {
        atexit(report_blocks_in_use);
        wrapped::start_counting(block);
        printer_dev *dev = nullptr;
        klov_printer_dev_creator("", &dev);
        wrapped::stop_counting();
    });
}

// The fourth block of a job is the model's, which the options need.
TEST(DeviceMemory, EveryBlockHasItsOwnMessageAndNothingIsLeftBehind)
{
    struct {
        int block;
        const char *text;
    } const table[] = {{1, "Cannot allocate devOptions buffer"},
                       {2, "Cannot allocate rending buffer"},
                       {3, "Cannot allocate dev buffer"},
                       {5, "Cannot allocate rending data buffer"},
                       {6, "Cannot allocate data buffer"}};
    for (const auto &row : table) {
        const Ended ended = end_without_block(row.block);
        EXPECT_EQ(ended.status, 1) << row.text;
        EXPECT_EQ(ended.err.substr(ended.err.rfind("ERROR:")), fatal_line(row.text));
        EXPECT_EQ(ended.out, "0 in use") << row.text;
    }
}

TEST(DeviceMemory, WithoutTheModelsBlockTheModelIsWrong)
{
    const Ended ended = end_without_block(4);
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.err.find("DEBUG: " + code_text(KLOV_E_NO_MEMORY)), std::string::npos) << ended.err;
    EXPECT_EQ(ended.err.substr(ended.err.rfind("ERROR:")), fatal_line("wrong ppd modelname!"));
}

TEST(DeviceMemory, WithAllBlocksNothingFails)
{
    EXPECT_EQ(end_without_block(7).status, came_back);
}

}  // namespace
