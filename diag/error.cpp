// Result codes in words for the caller's buffer, and the last-error slot.

// The system's texts come from the standard strerror_r, the one that returns a code. The compiler turns the GNU
// extensions on by itself, and with them the other strerror_r, which returns a string and may leave the buffer alone.
#undef _GNU_SOURCE
#undef _POSIX_C_SOURCE
#define _POSIX_C_SOURCE 200809L

#include <klov/error.h>
#include <klov/text.h>
#include <string.h>

#include "diag/error_catalogue.h"

int32_t klov_last_error = 0;

namespace {

// Narrow form of the text that a wide function converts.
char tmpbuf[255];
constexpr int32_t tmpbuf_size = sizeof tmpbuf;

// Callers compute sizes; a negative one is a buffer without room.
size_t room(int32_t size)
{
    return size > 0 ? static_cast<size_t>(size) : 0;
}

int32_t format_system_error(int32_t code, char *buffer, int32_t buffer_size, int32_t *length_out)
{
    const int32_t result = strerror_r(code, buffer, room(buffer_size));
    if (result == 0) {
        *length_out = static_cast<int32_t>(strlen(buffer));
    }
    return result;
}

}  // namespace

int32_t klov_get_last_error(void)
{
    return klov_last_error;
}

int32_t klov_set_last_error(int32_t code)
{
    klov_last_error = code;
    return code;
}

int32_t cpystr(char *buffer, int32_t buffer_size, const char *text)
{
    const size_t length = strlen(text);
    if (buffer_size < 0 || room(buffer_size) < length) {
        return KLOV_E_BUFFER_TOO_SMALL;
    }
    memcpy(buffer, text, length + 1);
    return KLOV_OK;
}

int32_t format_klov_error(int32_t code, char *buffer, int32_t buffer_size, int32_t language, int32_t *length_out)
{
    // A text that does not fit is left out silently: half a sentence in the log helps nobody.
    cpystr(buffer, buffer_size, error_text(code, language));
    *length_out = static_cast<int32_t>(strnlen(buffer, room(buffer_size)));
    return KLOV_OK;
}

int32_t format_klov_error_wchar(int32_t code, wchar_t *wide_buffer, int32_t wide_size, int32_t language,
                                int32_t *length_out)
{
    memset(tmpbuf, 0, sizeof tmpbuf);
    int32_t length = 0;
    const int32_t result = format_klov_error(code, tmpbuf, tmpbuf_size, language, &length);
    if (result != KLOV_OK) {
        return result;
    }
    return a2w(wide_buffer, wide_size, tmpbuf, length, language, length_out);
}

int32_t format_error(int32_t code, char *buffer, int32_t buffer_size, int32_t language, int32_t *length_out)
{
    if (code >= 1) {
        return format_system_error(code, buffer, buffer_size, length_out);
    }
    return format_klov_error(code, buffer, buffer_size, language, length_out);
}

int32_t format_error_wchar(int32_t code, wchar_t *wide_buffer, int32_t wide_size, int32_t language, int32_t *length_out)
{
    if (code < 1) {
        return format_klov_error_wchar(code, wide_buffer, wide_size, language, length_out);
    }
    memset(tmpbuf, 0, sizeof tmpbuf);
    int32_t length = 0;
    const int32_t result = format_system_error(code, tmpbuf, tmpbuf_size, &length);
    if (result != KLOV_OK) {
        return result;
    }
    return a2w(wide_buffer, wide_size, tmpbuf, length, language, length_out);
}

int32_t klov_format_error_ansi(int32_t code, int32_t language, char *buffer, int32_t start, int32_t end)
{
    const int32_t size = end - start;
    char *window = buffer + start;
    memset(window, 0, room(size));
    int32_t length = 0;
    return format_error(code, window, size, language, &length);
}

int32_t klov_format_error_wchar(int32_t code, int32_t language, wchar_t *buffer, int32_t start, int32_t end)
{
    constexpr int32_t unit = sizeof(wchar_t);
    const int32_t wide_size = (end - start) / unit;
    char *window = reinterpret_cast<char *>(buffer) + start;
    memset(window, 0, room(wide_size) * unit);
    int32_t length = 0;
    return format_error_wchar(code, reinterpret_cast<wchar_t *>(window), wide_size, language, &length);
}
