// The logos in the printer's memory, which outlive a job. Kept on disk they are a stream of the commands that define
// them, which klov-preview itself can list.
#ifndef KLOV_PREVIEW_LOGOS_H
#define KLOV_PREVIEW_LOGOS_H

#include <map>
#include <utility>

#include "preview/bitmap.h"

namespace preview {

// The memory for logos, as bytes of pictures. What does not fit is not stored.
constexpr size_t logo_memory = 8 << 20;

struct Logos {
    std::map<std::pair<int64_t, int64_t>, Bitmap> graphics;  // by key code
    std::vector<Bitmap> images;                              // by number
    std::vector<uint8_t> images_command;                     // that defined them
    uint64_t changes = 0;

    // Bytes of pictures that it holds.
    size_t size() const;
};

// The commands that define these logos.
std::vector<uint8_t> logo_commands(const Logos &logos);

}  // namespace preview

#endif
