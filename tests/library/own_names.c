/*
 * A program with functions of its own that are called as some of the library's are, and that it exports: the library
 * goes on with its own.
 */
#define KLOV_NO_SHORT_NAMES
#include <klov/klov.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int32_t cpystr(void);
int32_t format_klov_error(void);
int32_t format_klov_error_wchar(void);
int32_t format_error(void);
int32_t format_error_wchar(void);
int32_t a2w(void);
int32_t w2a(void);
char *get_item(void);
uint32_t CRC32(void);

static int32_t hijacked(const char *name)
{
    fprintf(stderr, "the library called the program's %s\n", name);
    exit(1);
}

#define OWN(type, name)                       \
    type name(void)                           \
    {                                         \
        return (type)(size_t)hijacked(#name); \
    }
OWN(int32_t, cpystr)
OWN(int32_t, format_klov_error)
OWN(int32_t, format_klov_error_wchar)
OWN(int32_t, format_error)
OWN(int32_t, format_error_wchar)
OWN(int32_t, a2w)
OWN(int32_t, w2a)
OWN(char *, get_item)
OWN(uint32_t, CRC32)

int main(void)
{
    char text[256];
    wchar_t wide[256];
    int32_t total = 0;
    int32_t type = 0;
    wchar_t names[64];
    if (klov_format_error_ansi(KLOV_E_UNKNOWN_MODEL, KLOV_LANGUAGE_ENGLISH, text, 0, sizeof text - 1) != KLOV_OK ||
        strcmp(text, "Unable to identify the printer model. Please correct the printer model.") != 0) {
        return 2;
    }
    if (klov_format_error_wchar(KLOV_E_PRINT, KLOV_LANGUAGE_ENGLISH, wide, 0, sizeof wide) != KLOV_OK ||
        wcscmp(wide, L"KLOV print error.") != 0) {
        return 3;
    }
    if (klov_printer_model_get_manufacture_modelnames_wchar("nobody", names, sizeof names, &total) != 1 ||
        klov_printer_model_id_get_property_wchar(0x1001, KLOV_MODEL_PROP_NAME, &type, names, sizeof names, &total) !=
            KLOV_OK) {
        return 4;
    }
    return 0;
}
