// CRC-32 of IEEE 802.3, one table look-up a byte.
#include <klov/trace.h>

namespace {

constexpr uint32_t table_entry(uint32_t value)
{
    for (int bit = 0; bit < 8; ++bit) {
        value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320U : 0U);
    }
    return value;
}

}  // namespace

#define ENTRIES_4(n) table_entry(n), table_entry((n) + 1), table_entry((n) + 2), table_entry((n) + 3)
#define ENTRIES_16(n) ENTRIES_4(n), ENTRIES_4((n) + 4), ENTRIES_4((n) + 8), ENTRIES_4((n) + 12)
#define ENTRIES_64(n) ENTRIES_16(n), ENTRIES_16((n) + 16), ENTRIES_16((n) + 32), ENTRIES_16((n) + 48)

constinit const uint32_t CRC32Tab[256] = {ENTRIES_64(0), ENTRIES_64(64), ENTRIES_64(128), ENTRIES_64(192)};

uint32_t CRC32(uint32_t crc, const uint8_t *data, uint32_t length)
{
    uint32_t c = ~crc;
    for (uint32_t i = 0; i < length; ++i) {
        c = (c >> 8) ^ CRC32Tab[(c ^ data[i]) & 0xFF];
    }
    return ~c;
}
