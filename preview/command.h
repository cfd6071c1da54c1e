// What the reader knows about one printer command, and the receiver that gets the commands in the order of the stream.
#ifndef KLOV_PREVIEW_COMMAND_H
#define KLOV_PREVIEW_COMMAND_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace preview {

using Bytes = std::span<const uint8_t>;

struct Arg {
    std::string_view name;  // a name of the command table, valid for ever
    int64_t value;
};

enum class Kind {
    command,    // a row of the command table
    text,       // characters to print, in `data`
    unknown,    // bytes or a framed function that no row knows
    truncated,  // the input ended inside this command
};

// A command as the decoder hands it out. The spans are valid only during the call that delivers them.
struct Command {
    uint64_t offset = 0;  // of the first byte in the stream
    uint64_t length = 0;  // in bytes, data included
    Kind kind = Kind::command;
    std::string_view name;
    std::vector<Arg> args;
    Bytes bytes;  // the command's bytes; for a raster image only its header
    Bytes data;   // the caller data at the command's end; empty for a raster image, whose rows are delivered one by one

    // The argument's value, or `missing` when the command has none of that name.
    int64_t arg(std::string_view wanted, int64_t missing = 0) const;
};

// The header of a raster image.
struct ImageHeader {
    uint32_t mode;
    uint32_t width_bytes;
    uint32_t rows;
};

// Receives a decoded stream. A raster image arrives as image_begin, its rows one by one, and then, like every other
// command, as on_command with its final length.
class Sink {
public:
    virtual ~Sink() = default;
    virtual void on_command(const Command &command) = 0;
    virtual void image_begin(const ImageHeader &header, uint64_t offset) = 0;
    virtual void image_row(Bytes row) = 0;
    // False: nothing more is to be decoded, not even the rest of the bytes at hand.
    virtual bool wants_more() const = 0;
    // A command announces more bytes than the printer can hold. It is read as unknown bytes.
    virtual void on_too_long(uint64_t offset, std::string_view name, uint64_t announced) = 0;
    // Something about the stream that a person should know.
    virtual void on_warning(uint64_t offset, std::string text) = 0;
};

}  // namespace preview

#endif
