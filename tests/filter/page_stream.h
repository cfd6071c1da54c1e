// A CUPS raster stream of pages, made in memory by libcups and read back by it.
#pragma once

#include "tests/printops/kit.h"

#include <cups/raster.h>

#include <string>
#include <vector>

struct StreamPage {
    unsigned width;    // bytes a row
    std::string rows;  // what the stream brings
    unsigned copies = 1;
    unsigned height = 0;  // rows that the header promises; 0: as many as there are
};

class PageStream {
public:
    explicit PageStream(const std::vector<StreamPage> &pages);
    ~PageStream();
    PageStream(const PageStream &) = delete;
    PageStream &operator=(const PageStream &) = delete;

    // The next page's header; false at the end.
    bool next();

    cups_page_header_t header = {};
    cups_raster_t *stream = nullptr;

private:
    kit::MemoryFile file_;
};
