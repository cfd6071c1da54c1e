// The printers' run-length code, written down step by step as plainly as possible, to judge the reader by.
#pragma once

#include <cstdint>
#include <vector>

namespace test {

using Row = std::vector<uint8_t>;

// Appends the code of one row. Counts are kept as the printers' first encoder kept them: literals modulo 256, and 127
// taken off a run for every chunk of 128.
inline void encode_row(const Row &row, std::vector<uint8_t> &out)
{
    size_t start = 0;
    bool in_run = false;
    uint8_t current = row[0];
    for (size_t i = 1; i < row.size(); ++i) {
        bool literals = false;
        bool run = false;
        uint32_t literal_count = 0;
        uint32_t repeat_count = 0;
        if (row[i] == current) {
            if (!in_run && i > 1 && i > start + 1) {
                literals = true;
                literal_count = ((i - start) % 256 + 256 - 2) % 256;
            }
            in_run = true;
        } else if (in_run) {
            run = true;
            repeat_count = static_cast<uint32_t>((i - start) % 65536 - 1);
            in_run = false;
        }
        if (i + 1 == row.size()) {
            if (!literals && !run) {
                run = in_run;
                literals = !in_run;
                repeat_count = static_cast<uint32_t>(i - start);
                literal_count = (i - start) % 256;
            } else if (literals) {
                literal_count += 2;
            } else {
                literals = true;
                literal_count = 0;
                repeat_count = static_cast<uint32_t>(i - start - 1);
            }
        }
        if (literals) {
            for (; literal_count > 127; literal_count -= 128) {
                out.push_back(127);
                out.insert(out.end(), row.begin() + static_cast<std::ptrdiff_t>(start),
                           row.begin() + static_cast<std::ptrdiff_t>(start + 128));
                start += 128;
            }
            out.push_back(static_cast<uint8_t>(literal_count));
            out.insert(out.end(), row.begin() + static_cast<std::ptrdiff_t>(start),
                       row.begin() + static_cast<std::ptrdiff_t>(start + literal_count + 1));
            start += literal_count + 1;
        }
        if (run) {
            start += repeat_count + 1;
            for (; repeat_count > 127; repeat_count -= 127) {
                out.push_back(0x81);
                out.push_back(current);
            }
            out.push_back(static_cast<uint8_t>(256 - repeat_count));
            out.push_back(current);
        }
        if (!in_run) {
            current = row[i];
        }
    }
}

// What a row of up to 256 bytes looks like after the code: a last byte that follows a run is replaced by the run's
// byte, a run of more than 128 bytes grows by one for every 127 beyond, and the row is cut at its width. A row of one
// byte carries nothing and is blank.
inline Row after_the_code(const Row &row)
{
    if (row.size() == 1) {
        return {0};
    }
    Row out;
    for (size_t i = 0; i < row.size();) {
        size_t end = i + 1;
        while (end < row.size() && row[end] == row[i]) {
            ++end;
        }
        size_t length = end - i;
        const bool last_byte_follows = length >= 2 && end + 1 == row.size();
        if (last_byte_follows) {
            // One literal of the run's byte in front, and the run itself.
            out.push_back(row[i]);
        }
        const size_t extra = length > 128 ? (length - 129) / 127 + 1 : 0;
        out.insert(out.end(), length + extra, row[i]);
        i = last_byte_follows ? end + 1 : end;
    }
    out.resize(row.size());
    return out;
}

}  // namespace test
