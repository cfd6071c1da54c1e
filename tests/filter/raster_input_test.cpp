// The raster stream's read function: large pieces from the kernel, small ones to CUPS.
#include "filter/raster_input.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

class RasterInput : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(pipe(ends_), 0);
        input_ = std::make_unique<raster_input>();
        input_->descriptor = ends_[0];
    }
    void TearDown() override
    {
        close(ends_[0]);
        close_writer();
    }

    void put(const std::string &block) const
    {
        ASSERT_EQ(write(ends_[1], block.data(), block.size()), static_cast<ssize_t>(block.size()));
    }
    void close_writer()
    {
        if (ends_[1] >= 0) {
            close(ends_[1]);
            ends_[1] = -1;
        }
    }
    // What there is when bytes are wanted, -1 as "error".
    std::string get(size_t length)
    {
        std::vector<unsigned char> buffer(length + 1, 0);
        gather(*input_, 1);
        const ssize_t count = take(*input_, buffer.data(), length);
        return count < 0 ? "error" : std::string(buffer.begin(), buffer.begin() + count);
    }

    std::unique_ptr<raster_input> input_;
    int ends_[2] = {-1, -1};
};

TEST_F(RasterInput, NeverWaitsForMoreThanIsThere)
{
    put("abc");
    EXPECT_EQ(get(10), "abc");
    put("de");
    EXPECT_EQ(get(1), "d");
    put("f");
    EXPECT_EQ(get(5), "e");
    EXPECT_EQ(get(5), "f");
}

TEST_F(RasterInput, TheEndIsAnEmptyReadAgainAndAgain)
{
    put("a");
    close_writer();
    EXPECT_EQ(get(4), "a");
    EXPECT_EQ(get(4), "");
    EXPECT_EQ(get(4), "");
}

TEST_F(RasterInput, OneReadFeedsManySmallRequests)
{
    put(std::string(3000, 'x'));
    EXPECT_EQ(get(1), "x");
    put("y");
    EXPECT_EQ(get(5000), std::string(2999, 'x'));
    EXPECT_EQ(get(5000), "y");
}

TEST_F(RasterInput, WhatIsBufferedComesBeforeWhatFollows)
{
    put("abcd");
    EXPECT_EQ(get(1), "a");
    put("efgh");
    EXPECT_EQ(get(10), "bcd");
    EXPECT_EQ(get(10), "efgh");
}

TEST_F(RasterInput, GatheredBytesLieTogetherAndAreHandedOnLater)
{
    put("abc");
    EXPECT_EQ(get(1), "a");
    std::thread writer([this] {
        put("de");
        put("fg");
    });
    const uint8_t *const bytes = gather(*input_, 5);
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(std::string(bytes, bytes + 5), "bcdef");
    writer.join();
    EXPECT_EQ(get(5), "bcdef");
    EXPECT_EQ(get(1), "g");
}

TEST_F(RasterInput, AsManyBytesAsTheBufferHoldsAreGatheredFromAnywhereInIt)
{
    put(std::string(40000, 'x'));
    EXPECT_EQ(get(39999).size(), 39999U);
    const size_t size = sizeof input_->bytes;
    std::thread writer([this, size] { put(std::string(size - 1, 'y')); });
    const uint8_t *const bytes = gather(*input_, size);
    writer.join();
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[0], 'x');
    EXPECT_EQ(bytes[size - 1], 'y');
}

TEST_F(RasterInput, AnEndBeforeTheBytesAreTogetherLeavesWhatCame)
{
    put("abc");
    close_writer();
    EXPECT_EQ(gather(*input_, 4), nullptr);
    EXPECT_EQ(get(10), "abc");
    EXPECT_EQ(get(10), "");
    EXPECT_FALSE(input_->failed);
}

// A read that fails once may succeed when it is tried again, with bytes from behind a gap.
TEST_F(RasterInput, NothingIsHandedOnOnceAReadHasFailed)
{
    put("abcd");
    const int descriptor = std::exchange(input_->descriptor, -1);
    EXPECT_EQ(get(4), "error");
    EXPECT_TRUE(input_->failed);
    input_->descriptor = descriptor;
    EXPECT_EQ(get(4), "error");
}

TEST_F(RasterInput, AFailedReadEndsGathering)
{
    put("abc");
    EXPECT_EQ(get(1), "a");
    input_->descriptor = -1;
    EXPECT_EQ(gather(*input_, 4), nullptr);
    EXPECT_TRUE(input_->failed);
    EXPECT_EQ(get(1), "error");
}

int late_writer = -1;
volatile sig_atomic_t alarms = 0;

// The first signal only interrupts; the second brings the bytes.
extern "C" void on_alarm(int)
{
    alarms = alarms + 1;
    if (alarms == 2) {
        [[maybe_unused]] const ssize_t written = write(late_writer, "late", 4);
    }
}

TEST_F(RasterInput, AnInterruptedReadIsTriedAgain)
{
    late_writer = ends_[1];
    alarms = 0;
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = on_alarm;
    sigaction(SIGALRM, &action, &before);
    const itimerval every_20_ms = {{0, 20000}, {0, 20000}};
    const itimerval never = {};
    setitimer(ITIMER_REAL, &every_20_ms, nullptr);
    const std::string got = get(10);
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    EXPECT_EQ(got, "late");
    EXPECT_GE(alarms, 2);
}

}  // namespace
