#include "tests/printops/reference.h"

#include "tests/printops/kit.h"

#include <algorithm>

namespace reference {

namespace {

// Literals of which `count` less one is given.
void put_literals(std::string &code, std::string_view row, size_t &start, uint16_t count)
{
    while (count > 127) {
        code += static_cast<char>(127);
        code += row.substr(start, 128);
        start += 128;
        count = static_cast<uint16_t>(count - 128);
    }
    code += static_cast<char>(count);
    code += row.substr(start, count + 1U);
    start += count + 1U;
}

void put_run(std::string &code, char byte, size_t &start, uint16_t count)
{
    start += count + 1U;
    while (count > 127) {
        code += static_cast<char>(0x81);
        code += byte;
        count = static_cast<uint16_t>(count - 127);
    }
    code += static_cast<char>(-count);
    code += byte;
}

}  // namespace

std::string compress_row(std::string_view row)
{
    std::string code;
    char current = row.empty() ? '\0' : row[0];
    size_t start = 0;
    bool in_run = false;
    uint16_t literals = 0;
    uint16_t repeats = 0;
    for (size_t i = 1; i < row.size(); ++i) {
        bool literals_pending = false;
        bool run_pending = false;
        if (row[i] == current) {
            if (!in_run && i > 1 && i > start + 1) {
                literals_pending = true;
                literals = static_cast<uint8_t>(static_cast<uint8_t>(i - start) - 2);
            }
            in_run = true;
        } else if (in_run) {
            run_pending = true;
            repeats = static_cast<uint16_t>(static_cast<uint16_t>(i - start) - 1);
            in_run = false;
        }
        if (i == row.size() - 1) {
            if (!literals_pending && !run_pending && in_run) {
                run_pending = true;
                repeats = static_cast<uint16_t>(i - start);
            } else if (!literals_pending && !run_pending) {
                literals_pending = true;
                literals = static_cast<uint8_t>(i - start);
            } else if (literals_pending) {
                literals = static_cast<uint16_t>(literals + 2);
            } else {
                literals_pending = true;
                literals = 0;
                repeats = static_cast<uint16_t>(i - start - 1);
            }
        }
        if (literals_pending) {
            put_literals(code, row, start, literals);
        }
        if (run_pending) {
            put_run(code, current, start, repeats);
        }
        if (!in_run) {
            current = row[i];
        }
    }
    return code;
}

std::string compress(std::string_view rows, size_t width)
{
    std::string code;
    for (size_t at = 0; at + width <= rows.size(); at += width) {
        code += compress_row(rows.substr(at, width));
    }
    return code;
}

std::string decode(std::string_view code)
{
    std::string row;
    for (size_t at = 0; at < code.size();) {
        const auto count = static_cast<unsigned char>(code[at]);
        if (count < 128) {
            row += code.substr(at + 1, count + 1U);
            at += count + 2U;
        } else {
            row.append(257U - count, code[at + 1]);
            at += 2;
        }
    }
    return row;
}

std::string band(const dev_options &options, size_t buffer_size, std::string_view rows, size_t width)
{
    const bool fixed = options.model == 0x1955 || options.model == 0x1956;
    const auto printer_width = static_cast<size_t>(options.printer_width);
    const size_t most_rows = std::min(buffer_size / width, static_cast<size_t>(options.max_render_height));
    std::string sent;
    for (size_t at = 0; at < rows.size() / width; at += most_rows) {
        const size_t count = std::min(most_rows, rows.size() / width - at);
        const std::string_view section = rows.substr(at * width, count * width);
        size_t left = options.issupportshiftline ? width : 0;
        size_t right = 0;
        for (size_t row = 0; row < count; ++row) {
            const std::string_view line = section.substr(row * width, width);
            left = std::min({left, width, line.find_first_not_of('\0')});
            right = std::max(right, line.find_last_not_of('\0') + 1);
        }
        right = printer_width < width ? printer_width : right;
        if (!fixed && right <= left) {
            continue;
        }
        const size_t used = fixed ? std::min(width, printer_width) : right - left;
        std::string data(section);
        if (used != width) {
            data.clear();
            for (size_t row = 0; row < count; ++row) {
                data += section.substr(row * width + left, used);
            }
            if (options.issupportshiftline) {
                sent += kit::bytes("1D 4C");
                sent += static_cast<char>(left & 0xFF);
                sent += static_cast<char>(left >> 8);
            }
        }
        const bool compressed = options.compression != 0;
        sent += kit::raster(compressed ? 32 : 0, used, count, compressed ? compress(data, used) : data);
        if (fixed) {
            sent += kit::bytes("1B 4A 00");
        }
    }
    return sent;
}

}  // namespace reference
