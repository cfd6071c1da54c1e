// The version of the library that a program runs with, which may be newer than its headers.
#include <klov/version.h>

const char *klov_version(void)
{
    return KLOV_VERSION_STRING;
}
