// A page with copies that does not fit into memory.
#include "filter/page.h"
#include "tests/filter/page_stream.h"
#include "tests/filter/wrapped_memory.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

TEST(PageMemory, APageThatCannotBeHeldIsSkipped)
{
    Device device;
    device.state.lastStripBlanksHeight = 6;
    PageStream stream({{2, bytes("80 01 80 01"), 2}});
    ASSERT_TRUE(stream.next());
    const Seen seen = observe([&] {
        wrapped::start_counting(1);
        process_page(&device.dev, &stream.header, stream.stream);
        wrapped::stop_counting();
    });
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace, "DEBUG: process_page start.\n\n");
    EXPECT_EQ(device.state.lastStripBlanksHeight, 6);
}

TEST(PageMemory, ThePageIsGivenBackAfterItsCopies)
{
    Device device;
    PageStream stream({{2, bytes("80 01 80 01"), 3}});
    ASSERT_TRUE(stream.next());
    observe_untraced([&] {
        wrapped::start_counting();
        process_page(&device.dev, &stream.header, stream.stream);
        wrapped::stop_counting();
    });
    EXPECT_EQ(wrapped::blocks_made(), 1);
    EXPECT_EQ(wrapped::blocks_freed(), 1);
}

TEST(PageMemory, OneCopyNeedsNoMemory)
{
    Device device;
    PageStream stream({{2, bytes("80 01 80 01")}});
    ASSERT_TRUE(stream.next());
    const Seen seen = observe_untraced([&] {
        wrapped::start_counting(1);
        process_page(&device.dev, &stream.header, stream.stream);
        wrapped::stop_counting();
    });
    EXPECT_EQ(wrapped::blocks_made() + wrapped::blocks_freed(), 0);
    EXPECT_EQ(hex(seen.out), hex(raster(0, 2, 2, bytes("80 01 80 01"))));
}

}  // namespace
