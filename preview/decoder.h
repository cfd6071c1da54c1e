// Turns a byte stream, fed in pieces of any size, into commands.
#ifndef KLOV_PREVIEW_DECODER_H
#define KLOV_PREVIEW_DECODER_H

#include "preview/command.h"
#include "preview/runlength.h"
#include "preview/table.h"

namespace preview {

class Decoder {
public:
    Decoder(Sink &sink, const Dialect &dialect) : sink_(sink), dialect_(dialect) {}

    void feed(Bytes bytes);

    // The stream is over. False when it ended inside a command: the command was delivered with the kind truncated.
    bool finish();

    // True between two commands (characters that wait for more of them count as a command).
    bool at_boundary() const
    {
        return !image_.active && head_ == pending_.size();
    }

    // What a command that is cut off leaves behind, and a decoder that begins with it. A printer goes on in that
    // command, whoever sends the next bytes.
    struct Unfinished;
    Unfinished unfinished() const;
    void resume(Unfinished from);

    // Bytes decoded so far.
    uint64_t offset() const
    {
        return offset_;
    }

private:
    void run(bool final);
    bool step(bool final);
    size_t text_run(bool final, bool &waits) const;
    void consume(size_t count);
    void deliver(Kind kind, std::string_view name, size_t length);
    void deliver_unknown_bytes();
    void begin_image(const MatchResult &match);
    bool image_step();
    void raw_row_step(Bytes waiting);
    void coded_row_step(Bytes waiting);
    void row_done(Bytes row);
    void end_image(Kind kind);
    Bytes waiting() const;

    Sink &sink_;
    Dialect dialect_;
    std::vector<uint8_t> pending_;
    size_t head_ = 0;               // of the first byte in pending_ that is not decoded yet
    uint64_t offset_ = 0;           // of that byte in the stream
    size_t needed_ = 1;             // nothing can be decided before so many bytes wait
    std::vector<uint8_t> unknown_;  // unknown bytes in a row, delivered together

    struct Image {
        bool active = false;
        Command command;
        std::vector<uint8_t> header_bytes;
        ImageHeader header{};
        uint32_t rows_left = 0;
        bool coded = false;
        std::vector<uint8_t> row;  // the part of a plain row that has arrived
        RowDecoder decoder;
        bool overshoot_told = false;
    };
    Image image_;
};

struct Decoder::Unfinished {
    std::vector<uint8_t> pending;
    Image image;
};

}  // namespace preview

#endif
