/**
 * \file
 * Version of libklov. This file is its one source: CMake, the packages and the reference read it here.
 */
#ifndef KLOV_VERSION_H
#define KLOV_VERSION_H

#include <klov/export.h>

#define KLOV_VERSION_MAJOR 0 /**< raised when a program has to be changed or built again; the soname carries it */
#define KLOV_VERSION_MINOR 2 /**< raised when something is added */
#define KLOV_VERSION_PATCH 0 /**< raised for corrections */

/** The version of these headers as one number, for \#if: 200 for 0.2.0, 10203 for 1.2.3. */
#define KLOV_VERSION_NUMBER (KLOV_VERSION_MAJOR * 10000 + KLOV_VERSION_MINOR * 100 + KLOV_VERSION_PATCH)

#define KLOV_QUOTED_(text) #text               /**< for KLOV_VERSION_STRING */
#define KLOV_QUOTED(macro) KLOV_QUOTED_(macro) /**< for KLOV_VERSION_STRING */

/** The version of these headers as text, "0.2.0". */
#define KLOV_VERSION_STRING \
    KLOV_QUOTED(KLOV_VERSION_MAJOR) "." KLOV_QUOTED(KLOV_VERSION_MINOR) "." KLOV_QUOTED(KLOV_VERSION_PATCH)

/** The version that brought the commands as they are: the encoders' functions and bytes. The filter's log tells it. */
#define KLOV_COMMANDS_VERSION_STRING "0.1.0"

/** The version of the library that the program runs with, as KLOV_VERSION_STRING was when it was built. */
KLOV_API const char *klov_version(void);

#endif
