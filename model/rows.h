// The catalogue's rows, as the library's own files and its tests see them: all there are now. Programs see at least
// MODEL_BRIEF_ROWS of them in model_brief_table.
#pragma once

#include <klov/model.h>

// For questions that are answered while compiling; model_rows is the copy that is there at run time.
inline constexpr model_brief catalogue[] = {
#include "model_table.inc"
};
constexpr size_t catalogue_rows = sizeof catalogue / sizeof catalogue[0];

// Hidden: the name that the shared library gives its own rows.
extern "C" __attribute__((visibility("hidden")))
const model_brief model_rows[catalogue_rows] __asm__("klov_model_rows");
