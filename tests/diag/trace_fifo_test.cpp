// A named pipe at the trace's path, planted or meant: no job may hang on it.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "diag/trace.h"
#include "tests/diag/trace_file.h"

namespace {

class TraceFifo : public TraceTest {
protected:
    void SetUp() override
    {
        TraceTest::SetUp();
        ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
        // A hang ends the test program instead of the test run's patience.
        alarm(20);
    }

    void TearDown() override
    {
        alarm(0);
        if (reader_ >= 0) {
            close(reader_);
        }
        TraceTest::TearDown();
    }

    void open_reader()
    {
        reader_ = open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        ASSERT_GE(reader_, 0);
    }

    std::string read_waiting()
    {
        char text[4096];
        std::string all;
        ssize_t count = 0;
        while ((count = read(reader_, text, sizeof text)) > 0) {
            all.append(text, static_cast<size_t>(count));
        }
        return all;
    }

    void close_reader()
    {
        close(reader_);
        reader_ = -1;
    }

    int32_t open_trace()
    {
        errno = 0;
        return klov_trace_init(path("fifo").c_str());
    }

private:
    int reader_ = -1;
};

}  // namespace

TEST_F(TraceFifo, WithoutAReaderThereIsNoTraceAndNoWait)
{
    EXPECT_EQ(open_trace(), ENXIO);
    EXPECT_EQ(klov_trace_handle, nullptr);
    trace_put("skipped\n");
    trace_flush();
}

TEST_F(TraceFifo, AReaderGetsTheLines)
{
    open_reader();
    EXPECT_EQ(open_trace(), 0);
    trace_put("first\n");
    trace_flush();
    EXPECT_EQ(read_waiting(), "first\n");
    trace_put("second\n");
    trace_flush();
    klov_trace_exit();
    EXPECT_EQ(read_waiting(), "second\n");
}

TEST_F(TraceFifo, WritesNeverWaitForASlowReader)
{
    open_reader();
    open_trace();
    EXPECT_NE(fcntl(descriptor_on(path("fifo")), F_GETFL) & O_NONBLOCK, 0);
    const std::vector<uint8_t> bytes(200000, 0xFF);
    for (int i = 0; i < 5; ++i) {
        trace_hex(bytes.data(), bytes.size());
        trace_put("\n");
        trace_flush();
    }
    klov_trace_exit();
    const std::string got = read_waiting();
    EXPECT_GT(got.size(), 0U);
    EXPECT_EQ(got.substr(0, 10), "0xff 0xff ");
}

TEST_F(TraceFifo, AReaderThatGoesAwayEndsNothingButTheTrace)
{
    void (*const old_action)(int) = signal(SIGPIPE, SIG_IGN);
    open_reader();
    open_trace();
    close_reader();
    trace_put("nobody reads this\n");
    trace_flush();
    klov_trace_exit();
    EXPECT_FALSE(trace_is_open());
    signal(SIGPIPE, old_action);
}
