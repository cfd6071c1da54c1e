// What the command line asks for.
#ifndef KLOV_PREVIEW_SETTINGS_H
#define KLOV_PREVIEW_SETTINGS_H

#include "preview/painter.h"
#include "preview/service.h"

namespace preview {

// Exit statuses.
constexpr int all_read = 0;
constexpr int not_all_read = 1;  // broken or too long input, or a file or port that fails
constexpr int bad_usage = 2;

struct ToolSettings {
    std::string input = "-";
    std::string listen;
    std::string output;
    std::string save;
    std::string log;
    bool list = false;
    bool json = false;
    bool quiet = false;
    Options reader;
    PictureOptions picture;
    ServiceOptions service;
    double speed_mm = 0;  // a second; 0: at once
    size_t buffer = 65536;
    uint32_t jobs = 0;
};

uint32_t to_dots(double millimetres, uint32_t dpi);

// Read one stream, or serve jobs; the exit status.
int read_file(const ToolSettings &settings);
int listen_for_jobs(const ToolSettings &settings);

}  // namespace preview

#endif
