// Blank feed and paper saving.
#include "printops/blank.h"

#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <klov/result.h>

using namespace kit;

namespace {

Seen feed_seen(Device &device, int32_t count)
{
    return observe([&] { EXPECT_EQ(print_blank(&device.dev, count), KLOV_OK); });
}

std::string start_line(int32_t count, int quarters)
{
    return "+print_blank(blank_counter:" + std::to_string(count) + ", save percent " + std::to_string(quarters) +
           "/4) start.\n";
}

TEST(BlankFeed, ThreeLinesAreAWhiteImageOneByteWide)
{
    Device device;
    const Seen seen = feed_seen(device, 3);
    EXPECT_EQ(hex(seen.out), "1D 76 30 00 01 00 03 00 00 00 00");
    EXPECT_EQ(seen.trace, start_line(3, 0) + traced(bytes("1D 76 30 00 01 00 03 00")) + traced(bytes("00 00 00")) +
                              "-print_blank finished(0) success.\n");
    EXPECT_EQ(seen.err, "");
}

TEST(BlankFeed, SixHundredLinesTakeThreeCommands)
{
    Device device;
    const Seen seen = feed_seen(device, 600);
    EXPECT_EQ(hex(seen.out), hex(raster(0, 1, 255, std::string(255, '\0')) + raster(0, 1, 255, std::string(255, '\0')) +
                                 raster(0, 1, 90, std::string(90, '\0'))));
}

TEST(BlankFeed, EveryCountIsFedInChunksOf255)
{
    Device device;
    for (int32_t count = 1; count <= 600; ++count) {
        const Seen seen = observe_untraced([&] { print_blank(&device.dev, count); });
        ASSERT_EQ(hex(seen.out), hex(feed(count))) << count;
    }
}

TEST(BlankFeed, FixedWidthModelsTakeTheFeedCommand)
{
    for (const uint32_t model : {0x1955U, 0x1956U}) {
        Device device;
        device.options.model = model;
        EXPECT_EQ(hex(feed_seen(device, 600).out), "1B 4A FF 1B 4A FF 1B 4A 5A");
        const Seen seen = feed_seen(device, 1);
        EXPECT_EQ(hex(seen.out), "1B 4A 01");
        EXPECT_EQ(seen.trace, start_line(1, 0) + traced(bytes("1B 4A 01")) + "-print_blank finished(0) success.\n");
    }
}

// The models beside the two are not among them.
TEST(BlankFeed, NeighbouringModelsAreFedByImages)
{
    for (const uint32_t model : {0x1954U, 0x1957U, 0x1001U, 0U}) {
        Device device;
        device.options.model = model;
        EXPECT_EQ(hex(feed_seen(device, 3).out), hex(feed(3)));
    }
}

struct Saving {
    int32_t mode;
    int quarters;
    int32_t count;
    int32_t fed;
};

TEST(BlankFeed, SavingDropsQuartersAndRoundsForTheFeed)
{
    const Saving table[] = {{-1, 0, 100, 100}, {0, 0, 100, 100}, {1, 1, 100, 75}, {2, 2, 100, 50}, {3, 3, 100, 25},
                            {4, 0, 100, 100},  {5, 0, 100, 100}, {1, 1, 1, 1},    {2, 2, 1, 1},    {3, 3, 1, 1},
                            {1, 1, 2, 2},      {2, 2, 2, 1},     {3, 3, 2, 1},    {1, 1, 3, 3},    {2, 2, 3, 2},
                            {3, 3, 3, 1},      {1, 1, 4, 3},     {3, 3, 4, 1},    {3, 3, 5, 2},    {3, 3, 1001, 251}};
    for (const Saving &row : table) {
        Device device;
        device.options.papersavemode = row.mode;
        const Seen seen = feed_seen(device, row.count);
        EXPECT_EQ(hex(seen.out), hex(feed(row.fed))) << "mode " << row.mode << " count " << row.count;
        EXPECT_EQ(seen.trace.substr(0, start_line(row.count, row.quarters).size()),
                  start_line(row.count, row.quarters));
    }
}

int64_t dots_fed(std::string_view feeds)
{
    int64_t dots = 0;
    for (size_t at = 2; at < feeds.size(); at += 3) {
        dots += static_cast<unsigned char>(feeds[at]);
    }
    return dots;
}

TEST(BlankFeed, SavingIsExactForEveryCountAndMode)
{
    Device device;
    device.options.model = 0x1955;
    for (int32_t mode = 0; mode <= 3; ++mode) {
        device.options.papersavemode = mode;
        for (int32_t count = 1; count <= 300; ++count) {
            const Seen seen = observe_untraced([&] { print_blank(&device.dev, count); });
            ASSERT_EQ(dots_fed(seen.out), count - mode * count / 4) << "mode " << mode << " count " << count;
        }
    }
}

// Three times the count is beyond 32 bits here.
TEST(BlankFeed, SavingDoesNotOverflow)
{
    Device device;
    device.options.model = 0x1955;
    device.options.papersavemode = 3;
    const Seen seen = observe_untraced([&] { print_blank(&device.dev, 800000001); });
    EXPECT_EQ(dots_fed(seen.out), 200000001);
    EXPECT_EQ(seen.out.size(), 3U * ((200000001 + 254) / 255));
}

TEST(BlankFeed, CountsBelowOneLeaveOnlyTheStartLine)
{
    for (const int32_t count : {0, -1, -7, INT32_MIN}) {
        Device device;
        device.options.papersavemode = 3;
        const Seen seen = feed_seen(device, count);
        EXPECT_EQ(seen.out, "");
        EXPECT_EQ(seen.err, "");
        EXPECT_EQ(seen.trace, start_line(count, 3));
    }
}

TEST(BlankFeed, LeavesTheCountersOfFedRowsAlone)
{
    Device device;
    device.state.unfed_blank_rows = 5;
    device.state.lastStripBlanksHeight = 9;
    feed_seen(device, 300);
    EXPECT_EQ(device.state.unfed_blank_rows, 5);
    EXPECT_EQ(device.state.lastStripBlanksHeight, 9);
}

TEST(BlankFeed, ARefusedCommandIsFatal)
{
    for (const uint32_t model : {0x1001U, 0x1955U}) {
        const Ended ended = run_to_end([&] {
            Device device;
            device.options.model = model;
            device.options.type = 0x10010002;
            print_blank(&device.dev, 10);
        });
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.out, "");
        EXPECT_EQ(ended.err, fatal_line(code_text(KLOV_E_MODEL_TYPE)));
        EXPECT_EQ(ended.trace, start_line(10, 0) + "ERROR: " + code_text(KLOV_E_MODEL_TYPE) + "\n");
    }
}

TEST(BlankFeed, FlushesStandardOutput)
{
    Device device;
    std::string left;
    const WatchedOutput out([&](std::string_view block) { left += block; });
    print_blank(&device.dev, 2);
    EXPECT_EQ(hex(left), hex(feed(2)));
}

}  // namespace
