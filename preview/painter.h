// Paints the paper: bare for programs, or lying on a desk with its cuts and marks for people.
#ifndef KLOV_PREVIEW_PAINTER_H
#define KLOV_PREVIEW_PAINTER_H

#include <string>

#include "preview/reader.h"

namespace preview {

struct PictureOptions {
    std::string path = {};       // "-" is standard output
    bool bare = false;           // one pixel a dot, black on white, the printable width and every row, nothing else
    bool split = false;          // one picture a receipt: PATH-1.png, PATH-2.png and so on
    uint32_t paper_margin = 32;  // dots beside the printable width
};

// Told now and then how far a long picture has come.
using Progress = std::function<void(uint64_t rows_done, uint64_t rows)>;

// False and a text when a file can not be written. Without any row, the picture is one blank row.
bool paint(const Reader &reader, const PictureOptions &options, const Progress &progress, std::string &error);

// "out.png" and 2 give "out-2.png".
std::string numbered_path(const std::string &path, size_t number);

}  // namespace preview

#endif
