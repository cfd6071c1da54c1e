// The scheduler's log: levels, codes, the fatal way out.
#include "diag/messages.h"

#include "tests/printops/kit.h"

#include <cups/cups.h>
#include <gtest/gtest.h>
#include <klov/result.h>
#include <klov/trace.h>
#include <string.h>

#include <algorithm>

using namespace kit;

namespace {

std::string cups_text()
{
    return ippErrorString(cupsLastError());
}

Seen message(int32_t level, const char *text)
{
    return observe([&] { msg(level, text); });
}

bool info_buf_is_clear()
{
    return std::all_of(std::begin(info_buf), std::end(info_buf), [](char sign) { return sign == '\0'; });
}

TEST(Messages, InformationHasABlankBeforeItsLineEnd)
{
    const Seen seen = message(level_info, "abc");
    EXPECT_EQ(seen.err, "INFO: abc \n");
    EXPECT_EQ(seen.trace, "INFO: abc\n");
    EXPECT_EQ(seen.out, "");
}

TEST(Messages, DebuggingShowsTheCupsErrorText)
{
    const Seen seen = message(level_debug, "abc");
    EXPECT_EQ(seen.err, "DEBUG: abc (cups:" + cups_text() + ")\n");
    EXPECT_EQ(seen.trace, "DEBUG: abc\n");
    EXPECT_EQ(seen.out, "");
}

TEST(Messages, DumpsAreDebuggingLinesWithoutIt)
{
    const Seen seen = message(level_dump, "abc");
    EXPECT_EQ(seen.err, "DEBUG: abc \n");
    EXPECT_EQ(seen.trace, "DEBUG: abc\n");
    EXPECT_EQ(seen.out, "");
}

TEST(Messages, OutputGoesToThePrinter)
{
    const Seen seen = message(level_output, "abc");
    EXPECT_EQ(seen.out, "abc");
    EXPECT_EQ(seen.err, "");
    EXPECT_EQ(seen.trace,
              "OUTPUT: abc\n+write_string start(data_size:3).\n\tText:abc.\n\tHex:0x61 0x62 0x63 \n"
              "-write_string finished(writed:1).\n");
}

TEST(Messages, FatalEndsTheProcessWithStatusOne)
{
    const Ended ended = run_to_end([] { msg(level_fatal, "abc"); });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, "ERROR:Raster(abc, cups:" + cups_text() + ")\n");
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.trace, "ERROR: abc\n");
}

TEST(Messages, FatalWorksWithoutATrace)
{
    const Ended ended = run_to_end([] {
        klov_trace_exit();
        msg(level_fatal, "abc");
    });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, fatal_line("abc"));
    EXPECT_EQ(ended.trace, "");
}

// error() itself is not traced.
TEST(Messages, ErrorWritesItsLineAndNoTrace)
{
    const Ended ended = run_to_end([] { error("abc"); });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, fatal_line("abc"));
    EXPECT_EQ(ended.trace, "");
}

TEST(Messages, ErrorLetsPrintedBytesGo)
{
    const Ended ended = run_to_end([] {
        msg(level_output, "bytes");
        error("abc");
    });
    EXPECT_EQ(ended.out, "bytes");
}

TEST(Messages, AnyOtherLevelWritesNothingAtAll)
{
    for (const int32_t level : {-1, 3, 7, 16, 31, 33, 63, 65, 128, INT32_MIN, INT32_MAX}) {
        const Seen seen = message(level, "x");
        EXPECT_EQ(seen.out + seen.err + seen.trace, "") << level;
    }
}

TEST(Messages, TextsAreNeverFormats)
{
    EXPECT_EQ(message(level_info, "50%s%n").err, "INFO: 50%s%n \n");
    EXPECT_EQ(message(level_info, "50%s%n").trace, "INFO: 50%s%n\n");
}

// The scheduler splits lines of more than 2,047 bytes.
TEST(Messages, ALineTheSchedulerWouldSplitIsCut)
{
    for (const size_t length : {1990U, 1991U, 1992U, 1993U, 2047U, 20000U}) {
        const std::string text(length, 't');
        const std::string whole = "INFO: " + text + " \n";
        const Seen seen = message(level_info, text.c_str());
        EXPECT_EQ(seen.err, whole.size() < 2000 ? whole : whole.substr(0, 1995) + "...\n") << length;
    }
}

TEST(Messages, TheSharedBufferIsClearedAfterUse)
{
    for (const int32_t level : {level_info, level_debug, level_dump, level_output, 7}) {
        memset(info_buf, 'x', sizeof info_buf - 1);
        const Seen seen = message(level, info_buf);
        EXPECT_TRUE(info_buf_is_clear()) << level;
        EXPECT_EQ(seen.err.find(std::string(1023, 'x')) != std::string::npos, level != level_output && level != 7);
    }
}

TEST(Messages, OtherTextsLeaveTheSharedBufferAlone)
{
    snprintf(info_buf, sizeof info_buf, "kept");
    message(level_info, "other");
    EXPECT_STREQ(info_buf, "kept");
    memset(info_buf, 0, sizeof info_buf);
}

TEST(Messages, WithoutATraceTheLinesAreTheSame)
{
    EXPECT_EQ(observe_untraced([] { msg(level_info, "abc"); }).err, "INFO: abc \n");
}

TEST(Codes, ZeroPrintsNothingAndDoesNotExit)
{
    const Ended ended = run_to_end([] { _exit(msgerrno(level_fatal, 0) == 0 && msgerrno2(2, 0, "x") == 0 ? 0 : 5); });
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out + ended.err + ended.trace, "");
}

TEST(Codes, ZeroIsNoMessageAtAnyLevel)
{
    const Seen seen = observe([] {
        EXPECT_EQ(msgerrno(level_debug, 0), 0);
        EXPECT_EQ(msgerrno2(level_info, 0, "x"), 0);
    });
    EXPECT_EQ(seen.out + seen.err + seen.trace, "");
}

TEST(Codes, AreShownWithTheirText)
{
    int32_t result = 0;
    const Seen seen = observe([&] { result = msgerrno(level_info, KLOV_E_MODEL_TYPE); });
    EXPECT_EQ(result, KLOV_E_MODEL_TYPE);
    EXPECT_EQ(seen.err, "INFO: " + code_text(KLOV_E_MODEL_TYPE) + " \n");
    EXPECT_GT(code_text(KLOV_E_MODEL_TYPE).size(), strlen("error(-3):"));
}

TEST(Codes, WithAPrefixEndInAStopAndALineEnd)
{
    int32_t result = 0;
    const Seen seen = observe([&] { result = msgerrno2(level_dump, KLOV_E_PARAMETER, "while testing"); });
    EXPECT_EQ(result, KLOV_E_PARAMETER);
    EXPECT_EQ(seen.err, "DEBUG: while testing " + code_text(KLOV_E_PARAMETER) + ".\n \n");
}

TEST(Codes, OfTheSystemAreShownToo)
{
    const Seen seen = observe([] { msgerrno(level_info, ENOENT); });
    EXPECT_EQ(seen.err, "INFO: " + code_text(ENOENT) + " \n");
    EXPECT_NE(seen.err.find(strerror(ENOENT)), std::string::npos) << seen.err;
}

TEST(Codes, AtTheFatalLevelEndTheProcess)
{
    const Ended ended = run_to_end([] { msgerrno(level_fatal, KLOV_E_NO_MEMORY); });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, fatal_line(code_text(KLOV_E_NO_MEMORY)));
    EXPECT_EQ(ended.trace, "ERROR: " + code_text(KLOV_E_NO_MEMORY) + "\n");
}

TEST(Codes, LongTextsAreCutAt254Characters)
{
    const std::string prefix(300, 'p');
    const Seen seen = observe([&] { msgerrno2(level_info, KLOV_E_PARAMETER, prefix.c_str()); });
    EXPECT_EQ(seen.err, "INFO: " + std::string(254, 'p') + " \n");
}

// ---- Lines that belong together ----

TEST(HeldMessages, AreSentWithOneWriteInTheirOrder)
{
    std::vector<std::string> writes;
    {
        const WatchedLog err([&](std::string_view block) { writes.emplace_back(block); });
        hold_messages();
        info("one");
        page_message(3, 2);
        dump("two");
        EXPECT_TRUE(writes.empty());
        release_messages();
        info("three");
    }
    EXPECT_EQ(writes, (std::vector<std::string>{"INFO: one \nPAGE: 3 2\nDEBUG: two \n", "INFO: three \n"}));
}

TEST(HeldMessages, NothingIsLostWhenThereAreTooMany)
{
    std::string expected;
    const Seen seen = observe_untraced([&] {
        hold_messages();
        for (int i = 0; i < 500; ++i) {
            const std::string text = "line " + std::to_string(i) + std::string(static_cast<size_t>(i % 90), '.');
            info(text.c_str());
            expected += "INFO: " + text + " \n";
        }
        info("last");
        expected += "INFO: last \n";
        release_messages();
    });
    EXPECT_EQ(seen.err, expected);
}

TEST(HeldMessages, AreTracedInFull)
{
    const Seen seen = observe([] {
        hold_messages();
        msg(level_info, "one");
        msg(level_debug, "two");
        release_messages();
    });
    EXPECT_EQ(seen.trace, "INFO: one\nDEBUG: two\n");
}

// Their trace lines share one write as well, before the messages leave.
TEST(HeldMessages, ReachTheTraceFileTogether)
{
    const MemoryFile trace;
    klov_trace_init(trace.path().c_str());
    std::string while_held;
    std::string at_departure;
    {
        const WatchedLog err([&](std::string_view) { at_departure = trace.contents(); });
        hold_messages();
        msg(level_info, "one");
        msg(level_info, "two");
        while_held = trace.contents();
        release_messages();
    }
    klov_trace_exit();
    klov_trace_handle = nullptr;
    EXPECT_EQ(while_held, "");
    EXPECT_EQ(at_departure, "INFO: one\nINFO: two\n");
}

TEST(HeldMessages, AFatalErrorSendsThemFirst)
{
    const Ended ended = run_to_end([] {
        hold_messages();
        info("one");
        error("abc");
    });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, "INFO: one \n" + fatal_line("abc"));
}

TEST(HeldMessages, ReleasingNothingWritesNothing)
{
    EXPECT_EQ(observe_untraced(release_messages).err, "");
}

TEST(Messages, TheArgumentHookReturnsTheCount)
{
    char name[] = "filter";
    char *arguments[] = {name, nullptr};
    int32_t result = 0;
    const Seen seen = observe([&] { result = dump_args(6, arguments); });
    EXPECT_EQ(result, 6);
    EXPECT_EQ(seen.out + seen.err + seen.trace, "");
}

TEST(Messages, PageAccounting)
{
    EXPECT_EQ(observe_untraced([] { page_message(1, 1); }).err, "PAGE: 1 1\n");
    EXPECT_EQ(observe_untraced([] { page_message(12, 0); }).err, "PAGE: 12 0\n");
}

}  // namespace
