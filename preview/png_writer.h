// A PNG file written row by row.
#ifndef KLOV_PREVIEW_PNG_WRITER_H
#define KLOV_PREVIEW_PNG_WRITER_H

#include <cstdio>
#include <string>
#include <vector>

#include "preview/command.h"

namespace preview {

struct Colour {
    uint8_t red, green, blue;
};

class PngWriter {
public:
    PngWriter() = default;
    ~PngWriter();
    PngWriter(const PngWriter &) = delete;
    PngWriter &operator=(const PngWriter &) = delete;

    // "-" is standard output. Without a palette: 1 bit a dot, 0 is black. With one: a byte a dot, its place in the
    // palette.
    bool open(const std::string &path, uint32_t width, uint32_t height, uint32_t dpi, std::span<const Colour> palette);
    bool row(Bytes bytes);
    bool close();
    const std::string &error() const
    {
        return error_;
    }

private:
    bool fail(std::string text);
    void release();

    struct Handles;
    Handles *handles_ = nullptr;
    std::FILE *file_ = nullptr;
    std::string error_;
    bool has_palette_ = false;
    std::vector<uint8_t> packed_;  // a row of places in the palette, two a byte
};

}  // namespace preview

#endif
