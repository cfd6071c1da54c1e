// Repeated commands that end early: the output failed, or the job was cancelled.
#include "printops/repeat.h"

#include "printops/blank.h"
#include "printops/finishing.h"
#include "printops/output.h"
#include "tests/printops/kit.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <unistd.h>

using namespace kit;

namespace {

constexpr size_t pulse_size = 5;
constexpr int32_t endless = INT_MAX;

// As a job that was cancelled while it prints.
void cancel()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    raise(SIGTERM);
}

void lose_output()
{
    dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
    write_string("lost");
    flush_output();
}

int32_t beep(int32_t times)
{
    Device device;
    device.options.externalbeeptimes = times;
    return print_external_beep(&device.dev);
}

TEST(RepeatedCommands, CountsThatEndAreNotTouched)
{
    for (const int32_t times : {0, 1, 255, 256, 257, 1000}) {
        const Seen seen = observe_untraced([&] { beep(times); });
        EXPECT_EQ(seen.out.size(), pulse_size * static_cast<size_t>(times));
    }
}

TEST(RepeatedCommands, ACancelledJobEndsBetweenTwoOfThem)
{
    for (const int32_t times : {1, 255, 256, 257, endless}) {
        const Ended ended = run_to_end([&] {
            cancel();
            beep(times);
        });
        EXPECT_EQ(ended.status, came_back);
        EXPECT_EQ(ended.out.size(), pulse_size * static_cast<size_t>(times < 256 ? times : 256)) << times;
        EXPECT_NE(ended.trace.find("-print_external_beep finished(0) success.\n"), std::string::npos);
    }
}

TEST(RepeatedCommands, AJobWhoseBytesWereLostEnds)
{
    const Ended ended = run_to_end([] {
        lose_output();
        beep(endless);
        _exit(output_failed() ? 0 : 1);
    });
    EXPECT_EQ(ended.status, 0);
}

TEST(RepeatedCommands, FeedsEndAndKeepCountOfWhatIsLeft)
{
    const Ended ended = run_to_end([] {
        cancel();
        Device device;
        print_blank(&device.dev, 256 * 255 + 1000);
        EXPECT_EQ(device.state.unfed_blank_rows, 1000);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    });
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(hex(ended.out), hex(feed(256 * 255)));
}

TEST(RepeatedCommands, AFeedOfThePageInProgressIsWhole)
{
    const Ended ended = run_to_end([] {
        cancel();
        Device device;
        print_blank(&device.dev, 256 * 255);
    });
    EXPECT_EQ(hex(ended.out), hex(feed(256 * 255)));
}

TEST(RepeatedCommands, TheFirstIsAlwaysSent)
{
    const Ended ended = run_to_end([] {
        cancel();
        _exit(may_repeat(0) && may_repeat(1) && may_repeat(255) && !may_repeat(256) && may_repeat(257) ? 0 : 1);
    });
    EXPECT_EQ(ended.status, 0);
}

}  // namespace
