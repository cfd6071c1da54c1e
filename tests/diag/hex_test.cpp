// The bytes of a command in the trace, compared with what printf makes of them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "diag/trace.h"
#include "tests/diag/trace_file.h"

namespace {

std::string reference_hex(const std::vector<uint8_t> &bytes)
{
    std::string text;
    char word[8];
    for (const uint8_t byte : bytes) {
        snprintf(word, sizeof word, "0x%x ", byte);
        text += word;
    }
    return text;
}

std::vector<uint8_t> counting_bytes(size_t size)
{
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 256);
    }
    return bytes;
}

class TraceHex : public TraceTest {
protected:
    // The trace file's contents after a dump of these bytes alone.
    std::string traced(const std::vector<uint8_t> &bytes)
    {
        klov_trace_init(path("hex").c_str());
        trace_hex(bytes.data(), bytes.size());
        klov_trace_exit();
        return file_contents(path("hex"));
    }
};

class TraceHexSize : public TraceHex, public testing::WithParamInterface<size_t> {};

}  // namespace

TEST_F(TraceHex, WritesLowerCaseWithoutLeadingZerosAndABlankAfterEachByte)
{
    EXPECT_EQ(traced({0x1B, 0x4A, 0x00, 0x0F, 0x10, 0xAB, 0xFF}), "0x1b 0x4a 0x0 0xf 0x10 0xab 0xff ");
}

TEST_F(TraceHex, EveryByteValueReadsAsPrintfPutsIt)
{
    for (unsigned value = 0; value < 256; ++value) {
        const std::vector<uint8_t> bytes = {static_cast<uint8_t>(value)};
        ASSERT_EQ(traced(bytes), reference_hex(bytes)) << "byte " << value;
    }
}

TEST_F(TraceHex, NoBytesWriteNothing)
{
    EXPECT_EQ(traced({}), "");
}

TEST_P(TraceHexSize, LongAndShortDumpsReadAsPrintfPutsThem)
{
    const std::vector<uint8_t> mixed = counting_bytes(GetParam());
    EXPECT_EQ(traced(mixed), reference_hex(mixed));
}

TEST_P(TraceHexSize, DumpsOfTheLongestWordsReadAsPrintfPutsThem)
{
    const std::vector<uint8_t> black(GetParam(), 0xFF);
    EXPECT_EQ(traced(black), reference_hex(black));
}

// Around the sizes of a command buffer, of the pieces that the bytes are put into words in, and of the stream's buffer.
INSTANTIATE_TEST_SUITE_P(Sizes, TraceHexSize,
                         testing::Values(1, 2, 127, 128, 129, 254, 255, 256, 257, 1023, 1024, 1025, 2047, 2048, 2049,
                                         4095, 4096, 4097, 13106, 13107, 13108, 16383, 16384, 16385, 65535, 65536,
                                         65537, 200000));

TEST_F(TraceHex, TheDumpOfABandIsOneWriteOfItsLine)
{
    if (!counts_write_calls()) {
        GTEST_SKIP() << "write calls cannot be counted here";
    }
    klov_trace_init(path("band").c_str());
    const std::vector<uint8_t> band(13000, 0xFF);
    const long writes = writes_of([&] {
        trace_put("+write_bytes start(data_size:", 13000, "):\n");
        trace_hex(band.data(), band.size());
        trace_put("\n");
        trace_flush();
    });
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(file_contents(path("band")), "+write_bytes start(data_size:13000):\n" + reference_hex(band) + "\n");
}

TEST_F(TraceHex, WithoutATraceNothingIsWrittenAnywhere)
{
    const std::vector<uint8_t> bytes = counting_bytes(300);
    trace_hex(bytes.data(), 300);
    EXPECT_FALSE(trace_is_open());
    EXPECT_EQ(traced({0x41}), "0x41 ");
}
