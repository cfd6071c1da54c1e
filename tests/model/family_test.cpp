// The properties that each family gives to its models, checked on every model that was first delivered, and what holds
// for every row.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

#include "model/instance.h"
#include "tests/model/delivered.h"

namespace {

const char *const default_fonts =
    "A,12,24,242,311,318,437,720,850,860,863,865,866,852,858;B,9,17,242,311,318,437,850,860,863,865,866,852,858,1252;";

// A family's properties, the defaults unless said otherwise.
struct properties {
    int prop_byte_0 = 0;
    int prop_byte_1 = 0;
    int prop_byte_2 = 2;
    int prop_byte_3 = 0;
    int prop_byte_4 = 0;
    int feature_flag = 0;
    const char *pagemode_area = "";
    float motion_v = 0.125F;
    int special_flag = 0;
};

constexpr properties fine_receipt(int prop_byte_1)
{
    return {.prop_byte_0 = 1,
            .prop_byte_1 = prop_byte_1,
            .prop_byte_3 = 3,
            .prop_byte_4 = 1,
            .feature_flag = 1,
            .pagemode_area = "576,936",
            .motion_v = 0.0625F};
}

constexpr properties plain = {};
constexpr properties receipt = {.prop_byte_3 = 3};
constexpr properties feature = {.feature_flag = 1};
constexpr properties feature_five = {.prop_byte_2 = 5, .feature_flag = 1};
constexpr properties whole_lines = {
    .prop_byte_0 = 1, .prop_byte_1 = 5, .prop_byte_2 = 5, .prop_byte_3 = 3, .motion_v = 0.0625F};

const std::map<uint32_t, properties> family_rule = {
    {0x1001, fine_receipt(23)},
    {0x1002, fine_receipt(22)},
    {0x1003, fine_receipt(24)},
    {0x1004, fine_receipt(22)},
    {0x1005, fine_receipt(22)},
    {0x1006, fine_receipt(22)},
    {0x1011, receipt},
    {0x1012, receipt},
    {0x1013, receipt},
    {0x1021, receipt},
    {0x1101, {.special_flag = 1}},
    {0x1102, feature},
    {0x1103, feature},
    {0x1191, feature},
    {0x3220, feature},
    {0x1104, plain},
    {0x1131, plain},
    {0x1151, plain},
    {0x1721, plain},
    {0x1725, plain},
    {0x3102, plain},
    {0x3103, plain},
    {0x9601, plain},
    {0x9602, plain},
    {0x1541, feature_five},
    {0x1562, feature_five},
    {0x1955, whole_lines},
    {0x1956, whole_lines},
};

void expect_row(const printer_model &model, const model_brief &row)
{
    EXPECT_EQ(model.id, row.id);
    EXPECT_EQ(model.manufacturer, row.manufacturer);
    EXPECT_EQ(model.model_name, row.model_name);
    EXPECT_EQ(model.identity, row.identity);
    EXPECT_EQ(model.description, row.description);
    EXPECT_EQ(model.width, row.width);
    EXPECT_EQ(model.flags_a, row.flags_a);
    EXPECT_EQ(model.flags_b, row.flags_b);
    EXPECT_EQ(model.unit_factor, row.unit_factor);
    EXPECT_EQ(model.type, row.type | row.id % 256 * 65536);
}

void expect_properties(const printer_model &model, const properties &expected)
{
    EXPECT_EQ(model.prop_byte_0, expected.prop_byte_0);
    EXPECT_EQ(model.prop_byte_1, expected.prop_byte_1);
    EXPECT_EQ(model.prop_byte_2, expected.prop_byte_2);
    EXPECT_EQ(model.prop_byte_3, expected.prop_byte_3);
    EXPECT_EQ(model.prop_byte_4, expected.prop_byte_4);
    EXPECT_EQ(model.feature_flag, expected.feature_flag);
    EXPECT_STREQ(model.pagemode_area, expected.pagemode_area);
    EXPECT_EQ(model.motion_v, expected.motion_v);
    EXPECT_EQ(model.special_flag, expected.special_flag);
}

void expect_common(const printer_model &model)
{
    EXPECT_STREQ(model.barcode_set, "UPC-A,UPC-E,EAN8,EAN13,CODE39,ITF,CODEBAR,CODE128,CODE93,QRCODE");
    EXPECT_STREQ(model.fonts, default_fonts);
    EXPECT_EQ(model.byte_a, 1);
    EXPECT_EQ(model.byte_b, 1);
    EXPECT_EQ(model.byte_c, 8);
    EXPECT_EQ(model.dpi, 203);
    EXPECT_EQ(model.motion_h, 0.125F);
}

// A record filled with other bytes, so that what is not assigned shows.
printer_model filled(const model_brief &row, int32_t *result)
{
    printer_model model;
    memset(&model, 0x5A, sizeof model);
    *result = model_set_properties(&row, &model);
    return model;
}

}  // namespace

TEST(Family, EveryDeliveredModelHasItsFamilysProperties)
{
    for (const model_brief &row : delivered) {
        SCOPED_TRACE(row.model_name);
        const auto rule = family_rule.find(row.id);
        int32_t result = 0;
        const printer_model model = filled(row, &result);
        expect_properties(model, rule != family_rule.end() ? rule->second : plain);
        EXPECT_EQ(result, rule != family_rule.end() ? KLOV_OK : KLOV_E_UNKNOWN_MODEL);
    }
}

TEST(Family, EveryModelHasItsRowAndWhatAllModelsShare)
{
    for (const model_brief &row : model_rows) {
        SCOPED_TRACE(row.model_name);
        int32_t result = 0;
        const printer_model model = filled(row, &result);
        expect_row(model, row);
        expect_common(model);
        if (result != KLOV_OK) {
            EXPECT_EQ(result, KLOV_E_UNKNOWN_MODEL);
            expect_properties(model, plain);
        }
    }
}

TEST(Family, EveryRuleHasAModel)
{
    EXPECT_EQ(family_rule.size(), 28U);
    for (const auto &[id, rule] : family_rule) {
        EXPECT_NE(klov_printer_model_brief_find_by_id(id), nullptr) << id;
    }
}

TEST(Family, IdsWithoutARuleGiveUnknownModel)
{
    for (const uint32_t id : {0x1009U, 0x1486U, 0x1565U, 0x2042U, 0x3001U, 0x3104U, 0x3105U, 0x3108U, 0x3201U, 0x4001U,
                              0x9603U, 0xFFFFFFFFU}) {
        const model_brief *row = klov_printer_model_brief_find_by_id(id);
        ASSERT_NE(row, nullptr) << id;
        int32_t result = 0;
        filled(*row, &result);
        EXPECT_EQ(result, KLOV_E_UNKNOWN_MODEL) << id;
    }
}

TEST(Family, ClassWordHasTheIdsLowByteInBits16To23)
{
    model_brief row = *klov_printer_model_brief_find_by_id(0x1003);
    int32_t result = 0;
    EXPECT_EQ(filled(row, &result).type, 0x30201U);
    row.type = 0;
    for (uint32_t low = 0; low < 256; low++) {
        row.id = 0x1200 + low;
        EXPECT_EQ(filled(row, &result).type, low << 16);
    }
}

// The encoder for the page-mode print area has a form for printers whose class word says 0x1102 in its upper half. No
// catalogue model makes such a word (only the id's low byte goes in); callers that build their own do.
TEST(Family, NoModelsClassWordSelectsTheLongPrintAreaForm)
{
    for (const model_brief &row : model_rows) {
        int32_t result = 0;
        EXPECT_NE(filled(row, &result).type >> 16, 0x1102U);
    }
}

TEST(Family, TheTwoFontTextsAreTheSame)
{
    EXPECT_STREQ(FONTS_DEFAULT, default_fonts);
    EXPECT_STREQ(FONTS_2, default_fonts);
}

// Delivered with the product data and given to no model.
TEST(Family, TheLongBarCodeSetIsNeverAssigned)
{
    EXPECT_STREQ(BARCODESET_2, "UPC-A,UPC-E,EAN8,EAN13,CODE39,ITF,CODEBAR,CODE128,CODE93,QRCODE,PDF417");
    for (const model_brief &row : model_rows) {
        int32_t result = 0;
        EXPECT_EQ(filled(row, &result).barcode_set, BARCODESET_DEFAULT);
    }
}

// The list texts are variables: what they point to when a model is filled is what it gets.
TEST(Family, ListTextsCanBeExchanged)
{
    const char *const fonts = FONTS_2;
    const char *const area = PAGEMODE_AREA_DEFAULT;
    const char *const bar_codes = BARCODESET_DEFAULT;
    FONTS_2 = "C,8,16,437;";
    PAGEMODE_AREA_DEFAULT = "384,600";
    BARCODESET_DEFAULT = "EAN8";
    int32_t result = 0;
    const printer_model fine = filled(*klov_printer_model_brief_find_by_id(0x1001), &result);
    const printer_model other = filled(*klov_printer_model_brief_find_by_id(0x1011), &result);
    FONTS_2 = fonts;
    PAGEMODE_AREA_DEFAULT = area;
    BARCODESET_DEFAULT = bar_codes;
    EXPECT_STREQ(fine.fonts, "C,8,16,437;");
    EXPECT_STREQ(fine.pagemode_area, "576,936");
    EXPECT_STREQ(other.fonts, default_fonts);
    EXPECT_STREQ(other.pagemode_area, "384,600");
    EXPECT_STREQ(other.barcode_set, "EAN8");
}
