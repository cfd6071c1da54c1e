/* Version of libklov and of the filter that is built with it. */
#ifndef KLOV_VERSION_H
#define KLOV_VERSION_H

#define KLOV_VERSION_MAJOR 0
#define KLOV_VERSION_MINOR 1
#define KLOV_VERSION_PATCH 0

#endif
