// Compressed rows against a decoder: what comes back is the row, but for two habits that the printers were built
// against.
#include "printops/compression.h"
#include "fuzz/input.h"

#include <algorithm>

namespace {

constexpr uint32_t widest_exact = 256;  // longer literal stretches are counted modulo 256

using Bytes = std::vector<uint8_t>;

Bytes decoded(const uint8_t *code, size_t size)
{
    Bytes out;
    for (size_t at = 0; at < size;) {
        const uint8_t count = code[at++];
        FUZZ_CHECK(count != 128);
        if (count < 128) {
            FUZZ_CHECK(at + count + 1 <= size);
            out.insert(out.end(), code + at, code + at + count + 1);
            at += static_cast<size_t>(count) + 1;
        } else {
            FUZZ_CHECK(at < size);
            out.insert(out.end(), 257U - count, code[at++]);
        }
    }
    return out;
}

// A run comes back as it was; every full chunk of 128 takes only 127 off, so that it comes back a byte longer.
void add_run(Bytes &out, uint8_t byte, size_t length)
{
    size_t left = length - 1;
    while (left > 127) {
        out.insert(out.end(), 128, byte);
        left -= 127;
    }
    out.insert(out.end(), left + 1, byte);
}

// A row as the printer will have it. One byte behind a run at the row's end comes back as one more of the run's. A row
// of a single byte is lost.
void add_row(Bytes &out, const uint8_t *row, size_t width)
{
    if (width < 2) {
        return;
    }
    for (size_t at = 0; at < width;) {
        size_t end = at + 1;
        while (end < width && row[end] == row[at]) {
            end += 1;
        }
        if (end - at == 1) {
            out.push_back(row[at]);
        } else if (end == width - 1) {
            out.push_back(row[at]);
            add_run(out, row[at], end - at);
            return;
        } else {
            add_run(out, row[at], end - at);
        }
        at = end;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const uint32_t width = 1 + input.number() % 1200;
    const Bytes given = input.bytes(16384);
    const uint32_t rows = static_cast<uint32_t>((given.size() + width - 1) / width);
    Bytes source(static_cast<size_t>(rows) * width);
    std::copy(given.begin(), given.end(), source.begin());

    const size_t room = (source.size() + 4) * 2;
    fuzz::Fenced out(room);
    uint32_t length = 0;
    FUZZ_CHECK(tiff_compression(source.data(), width, rows, out.data(), &length) == 0);
    FUZZ_CHECK(length <= room);
    FUZZ_CHECK(out.intact_outside());

    const Bytes back = decoded(out.data(), length);
    if (width <= widest_exact) {
        Bytes expected;
        for (uint32_t row = 0; row < rows; ++row) {
            add_row(expected, source.data() + static_cast<size_t>(row) * width, width);
        }
        FUZZ_CHECK(back == expected);
    }
    return 0;
}
