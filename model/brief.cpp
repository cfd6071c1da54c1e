// The catalogue's rows, and the lookups that find one. A lookup visits every row, the closing one too, so that the name
// "unknown" can be found.
#include "model/rows.h"

#include <string.h>

constexpr model_brief model_rows[] = {
#include "model_table.inc"
};
constexpr int32_t row_count = catalogue_rows;
static_assert(row_count >= MODEL_BRIEF_ROWS, "models.txt lost a row: programs rely on the first ones");
static_assert(model_rows[row_count - 1].id == 0xFFFFFFFF, "the closing row is the last");

// The public name of the rows. A program that was linked to a shorter table has a copy of it, as long as the table was
// then, and the name means that copy in here too. So the library reads its own rows, as many as there are now, and says
// the public name only for the rows that every copy has.
extern "C" __attribute__((alias("klov_model_rows"))) const model_brief model_brief_table[MODEL_BRIEF_ROWS];

static const model_brief *public_row(const model_brief &row)
{
    const ptrdiff_t index = &row - model_rows;
    return index < MODEL_BRIEF_ROWS ? &model_brief_table[index] : &row;
}

int32_t klov_model_count(void)
{
    return row_count - 1;
}

const model_brief *klov_model_at(int32_t index)
{
    return index >= 0 && index < row_count - 1 ? public_row(model_rows[index]) : nullptr;
}

const model_brief *klov_printer_model_brief_find_by_id(uint32_t id)
{
    for (const model_brief &row : model_rows) {
        if (row.id == id) {
            return public_row(row);
        }
    }
    return nullptr;
}

// Callers rely on the family's newest model here (the last row wins) and on 0 for an id that no row has.
int32_t klov_printer_model_brief_find_by_id2(uint32_t id, model_brief *out)
{
    if (out == nullptr) {
        return KLOV_E_PARAMETER;
    }
    for (const model_brief &row : model_rows) {
        if (row.id == id) {
            out->id = row.id;
            out->model_name = row.model_name;
            out->description = row.description;
            out->width = row.width;
        }
    }
    return KLOV_OK;
}

const model_brief *klov_printer_model_brief_find_by_name(const char *name)
{
    for (const model_brief &row : model_rows) {
        if (strcmp(row.model_name, name) == 0) {
            return public_row(row);
        }
    }
    return nullptr;
}

const model_brief *klov_printer_model_brief_find_by_identity(const char *identity)
{
    for (const model_brief &row : model_rows) {
        if (strcmp(row.identity, identity) == 0) {
            return public_row(row);
        }
    }
    return nullptr;
}

int32_t klov_printer_model_get_info_by_id(uint32_t id, const char **name_out, int32_t *type_out, int32_t *width_out)
{
    const model_brief *row = klov_printer_model_brief_find_by_id(id);
    if (row == nullptr) {
        return KLOV_E_UNKNOWN_MODEL;
    }
    *name_out = row->model_name;
    *type_out = static_cast<int32_t>(row->type);
    *width_out = row->width;
    return KLOV_OK;
}

int32_t klov_printer_model_get_info_by_name(const char *name, int32_t *type_out, int32_t *width_out)
{
    const model_brief *row = klov_printer_model_brief_find_by_name(name);
    if (row == nullptr) {
        return KLOV_E_UNKNOWN_MODEL;
    }
    *type_out = static_cast<int32_t>(row->type);
    *width_out = row->width;
    return KLOV_OK;
}

// The total counts names only, those that did not fit too: callers size their next buffer by it.
int32_t klov_printer_model_get_manufacture_modelnames(const char *manufacturer, char *buffer, int32_t buffer_size,
                                                      int32_t *total_out)
{
    *total_out = 0;
    int32_t total = 0;
    int32_t position = 0;
    for (const model_brief &row : model_rows) {
        if (strcmp(row.manufacturer, manufacturer) != 0) {
            continue;
        }
        const int32_t length = static_cast<int32_t>(strlen(row.model_name));
        total += length;
        if (buffer != nullptr && int64_t{buffer_size} - position > length + 2) {
            memcpy(buffer + position, row.model_name, static_cast<size_t>(length));
            buffer[position + length] = '\t';
            position += length + 1;
        }
    }
    if (buffer != nullptr) {
        buffer[position] = '\0';
    }
    if (total < 1) {
        return KLOV_E_PARAMETER;
    }
    *total_out = total;
    return KLOV_OK;
}

// The test of the narrow result is the wrong way round, and stays so: callers in the field read the list as the narrow
// text that they have always got here. What would be converted is the empty list alone: a buffer of zeros.
int32_t klov_printer_model_get_manufacture_modelnames_wchar(const char *manufacturer, wchar_t *wide_buffer,
                                                            int32_t buffer_size, int32_t *total_out)
{
    char *text = reinterpret_cast<char *>(wide_buffer);
    if (klov_printer_model_get_manufacture_modelnames(manufacturer, text, buffer_size, total_out) == KLOV_OK) {
        return 0;
    }
    if (wide_buffer == nullptr || buffer_size < 1) {
        return 1;
    }
    memset(wide_buffer, 0, static_cast<size_t>(buffer_size));
    return 1;
}
