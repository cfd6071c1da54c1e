// Model instances: made, refilled, kept for the id queries, given back.
#include "model/instance.h"

#include <stdlib.h>

printer_model *models_table[MODEL_BRIEF_ROWS];

namespace {

// A family without properties of its own still makes a valid instance: the filter prints on such models with the
// defaults.
int32_t create_from(const model_brief *row, printer_model **out)
{
    if (row == nullptr) {
        return KLOV_E_UNKNOWN_MODEL;
    }
    printer_model *model = static_cast<printer_model *>(calloc(1, sizeof(printer_model)));
    if (model == nullptr) {
        return KLOV_E_NO_MEMORY;
    }
    model->size = sizeof(printer_model);
    (void)model_set_properties(row, model);
    *out = model;
    return KLOV_OK;
}

bool is_valid(const printer_model *model)
{
    return model != nullptr && model->size == sizeof(printer_model);
}

}  // namespace

int32_t klov_printer_model_creator(uint32_t id, printer_model **out)
{
    if (out == nullptr) {
        return KLOV_E_PARAMETER;
    }
    *out = nullptr;
    return create_from(klov_printer_model_brief_find_by_id(id), out);
}

int32_t klov_printer_model_creator2(const char *model_name, printer_model **out)
{
    if (out == nullptr) {
        return KLOV_E_PARAMETER;
    }
    *out = nullptr;
    return create_from(klov_printer_model_brief_find_by_name(model_name), out);
}

int32_t klov_printer_model_creator_by_identity(const char *identity, printer_model **out)
{
    if (out == nullptr) {
        return KLOV_E_PARAMETER;
    }
    *out = nullptr;
    return create_from(klov_printer_model_brief_find_by_identity(identity), out);
}

int32_t klov_printer_model_get_by_id(uint32_t id, printer_model *model)
{
    if (!is_valid(model)) {
        return KLOV_E_PARAMETER;
    }
    const model_brief *row = klov_printer_model_brief_find_by_id(id);
    return row != nullptr ? model_set_properties(row, model) : KLOV_E_UNKNOWN_MODEL;
}

int32_t klov_printer_model_get_by_name(const char *model_name, printer_model *model)
{
    if (!is_valid(model)) {
        return KLOV_E_PARAMETER;
    }
    const model_brief *row = klov_printer_model_brief_find_by_name(model_name);
    return row != nullptr ? model_set_properties(row, model) : KLOV_E_UNKNOWN_MODEL;
}

int32_t klov_printer_model_destroy(printer_model *model)
{
    if (model == nullptr) {
        return KLOV_E_HANDLE;
    }
    free(model);
    return KLOV_OK;
}

// A full table answers with a null instance and success; the property query that follows refuses the null.
int32_t get_model_instance(uint32_t id, printer_model **out)
{
    *out = nullptr;
    for (printer_model *&slot : models_table) {
        if (slot == nullptr) {
            const int32_t result = klov_printer_model_creator(id, &slot);
            *out = slot;
            return result;
        }
        if (slot->id == id) {
            *out = slot;
            return KLOV_OK;
        }
    }
    return KLOV_OK;
}

// The slots keep their pointers: this is the library's last call, and a caller may still compare them with its own.
int32_t klov_printer_model_detach(void)
{
    int32_t result = KLOV_OK;
    for (printer_model *model : models_table) {
        if (model != nullptr) {
            result = klov_printer_model_destroy(model);
        }
    }
    return result;
}
