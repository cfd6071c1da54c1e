/**
 * \file
 * Linkage of libklov's public names: C names, visible outside the shared library.
 */
#ifndef KLOV_EXPORT_H
#define KLOV_EXPORT_H

/** Gives a declaration a C name in C and in C++. */
#ifdef __cplusplus
#define KLOV_EXTERN_C extern "C"
#else
#define KLOV_EXTERN_C extern
#endif

/** A record's name: with KLOV_NO_SHORT_NAMES the one with our prefix alone is left. */
#ifdef KLOV_NO_SHORT_NAMES
#define KLOV_RECORD(name) klov_##name
#else
#define KLOV_RECORD(name) name
#endif

/** Put before every function and every data symbol that the library exports. */
#define KLOV_API KLOV_EXTERN_C __attribute__((visibility("default")))

#endif
