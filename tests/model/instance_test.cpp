// Model instances: creators, refills, the cache behind the id queries, memory shortage.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "model/instance.h"
#include "tests/model/delivered.h"
#include "tests/model/memory.h"

namespace {

printer_model *create(const char *model_name)
{
    printer_model *model = nullptr;
    EXPECT_EQ(klov_printer_model_creator2(model_name, &model), KLOV_OK) << model_name;
    return model;
}

// A record of a caller's own, recognisable wherever it is not filled.
printer_model callers_record()
{
    printer_model model;
    memset(&model, 0x5A, sizeof model);
    model.size = sizeof model;
    model.spare_list = "the caller's";
    return model;
}

struct ModelCache : testing::Test {
    void TearDown() override
    {
        for (printer_model *&slot : models_table) {
            klov_printer_model_destroy(slot);
            slot = nullptr;
        }
    }
};

}  // namespace

TEST(Creator, MakesTheFirstModelOfAnId)
{
    for (const model_brief &row : model_rows) {
        printer_model *model = nullptr;
        ASSERT_EQ(klov_printer_model_creator(row.id, &model), KLOV_OK);
        EXPECT_EQ(model->size, sizeof(printer_model));
        EXPECT_EQ(model->id, row.id);
        EXPECT_EQ(model->model_name, klov_printer_model_brief_find_by_id(row.id)->model_name);
        EXPECT_EQ(model->spare_list, nullptr);
        klov_printer_model_destroy(model);
    }
}

TEST(Creator, MakesEveryModelByNameAndByIdentity)
{
    for (const model_brief &row : model_rows) {
        printer_model *model = create(row.model_name);
        ASSERT_NE(model, nullptr);
        EXPECT_EQ(model->identity, klov_printer_model_brief_find_by_name(row.model_name)->identity);
        klov_printer_model_destroy(model);

        ASSERT_EQ(klov_printer_model_creator_by_identity(row.identity, &model), KLOV_OK);
        EXPECT_STREQ(model->identity, row.identity);
        klov_printer_model_destroy(model);
    }
}

TEST(Creator, NotInTheCatalogueGivesUnknownModelAndNull)
{
    printer_model dummy = {};
    printer_model *model = &dummy;
    EXPECT_EQ(klov_printer_model_creator(no_family, &model), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(model, nullptr);
    model = &dummy;
    EXPECT_EQ(klov_printer_model_creator2("qx-100", &model), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(model, nullptr);
    model = &dummy;
    EXPECT_EQ(klov_printer_model_creator_by_identity("QX-100", &model), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(model, nullptr);
}

TEST(Creator, MemoryShortageGivesNoMemoryAndNull)
{
    printer_model dummy = {};
    printer_model *model = &dummy;
    {
        const calloc_failure failure(1);
        EXPECT_EQ(klov_printer_model_creator(0x1001, &model), KLOV_E_NO_MEMORY);
        EXPECT_EQ(model, nullptr);
    }
    model = &dummy;
    {
        const calloc_failure failure(1);
        EXPECT_EQ(klov_printer_model_creator2("QX-100", &model), KLOV_E_NO_MEMORY);
        EXPECT_EQ(model, nullptr);
    }
    model = &dummy;
    {
        const calloc_failure failure(1);
        EXPECT_EQ(klov_printer_model_creator_by_identity("Acme QX-100", &model), KLOV_E_NO_MEMORY);
        EXPECT_EQ(model, nullptr);
    }
}

TEST(Creator, RefusesANullOutput)
{
    EXPECT_EQ(klov_printer_model_creator(0x1001, nullptr), KLOV_E_PARAMETER);
    EXPECT_EQ(klov_printer_model_creator2("QX-100", nullptr), KLOV_E_PARAMETER);
    EXPECT_EQ(klov_printer_model_creator_by_identity("Acme QX-100", nullptr), KLOV_E_PARAMETER);
}

TEST(Creator, UnknownIsAValidModelWithTheDefaults)
{
    printer_model *model = create("unknown");
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->id, 0xFFFFFFFFU);
    EXPECT_EQ(model->width, 0);
    EXPECT_STREQ(model->pagemode_area, "");
    EXPECT_EQ(model->feature_flag, 0);
    EXPECT_EQ(model->motion_v, 0.125F);
    klov_printer_model_destroy(model);
}

TEST(Creator, AFamilyWithoutPropertiesGetsTheDefaults)
{
    printer_model *model = nullptr;
    ASSERT_EQ(klov_printer_model_creator(0x3201, &model), KLOV_OK);
    EXPECT_STREQ(model->pagemode_area, "");
    EXPECT_EQ(model->feature_flag, 0);
    EXPECT_EQ(model->motion_v, 0.125F);
    klov_printer_model_destroy(model);
}

TEST(Creator, WidthsMakeWholeRasterBytes)
{
    for (const auto &[dots, bytes] : {std::pair{576, 72}, {384, 48}, {1680, 210}}) {
        const model_brief *row = model_rows;
        while (row->width != dots) {
            row++;
        }
        printer_model *model = create(row->model_name);
        ASSERT_NE(model, nullptr);
        EXPECT_EQ(model->width / 8, bytes);
        klov_printer_model_destroy(model);
    }
}

TEST(Refill, GivesWhatACreatorGives)
{
    for (const model_brief &row : model_rows) {
        printer_model *created = create(row.model_name);
        ASSERT_NE(created, nullptr);
        printer_model model = {};
        model.size = sizeof model;
        klov_printer_model_get_by_name(row.model_name, &model);
        // The padding is zero on both sides.
        EXPECT_EQ(memcmp(&model, created, sizeof model), 0) << row.model_name;
        klov_printer_model_destroy(created);

        ASSERT_EQ(klov_printer_model_creator(row.id, &created), KLOV_OK);
        klov_printer_model_get_by_id(row.id, &model);
        EXPECT_EQ(memcmp(&model, created, sizeof model), 0) << row.id;
        klov_printer_model_destroy(created);
    }
}

TEST(Refill, LeavesTheSpareListAlone)
{
    printer_model model = callers_record();
    EXPECT_EQ(klov_printer_model_get_by_id(0x1001, &model), KLOV_OK);
    EXPECT_STREQ(model.spare_list, "the caller's");
    EXPECT_STREQ(model.model_name, "QX-100");
}

TEST(Refill, UnknownGivesUnknownModelYetFillsTheRecord)
{
    printer_model model = callers_record();
    EXPECT_EQ(klov_printer_model_get_by_name("unknown", &model), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(model.id, 0xFFFFFFFFU);
    EXPECT_STREQ(model.model_name, "unknown");
    EXPECT_EQ(model.width, 0);
    EXPECT_EQ(model.dpi, 203);

    model = callers_record();
    EXPECT_EQ(klov_printer_model_get_by_id(0x3201, &model), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(model.id, 0x3201U);
    EXPECT_EQ(model.motion_v, 0.125F);
}

TEST(Refill, WithoutARowTouchesNothing)
{
    printer_model model = callers_record();
    const printer_model before = model;
    EXPECT_EQ(klov_printer_model_get_by_name("nobody", &model), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(klov_printer_model_get_by_id(no_family, &model), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(memcmp(&model, &before, sizeof model), 0);
}

TEST(Refill, RefusesAForeignRecord)
{
    EXPECT_EQ(klov_printer_model_get_by_id(0x1001, nullptr), KLOV_E_PARAMETER);
    EXPECT_EQ(klov_printer_model_get_by_name("QX-100", nullptr), KLOV_E_PARAMETER);
    for (const size_t size : {size_t{0}, sizeof(printer_model) - 1, sizeof(printer_model) + 1}) {
        printer_model model = callers_record();
        model.size = static_cast<uint32_t>(size);
        const printer_model before = model;
        EXPECT_EQ(klov_printer_model_get_by_id(0x1001, &model), KLOV_E_PARAMETER);
        EXPECT_EQ(klov_printer_model_get_by_name("QX-100", &model), KLOV_E_PARAMETER);
        EXPECT_EQ(memcmp(&model, &before, sizeof model), 0);
    }
}

TEST(Destroy, RefusesNull)
{
    EXPECT_EQ(klov_printer_model_destroy(nullptr), KLOV_E_HANDLE);
}

// A record whose tag was overwritten is still memory to give back.
TEST(Destroy, DoesNotLookAtTheSizeTag)
{
    printer_model *model = create("QX-100");
    ASSERT_NE(model, nullptr);
    model->size = 0;
    EXPECT_EQ(klov_printer_model_destroy(model), KLOV_OK);
}

TEST_F(ModelCache, IsEmptyAtStartAndFilledFromTheFront)
{
    for (const printer_model *slot : models_table) {
        ASSERT_EQ(slot, nullptr);
    }
    printer_model *first = nullptr;
    printer_model *second = nullptr;
    EXPECT_EQ(get_model_instance(0x1003, &first), KLOV_OK);
    EXPECT_EQ(get_model_instance(0x1001, &second), KLOV_OK);
    EXPECT_EQ(models_table[0], first);
    EXPECT_EQ(models_table[1], second);
    EXPECT_EQ(models_table[2], nullptr);
    EXPECT_EQ(first->id, 0x1003U);
    EXPECT_EQ(second->id, 0x1001U);
}

TEST_F(ModelCache, AnsweringTheSameIdTwiceCreatesOneInstance)
{
    reset_calloc_calls();
    printer_model *first = nullptr;
    printer_model *second = nullptr;
    EXPECT_EQ(get_model_instance(0x1001, &first), KLOV_OK);
    EXPECT_EQ(get_model_instance(0x1001, &second), KLOV_OK);
    EXPECT_EQ(first, second);
    EXPECT_EQ(calloc_calls(), 1);
    EXPECT_EQ(models_table[1], nullptr);
}

TEST_F(ModelCache, HoldsEveryFamilyAtOnce)
{
    std::set<uint32_t> ids;
    for (const model_brief &row : model_rows) {
        printer_model *model = nullptr;
        ASSERT_EQ(get_model_instance(row.id, &model), KLOV_OK);
        ASSERT_NE(model, nullptr);
        ASSERT_EQ(model->id, row.id);
        ids.insert(row.id);
    }
    EXPECT_NE(models_table[ids.size() - 1], nullptr);
    EXPECT_EQ(models_table[ids.size()], nullptr);
}

TEST_F(ModelCache, FailuresLeaveANullSlotBehind)
{
    printer_model dummy = {};
    printer_model *model = &dummy;
    EXPECT_EQ(get_model_instance(no_family, &model), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(model, nullptr);
    EXPECT_EQ(models_table[0], nullptr);
    model = &dummy;
    {
        const calloc_failure failure(1);
        EXPECT_EQ(get_model_instance(0x1001, &model), KLOV_E_NO_MEMORY);
    }
    EXPECT_EQ(model, nullptr);
    EXPECT_EQ(models_table[0], nullptr);
    EXPECT_EQ(get_model_instance(0x1001, &model), KLOV_OK);
    EXPECT_EQ(models_table[0], model);
}

TEST_F(ModelCache, FullTableSucceedsWithoutAnInstanceAndTheQueryFails)
{
    for (printer_model *&slot : models_table) {
        ASSERT_EQ(klov_printer_model_creator(0x1002, &slot), KLOV_OK);
    }
    printer_model dummy = {};
    printer_model *model = &dummy;
    EXPECT_EQ(get_model_instance(0x1001, &model), KLOV_OK);
    EXPECT_EQ(model, nullptr);
    int32_t type = 0;
    int32_t length = 0;
    EXPECT_EQ(klov_printer_model_id_get_property(0x1001, MODEL_PROP_ID, &type, nullptr, 0, &length), KLOV_E_PARAMETER);
    EXPECT_EQ(klov_printer_model_id_get_property_wchar(0x1001, MODEL_PROP_ID, &type, nullptr, 0, &length),
              KLOV_E_PARAMETER);
    EXPECT_EQ(get_model_instance(0x1002, &model), KLOV_OK);
    EXPECT_EQ(model, models_table[0]);
}

TEST_F(ModelCache, DetachOfAnEmptyCacheSucceeds)
{
    EXPECT_EQ(klov_printer_model_detach(), KLOV_OK);
}

// It is the library's last call: nobody reads the slots after it, so they are not cleared.
TEST_F(ModelCache, DetachDestroysTheInstancesAndLeavesTheSlots)
{
    printer_model *model = nullptr;
    ASSERT_EQ(get_model_instance(0x1001, &model), KLOV_OK);
    ASSERT_EQ(get_model_instance(0x1002, &model), KLOV_OK);
    const auto first = reinterpret_cast<uintptr_t>(models_table[0]);
    const auto second = reinterpret_cast<uintptr_t>(models_table[1]);
    EXPECT_EQ(klov_printer_model_detach(), KLOV_OK);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(models_table[0]), first);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(models_table[1]), second);
    models_table[0] = nullptr;
    models_table[1] = nullptr;
}
