// A page header as it stands in a raster stream.
#pragma once

#include <cups/raster.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string>

// A word of the stream, in this machine's byte order or in the other one.
inline void put_stream_word(std::string &out, uint32_t word, bool swapped)
{
    word = swapped ? __builtin_bswap32(word) : word;
    out.append(reinterpret_cast<const char *>(&word), sizeof word);
}

// The texts at both ends have no byte order; of the numbers those that CUPS's filters know are swapped.
inline std::string page_header_bytes(const cups_page_header2_t &header, bool swapped)
{
    constexpr size_t first = offsetof(cups_page_header2_t, AdvanceDistance);
    constexpr size_t end = offsetof(cups_page_header2_t, cupsBorderlessScalingFactor);
    const char *const bytes = reinterpret_cast<const char *>(&header);
    std::string out(bytes, first);
    for (size_t at = first; at < end; at += sizeof(uint32_t)) {
        uint32_t word;
        memcpy(&word, bytes + at, sizeof word);
        put_stream_word(out, word, swapped);
    }
    return out.append(bytes + end, sizeof header - end);
}
