// What the model room's files share: the assignment of properties and the cache behind the id queries.
#pragma once

#include <klov/model.h>

// List texts that models are given; the fonts are "letter, cell width, cell height, code pages...;" each. The pointers
// are variables so that a debugger or a product build can hand out other lists without touching the rules. FONTS_2 has
// the default text, and no family is given BARCODESET_2: that is the product data as delivered.
extern const char *PAGEMODE_AREA_DEFAULT;
extern const char *PAGEMODE_AREA_2;
extern const char *FONTS_DEFAULT;
extern const char *FONTS_2;
extern const char *BARCODESET_DEFAULT;
extern const char *BARCODESET_2;

// Fills everything but `size` and `spare_list` from the row and its family's properties. KLOV_E_UNKNOWN_MODEL for a
// family without properties of its own; the record then has the defaults.
int32_t model_set_properties(const model_brief *row, printer_model *model);

// The library's own instance for an id, made on first use. *out is null after a failure, and also (with KLOV_OK) when
// other ids have filled the table.
int32_t get_model_instance(uint32_t id, printer_model **out);
