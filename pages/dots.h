// Grey to dots of the print head.
#ifndef KLOV_PAGES_DOTS_H
#define KLOV_PAGES_DOTS_H

namespace pages {

enum class Dither { diffusion, ordered, threshold };

struct DotSettings {
    Dither dither = Dither::diffusion;
    int darkness = 0;  // -3 to 3
};

}  // namespace pages

#endif
