#include <gtest/gtest.h>
#include <klov/trace.h>

#include <string>
#include <vector>

namespace {

// The checksum as its standard puts it, bit by bit and without a table.
uint32_t reference_crc(const std::vector<uint8_t> &bytes)
{
    uint32_t crc = 0xFFFFFFFF;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xEDB88320 : crc >> 1;
        }
    }
    return crc ^ 0xFFFFFFFF;
}

uint32_t crc_of(const std::vector<uint8_t> &bytes)
{
    return CRC32(0, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

std::vector<uint8_t> scrambled_bytes(size_t count)
{
    std::vector<uint8_t> bytes(count);
    uint32_t state = 12345;
    for (uint8_t &byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
}

}  // namespace

TEST(Crc32, TheNineDigitsGiveTheStandardCheckValue)
{
    const std::string digits = "123456789";
    EXPECT_EQ(crc_of({digits.begin(), digits.end()}), 0xCBF43926U);
}

TEST(Crc32, NoBytesFromZeroGiveZero)
{
    const uint8_t byte = 0x55;
    EXPECT_EQ(CRC32(0, &byte, 0), 0U);
    EXPECT_EQ(CRC32(0, nullptr, 0), 0U);
}

TEST(Crc32, NoBytesLeaveARunningChecksumAsItIs)
{
    EXPECT_EQ(CRC32(0xDEADBEEF, nullptr, 0), 0xDEADBEEFU);
}

TEST(Crc32, EveryByteValueMatchesTheBitwiseDefinition)
{
    for (unsigned value = 0; value < 256; ++value) {
        const std::vector<uint8_t> bytes = {static_cast<uint8_t>(value)};
        EXPECT_EQ(crc_of(bytes), reference_crc(bytes)) << "byte " << value;
    }
}

TEST(Crc32, LongDataMatchesTheBitwiseDefinition)
{
    for (const size_t size : {2U, 3U, 255U, 256U, 257U, 5000U}) {
        const std::vector<uint8_t> bytes = scrambled_bytes(size);
        EXPECT_EQ(crc_of(bytes), reference_crc(bytes)) << size << " bytes";
    }
}

TEST(Crc32, PiecesGiveTheChecksumOfTheWhole)
{
    const std::vector<uint8_t> bytes = scrambled_bytes(300);
    for (uint32_t cut = 0; cut <= bytes.size(); ++cut) {
        const uint32_t first = CRC32(0, bytes.data(), cut);
        const uint32_t both = CRC32(first, bytes.data() + cut, static_cast<uint32_t>(bytes.size()) - cut);
        ASSERT_EQ(both, crc_of(bytes)) << "cut at " << cut;
    }
}

TEST(Crc32, TheTableIsTheStandardOne)
{
    EXPECT_EQ(CRC32Tab[0], 0U);
    EXPECT_EQ(CRC32Tab[1], 0x77073096U);
    EXPECT_EQ(CRC32Tab[128], 0xEDB88320U);
    EXPECT_EQ(CRC32Tab[255], 0x2D02EF8DU);
    for (uint32_t value = 0; value < 256; ++value) {
        uint32_t entry = value;
        for (int bit = 0; bit < 8; ++bit) {
            entry = (entry & 1) != 0 ? (entry >> 1) ^ 0xEDB88320 : entry >> 1;
        }
        EXPECT_EQ(CRC32Tab[value], entry) << "entry " << value;
    }
}
