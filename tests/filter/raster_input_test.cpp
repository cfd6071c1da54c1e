// The raster stream's read function: large pieces from the kernel, small ones to CUPS.
#include "filter/raster_input.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <memory>
#include <string>
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
    // What one call returns, -1 as "error".
    std::string get(size_t length)
    {
        std::vector<unsigned char> buffer(length + 1, 0);
        const ssize_t count = read_raster(input_.get(), buffer.data(), length);
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
    EXPECT_EQ(waiting_bytes(*input_), 2999U);
    EXPECT_EQ(get(2999), std::string(2999, 'x'));
}

TEST_F(RasterInput, RequestsOfABuffersSizeGoStraightToTheStream)
{
    put(std::string(5000, 'y'));
    EXPECT_EQ(get(sizeof input_->bytes), std::string(5000, 'y'));
    EXPECT_EQ(waiting_bytes(*input_), 0U);
}

TEST_F(RasterInput, WhatIsBufferedComesBeforeWhatFollows)
{
    put("abcd");
    EXPECT_EQ(get(1), "a");
    put("efgh");
    EXPECT_EQ(get(sizeof input_->bytes), "bcd");
    EXPECT_EQ(get(sizeof input_->bytes), "efgh");
}

TEST_F(RasterInput, AnErrorIsReported)
{
    input_->descriptor = -1;
    EXPECT_EQ(get(4), "error");
    EXPECT_EQ(get(sizeof input_->bytes), "error");
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
