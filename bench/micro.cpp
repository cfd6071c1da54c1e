// Times the functions that every row, band or command passes through.
#include "diag/trace.h"
#include "printops/compression.h"
#include "printops/rows.h"

#include <benchmark/benchmark.h>
#include <klov/barcode.h>
#include <klov/printing.h>
#include <klov/result.h>

#include <array>
#include <vector>

namespace {

constexpr uint32_t class_word = 0x10010201;
constexpr uint32_t strip_rows = 14;

using rows_of_bytes = std::vector<uint8_t>;

// A refusal would be fast and worth nothing.
void expect_success(benchmark::State &state, int32_t status)
{
    if (status != KLOV_OK) {
        state.SkipWithError("the encoder refused");
    }
}

rows_of_bytes blank(uint32_t width)
{
    return rows_of_bytes(width * strip_rows);
}

// Ink only in the last byte: the longest way for a scan from the left.
rows_of_bytes late_ink(uint32_t width)
{
    rows_of_bytes rows(width * strip_rows);
    for (uint32_t row = 0; row < strip_rows; ++row) {
        rows[(row + 1) * width - 1] = 1;
    }
    return rows;
}

// Ink only in the first byte: the longest way for a scan from the right.
rows_of_bytes early_ink(uint32_t width)
{
    rows_of_bytes rows(width * strip_rows);
    for (uint32_t row = 0; row < strip_rows; ++row) {
        rows[row * width] = 0x80;
    }
    return rows;
}

rows_of_bytes noise(uint32_t width)
{
    rows_of_bytes rows(width * strip_rows);
    uint32_t state = 12345;
    for (uint8_t &byte : rows) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return rows;
}

rows_of_bytes black(uint32_t width)
{
    return rows_of_bytes(width * strip_rows, 0xFF);
}

// Runs and literals of a few bytes, as text has them.
rows_of_bytes texture(uint32_t width)
{
    rows_of_bytes rows = noise(width);
    for (size_t i = 0; i < rows.size(); ++i) {
        if (i % 11 < 6) {
            rows[i] = 0;
        }
    }
    return rows;
}

using maker = rows_of_bytes (*)(uint32_t width);

void count_bytes(benchmark::State &state, size_t bytes)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}

void classify(benchmark::State &state, maker make)
{
    const uint32_t width = static_cast<uint32_t>(state.range(0));
    const rows_of_bytes rows = make(width);
    for (auto _ : state) {
        for (uint32_t row = 0; row < strip_rows; ++row) {
            benchmark::DoNotOptimize(blank_bytes_at_left(rows.data() + row * width, width));
        }
    }
    count_bytes(state, rows.size());
}
BENCHMARK_CAPTURE(classify, blank, blank)->Arg(48)->Arg(72)->Arg(104);
BENCHMARK_CAPTURE(classify, late_ink, late_ink)->Arg(72);
BENCHMARK_CAPTURE(classify, noise, noise)->Arg(72);

void trim_right(benchmark::State &state, maker make)
{
    const uint32_t width = static_cast<uint32_t>(state.range(0));
    const rows_of_bytes rows = make(width);
    for (auto _ : state) {
        benchmark::DoNotOptimize(inked_bytes(rows.data(), width, strip_rows));
    }
    count_bytes(state, rows.size());
}
BENCHMARK_CAPTURE(trim_right, early_ink, early_ink)->Arg(72);

void compress(benchmark::State &state, maker make)
{
    const uint32_t width = static_cast<uint32_t>(state.range(0));
    const rows_of_bytes rows = make(width);
    rows_of_bytes out((rows.size() + 4) * 2);
    uint32_t length = 0;
    for (auto _ : state) {
        tiff_compression(rows.data(), width, strip_rows, out.data(), &length);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    count_bytes(state, rows.size());
    state.counters["ratio"] = static_cast<double>(length) / static_cast<double>(rows.size());
}
BENCHMARK_CAPTURE(compress, black, black)->Arg(72);
BENCHMARK_CAPTURE(compress, texture, texture)->Arg(72);
BENCHMARK_CAPTURE(compress, noise, noise)->Arg(72);

// A trace that is full is closed, and costs nothing any more.
void keep_trace_open()
{
    if (!trace_is_open()) {
        klov_trace_init("/dev/null");
    }
}

// With its flush: a dump of one band and one write.
void hex_dump(benchmark::State &state, maker make)
{
    const rows_of_bytes rows = make(72);
    for (auto _ : state) {
        keep_trace_open();
        trace_hex(rows.data(), rows.size());
        trace_flush();
    }
    klov_trace_exit();
    count_bytes(state, rows.size());
}
BENCHMARK_CAPTURE(hex_dump, black, black);
BENCHMARK_CAPTURE(hex_dump, texture, texture);
BENCHMARK_CAPTURE(hex_dump, noise, noise);

// A band's lines about one block that is written, with their flush: put together from pieces, and by printf.
void block_lines(benchmark::State &state)
{
    for (auto _ : state) {
        keep_trace_open();
        trace_put("+write_bytes start(data_size:", 1008, "):\n");
        trace_put("-write_bytes finished(writed:", 1, ").\n");
        trace_finished("print_dotline", 0);
        trace_flush();
    }
    klov_trace_exit();
}
BENCHMARK(block_lines);

void block_lines_by_printf(benchmark::State &state)
{
    char line[64];
    for (auto _ : state) {
        keep_trace_open();
        snprintf(line, sizeof line, "+write_bytes start(data_size:%d):\n", 1008);
        trace_put(line);
        snprintf(line, sizeof line, "-write_bytes finished(writed:%d).\n", 1);
        trace_put(line);
        snprintf(line, sizeof line, "-%s finished(%d) %s\n", "print_dotline", 0, "success.");
        trace_put(line);
        trace_flush();
    }
    klov_trace_exit();
}
BENCHMARK(block_lines_by_printf);

void encode_raster_header(benchmark::State &state)
{
    std::array<uint8_t, 255> command;
    for (auto _ : state) {
        uint32_t length = 0;
        expect_success(
            state, klov_cmd_print_raster_img_cmd_header(
                       class_word, 0, 72, 14, reinterpret_cast<uintptr_t>(command.data()), command.size(), &length));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(encode_raster_header);

void encode_cut(benchmark::State &state)
{
    std::array<uint8_t, 255> command;
    for (auto _ : state) {
        uint32_t length = 0;
        expect_success(
            state, klov_cmd_select_cut_mode_and_feed_paper(class_word, 66, 0, command.data(), command.size(), &length));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(encode_cut);

void encode_raster_image(benchmark::State &state)
{
    const rows_of_bytes rows = noise(72);
    std::array<uint8_t, 2048> command;
    for (auto _ : state) {
        uint32_t length = 0;
        expect_success(state, klov_cmd_print_raster_bit_image(class_word, 0, 72, strip_rows, rows.data(),
                                                              command.data(), command.size(), &length));
        benchmark::ClobberMemory();
    }
    count_bytes(state, rows.size());
}
BENCHMARK(encode_raster_image);

void encode_qr_data(benchmark::State &state)
{
    const rows_of_bytes data = noise(72);
    std::array<uint8_t, 2048> command;
    for (auto _ : state) {
        uint32_t length = 0;
        expect_success(state, klov_cmd_qr_store_the_data_in_the_symbol_storage_area(
                                  class_word, data.data(), static_cast<uint32_t>(data.size()), command.data(),
                                  command.size(), &length));
        benchmark::ClobberMemory();
    }
    count_bytes(state, data.size());
}
BENCHMARK(encode_qr_data);

}  // namespace

BENCHMARK_MAIN();
