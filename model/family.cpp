// The properties that a hardware family (a model id) gives to its models.
#include "model/instance.h"

#include "model/rows.h"

const char *PAGEMODE_AREA_DEFAULT = "";
const char *PAGEMODE_AREA_2 = "576,936";
const char *FONTS_DEFAULT =
    "A,12,24,242,311,318,437,720,850,860,863,865,866,852,858;"
    "B,9,17,242,311,318,437,850,860,863,865,866,852,858,1252;";
const char *FONTS_2 =
    "A,12,24,242,311,318,437,720,850,860,863,865,866,852,858;"
    "B,9,17,242,311,318,437,850,860,863,865,866,852,858,1252;";
const char *BARCODESET_DEFAULT = "UPC-A,UPC-E,EAN8,EAN13,CODE39,ITF,CODEBAR,CODE128,CODE93,QRCODE";
const char *BARCODESET_2 = "UPC-A,UPC-E,EAN8,EAN13,CODE39,ITF,CODEBAR,CODE128,CODE93,QRCODE,PDF417";

namespace {

struct family {
    uint32_t id;
    uint8_t prop_byte[5];
    uint8_t feature_flag;
    const char **pagemode_area;
    const char **fonts;
    float motion_v;
    uint8_t special_flag;
};

constexpr family default_family = {0, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0};

constexpr family families[] = {
    // Receipt printers with the fine vertical motion unit
    {0x1001, {1, 23, 2, 3, 1}, 1, &PAGEMODE_AREA_2, &FONTS_2, 0.0625F, 0},
    {0x1002, {1, 22, 2, 3, 1}, 1, &PAGEMODE_AREA_2, &FONTS_2, 0.0625F, 0},
    {0x1003, {1, 24, 2, 3, 1}, 1, &PAGEMODE_AREA_2, &FONTS_2, 0.0625F, 0},
    {0x1004, {1, 22, 2, 3, 1}, 1, &PAGEMODE_AREA_2, &FONTS_2, 0.0625F, 0},
    {0x1005, {1, 22, 2, 3, 1}, 1, &PAGEMODE_AREA_2, &FONTS_2, 0.0625F, 0},
    {0x1006, {1, 22, 2, 3, 1}, 1, &PAGEMODE_AREA_2, &FONTS_2, 0.0625F, 0},
    // Receipt printers with the standard motion unit
    {0x1011, {0, 0, 2, 3, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1012, {0, 0, 2, 3, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1013, {0, 0, 2, 3, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1021, {0, 0, 2, 3, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    // Label/receipt printers, boards and kiosks
    {0x1101, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 1},
    {0x1102, {0, 0, 2, 0, 0}, 1, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1103, {0, 0, 2, 0, 0}, 1, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1104, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1131, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1151, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1191, {0, 0, 2, 0, 0}, 1, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1541, {0, 0, 5, 0, 0}, 1, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1562, {0, 0, 5, 0, 0}, 1, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    // Compact and mobile printers, and those that take whole lines only
    {0x1721, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1725, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x1955, {1, 5, 5, 3, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.0625F, 0},
    {0x1956, {1, 5, 5, 3, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.0625F, 0},
    // Label printers
    {0x3102, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x3103, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x3220, {0, 0, 2, 0, 0}, 1, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    // Wide printers
    {0x9601, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
    {0x9602, {0, 0, 2, 0, 0}, 0, &PAGEMODE_AREA_DEFAULT, &FONTS_DEFAULT, 0.125F, 0},
};

// Families whose models have the default properties and count as unrecognised: creators make an instance all the same,
// refills say KLOV_E_UNKNOWN_MODEL.
constexpr uint32_t families_without_properties[] = {
    0x1009, 0x1486, 0x1565, 0x2042, 0x3001, 0x3104, 0x3105, 0x3108, 0x3201, 0x4001, 0x9603, 0xFFFFFFFF,
};

constexpr const family *find_family(uint32_t id)
{
    for (const family &candidate : families) {
        if (candidate.id == id) {
            return &candidate;
        }
    }
    return nullptr;
}

void copy_row(const model_brief *row, printer_model *model)
{
    model->id = row->id;
    model->manufacturer = row->manufacturer;
    model->model_name = row->model_name;
    model->identity = row->identity;
    model->description = row->description;
    model->type = (row->id & 0xFF) << 16 | row->type;
    model->width = row->width;
    model->flags_a = row->flags_a;
    model->flags_b = row->flags_b;
    model->unit_factor = row->unit_factor;
}

void copy_family(const family &source, printer_model *model)
{
    model->prop_byte_0 = source.prop_byte[0];
    model->prop_byte_1 = source.prop_byte[1];
    model->prop_byte_2 = source.prop_byte[2];
    model->prop_byte_3 = source.prop_byte[3];
    model->prop_byte_4 = source.prop_byte[4];
    model->feature_flag = source.feature_flag;
    model->pagemode_area = *source.pagemode_area;
    model->fonts = *source.fonts;
    model->motion_v = source.motion_v;
    model->special_flag = source.special_flag;
}

constexpr bool has_no_properties(uint32_t id)
{
    for (const uint32_t candidate : families_without_properties) {
        if (candidate == id) {
            return true;
        }
    }
    return false;
}

// The first id of the catalogue that stands in neither list, or in both; 0 when there is none.
constexpr uint32_t undecided_family()
{
    for (const model_brief &row : catalogue) {
        if ((find_family(row.id) != nullptr) == has_no_properties(row.id)) {
            return row.id;
        }
    }
    return 0;
}
static_assert(undecided_family() == 0,
              "a family of models.txt has no row here: add it to families[], or to families_without_properties[]");

}  // namespace

int32_t model_set_properties(const model_brief *row, printer_model *model)
{
    copy_row(row, model);
    model->barcode_set = BARCODESET_DEFAULT;
    model->byte_a = 1;
    model->byte_b = 1;
    model->byte_c = 8;
    model->dpi = 203;
    model->motion_h = 0.125F;

    const family *known = find_family(row->id);
    copy_family(known != nullptr ? *known : default_family, model);
    return known != nullptr ? KLOV_OK : KLOV_E_UNKNOWN_MODEL;
}
