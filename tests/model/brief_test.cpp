// The lookups of catalogue rows, and the listing of a manufacturer's models.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "tests/model/delivered.h"
#include "tests/model/memory.h"

namespace {

constexpr int32_t unset = 0x5A5A5A5A;

// What the listing must leave in a buffer of this size, and the total.
struct listing {
    std::string bytes;
    int32_t total = 0;
};

listing expected_listing(const std::string &manufacturer, int32_t size)
{
    listing result;
    for (const model_brief &row : model_rows) {
        const std::string name = row.model_name;
        if (row.manufacturer != manufacturer) {
            continue;
        }
        result.total += static_cast<int32_t>(name.size());
        if (size - static_cast<int32_t>(result.bytes.size()) > static_cast<int32_t>(name.size()) + 2) {
            result.bytes += name + "\t";
        }
    }
    result.bytes.push_back('\0');
    return result;
}

std::set<std::string> manufacturers()
{
    std::set<std::string> result;
    for (const model_brief &row : model_rows) {
        result.insert(row.manufacturer);
    }
    return result;
}

}  // namespace

TEST(FindById, FindsTheFirstRowOfTheFamily)
{
    for (const model_brief &row : model_rows) {
        const model_brief *first = model_rows;
        while (first->id != row.id) {
            first++;
        }
        EXPECT_EQ(klov_printer_model_brief_find_by_id(row.id), first);
    }
    EXPECT_EQ(klov_printer_model_brief_find_by_id(no_family), nullptr);
}

TEST(FindById2, LeavesTheValuesOfTheFamilysLastRow)
{
    for (const model_brief &row : model_rows) {
        const model_brief *last = model_rows + catalogue_rows - 1;
        while (last->id != row.id) {
            last--;
        }
        model_brief out = {};
        EXPECT_EQ(klov_printer_model_brief_find_by_id2(row.id, &out), KLOV_OK);
        EXPECT_EQ(out.id, row.id);
        EXPECT_EQ(out.model_name, last->model_name);
        EXPECT_EQ(out.description, last->description);
        EXPECT_EQ(out.width, last->width);
    }
}

TEST(FindById2, DiffersFromFindByIdOnASharedId)
{
    model_brief out = {};
    ASSERT_EQ(klov_printer_model_brief_find_by_id2(0x1001, &out), KLOV_OK);
    EXPECT_STRNE(out.model_name, klov_printer_model_brief_find_by_id(0x1001)->model_name);
}

TEST(FindById2, LeavesTheOtherFieldsAlone)
{
    model_brief out = {1, "m", "n", "i", "d", 2, 3, 4, 5, 6.0F};
    EXPECT_EQ(klov_printer_model_brief_find_by_id2(0x1001, &out), KLOV_OK);
    EXPECT_STREQ(out.manufacturer, "m");
    EXPECT_STREQ(out.identity, "i");
    EXPECT_EQ(out.type, 2U);
    EXPECT_EQ(out.flags_a, 4U);
    EXPECT_EQ(out.flags_b, 5U);
    EXPECT_EQ(out.unit_factor, 6.0F);
}

// Callers take 0 for an id without rows and look at their own record, unlike with the other lookups.
TEST(FindById2, SucceedsWithoutARowAndTouchesNothing)
{
    model_brief out = {1, "m", "n", "i", "d", 2, 3, 4, 5, 6.0F};
    EXPECT_EQ(klov_printer_model_brief_find_by_id2(no_family, &out), KLOV_OK);
    EXPECT_EQ(out.id, 1U);
    EXPECT_STREQ(out.model_name, "n");
    EXPECT_STREQ(out.description, "d");
    EXPECT_EQ(out.width, 3);
}

TEST(FindById2, RefusesANullRecord)
{
    EXPECT_EQ(klov_printer_model_brief_find_by_id2(0x1001, nullptr), KLOV_E_PARAMETER);
    EXPECT_EQ(klov_printer_model_brief_find_by_id2(no_family, nullptr), KLOV_E_PARAMETER);
}

TEST(FindByName, FindsTheFirstRowOfEveryName)
{
    for (const model_brief &row : model_rows) {
        const model_brief *first = model_rows;
        while (strcmp(first->model_name, row.model_name) != 0) {
            first++;
        }
        EXPECT_EQ(klov_printer_model_brief_find_by_name(row.model_name), first);
    }
}

TEST(FindByIdentity, FindsTheFirstRowOfEveryIdentity)
{
    for (const model_brief &row : model_rows) {
        const model_brief *first = model_rows;
        while (strcmp(first->identity, row.identity) != 0) {
            first++;
        }
        EXPECT_EQ(klov_printer_model_brief_find_by_identity(row.identity), first);
    }
}

TEST(FindByName, IsCaseSensitive)
{
    EXPECT_NE(klov_printer_model_brief_find_by_name("QX-100"), nullptr);
    EXPECT_EQ(klov_printer_model_brief_find_by_name("qx-100"), nullptr);
    EXPECT_EQ(klov_printer_model_brief_find_by_name("QX-10"), nullptr);
    EXPECT_EQ(klov_printer_model_brief_find_by_name("QX-100 "), nullptr);
    EXPECT_NE(klov_printer_model_brief_find_by_identity("Acme QX-100"), nullptr);
    EXPECT_EQ(klov_printer_model_brief_find_by_identity("ACME QX-100"), nullptr);
}

TEST(FindByName, UnknownFindsTheClosingRow)
{
    const model_brief *row = klov_printer_model_brief_find_by_name("unknown");
    ASSERT_EQ(row, &model_rows[catalogue_rows - 1]);
    EXPECT_EQ(row->id, 0xFFFFFFFFU);
    EXPECT_EQ(row->width, 0);
}

TEST(GetInfoById, GivesNameRawTypeAndWidthOfTheFirstRow)
{
    for (const model_brief &any : model_rows) {
        const model_brief *row = klov_printer_model_brief_find_by_id(any.id);
        const char *name = nullptr;
        int32_t type = unset;
        int32_t width = unset;
        EXPECT_EQ(klov_printer_model_get_info_by_id(any.id, &name, &type, &width), KLOV_OK);
        EXPECT_EQ(name, row->model_name);
        EXPECT_EQ(static_cast<uint32_t>(type), row->type);
        EXPECT_EQ(width, row->width);
    }
}

TEST(GetInfoById, AbsentIdGivesUnknownModelAndStoresNothing)
{
    const char *name = "before";
    int32_t type = unset;
    int32_t width = unset;
    EXPECT_EQ(klov_printer_model_get_info_by_id(no_family, &name, &type, &width), KLOV_E_UNKNOWN_MODEL);
    EXPECT_STREQ(name, "before");
    EXPECT_EQ(type, unset);
    EXPECT_EQ(width, unset);
}

TEST(GetInfoByName, GivesRawTypeAndWidth)
{
    int32_t type = unset;
    int32_t width = unset;
    EXPECT_EQ(klov_printer_model_get_info_by_name("QX-100", &type, &width), KLOV_OK);
    EXPECT_EQ(type, 0x201);
    EXPECT_EQ(width, 576);
    EXPECT_EQ(klov_printer_model_get_info_by_name("unknown", &type, &width), KLOV_OK);
    EXPECT_EQ(type, -1);
    EXPECT_EQ(width, 0);
}

TEST(GetInfoByName, AbsentNameGivesUnknownModelAndStoresNothing)
{
    int32_t type = unset;
    int32_t width = unset;
    EXPECT_EQ(klov_printer_model_get_info_by_name("qx-100", &type, &width), KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(type, unset);
    EXPECT_EQ(width, unset);
}

TEST(Listing, AcmesTwoModels)
{
    char buffer[64];
    int32_t total = unset;
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames("Acme", buffer, sizeof buffer, &total), KLOV_OK);
    EXPECT_STREQ(buffer, "QX-100\tQX-200\t");
    EXPECT_EQ(total, 12);
}

TEST(Listing, EveryManufacturerIntoEverySizeAndNotAByteMore)
{
    for (const std::string &manufacturer : manufacturers()) {
        const int32_t enough = static_cast<int32_t>(expected_listing(manufacturer, INT32_MAX).bytes.size()) + 3;
        for (int32_t size = -2; size <= enough; size++) {
            const listing expected = expected_listing(manufacturer, size);
            std::string buffer(1024, '#');
            int32_t total = unset;
            ASSERT_EQ(klov_printer_model_get_manufacture_modelnames(manufacturer.c_str(), buffer.data(), size, &total),
                      KLOV_OK);
            ASSERT_EQ(total, expected.total);
            ASSERT_EQ(buffer, expected.bytes + std::string(1024 - expected.bytes.size(), '#'))
                << manufacturer << " into " << size;
        }
    }
}

TEST(Listing, NoRowsGivesMinusOneTotalZeroAndANul)
{
    char buffer[4] = "abc";
    int32_t total = unset;
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames("acme", buffer, sizeof buffer, &total), -1);
    EXPECT_EQ(total, 0);
    EXPECT_EQ(std::string(buffer, 4), std::string("\0bc\0", 4));
}

// Callers ask with a small buffer first and size the next one by the total.
TEST(Listing, BufferTooSmallForTheFirstNameGetsOnlyTheNulAndTheFullTotal)
{
    char buffer[8] = "abcdefg";
    int32_t total = unset;
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames("Acme", buffer, 8, &total), KLOV_OK);
    EXPECT_EQ(std::string(buffer, 8), std::string("\0bcdefg\0", 8));
    EXPECT_EQ(total, 12);
}

TEST(Listing, ANameThatDoesNotFitIsSkippedAndALaterShorterOneIsNot)
{
    // Brelvik's BVK-210 has a longer name than a later model, BVK-C1. A name also needs one byte more than itself, its
    // tab and the NUL.
    const std::string skipped = "BVK-210";
    std::string before;
    std::string later;
    bool behind = false;
    for (const model_brief &row : model_rows) {
        const std::string name = row.model_name;
        if (std::string(row.manufacturer) != "Brelvik") {
            continue;
        }
        behind = behind || name == skipped;
        if (!behind) {
            before += name + "\t";
        } else if (later.empty() && name.size() < skipped.size()) {
            later = name;
        }
    }
    ASSERT_NE(later, "");
    char buffer[256];
    int32_t total = unset;
    const auto short_by_one = static_cast<int32_t>(before.size() + skipped.size() + 2);
    ASSERT_EQ(klov_printer_model_get_manufacture_modelnames("Brelvik", buffer, short_by_one, &total), KLOV_OK);
    EXPECT_EQ(buffer, before + later + "\t");
    ASSERT_EQ(klov_printer_model_get_manufacture_modelnames("Brelvik", buffer, short_by_one + 1, &total), KLOV_OK);
    EXPECT_EQ(buffer, before + skipped + "\t");
}

TEST(Listing, TheEmptyManufacturerListsTheUnbrandedModels)
{
    char buffer[128];
    int32_t total = unset;
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames("", buffer, sizeof buffer, &total), KLOV_OK);
    std::string names;
    for (const model_brief &row : model_rows) {
        names += *row.manufacturer == '\0' ? std::string(row.model_name) + "\t" : "";
    }
    EXPECT_EQ(buffer, names);
}

TEST(Listing, NullBufferOnlyCounts)
{
    int32_t total = unset;
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames("Acme", nullptr, 64, &total), KLOV_OK);
    EXPECT_EQ(total, 12);
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames("Nobody", nullptr, 64, &total), -1);
    EXPECT_EQ(total, 0);
}

// Callers in the field read what they get here as narrow text: success must not convert.
TEST(WideListing, SuccessLeavesTheNarrowText)
{
    for (const std::string &manufacturer : manufacturers()) {
        for (const int32_t size : {0, 1, 7, 8, 9, 64, 1024}) {
            std::vector<wchar_t> buffer(512, L'#');
            std::vector<wchar_t> narrow = buffer;
            int32_t total = unset;
            int32_t narrow_total = unset;
            ASSERT_EQ(klov_printer_model_get_manufacture_modelnames(
                          manufacturer.c_str(), reinterpret_cast<char *>(narrow.data()), size, &narrow_total),
                      KLOV_OK);
            ASSERT_EQ(
                klov_printer_model_get_manufacture_modelnames_wchar(manufacturer.c_str(), buffer.data(), size, &total),
                0);
            ASSERT_EQ(buffer, narrow);
            ASSERT_EQ(total, narrow_total);
        }
    }
}

TEST(WideListing, NoRowsGivesOneAndAZeroedBuffer)
{
    for (int32_t size = 1; size <= 40; size++) {
        std::vector<wchar_t> buffer(16, L'#');
        int32_t total = unset;
        ASSERT_EQ(klov_printer_model_get_manufacture_modelnames_wchar("Nobody", buffer.data(), size, &total), 1);
        ASSERT_EQ(total, 0);
        const char *bytes = reinterpret_cast<const char *>(buffer.data());
        const std::vector<wchar_t> untouched(16, L'#');
        std::string expected(reinterpret_cast<const char *>(untouched.data()), 16 * sizeof(wchar_t));
        memset(expected.data(), 0, static_cast<size_t>(size));
        ASSERT_EQ(std::string(bytes, 16 * sizeof(wchar_t)), expected) << size;
    }
}

TEST(WideListing, NoRowsWithASizeOfNothingStoresOnlyTheNul)
{
    for (const int32_t size : {0, -1, INT32_MIN}) {
        char bytes[2 * sizeof(wchar_t)];
        memset(bytes, '#', sizeof bytes);
        wchar_t buffer[2];
        memcpy(buffer, bytes, sizeof bytes);
        int32_t total = unset;
        EXPECT_EQ(klov_printer_model_get_manufacture_modelnames_wchar("Nobody", buffer, size, &total), 1);
        bytes[0] = '\0';
        EXPECT_EQ(memcmp(buffer, bytes, sizeof bytes), 0);
    }
}

TEST(WideListing, NullBufferGivesTheCountOrOne)
{
    int32_t total = unset;
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames_wchar("Acme", nullptr, 64, &total), 0);
    EXPECT_EQ(total, 12);
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames_wchar("Nobody", nullptr, 64, &total), 1);
    EXPECT_EQ(total, 0);
}

TEST(WideListing, MemoryShortageChangesNothing)
{
    wchar_t buffer[4] = {1, 2, 3, 4};
    int32_t total = unset;
    const calloc_failure failure(1);
    EXPECT_EQ(klov_printer_model_get_manufacture_modelnames_wchar("Nobody", buffer, sizeof buffer, &total), 1);
    for (const wchar_t c : buffer) {
        EXPECT_EQ(c, L'\0');
    }
}
