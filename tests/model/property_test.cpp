// The property queries, over every key, model and buffer size.
#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <string>

#include "model/instance.h"
#include "tests/model/delivered.h"
#include "tests/model/memory.h"

namespace {

constexpr int32_t unset = 0x5A5A5A5A;
constexpr int32_t largest = 40;

using query = int32_t (*)(const printer_model *, int32_t, int32_t *, void *, int32_t, int32_t *);

// What one query left behind.
struct answer {
    int32_t result = unset;
    int32_t type = unset;
    int32_t length = unset;
    std::string buffer = std::string(largest + 8, '#');
};

answer ask(query function, const printer_model &model, int32_t key, int32_t size)
{
    answer got;
    got.result = function(&model, key, &got.type, got.buffer.data(), size, &got.length);
    return got;
}

// The buffer after `written` was stored at its start.
std::string buffer_with(const std::string &written)
{
    return written + std::string(answer().buffer.size() - written.size(), '#');
}

printer_model model_of(const model_brief &row)
{
    printer_model model = {};
    model.size = sizeof model;
    model_set_properties(&row, &model);
    return model;
}

printer_model qx_100()
{
    return model_of(*klov_printer_model_brief_find_by_name("QX-100"));
}

struct IdProperty : testing::Test {
    void TearDown() override
    {
        for (printer_model *&slot : models_table) {
            klov_printer_model_destroy(slot);
            slot = nullptr;
        }
    }
};

}  // namespace

TEST(Property, IdIsAnIntLeastSignificantByteFirst)
{
    for (const query function : {klov_printer_model_get_property, klov_printer_model_get_property_wchar}) {
        for (const model_brief &row : model_rows) {
            std::string bytes;
            for (uint32_t shift = 0; shift < 32; shift += 8) {
                bytes.push_back(static_cast<char>(static_cast<uint8_t>(row.id >> shift)));
            }
            bytes.resize(largest, '\0');
            for (int32_t size = 1; size <= largest; size++) {
                const answer got = ask(function, model_of(row), MODEL_PROP_ID, size);
                ASSERT_EQ(got.result, KLOV_OK);
                ASSERT_EQ(got.type, MODEL_PROPTYPE_INT);
                ASSERT_EQ(got.length, 4);
                ASSERT_EQ(got.buffer, buffer_with(bytes.substr(0, static_cast<size_t>(size))));
            }
        }
    }
}

TEST(Property, IdIntoTwoBytesStoresTheTwoLowBytesAndReportsFour)
{
    const answer got = ask(klov_printer_model_get_property, qx_100(), MODEL_PROP_ID, 2);
    EXPECT_EQ(got.buffer, buffer_with("\x01\x10"));
    EXPECT_EQ(got.length, 4);
}

TEST(Property, StringsAreCutToTheBufferWithoutATerminator)
{
    for (const model_brief &row : model_rows) {
        const printer_model model = model_of(row);
        for (const auto &[key, text] : {std::pair{MODEL_PROP_NAME, std::string(model.model_name)},
                                        {MODEL_PROP_PAGEMODE_AREA, model.pagemode_area}}) {
            for (int32_t size = 1; size <= largest; size++) {
                const answer got = ask(klov_printer_model_get_property, model, key, size);
                ASSERT_EQ(got.result, KLOV_OK);
                ASSERT_EQ(got.type, MODEL_PROPTYPE_STRING);
                ASSERT_EQ(got.length, static_cast<int32_t>(text.size()));
                ASSERT_EQ(got.buffer, buffer_with(text.substr(0, static_cast<size_t>(size))));
            }
        }
    }
}

TEST(Property, NameIntoAShorterBufferIsTruncatedAndReportsItsFullLength)
{
    const answer got = ask(klov_printer_model_get_property, qx_100(), MODEL_PROP_NAME, 4);
    EXPECT_EQ(got.buffer, buffer_with("QX-1"));
    EXPECT_EQ(got.length, 6);
}

TEST(Property, FeatureFlagIsABoolOfOneByte)
{
    for (const query function : {klov_printer_model_get_property, klov_printer_model_get_property_wchar}) {
        printer_model model = qx_100();
        for (int value = 0; value < 256; value++) {
            model.feature_flag = static_cast<uint8_t>(value);
            for (const int32_t size : {1, 2, largest}) {
                const answer got = ask(function, model, MODEL_PROP_FEATURE_FLAG, size);
                ASSERT_EQ(got.result, KLOV_OK);
                ASSERT_EQ(got.type, MODEL_PROPTYPE_BOOL);
                ASSERT_EQ(got.length, 1);
                ASSERT_EQ(got.buffer, buffer_with(std::string(1, static_cast<char>(value))));
            }
        }
    }
}

TEST(Property, OnlyFourKeysExistAndOthersWriteNothing)
{
    for (const query function : {klov_printer_model_get_property, klov_printer_model_get_property_wchar}) {
        const auto refused = [&](int32_t key) {
            const answer got = ask(function, qx_100(), key, largest);
            return got.result == KLOV_E_PARAMETER && got.type == unset && got.length == unset &&
                   got.buffer == buffer_with("");
        };
        for (int32_t key = -300; key <= 600; key++) {
            const bool known = key == 1 || key == 2 || key == 129 || key == 130;
            ASSERT_EQ(refused(key), !known) << key;
        }
        for (const int32_t key : {INT32_MIN, INT32_MAX, 0x10001, 0x10082}) {
            EXPECT_TRUE(refused(key)) << key;
        }
    }
}

TEST(Property, RefusesBadArguments)
{
    for (const query function : {klov_printer_model_get_property, klov_printer_model_get_property_wchar}) {
        const printer_model model = qx_100();
        char buffer[8] = "before";
        int32_t type = unset;
        int32_t length = unset;
        EXPECT_EQ(function(nullptr, MODEL_PROP_ID, &type, buffer, 8, &length), KLOV_E_PARAMETER);
        EXPECT_EQ(function(&model, MODEL_PROP_ID, nullptr, buffer, 8, &length), KLOV_E_PARAMETER);
        EXPECT_EQ(function(&model, MODEL_PROP_ID, &type, nullptr, 8, nullptr), KLOV_E_PARAMETER);
        for (const int32_t size : {0, -1, INT32_MIN}) {
            EXPECT_EQ(function(&model, MODEL_PROP_ID, &type, buffer, size, &length), KLOV_E_PARAMETER);
        }
        for (const size_t size : {size_t{0}, sizeof model - 1, sizeof model + 1}) {
            printer_model foreign = model;
            foreign.size = static_cast<uint32_t>(size);
            EXPECT_EQ(function(&foreign, MODEL_PROP_ID, &type, buffer, 8, &length), KLOV_E_PARAMETER);
        }
        EXPECT_STREQ(buffer, "before");
        EXPECT_EQ(type, unset);
        EXPECT_EQ(length, unset);
    }
}

TEST(Property, EitherOutputMayBeMissing)
{
    for (const query function : {klov_printer_model_get_property, klov_printer_model_get_property_wchar}) {
        const bool wide = function == klov_printer_model_get_property_wchar;
        const printer_model model = qx_100();
        for (const auto &[key, written, narrow_length] :
             {std::tuple{MODEL_PROP_ID, std::string("\x01\x10\0\0\0\0\0\0", 8), 4},
              {MODEL_PROP_NAME, std::string("QX-100"), 6},
              {MODEL_PROP_FEATURE_FLAG, std::string("\x01"), 1},
              {MODEL_PROP_PAGEMODE_AREA, std::string("576,936"), 7}}) {
            answer got;
            EXPECT_EQ(function(&model, key, &got.type, got.buffer.data(), 8, nullptr), KLOV_OK);
            EXPECT_EQ(got.buffer, buffer_with(written));

            const bool doubled = wide && (key == MODEL_PROP_NAME || key == MODEL_PROP_PAGEMODE_AREA);
            for (const int32_t size : {INT32_MIN, 0, 8}) {
                EXPECT_EQ(function(&model, key, &got.type, nullptr, size, &got.length), KLOV_OK);
                EXPECT_EQ(got.length, doubled ? 2 * narrow_length : narrow_length);
            }
        }
    }
}

// Callers of the wide query have always got the narrow text and a doubled length, and halve it.
TEST(WideProperty, StringsStayNarrowWithADoubledLength)
{
    for (const model_brief &row : model_rows) {
        const printer_model model = model_of(row);
        for (const int32_t key : {MODEL_PROP_NAME, MODEL_PROP_PAGEMODE_AREA}) {
            for (int32_t size = 1; size <= largest; size++) {
                const answer narrow = ask(klov_printer_model_get_property, model, key, size);
                const answer wide = ask(klov_printer_model_get_property_wchar, model, key, size);
                ASSERT_EQ(wide.result, KLOV_OK);
                ASSERT_EQ(wide.type, MODEL_PROPTYPE_STRING);
                ASSERT_EQ(wide.length, 2 * narrow.length);
                ASSERT_EQ(wide.buffer, narrow.buffer);
            }
        }
    }
}

TEST(WideProperty, TextOfManyBytesACharacterStaysNarrowToo)
{
    const char *const name = "\xF0\x9F\x96\xA8\xF0\x9F\xA7\xBE\xE7\xA5\xA8";
    const std::string previous = setlocale(LC_ALL, nullptr);
    const bool utf8 = setlocale(LC_ALL, "C.UTF-8") != nullptr;
    printer_model model = qx_100();
    model.model_name = name;
    for (int32_t size = 1; size <= largest; size++) {
        const answer got = ask(klov_printer_model_get_property_wchar, model, MODEL_PROP_NAME, size);
        EXPECT_EQ(got.result, KLOV_OK);
        EXPECT_EQ(got.length, 22);
        EXPECT_EQ(got.buffer, buffer_with(std::string(name).substr(0, static_cast<size_t>(size))));
    }
    setlocale(LC_ALL, previous.c_str());
    EXPECT_TRUE(utf8) << "this system has no C.UTF-8; the conversion was refused for its bytes, not for its room";
}

TEST(WideProperty, ReadsNoFurtherThanTheTextInTheBuffer)
{
    // Exactly as large as the text and on the heap, so that a sanitizer sees one byte too many.
    const printer_model model = qx_100();
    auto *buffer = new char[6];
    int32_t type = unset;
    int32_t length = unset;
    EXPECT_EQ(klov_printer_model_get_property_wchar(&model, MODEL_PROP_NAME, &type, buffer, 6, &length), KLOV_OK);
    EXPECT_EQ(std::string(buffer, 6), "QX-100");
    EXPECT_EQ(length, 12);
    delete[] buffer;
}

TEST(WideProperty, MemoryShortageChangesNothing)
{
    for (const int nth : {1, 2}) {
        const calloc_failure failure(nth);
        const answer got = ask(klov_printer_model_get_property_wchar, qx_100(), MODEL_PROP_NAME, largest);
        EXPECT_EQ(got.result, KLOV_OK);
        EXPECT_EQ(got.length, 12);
        EXPECT_EQ(got.buffer, buffer_with("QX-100"));
    }
}

TEST_F(IdProperty, AnswersForTheFirstModelOfTheId)
{
    answer got;
    EXPECT_EQ(
        klov_printer_model_id_get_property(0x1001, MODEL_PROP_NAME, &got.type, got.buffer.data(), largest, &got.length),
        KLOV_OK);
    EXPECT_EQ(got.buffer, buffer_with("QX-100"));
    EXPECT_EQ(got.length, 6);
    EXPECT_EQ(klov_printer_model_id_get_property_wchar(0x1001, MODEL_PROP_NAME, &got.type, got.buffer.data(), largest,
                                                       &got.length),
              KLOV_OK);
    EXPECT_EQ(got.buffer, buffer_with("QX-100"));
    EXPECT_EQ(got.length, 12);
}

TEST_F(IdProperty, AskingTwiceCreatesTheInstanceOnce)
{
    int32_t type = unset;
    int32_t length = unset;
    reset_calloc_calls();
    EXPECT_EQ(klov_printer_model_id_get_property(0x1001, MODEL_PROP_ID, &type, nullptr, 0, &length), KLOV_OK);
    const printer_model *model = models_table[0];
    EXPECT_EQ(klov_printer_model_id_get_property(0x1001, MODEL_PROP_NAME, &type, nullptr, 0, &length), KLOV_OK);
    EXPECT_EQ(models_table[0], model);
    EXPECT_EQ(models_table[1], nullptr);
    EXPECT_EQ(calloc_calls(), 1);
}

TEST_F(IdProperty, AFailingQueryStillLeavesTheInstance)
{
    int32_t length = unset;
    EXPECT_EQ(klov_printer_model_id_get_property(0x1001, MODEL_PROP_ID, nullptr, nullptr, 0, &length),
              KLOV_E_PARAMETER);
    ASSERT_NE(models_table[0], nullptr);
    EXPECT_EQ(models_table[0]->id, 0x1001U);
}

TEST_F(IdProperty, PassesTheCachesFailureOn)
{
    int32_t type = unset;
    int32_t length = unset;
    EXPECT_EQ(klov_printer_model_id_get_property(no_family, MODEL_PROP_ID, &type, nullptr, 0, &length),
              KLOV_E_UNKNOWN_MODEL);
    EXPECT_EQ(klov_printer_model_id_get_property_wchar(no_family, MODEL_PROP_ID, &type, nullptr, 0, &length),
              KLOV_E_UNKNOWN_MODEL);
    {
        const calloc_failure failure(1);
        EXPECT_EQ(klov_printer_model_id_get_property(0x1001, MODEL_PROP_ID, &type, nullptr, 0, &length),
                  KLOV_E_NO_MEMORY);
    }
    {
        const calloc_failure failure(1);
        EXPECT_EQ(klov_printer_model_id_get_property_wchar(0x1001, MODEL_PROP_ID, &type, nullptr, 0, &length),
                  KLOV_E_NO_MEMORY);
    }
    EXPECT_EQ(type, unset);
    EXPECT_EQ(length, unset);
    EXPECT_EQ(models_table[0], nullptr);
}
