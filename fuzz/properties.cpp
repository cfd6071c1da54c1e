// The catalogue's queries with any names, keys and buffers: nothing beside the buffer is written.
#include "fuzz/input.h"

#include "model/rows.h"

#include <algorithm>
#include <memory>

namespace {

constexpr uint32_t most_room = 4096;

printer_model *some_model(fuzz::Input &input)
{
    printer_model *model = nullptr;
    const model_brief &row = model_rows[input.byte() % catalogue_rows];
    klov_printer_model_creator2(row.model_name, &model);
    return model;
}

using ModelQuery = int32_t (*)(const printer_model *, int32_t, int32_t *, void *, int32_t, int32_t *);
using IdQuery = int32_t (*)(uint32_t, int32_t, int32_t *, void *, int32_t, int32_t *);

template <typename Query, typename Subject>
void ask(Query query, Subject subject, fuzz::Input &input)
{
    static constexpr int32_t keys[] = {MODEL_PROP_ID, MODEL_PROP_NAME, MODEL_PROP_FEATURE_FLAG,
                                       MODEL_PROP_PAGEMODE_AREA};
    const uint8_t choice = input.byte();
    const int32_t key = choice < 224 ? keys[choice % 4] : static_cast<int32_t>(input.number());
    const uint32_t size = input.number() % most_room;
    const uint8_t nulls = input.byte();
    fuzz::Fenced buffer(size);
    fuzz::Fenced type(sizeof(int32_t));
    fuzz::Fenced length(sizeof(int32_t));
    void *target = nulls % 8 != 0 ? buffer.data() : nullptr;
    int32_t *length_out = nulls % 16 < 14 ? length.as<int32_t>() : nullptr;
    const int32_t told = nulls < 240 ? static_cast<int32_t>(size) : -static_cast<int32_t>(size);
    const int32_t status = query(subject, key, type.as<int32_t>(), target, told, length_out);
    FUZZ_CHECK(buffer.intact_outside() && type.intact_outside() && length.intact_outside());
    if (status != KLOV_OK) {
        FUZZ_CHECK(buffer.intact_outside(0, 0) && length.intact_outside(0, 0));
    }
}

void query_properties(fuzz::Input &input)
{
    printer_model *model = some_model(input);
    const ModelQuery query =
        input.byte() % 2 == 0 ? klov_printer_model_get_property : klov_printer_model_get_property_wchar;
    while (!input.done()) {
        ask(query, static_cast<const printer_model *>(model), input);
    }
    klov_printer_model_destroy(model);
}

void query_ids(fuzz::Input &input)
{
    const IdQuery query =
        input.byte() % 2 == 0 ? klov_printer_model_id_get_property : klov_printer_model_id_get_property_wchar;
    const uint8_t choice = input.byte();
    ask(query, choice < 200 ? model_rows[choice % catalogue_rows].id : input.number(), input);
}

void list_names(fuzz::Input &input)
{
    const uint8_t choice = input.byte();
    const std::string text = input.text();
    const char *brand = choice < 200 ? model_rows[choice % catalogue_rows].manufacturer : text.c_str();
    const uint32_t size = 4 * (input.number() % (most_room / 4));
    fuzz::Fenced buffer(std::max(size, 4U));
    int32_t total = -1;
    klov_printer_model_get_manufacture_modelnames(brand, buffer.as<char>(), static_cast<int32_t>(size), &total);
    FUZZ_CHECK(buffer.intact_outside(0, std::max(size, 1U)));
    klov_printer_model_get_manufacture_modelnames_wchar(brand, buffer.as<wchar_t>(), static_cast<int32_t>(size),
                                                        &total);
    FUZZ_CHECK(buffer.intact_outside());
}

void find_names(fuzz::Input &input)
{
    const std::string name = input.text();
    const model_brief *row = klov_printer_model_brief_find_by_name(name.c_str());
    FUZZ_CHECK(row == nullptr || name == row->model_name);
    row = klov_printer_model_brief_find_by_identity(name.c_str());
    FUZZ_CHECK(row == nullptr || name == row->identity);
    printer_model *model = nullptr;
    const int32_t status = klov_printer_model_creator2(name.c_str(), &model);
    FUZZ_CHECK((status == KLOV_OK) == (model != nullptr));
    klov_printer_model_destroy(model);
}

void split_list(fuzz::Input &input)
{
    const int32_t separator = static_cast<int32_t>(input.number());
    const int32_t flags = static_cast<int32_t>(input.number());
    const std::string text = input.text();
    const auto block = std::make_unique<char[]>(text.size() + 1);
    memcpy(block.get(), text.c_str(), text.size() + 1);
    int32_t position = 0;
    size_t items = 0;
    while (const char *item = get_item(block.get(), &position, separator, flags)) {
        FUZZ_CHECK(item >= block.get() && item <= block.get() + text.size());
        FUZZ_CHECK(position >= 0 && static_cast<size_t>(position) <= text.size() + 1);
        items += 1;
        FUZZ_CHECK(items <= text.size() + 1);
        if (static_cast<size_t>(position) > text.size()) {
            break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    void (*const kinds[])(fuzz::Input &) = {query_properties, query_ids, list_names, find_names, split_list};
    kinds[input.byte() % 5](input);
    return 0;
}
