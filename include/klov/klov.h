/* libklov: the whole public interface. */
#ifndef KLOV_KLOV_H
#define KLOV_KLOV_H

#include <klov/result.h>

#endif
