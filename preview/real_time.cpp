// The patterns of the real-time commands.
#include "preview/real_time.h"

#include <algorithm>

namespace preview {
namespace {

constexpr int any = -1;

struct Pattern {
    RealTime kind;
    std::vector<int> bytes;
};

const std::vector<Pattern> &patterns()
{
    static const std::vector<Pattern> all = {
        {RealTime::status, {0x10, 0x04, any}},
        {RealTime::request, {0x10, 0x05, any}},
        {RealTime::pulse, {0x10, 0x14, 0x01, any, any}},
        {RealTime::power_off, {0x10, 0x14, 0x02, 0x01, 0x08}},
        {RealTime::report, {0x10, 0x14, 0x07, any}},
        {RealTime::clear_buffer, {0x10, 0x14, 0x08, 0x01, 0x03, 0x14, 0x01, 0x06, 0x02, 0x08}},
    };
    return all;
}

}  // namespace

RealTime real_time_kind(Bytes bytes)
{
    for (const Pattern &pattern : patterns()) {
        const bool fits = bytes.size() <= pattern.bytes.size() &&
                          std::equal(bytes.begin(), bytes.end(), pattern.bytes.begin(),
                                     [](uint8_t byte, int wanted) { return wanted == any || byte == wanted; });
        if (fits) {
            return bytes.size() == pattern.bytes.size() ? pattern.kind : RealTime::more;
        }
    }
    return RealTime::none;
}

}  // namespace preview
