// The 173 models that the catalogue was first delivered with. Programs in the field know them, so their rows stay as
// they are, and the figures of the product data are held over them. What holds for every model is tested over the whole
// table.
#pragma once

#include "model/rows.h"

inline constexpr model_brief delivered[] = {
#include "tests/model/delivered.inc"
};

// An id that models.txt cannot hold.
constexpr uint32_t no_family = 0;
