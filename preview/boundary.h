// Follows the received bytes only to know whether the next one begins a command.
#ifndef KLOV_PREVIEW_BOUNDARY_H
#define KLOV_PREVIEW_BOUNDARY_H

#include "preview/decoder.h"

namespace preview {

class Boundary final : public Sink {
public:
    explicit Boundary(const Dialect &dialect) : decoder_(*this, dialect) {}

    void feed(Bytes bytes)
    {
        decoder_.feed(bytes);
    }
    bool here() const
    {
        return decoder_.at_boundary();
    }
    void reset()
    {
        decoder_.resume({});
    }

private:
    void on_command(const Command &) override {}
    void image_begin(const ImageHeader &, uint64_t) override {}
    void image_row(Bytes) override {}
    bool wants_more() const override
    {
        return true;
    }
    void on_too_long(uint64_t, std::string_view, uint64_t) override {}
    void on_warning(uint64_t, std::string) override {}

    Decoder decoder_;
};

}  // namespace preview

#endif
