/**
 * \file
 * Text conversions between wide characters and multibyte text, in the locale that the process has: a program that never
 * called setlocale(3) converts ASCII only. Both use the C library's wcstombs(3) and mbstowcs(3).
 *
 * code_page 4 first switches the whole process, for good, to the locale zh_CN.utf8 (where it is not installed, the
 * locale stays as it is); every other value is ignored. src_len is not looked at: the source ends at its terminator.
 *
 * Returns KLOV_OK; KLOV_E_PARAMETER when the source does not convert; KLOV_E_BUFFER_TOO_SMALL when dst_size has no room
 * for the whole converted text and its terminator, with nothing written. *count_out is only set on success; it counts
 * what was converted, without the terminator.
 */
#ifndef KLOV_TEXT_H
#define KLOV_TEXT_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>
#include <wchar.h>

#ifndef KLOV_NO_SHORT_NAMES

/**
 * Wide characters to multibyte text; dst_size and *count_out in bytes. Writes at most as many bytes as the source has
 * wide characters, plus one: a text with characters of two and more bytes loses its end, keeps whole characters and
 * gets no terminator. Trust the count.
 */
KLOV_API int32_t w2a(char *dst, int32_t dst_size, const wchar_t *src, int32_t src_len, int32_t code_page,
                     int32_t *count_out);

/** Multibyte text to wide characters; dst_size and *count_out in wide characters. */
KLOV_API int32_t a2w(wchar_t *dst, int32_t dst_size, const char *src, int32_t src_len, int32_t code_page,
                     int32_t *count_out);

#endif

#endif
