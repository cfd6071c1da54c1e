// Logos as commands.
#include "preview/logos.h"

namespace preview {

size_t Logos::size() const
{
    size_t bytes = images_command.size();
    for (const auto &[key, bitmap] : graphics) {
        bytes += bitmap.bits.size();
    }
    return bytes;
}

std::vector<uint8_t> logo_commands(const Logos &logos)
{
    std::vector<uint8_t> stream = logos.images_command;
    const auto put = [&stream](uint64_t number, size_t bytes) {
        for (size_t i = 0; i < bytes; ++i) {
            stream.push_back(static_cast<uint8_t>(number >> (8 * i)));
        }
    };
    for (const auto &[key, bitmap] : logos.graphics) {
        const size_t counted = bitmap.bits.size() + 11;
        stream.insert(stream.end(), {0x1D, 0x28, 0x4C});
        put(counted, counted <= UINT16_MAX ? 2 : 4);
        stream.insert(stream.end(), {0x30, 0x43, 0x30});
        put(static_cast<uint64_t>(key.first), 1);
        put(static_cast<uint64_t>(key.second), 1);
        stream.push_back(0x01);
        put(bitmap.width, 2);
        put(bitmap.height, 2);
        stream.push_back(0x31);
        stream.insert(stream.end(), bitmap.bits.begin(), bitmap.bits.end());
    }
    return stream;
}

}  // namespace preview
