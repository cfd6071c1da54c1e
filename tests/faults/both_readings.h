// A compressed raster stream as CUPS unpacks it, and as the filter does before CUPS sees it: what is to be the same.
#pragma once

#include "filter/raster_guard.h"

#include <cups/raster.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace readings {

struct Page {
    std::string header;
    std::vector<unsigned> reported;  // what CUPS says that it read
    std::string rows;                // what it really left in memory, over zeros
    bool operator==(const Page &) const = default;
};

constexpr uint32_t longest_row = 1U << 16;
constexpr size_t most_bytes = 1U << 20;
constexpr size_t largest_piece = 1U << 16;

// rows_at_once 0: the whole page, as for several copies, which is the one case where the rows of a page that ends too
// early are printed. Otherwise a page ends when rows are missing, and so does the job.
template <typename NextHeader>
std::vector<Page> read_pages(cups_raster_t *stream, uint32_t rows_at_once, const NextHeader &next_header)
{
    std::vector<Page> pages;
    cups_page_header_t header = {};
    while (next_header(&header) != 0 && header.cupsBytesPerLine <= longest_row &&
           header.cupsHeight <= most_bytes / header.cupsBytesPerLine) {
        Page page;
        page.header.assign(reinterpret_cast<const char *>(&header), sizeof header);
        page.rows.resize(static_cast<size_t>(header.cupsHeight) * header.cupsBytesPerLine);
        const uint32_t step = rows_at_once > 0 ? rows_at_once : header.cupsHeight;
        bool complete = true;
        for (uint32_t row = 0; row < header.cupsHeight && complete; row += step) {
            const unsigned size = std::min(step, header.cupsHeight - row) * header.cupsBytesPerLine;
            char *const target = page.rows.data() + static_cast<size_t>(row) * header.cupsBytesPerLine;
            page.reported.push_back(cupsRasterReadPixels(stream, reinterpret_cast<unsigned char *>(target), size));
            complete = page.reported.back() == size;
            if (!complete && rows_at_once > 0) {
                memset(target, 0, size);
            }
        }
        pages.push_back(page);
        if (!complete && rows_at_once > 0) {
            break;
        }
    }
    return pages;
}

struct Memory {
    const std::string &bytes;
    size_t at;
};

inline ssize_t read_memory(void *context, unsigned char *buffer, size_t length)
{
    Memory &memory = *static_cast<Memory *>(context);
    const size_t count = std::min(length, memory.bytes.size() - memory.at);
    memcpy(buffer, memory.bytes.data() + memory.at, count);
    memory.at += count;
    return static_cast<ssize_t>(count);
}

inline std::vector<Page> read_by_cups(const std::string &bytes, uint32_t rows_at_once)
{
    Memory memory = {bytes, 0};
    cups_raster_t *stream = cupsRasterOpenIO(read_memory, &memory, CUPS_RASTER_READ);
    if (stream == nullptr) {
        return {};
    }
    std::vector<Page> pages = read_pages(
        stream, rows_at_once, [&](cups_page_header_t *header) { return cupsRasterReadHeader(stream, header); });
    cupsRasterClose(stream);
    return pages;
}

// The stream arrives in pieces of this size: each read brings one. 0: as large as can be.
inline std::vector<Page> read_by_filter(const std::string &bytes, uint32_t rows_at_once, size_t piece_size = 0)
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        abort();
    }
    size_t sent = 0;
    const auto send_all = [&](int flags) {
        const size_t step = piece_size > 0 ? piece_size : largest_piece;
        while (sent < bytes.size()) {
            const size_t size = std::min(step, bytes.size() - sent);
            if (send(ends[1], bytes.data() + sent, size, flags) < 0) {
                return;
            }
            sent += size;
        }
        shutdown(ends[1], SHUT_WR);
    };
    // What the socket has no room for is sent while the filter reads.
    send_all(MSG_NOSIGNAL | MSG_DONTWAIT);
    std::thread writer;
    if (sent < bytes.size()) {
        writer = std::thread(send_all, MSG_NOSIGNAL);
    }
    static raster_guard guard;
    guard = {};
    start_guard(guard, ends[0], longest_row);
    cups_raster_t *stream = cupsRasterOpenIO(read_guarded, &guard, CUPS_RASTER_READ);
    std::vector<Page> pages;
    if (stream != nullptr) {
        pages = read_pages(stream, rows_at_once,
                           [&](cups_page_header_t *header) { return read_guarded_header(guard, stream, header); });
        cupsRasterClose(stream);
    }
    end_guard(guard);
    close(ends[0]);
    if (writer.joinable()) {
        writer.join();
    }
    close(ends[1]);
    return pages;
}

}  // namespace readings
