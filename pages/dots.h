// Grey to dots of the print head, row by row.
#ifndef KLOV_PAGES_DOTS_H
#define KLOV_PAGES_DOTS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace pages {

enum class Dither { diffusion, ordered, threshold };

struct DotSettings {
    Dither dither = Dither::diffusion;
    int darkness = 0;  // -3 to 3
};

// Takes one finished row: 8 dots a byte, the leftmost in the highest bit, a set bit is black; (width + 7) / 8 bytes.
using RowSink = std::function<void(const std::uint8_t *bits)>;

// Makes dots of grey rows (a byte a dot, 0 is ink, 255 is paper). Black and white pass as they are. Of the greys
// between, thin strokes and the soft edges of solid shapes become solid, everything else is shaded. What is a stroke
// shows only some rows later, so rows leave with a delay; after finish() all have left and the next row begins a new
// page.
class DotMaker {
public:
    DotMaker(std::size_t width, const DotSettings &settings, RowSink sink);
    ~DotMaker();
    DotMaker(const DotMaker &) = delete;
    DotMaker &operator=(const DotMaker &) = delete;

    // `stride` is the distance from row to row in bytes.
    void put_rows(const std::uint8_t *grey, std::size_t stride, std::size_t rows);
    void finish();

private:
    class Window;
    std::unique_ptr<Window> window_;
};

}  // namespace pages

#endif
