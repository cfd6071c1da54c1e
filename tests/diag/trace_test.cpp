// Opening, writing and closing the trace.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "diag/trace.h"
#include "tests/diag/trace_file.h"

namespace {

class Trace : public TraceTest {
protected:
    int32_t open_trace(const std::string &name)
    {
        errno = 0;
        return klov_trace_init(path(name).c_str());
    }

    // What a dump to a stream of the caller's own reads like.
    std::string dumped(const std::vector<uint8_t> &bytes)
    {
        FILE *stream = fopen(path("dump").c_str(), "wb");
        klov_trace_dump(stream, bytes.data(), static_cast<int32_t>(bytes.size()));
        fclose(stream);
        return file_contents(path("dump"));
    }
};

}  // namespace

TEST_F(Trace, HoldsItsLinesToTheByte)
{
    EXPECT_EQ(open_trace("job"), 0);
    trace_put("+print_cut_page(printer_class:", 3, ") start.\n");
    trace_put("\tText:", std::string("ab").c_str(), ".\n\tHex:");
    trace_hex(reinterpret_cast<const uint8_t *>("ab"), 2);
    trace_put("\n");
    trace_finished("print_cut_page", 0);
    trace_finished("print_cut_page", -3);
    trace_put("-cancel_handler finished.");
    klov_trace_exit();
    EXPECT_EQ(file_contents(path("job")),
              "+print_cut_page(printer_class:3) start.\n\tText:ab.\n\tHex:0x61 0x62 \n"
              "-print_cut_page finished(0) success.\n-print_cut_page finished(-3) fail!\n-cancel_handler finished.");
}

TEST_F(Trace, ALineIsInTheFileWhenItIsFlushed)
{
    open_trace("job");
    std::string written;
    for (int i = 0; i < 100; ++i) {
        trace_put("line ", i, "\n");
        ASSERT_EQ(file_contents(path("job")), written);
        trace_flush();
        written += "line " + std::to_string(i) + "\n";
        ASSERT_EQ(file_contents(path("job")), written);
    }
}

TEST_F(Trace, AFlushIsOneWrite)
{
    if (!counts_write_calls()) {
        GTEST_SKIP() << "write calls cannot be counted here";
    }
    open_trace("job");
    const auto put_pieces = [] {
        trace_put("\ttwo ");
        trace_put(2);
        trace_put(".\n");
    };
    EXPECT_EQ(writes_of(put_pieces), 0);
    EXPECT_EQ(writes_of(trace_flush), 1);
    EXPECT_EQ(writes_of(trace_flush), 0);
}

TEST_F(Trace, ADumpToTheTraceIsOneWrite)
{
    if (!counts_write_calls()) {
        GTEST_SKIP() << "write calls cannot be counted here";
    }
    open_trace("job");
    const std::vector<uint8_t> bytes(5000, 0xFF);
    EXPECT_EQ(writes_of([&] { klov_trace_dump(klov_trace_handle, bytes.data(), 5000); }), 1);
    EXPECT_EQ(file_contents(path("job")).size(), strlen("[DUMP(5000):].\r\n") + 5000 * strlen("0xff "));
}

// The lines that every band writes are put together from pieces, without printf.
TEST_F(Trace, PiecesReadAsPrintfPutsThem)
{
    const int32_t numbers[] = {0, 1, -1, 9, 10, -10, 99, 100, 2147483647, -2147483647, -2147483647 - 1};
    open_trace("job");
    std::string expected;
    for (const int32_t number : numbers) {
        trace_put("\tvalue:", number, ".\n");
        expected += "\tvalue:" + std::to_string(number) + ".\n";
    }
    EXPECT_EQ(file_contents(path("job")), "");
    trace_flush();
    EXPECT_EQ(file_contents(path("job")), expected);
}

// However much waits already.
TEST_F(Trace, PiecesNeverOverrunWhatWaits)
{
    for (size_t waiting = 65536 - 40; waiting <= 65536; ++waiting) {
        const std::string text(waiting, 'x');
        open_trace("job");
        trace_put(text.c_str());
        trace_put("<", -2147483647, ">");
        trace_flush();
        ASSERT_EQ(file_contents(path("job")), text + "<-2147483647>") << waiting;
    }
}

TEST_F(Trace, TextsOfAnyLengthArriveWholeAndInOrder)
{
    for (const size_t length : {65534U, 65535U, 65536U, 65537U, 200000U}) {
        const std::string text(length, 'x');
        open_trace("job");
        trace_put("first ", text.c_str());
        trace_put(text.c_str(), "last\n");
        trace_flush();
        std::string expected = "first ";
        expected.append(2 * length, 'x').append("last\n");
        EXPECT_EQ(file_contents(path("job")), expected) << length;
    }
}

TEST_F(Trace, EveryJobOverwritesThePreviousJobsTrace)
{
    open_trace("job");
    trace_put("a long line of the first job\n");
    trace_flush();
    klov_trace_exit();
    open_trace("job");
    trace_put("short\n");
    trace_flush();
    EXPECT_EQ(file_contents(path("job")), "short\n");
}

TEST_F(Trace, ReopeningClosesTheFirstFileBeforeOpeningTheSecond)
{
    open_trace("first");
    trace_put("unfinished");
    open_trace("second");
    EXPECT_EQ(open_descriptors_on(path("first")), 0);
    EXPECT_EQ(open_descriptors_on(path("second")), 1);
    trace_put("next\n");
    trace_flush();
    EXPECT_EQ(file_contents(path("first")), "unfinished");
    EXPECT_EQ(file_contents(path("second")), "next\n");
}

TEST_F(Trace, ReopeningTheSameFileWritesWhatWasPendingBeforeItTruncates)
{
    open_trace("job");
    trace_put("unfinished");
    open_trace("job");
    trace_put("new\n");
    trace_flush();
    EXPECT_EQ(file_contents(path("job")), "new\n");
}

TEST_F(Trace, StdoutTwiceDoesNotCloseStandardOutput)
{
    testing::internal::CaptureStdout();
    klov_trace_init("stdout");
    klov_trace_init("stdout");
    EXPECT_EQ(klov_trace_handle, stdout);
    trace_put("to standard output\n");
    trace_flush();
    klov_trace_exit();
    klov_trace_exit();
    EXPECT_GE(fcntl(STDOUT_FILENO, F_GETFD), 0);
    EXPECT_GT(printf("still there\n"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "to standard output\nstill there\n");
}

TEST_F(Trace, LeavingStdoutForAFileDoesNotCloseStandardOutput)
{
    klov_trace_init("stdout");
    open_trace("job");
    EXPECT_GE(fcntl(STDOUT_FILENO, F_GETFD), 0);
    EXPECT_NE(klov_trace_handle, stdout);
}

TEST_F(Trace, WhatIsPendingForStdoutGoesThereAndNotToTheNextTrace)
{
    testing::internal::CaptureStdout();
    klov_trace_init("stdout");
    trace_put("for stdout");
    open_trace("job");
    trace_put("for the file\n");
    trace_flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "for stdout");
    EXPECT_EQ(file_contents(path("job")), "for the file\n");
}

TEST_F(Trace, OnlyTheExactNameIsStandardOutput)
{
    for (const char *name : {"/stdout", "/STDOUT", "/stdout "}) {
        open_trace(name + 1);
        EXPECT_NE(klov_trace_handle, stdout);
    }
}

TEST_F(Trace, ClosingTwiceClosesTheStreamOnce)
{
    open_trace("job");
    const int descriptor = descriptor_on(path("job"));
    trace_put("unfinished");
    klov_trace_exit();
    EXPECT_EQ(file_contents(path("job")), "unfinished");
    EXPECT_EQ(open_descriptors_on(path("job")), 0);
    // Something else now gets the same descriptor; a second closing would take it away.
    const int other = open("/dev/null", O_RDONLY);
    ASSERT_EQ(other, descriptor);
    klov_trace_exit();
    EXPECT_GE(fcntl(other, F_GETFD), 0);
    open_trace("second");
    EXPECT_GE(fcntl(other, F_GETFD), 0);
    close(other);
}

TEST_F(Trace, ClosingWithoutATraceDoesNothing)
{
    klov_trace_exit();
    EXPECT_EQ(klov_trace_handle, nullptr);
}

TEST_F(Trace, AClosedTraceKeepsItsHandleButTakesNothingMore)
{
    open_trace("job");
    FILE *handle = klov_trace_handle;
    EXPECT_TRUE(trace_is_open());
    klov_trace_exit();
    EXPECT_EQ(klov_trace_handle, handle);
    EXPECT_FALSE(trace_is_open());
    const uint8_t byte = 0x1B;
    trace_put("lost\n");
    trace_flush();
    trace_put("lost");
    trace_hex(&byte, 1);
    trace_put("lost", 1);
    trace_flush();
    klov_trace_dump(klov_trace_handle, &byte, 1);
    EXPECT_EQ(file_contents(path("job")), "");
    open_trace("next");
    trace_flush();
    EXPECT_EQ(file_contents(path("next")), "");
}

// The C library reuses a closed stream's memory; the caller's own stream must not be taken for the closed trace.
TEST_F(Trace, AStreamOpenedAfterTheClosingIsDumpedTo)
{
    open_trace("job");
    klov_trace_exit();
    EXPECT_EQ(dumped({0x41}), "[DUMP(1):0x41 ].\r\n");
    klov_trace_exit();
    EXPECT_EQ(dumped({0x42}), "[DUMP(1):0x42 ].\r\n");
}

TEST_F(Trace, OpeningAndClosingManyTimesLeavesNoDescriptorBehind)
{
    const int before = open_descriptors();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(open_trace("job"), 0);
        ASSERT_TRUE(trace_is_open());
        trace_put("job ", i, "\n");
        trace_flush();
        ASSERT_EQ(file_contents(path("job")), "job " + std::to_string(i) + "\n");
        klov_trace_exit();
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(Trace, ATargetThatCannotBeOpenedLeavesNoTrace)
{
    EXPECT_EQ(open_trace("missing/job"), ENOENT);
    EXPECT_EQ(klov_trace_handle, nullptr);
    EXPECT_EQ(open_trace(""), EISDIR);
    EXPECT_EQ(klov_trace_handle, nullptr);
    trace_put("skipped\n");
    trace_flush();
    klov_trace_exit();
    EXPECT_FALSE(trace_is_open());
}

TEST_F(Trace, AFailedReopeningHasClosedTheOldTrace)
{
    open_trace("job");
    trace_put("unfinished");
    EXPECT_EQ(open_trace("missing/job"), ENOENT);
    EXPECT_EQ(klov_trace_handle, nullptr);
    EXPECT_EQ(open_descriptors_on(path("job")), 0);
    EXPECT_EQ(file_contents(path("job")), "unfinished");
}

TEST_F(Trace, OpeningReturnsErrnoAsItStands)
{
    errno = EDOM;
    EXPECT_EQ(klov_trace_init(path("job").c_str()), EDOM);
    EXPECT_NE(klov_trace_handle, nullptr);
    EXPECT_EQ(klov_trace_init(path("job").c_str()), EDOM);
    EXPECT_EQ(klov_trace_init("stdout"), EDOM);
    EXPECT_EQ(errno, EDOM);
}

TEST_F(Trace, ClosingLeavesErrnoAlone)
{
    EXPECT_EQ(open_trace("job"), 0);
    klov_trace_exit();
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(klov_trace_init(path("job").c_str()), 0);
}

TEST_F(Trace, ProgramsThatAreStartedDoNotInheritTheTrace)
{
    open_trace("job");
    EXPECT_EQ(fcntl(descriptor_on(path("job")), F_GETFD), FD_CLOEXEC);
}

TEST_F(Trace, WritesToAFileWait)
{
    open_trace("job");
    const int flags = fcntl(descriptor_on(path("job")), F_GETFL);
    EXPECT_EQ(flags & O_NONBLOCK, 0);
    EXPECT_EQ(flags & O_ACCMODE, O_WRONLY);
}

// Two jobs at once write to one file: the second empties it under the first, which must not leave a hole then.
TEST_F(Trace, WritesGoToTheEndOfTheFileWhereverThatIs)
{
    open_trace("job");
    trace_put("first\n");
    trace_flush();
    ASSERT_EQ(truncate(path("job").c_str(), 0), 0);
    trace_put("second\n");
    trace_flush();
    EXPECT_EQ(file_contents(path("job")), "second\n");
}

TEST_F(Trace, ARescueIsOneWriteOfWhatWaits)
{
    open_trace("job");
    trace_put("+print_dotline(", 3);
    if (counts_write_calls()) {
        EXPECT_EQ(writes_of(trace_rescue), 1);
    } else {
        trace_rescue();
    }
    EXPECT_EQ(file_contents(path("job")), "+print_dotline(3");
}

TEST_F(Trace, ARescueWithoutATraceDoesNothing)
{
    trace_rescue();
    open_trace("job");
    klov_trace_exit();
    trace_rescue();
    EXPECT_EQ(file_contents(path("job")), "");
}

namespace {

constexpr size_t longest_trace = 256 << 20;
const std::string last_line = "trace is full.\n";

// So many bytes of whole lines, the last one without its end if it is to be cut.
void fill(size_t size)
{
    const std::string lines(65535, 'x');
    for (; size >= 65536; size -= 65536) {
        trace_put(lines.c_str(), "\n");
    }
    trace_put(std::string(size, 'y').c_str());
    trace_flush();
}

}  // namespace

TEST_F(Trace, AFullTraceEndsWithALineThatSaysSo)
{
    open_trace("job");
    FILE *const handle = klov_trace_handle;
    fill(longest_trace - 100);
    trace_put("\nwhole\n", std::string(200, 'z').c_str(), "\n");
    trace_flush();
    EXPECT_FALSE(trace_is_open());
    EXPECT_EQ(klov_trace_handle, handle);
    EXPECT_EQ(open_descriptors_on(path("job")), 0);
    trace_put("lost\n");
    trace_flush();
    klov_trace_exit();
    const std::string text = file_contents(path("job"));
    EXPECT_EQ(text.size(), longest_trace - 100 + strlen("\nwhole\n") + last_line.size());
    EXPECT_EQ(text.substr(text.size() - 30), "yyyyyyyy\nwhole\n" + last_line);
    open_trace("job");
    trace_put("next\n");
    trace_flush();
    EXPECT_EQ(file_contents(path("job")), "next\n");
}

TEST_F(Trace, ALineThatIsCutGetsAnEnd)
{
    open_trace("job");
    fill(longest_trace - 17);
    fill(10);
    klov_trace_exit();
    const std::string text = file_contents(path("job"));
    EXPECT_EQ(text.size(), longest_trace - 17 + 1 + last_line.size());
    EXPECT_EQ(text.substr(text.size() - 20), "yyyy\n" + last_line);
}

TEST_F(Trace, NoTraceIsLongerThanItsLimit)
{
    for (const size_t rest : {0U, 14U, 15U, 16U}) {
        open_trace("job");
        fill(longest_trace - rest);
        fill(rest + 1);
        klov_trace_exit();
        struct stat info;
        ASSERT_EQ(stat(path("job").c_str(), &info), 0);
        EXPECT_LE(static_cast<size_t>(info.st_size), longest_trace) << rest;
    }
}

TEST_F(Trace, TheUmaskAloneLimitsWhoReadsTheFile)
{
    const mode_t old_mask = umask(0027);
    open_trace("job");
    umask(old_mask);
    struct stat info;
    ASSERT_EQ(stat(path("job").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640U);
}

TEST_F(Trace, ADumpOfTwoBytesReadsAsInTheManual)
{
    EXPECT_EQ(dumped({0x1B, 0x40}), "[DUMP(2):0x1b 0x40 ].\r\n");
}

TEST_F(Trace, ADumpOfNoBytesHasOnlyItsFrame)
{
    EXPECT_EQ(dumped({}), "[DUMP(0):].\r\n");
}

TEST_F(Trace, ADumpWithANegativeCountHasOnlyItsFrame)
{
    open_trace("job");
    klov_trace_dump(klov_trace_handle, nullptr, -1);
    EXPECT_EQ(file_contents(path("job")), "[DUMP(-1):].\r\n");
}

TEST_F(Trace, ADumpShowsEveryByteWithTwoDigits)
{
    std::vector<uint8_t> bytes;
    std::string expected = "[DUMP(256):";
    char word[8];
    for (unsigned value = 0; value < 256; ++value) {
        bytes.push_back(static_cast<uint8_t>(value));
        snprintf(word, sizeof word, "0x%02x ", value);
        expected += word;
    }
    EXPECT_EQ(dumped(bytes), expected + "].\r\n");
}

TEST_F(Trace, ADumpToNoStreamDoesNothing)
{
    const uint8_t byte = 0x1B;
    klov_trace_dump(nullptr, &byte, 1);
    open_trace("job");
    klov_trace_dump(nullptr, &byte, 1);
    EXPECT_EQ(file_contents(path("job")), "");
}

TEST_F(Trace, ADumpFlushesTheTraceAndNotTheStreamItWritesTo)
{
    open_trace("job");
    trace_put("pending");
    FILE *stream = fopen(path("dump").c_str(), "wb");
    const uint8_t byte = 0x1B;
    klov_trace_dump(stream, &byte, 1);
    EXPECT_EQ(file_contents(path("job")), "pending");
    EXPECT_EQ(file_contents(path("dump")), "");
    fclose(stream);
    EXPECT_EQ(file_contents(path("dump")), "[DUMP(1):0x1b ].\r\n");
}

TEST_F(Trace, ADumpToTheTraceIsFlushed)
{
    open_trace("job");
    const uint8_t bytes[] = {0x1B, 0x40};
    klov_trace_dump(klov_trace_handle, bytes, 2);
    EXPECT_EQ(file_contents(path("job")), "[DUMP(2):0x1b 0x40 ].\r\n");
}
