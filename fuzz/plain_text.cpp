// Any bytes become clean text, and that breaks into lines within their columns.
#include "pages/text_clean.h"
#include "pages/text_lines.h"

#include "fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const unsigned columns = 1 + input.byte() % 80U;
    const uint8_t wish = input.byte();
    const std::vector<uint8_t> bytes = input.rest();
    const std::string_view view(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    const std::string text = pages::clean_text(view, wish % 2 == 0 ? "en" : "zh_CN");
    for (std::string_view left = text; !left.empty();) {
        const pages::Character next = pages::front_character(left);
        FUZZ_CHECK(next.size > 0);
        FUZZ_CHECK(next.code >= 32 || next.code == '\n' || next.code == '\t' || next.code == '\f');
        left.remove_prefix(next.size);
    }
    pages::LineBreaker breaker(text, columns, wish % 4 < 2,
                               [](std::string_view word) { return static_cast<unsigned>(word.size()); });
    pages::Line line;
    size_t lines = 0;
    while (breaker.next(line)) {
        FUZZ_CHECK(++lines <= text.size());
        unsigned width = 0;
        for (const pages::Cell &cell : line.cells) {
            width += cell.columns;
        }
        FUZZ_CHECK(width <= columns);
    }
    return 0;
}
