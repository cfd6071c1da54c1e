/**
 * \file
 * Result codes in words, in English or Chinese.
 *
 * language: enum klov_language; every value but 4 is English. A code that the catalogue does not
 * list is no failure: its text is "Printer Unknown Error!". Sizes and lengths are in units of the buffer (bytes or wide
 * characters) and lengths leave the terminator out.
 *
 * The wide forms and the last-error slot are process-wide and not guarded against use from several threads. The wide
 * forms convert in the process's locale and, for language 4, switch it to zh_CN.utf8 for good (see a2w() in
 * klov/text.h). GBK bytes are not UTF-8, so a Chinese text comes back as KLOV_E_PARAMETER there; use the narrow form.
 */
#ifndef KLOV_ERROR_H
#define KLOV_ERROR_H

#include <klov/export.h>
#include <klov/result.h>
#include <stdint.h>
#include <wchar.h>

/** Languages of the texts. */
enum klov_language {
    KLOV_LANGUAGE_ENGLISH = 0, /**< English, ASCII but for two bytes in the texts of -1103 and -1104 */
    KLOV_LANGUAGE_CHINESE = 4  /**< Simplified Chinese, GBK bytes (code page 936) */
};

/** A slot for the library's users, 0 at first. No function but klov_set_last_error() writes to it. */
KLOV_API int32_t klov_last_error;

/** What klov_set_last_error() stored last, 0 before that. */
KLOV_API int32_t klov_get_last_error(void);

/** Stores the code and returns it. */
KLOV_API int32_t klov_set_last_error(int32_t code);

#ifndef KLOV_NO_SHORT_NAMES

/**
 * Copies the text and its terminator. The terminator is not counted in buffer_size: make the buffer one byte larger.
 *
 * - Returns KLOV_OK, or KLOV_E_BUFFER_TOO_SMALL and writes nothing when buffer_size is below the text's length.
 */
KLOV_API int32_t cpystr(char *buffer, int32_t buffer_size, const char *text);

/**
 * Writes the catalogue's text of the code, under cpystr()'s rule for the buffer_size, and the length of what the buffer
 * then holds to *length_out. Always returns KLOV_OK: a buffer that is too small keeps its contents, and the length is
 * theirs, counted up to buffer_size.
 */
KLOV_API int32_t format_klov_error(int32_t code, char *buffer, int32_t buffer_size, int32_t language,
                                   int32_t *length_out);

/**
 * As format_klov_error(), as wide characters; wide_size counts the terminator. Returns KLOV_OK, KLOV_E_PARAMETER when
 * the text does not convert in the locale in force, KLOV_E_BUFFER_TOO_SMALL.
 */
KLOV_API int32_t format_klov_error_wchar(int32_t code, wchar_t *wide_buffer, int32_t wide_size, int32_t language,
                                         int32_t *length_out);

/**
 * As format_klov_error(), and for a code of 1 or more the system's text of that errno value (strerror_r(3); the
 * language then is the locale's). Returns KLOV_OK, or what strerror_r() returned (EINVAL, ERANGE) with *length_out
 * untouched.
 */
KLOV_API int32_t format_error(int32_t code, char *buffer, int32_t buffer_size, int32_t language, int32_t *length_out);

/** As format_error(), as wide characters, with the results of format_klov_error_wchar() besides. */
KLOV_API int32_t format_error_wchar(int32_t code, wchar_t *wide_buffer, int32_t wide_size, int32_t language,
                                    int32_t *length_out);

#endif

/**
 * Clears the window of the buffer from byte start up to byte end and writes the code's text there.
 *
 * - Codes of 0 and below: the catalogue's text, KLOV_OK always. A text exactly as long as the window has its terminator
 *   at end, one byte past the window: bring that byte. The window stays empty when the text does not fit.
 * - Codes of 1 and more: the system's text of that errno value (strerror_r(3), in the locale's language). It ends
 * within the window, terminator included; ERANGE when it had to be cut, EINVAL for a number that is no errno.
 */
KLOV_API int32_t klov_format_error_ansi(int32_t code, int32_t language, char *buffer, int32_t start, int32_t end);

/**
 * As klov_format_error_ansi(), as wide characters. start and end count bytes; the window is rounded down to whole wide
 * characters (4 bytes), terminator included. Returns KLOV_OK, KLOV_E_PARAMETER when the text does not convert in the
 * locale in force, KLOV_E_BUFFER_TOO_SMALL, or the errno of klov_format_error_ansi().
 */
KLOV_API int32_t klov_format_error_wchar(int32_t code, int32_t language, wchar_t *buffer, int32_t start, int32_t end);

#endif
