// The virtual printer reads any bytes, in any pieces, and always says the same about them.
#include "preview/reader.h"
#include "fuzz/input.h"

#include <algorithm>

namespace {

constexpr size_t most_events = 500;
constexpr uint64_t most_rows = 20000;

preview::Options options_of(fuzz::Input &input)
{
    preview::Options options;
    options.width = 8 * (1 + input.byte() % 104);
    options.max_rows = most_rows;
    options.max_events = most_events;
    options.padded_page_area = input.byte() % 2 != 0;
    options.margin_unit = input.byte() % 2 != 0 ? 8 : 1;
    return options;
}

void feed(preview::Reader &reader, const std::vector<uint8_t> &bytes, size_t piece)
{
    for (size_t at = 0; at < bytes.size(); at += piece) {
        const size_t count = std::min(piece, bytes.size() - at);
        if (!reader.feed({bytes.data() + at, count})) {
            break;
        }
    }
    reader.finish();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const preview::Options options = options_of(input);
    const size_t piece = 1 + input.byte();
    const std::vector<uint8_t> bytes = input.rest();
    preview::Reader whole(options);
    feed(whole, bytes, bytes.size() + 1);
    FUZZ_CHECK(whole.paper().rows() <= most_rows);
    FUZZ_CHECK(whole.commands().size() <= most_events && whole.events().size() <= most_events);
    FUZZ_CHECK(whole.warnings().size() <= most_events);

    preview::Reader pieces(options);
    feed(pieces, bytes, piece);
    FUZZ_CHECK(pieces.paper().rows() == whole.paper().rows());
    FUZZ_CHECK(pieces.commands().size() == whole.commands().size());
    FUZZ_CHECK(pieces.cuts().size() == whole.cuts().size());
    FUZZ_CHECK(pieces.problem().has_value() == whole.problem().has_value());
    return 0;
}
