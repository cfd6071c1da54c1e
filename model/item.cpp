// The splitter for list texts such as a model's fonts and bar codes.
#include <klov/model.h>
#include <string.h>

namespace {

constexpr int32_t skip_leading_blanks = 1;
constexpr int32_t trim_trailing_blanks = 2;

}  // namespace

char *get_item(char *text, int32_t *position, int32_t separator, int32_t flags)
{
    if (text[*position] == '\0') {
        return nullptr;
    }
    if ((flags & skip_leading_blanks) != 0) {
        while (text[*position] == ' ') {
            ++*position;
        }
    }
    char *item = text + *position;

    const char wanted = static_cast<char>(separator & 0xFF);
    char *end = wanted != '\0' ? strchr(item, wanted) : nullptr;
    if (end != nullptr) {
        *end = '\0';
        *position = static_cast<int32_t>(end - text) + 1;
    } else {
        *position += static_cast<int32_t>(strlen(item));
    }

    // Only the last item is trimmed: behind any other stands the terminator that was its separator. Callers that list
    // names with blanks at their end rely on them.
    if ((flags & trim_trailing_blanks) != 0) {
        for (int32_t last = *position - 1; last >= 0 && text[last] == ' '; last--) {
            text[last] = '\0';
        }
    }
    return item;
}
