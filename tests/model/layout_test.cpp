// The records' layout in memory, which callers written in other languages rebuild: fields in their order, each at the
// next offset that its type's natural alignment allows.
#include <gtest/gtest.h>
#include "model/rows.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <vector>

namespace {

struct field {
    const char *name;
    size_t offset;
    size_t size;
    size_t alignment;
    bool type_is_right;
};

#define FIELD(record, name, type)                                                                                  \
    field                                                                                                          \
    {                                                                                                              \
#name, offsetof(record, name), sizeof(type), alignof(type), std::is_same_v < decltype(record::name), type> \
    }

void expect_natural(const std::vector<field> &fields, size_t record_size)
{
    size_t end = 0;
    size_t largest_alignment = 1;
    for (const field &f : fields) {
        EXPECT_TRUE(f.type_is_right) << f.name;
        EXPECT_EQ(f.offset, (end + f.alignment - 1) / f.alignment * f.alignment) << f.name;
        end = f.offset + f.size;
        largest_alignment = std::max(largest_alignment, f.alignment);
    }
    EXPECT_EQ(record_size, (end + largest_alignment - 1) / largest_alignment * largest_alignment);
}

using text = const char *;

}  // namespace

TEST(Layout, ModelBriefIsNatural)
{
    expect_natural(
        {FIELD(model_brief, id, uint32_t), FIELD(model_brief, manufacturer, text), FIELD(model_brief, model_name, text),
         FIELD(model_brief, identity, text), FIELD(model_brief, description, text), FIELD(model_brief, type, uint32_t),
         FIELD(model_brief, width, int32_t), FIELD(model_brief, flags_a, uint32_t),
         FIELD(model_brief, flags_b, uint32_t), FIELD(model_brief, unit_factor, float)},
        sizeof(model_brief));
}

TEST(Layout, PrinterModelIsNatural)
{
    expect_natural({FIELD(printer_model, size, uint32_t),        FIELD(printer_model, id, uint32_t),
                    FIELD(printer_model, manufacturer, text),    FIELD(printer_model, model_name, text),
                    FIELD(printer_model, identity, text),        FIELD(printer_model, description, text),
                    FIELD(printer_model, type, uint32_t),        FIELD(printer_model, width, int32_t),
                    FIELD(printer_model, flags_a, uint32_t),     FIELD(printer_model, flags_b, uint32_t),
                    FIELD(printer_model, prop_byte_0, uint8_t),  FIELD(printer_model, prop_byte_1, uint8_t),
                    FIELD(printer_model, prop_byte_2, uint8_t),  FIELD(printer_model, prop_byte_3, uint8_t),
                    FIELD(printer_model, prop_byte_4, uint8_t),  FIELD(printer_model, feature_flag, uint8_t),
                    FIELD(printer_model, pagemode_area, text),   FIELD(printer_model, barcode_set, text),
                    FIELD(printer_model, spare_list, text),      FIELD(printer_model, fonts, text),
                    FIELD(printer_model, byte_a, uint8_t),       FIELD(printer_model, byte_b, uint8_t),
                    FIELD(printer_model, byte_c, uint8_t),       FIELD(printer_model, dpi, int32_t),
                    FIELD(printer_model, motion_v, float),       FIELD(printer_model, motion_h, float),
                    FIELD(printer_model, special_flag, uint8_t), FIELD(printer_model, unit_factor, float)},
                   sizeof(printer_model));
}

TEST(Layout, KeysAndTypesAreTheInterfacesNumbers)
{
    EXPECT_EQ(MODEL_PROP_ID, 1);
    EXPECT_EQ(MODEL_PROP_NAME, 2);
    EXPECT_EQ(MODEL_PROP_FEATURE_FLAG, 129);
    EXPECT_EQ(MODEL_PROP_PAGEMODE_AREA, 130);
    EXPECT_EQ(MODEL_PROPTYPE_BOOL, 1);
    EXPECT_EQ(MODEL_PROPTYPE_STRING, 2);
    EXPECT_EQ(MODEL_PROPTYPE_INT, 3);
    EXPECT_EQ(MODEL_PROPTYPE_BYTE, 4);
    EXPECT_EQ(std::size(models_table), std::size(model_brief_table));
}
