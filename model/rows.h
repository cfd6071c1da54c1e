// The catalogue's rows where the compiler can see them. Callers see an array that ends with its closing row; the
// library's own files know how many rows there are.
#pragma once

#include <klov/model.h>

// For questions that are answered while compiling; model_brief_table is the copy that is there at run time.
inline constexpr model_brief catalogue[] = {
#include "model_table.inc"
};
constexpr size_t catalogue_rows = sizeof catalogue / sizeof catalogue[0];

KLOV_API const model_brief model_brief_table[catalogue_rows];
KLOV_API printer_model *models_table[catalogue_rows];
