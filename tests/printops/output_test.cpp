// The output channel: bytes as they are, and their trace.
#include "printops/output.h"

#include "tests/printops/kit.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <klov/trace.h>
#include <unistd.h>

using namespace kit;

namespace {

void send(std::string_view block)
{
    write_bytes(reinterpret_cast<const uint8_t *>(block.data()), static_cast<int32_t>(block.size()));
}

std::string every_byte()
{
    std::string block(256, '\0');
    for (size_t i = 0; i < block.size(); ++i) {
        block[i] = static_cast<char>(i);
    }
    return block;
}

TEST(OutputChannel, ThreeBytesAreTracedInHexadecimal)
{
    const Seen seen = observe([] { send(bytes("1B 4A 00")); });
    EXPECT_EQ(hex(seen.out), "1B 4A 00");
    EXPECT_EQ(seen.trace,
              "+write_bytes start(data_size:3):\n"
              "0x1b 0x4a 0x0 \n"
              "-write_bytes finished(writed:1).\n");
    EXPECT_EQ(seen.err, "");
}

TEST(OutputChannel, SizeZeroTracesAnEmptyLineAndNoItem)
{
    const Seen seen = observe([] { send(""); });
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace,
              "+write_bytes start(data_size:0):\n"
              "\n"
              "-write_bytes finished(writed:0).\n");
}

TEST(OutputChannel, OneByteCountsAsOneItem)
{
    const Seen seen = observe([] { send("\x0C"); });
    EXPECT_EQ(hex(seen.out), "0C");
    EXPECT_EQ(seen.trace, "+write_bytes start(data_size:1):\n0xc \n-write_bytes finished(writed:1).\n");
}

TEST(OutputChannel, EveryByteLeavesUnchanged)
{
    const std::string block = every_byte();
    const Seen seen = observe([&] { send(block); });
    EXPECT_EQ(hex(seen.out), hex(block));
    EXPECT_EQ(seen.trace, traced(block));
}

TEST(OutputChannel, LargeBlocksAreTracedWhole)
{
    std::string block;
    while (block.size() < 200000) {
        block += every_byte();
    }
    const Seen seen = observe([&] { send(block); });
    EXPECT_TRUE(seen.out == block);
    EXPECT_TRUE(seen.trace == traced(block));
}

TEST(OutputChannel, WritesTheSameBytesWithoutATrace)
{
    const Seen seen = observe_untraced([] { send(every_byte()); });
    EXPECT_EQ(hex(seen.out), hex(every_byte()));
}

TEST(OutputChannel, BlocksKeepTheirOrder)
{
    const Seen seen = observe([] {
        send("ab");
        write_string("cd");
        send("");
        send("e");
    });
    EXPECT_EQ(seen.out, "abcde");
}

TEST(OutputChannel, TextIsTracedAsTextAndInHexadecimal)
{
    const Seen seen = observe([] { write_string("Hi\n"); });
    EXPECT_EQ(seen.out, "Hi\n");
    EXPECT_EQ(seen.trace,
              "+write_string start(data_size:3).\n"
              "\tText:Hi\n.\n"
              "\tHex:0x48 0x69 0xa \n"
              "-write_string finished(writed:1).\n");
}

TEST(OutputChannel, EmptyTextLeavesNothingBetweenColonAndStop)
{
    const Seen seen = observe([] { write_string(""); });
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace,
              "+write_string start(data_size:0).\n"
              "\tText:.\n"
              "\tHex:\n"
              "-write_string finished(writed:0).\n");
}

// The text is data, never a format.
TEST(OutputChannel, PercentSignsAreText)
{
    const Seen seen = observe([] { write_string("100%s%n"); });
    EXPECT_EQ(seen.out, "100%s%n");
    EXPECT_EQ(seen.trace,
              "+write_string start(data_size:7).\n"
              "\tText:100%s%n.\n"
              "\tHex:0x31 0x30 0x30 0x25 0x73 0x25 0x6e \n"
              "-write_string finished(writed:1).\n");
}

TEST(OutputChannel, TextBytesAboveAsciiAreUnsigned)
{
    const Seen seen = observe([] { write_string("\xE4\xFF"); });
    EXPECT_EQ(hex(seen.out), "E4 FF");
    EXPECT_NE(seen.trace.find("\tHex:0xe4 0xff \n"), std::string::npos) << seen.trace;
}

TEST(OutputChannel, TextResultIsTheFlushWithATraceAndTheItemsWithout)
{
    int32_t traced_result = -1;
    int32_t untraced_result = -1;
    int32_t empty_result = -1;
    observe([&] { traced_result = write_string("x"); });
    observe_untraced([&] { untraced_result = write_string("x"); });
    observe_untraced([&] { empty_result = write_string(""); });
    EXPECT_EQ(traced_result, 0);
    EXPECT_EQ(untraced_result, 1);
    EXPECT_EQ(empty_result, 0);
}

// Its lines are in the file when it returns, though its bytes still wait.
TEST(OutputChannel, TextSendsItsTraceLines)
{
    const MemoryFile trace;
    klov_trace_init(trace.path().c_str());
    std::string lines;
    size_t left = 0;
    {
        const WatchedOutput out([&](std::string_view block) { left += block.size(); });
        write_string("x");
        lines = trace.contents();
        EXPECT_EQ(left, 0U);
        flush_output();
    }
    klov_trace_exit();
    klov_trace_handle = nullptr;
    EXPECT_EQ(lines, "+write_string start(data_size:1).\n\tText:x.\n\tHex:0x78 \n-write_string finished(writed:1).\n");
    EXPECT_EQ(left, 1U);
}

TEST(OutputChannel, NeitherFunctionFlushesStandardOutput)
{
    size_t writes_before_the_flush = 0;
    std::string left;
    {
        const WatchedOutput out([&](std::string_view block) { left += block; });
        send("ab");
        write_string("c");
        writes_before_the_flush = left.size();
        flush_output();
    }
    EXPECT_EQ(writes_before_the_flush, 0U);
    EXPECT_EQ(left, "abc");
}

TEST(OutputChannel, MoreThanTheBufferHoldsLeavesInOrderAndTracedBefore)
{
    const MemoryFile trace;
    klov_trace_init(trace.path().c_str());
    std::string expected;
    std::string left;
    size_t untraced = 0;
    {
        const WatchedOutput out([&](std::string_view block) {
            left += block;
            const std::string lines = trace.contents();
            size_t announced = 0;
            for (size_t at = lines.find("0x"); at != std::string::npos; at = lines.find("0x", at + 2)) {
                announced += 1;
            }
            untraced += announced < left.size() ? 1 : 0;
        });
        for (size_t size = 1; size < 66000; size += 12345) {
            const std::string block(size, static_cast<char>('a' + expected.size() % 26));
            expected += block;
            send(block);
        }
        flush_output();
    }
    klov_trace_exit();
    klov_trace_handle = nullptr;
    EXPECT_TRUE(left == expected);
    EXPECT_EQ(untraced, 0U);
}

TEST(OutputChannel, OneByteMoreThanTheBufferHolds)
{
    const std::string block(65536, 'x');
    const Seen seen = observe([&] {
        send(block);
        send("y");
    });
    EXPECT_TRUE(seen.out == block + "y");
    EXPECT_TRUE(seen.trace == traced(block) + traced("y"));
}

TEST(OutputChannel, AFailedWriteShowsOnlyInTheTraceAndWhenAsked)
{
    const Ended ended = run_to_end([&] {
        FILE *full = fopen("/dev/full", "w");
        dup2(fileno(full), STDOUT_FILENO);
        send("abc");
        const bool early = output_failed();
        flush_output();
        _exit(!early && output_failed() ? 0 : 1);
    });
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_NE(ended.trace.find("0x61 0x62 0x63 \n"), std::string::npos) << ended.trace;
}

// A failed write is not tried again, and a printer would take what comes behind a gap for something else.
TEST(OutputChannel, NothingFollowsBytesThatCouldNotLeave)
{
    const MemoryFile file;
    const Ended ended = run_to_end([&] {
        const int full = open("/dev/full", O_WRONLY);
        dup2(full, STDOUT_FILENO);
        send("abc");
        flush_output();
        dup2(file.descriptor(), STDOUT_FILENO);
        send(std::string(70000, 'x'));
        send("y");
        flush_output();
        _exit(output_failed() ? 0 : 1);
    });
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(file.contents(), "");
}

}  // namespace
