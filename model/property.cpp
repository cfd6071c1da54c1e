// Property queries: a model's properties by key, as bytes in the caller's buffer.
#include <string.h>

#include "model/instance.h"

namespace {

// The caller's outputs; `buffer` and `length` may be null.
struct property_out {
    int32_t *type;
    uint8_t *buffer;
    int32_t size;
    int32_t *length;
};

int32_t smaller(int32_t a, int32_t b)
{
    return a < b ? a : b;
}

void store_length(property_out out, int32_t length)
{
    if (out.length != nullptr) {
        *out.length = length;
    }
}

void get_int(uint32_t value, property_out out)
{
    *out.type = MODEL_PROPTYPE_INT;
    if (out.buffer != nullptr) {
        memset(out.buffer, 0, static_cast<size_t>(out.size));
        for (int32_t i = 0; i < smaller(4, out.size); i++) {
            out.buffer[i] = static_cast<uint8_t>(value >> (8 * i) & 0xFF);
        }
    }
    store_length(out, 4);
}

void get_string(const char *value, property_out out)
{
    *out.type = MODEL_PROPTYPE_STRING;
    const int32_t length = static_cast<int32_t>(strlen(value));
    if (out.buffer != nullptr) {
        memcpy(out.buffer, value, static_cast<size_t>(smaller(length, out.size)));
    }
    store_length(out, length);
}

void get_byte(uint8_t value, property_out out)
{
    *out.type = MODEL_PROPTYPE_BYTE;
    if (out.buffer != nullptr) {
        out.buffer[0] = value;
    }
    store_length(out, 1);
}

void get_bool(uint8_t value, property_out out)
{
    get_byte(value, out);
    *out.type = MODEL_PROPTYPE_BOOL;
}

}  // namespace

int32_t klov_printer_model_get_property(const printer_model *model, int32_t key, int32_t *type_out, void *buffer,
                                        int32_t buffer_size, int32_t *length_out)
{
    if (model == nullptr || model->size != sizeof(printer_model) || type_out == nullptr) {
        return KLOV_E_PARAMETER;
    }
    if (buffer == nullptr && length_out == nullptr) {
        return KLOV_E_PARAMETER;
    }
    if (buffer != nullptr && buffer_size < 1) {
        return KLOV_E_PARAMETER;
    }
    const property_out out = {type_out, static_cast<uint8_t *>(buffer), buffer_size, length_out};
    switch (key) {
        case MODEL_PROP_ID:
            get_int(model->id, out);
            return KLOV_OK;
        case MODEL_PROP_NAME:
            get_string(model->model_name, out);
            return KLOV_OK;
        case MODEL_PROP_FEATURE_FLAG:
            get_bool(model->feature_flag, out);
            return KLOV_OK;
        case MODEL_PROP_PAGEMODE_AREA:
            get_string(model->pagemode_area, out);
            return KLOV_OK;
        default:
            return KLOV_E_PARAMETER;
    }
}

// The text stays narrow although its length is doubled; callers halve it and read narrow text.
int32_t klov_printer_model_get_property_wchar(const printer_model *model, int32_t key, int32_t *type_out, void *buffer,
                                              int32_t buffer_size, int32_t *length_out)
{
    if (buffer == nullptr && length_out == nullptr) {
        return KLOV_E_PARAMETER;
    }
    int32_t length = 0;
    const int32_t result = klov_printer_model_get_property(model, key, type_out, buffer, buffer_size, &length);
    if (result != KLOV_OK) {
        return result;
    }
    if (length_out != nullptr) {
        *length_out = *type_out == MODEL_PROPTYPE_STRING ? length * 2 : length;
    }
    return KLOV_OK;
}

int32_t klov_printer_model_id_get_property(uint32_t id, int32_t key, int32_t *type_out, void *buffer,
                                           int32_t buffer_size, int32_t *length_out)
{
    printer_model *model = nullptr;
    const int32_t result = get_model_instance(id, &model);
    if (result != KLOV_OK) {
        return result;
    }
    return klov_printer_model_get_property(model, key, type_out, buffer, buffer_size, length_out);
}

int32_t klov_printer_model_id_get_property_wchar(uint32_t id, int32_t key, int32_t *type_out, void *buffer,
                                                 int32_t buffer_size, int32_t *length_out)
{
    printer_model *model = nullptr;
    const int32_t result = get_model_instance(id, &model);
    if (result != KLOV_OK) {
        return result;
    }
    return klov_printer_model_get_property_wchar(model, key, type_out, buffer, buffer_size, length_out);
}
