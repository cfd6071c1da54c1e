// The model catalogue: figures of the models that it was first delivered with, and what holds for every row.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "tests/model/delivered.h"

namespace {

constexpr size_t closing_row = catalogue_rows - 1;

// Every model, the closing row left out.
std::span<const model_brief> models()
{
    return {model_rows, closing_row};
}

bool is_same(const model_brief &one, const model_brief &other)
{
    const auto equal = [](const char *a, const char *b) { return std::string_view(a) == b; };
    return one.id == other.id && equal(one.manufacturer, other.manufacturer) &&
           equal(one.model_name, other.model_name) && equal(one.identity, other.identity) &&
           equal(one.description, other.description) && one.type == other.type && one.width == other.width &&
           one.flags_a == other.flags_a && one.flags_b == other.flags_b && one.unit_factor == other.unit_factor;
}

// One line of the class table: so many rows of this class have this type; `widths` are all that may and must occur.
struct class_line {
    const char *phrase;
    uint32_t type;
    size_t rows;
    std::set<int32_t> widths;
};

const std::vector<class_line> class_table = {
    {"Receipt Printer", 0x201, 57, {576}},
    {"Receipt Printer", 0x401, 33, {384, 432, 576, 1680, 2376}},
    {"Label/Receipt Printer", 0x40, 23, {576}},
    {"Label/Receipt Printer", 0x42, 1, {576}},
    {"Label/Receipt Printer", 0x1, 8, {384, 576}},
    {"Label/Receipt Printer", 0x3, 4, {384, 576}},
    {"Label Printer", 0x2, 27, {848, 864}},
    {"Label Printer", 0x8, 1, {864}},
    {"Label Printer", 0x38, 1, {848}},
    {"Label Printer", 0x401, 1, {576}},
    {"Receipt Control Board", 0x101, 5, {384, 576}},
    {"Receipt Control Board", 0x1, 2, {576}},
    {"Receipt Control Board", 0x201, 1, {576}},
    {"Receipt Control Board", 0x401, 1, {384}},
    {"Receipt Control Board", 0x1101, 1, {576}},
    {"Label Control Board", 0x1201, 3, {384, 448}},
    {"Mobile Printer", 0x401, 2, {384}},
    {"Mobile Printer", 0x201, 1, {384}},
    {"", 0x401, 1, {576}},
};

bool ends_with_phrase(const std::string &description, const std::string &phrase)
{
    return description.ends_with(" " + phrase);
}

std::string class_of(const model_brief &row)
{
    for (const class_line &line : class_table) {
        if (*line.phrase != '\0' && ends_with_phrase(row.description, line.phrase)) {
            return line.phrase;
        }
    }
    return "";
}

std::string ruled_identity(const model_brief &row)
{
    return *row.manufacturer == '\0' ? row.model_name : std::string(row.manufacturer) + " " + row.model_name;
}

template <typename Field>
std::map<std::string, int> counts(Field field)
{
    std::map<std::string, int> result;
    for (const model_brief &row : delivered) {
        result[field(row)]++;
    }
    return result;
}

std::vector<std::string> repeated(const std::map<std::string, int> &counted)
{
    std::vector<std::string> result;
    for (const auto &[text, count] : counted) {
        EXPECT_LE(count, 2) << text;
        if (count == 2) {
            result.push_back(text);
        }
    }
    return result;
}

template <typename Test>
auto count_rows(Test test)
{
    return std::count_if(std::begin(delivered), std::end(delivered), test);
}

}  // namespace

TEST(Catalogue, ClosesWithTheUnknownRow)
{
    const model_brief &last = model_rows[closing_row];
    EXPECT_EQ(last.id, 0xFFFFFFFFU);
    EXPECT_STREQ(last.manufacturer, "Unknown");
    EXPECT_STREQ(last.model_name, "unknown");
    EXPECT_STREQ(last.identity, "");
    EXPECT_STREQ(last.description, "");
    EXPECT_EQ(last.type, 0xFFFFFFFFU);
    EXPECT_EQ(last.width, 0);
    EXPECT_EQ(last.flags_a, 0U);
    EXPECT_EQ(last.flags_b, 0U);
    EXPECT_EQ(last.unit_factor, 0.0F);
    for (const model_brief &row : models()) {
        EXPECT_NE(row.id, 0xFFFFFFFFU);
    }
}

// A lookup takes the first row that matches, so the order counts too. New rows may stand between those delivered.
TEST(Catalogue, KeepsEveryDeliveredModelInItsOrder)
{
    auto row = models().begin();
    for (const model_brief &model : delivered) {
        row =
            std::find_if(row, models().end(), [&](const model_brief &candidate) { return is_same(candidate, model); });
        ASSERT_NE(row, models().end()) << model.identity
                                       << " is not what, or not where, tests/model/delivered.inc says";
        ++row;
    }
}

TEST(Delivered, AreTheModelsOf39Families)
{
    const std::set<uint32_t> expected = {0x1001, 0x1002, 0x1003, 0x1004, 0x1005, 0x1006, 0x1009, 0x1011, 0x1012, 0x1013,
                                         0x1021, 0x1101, 0x1102, 0x1103, 0x1104, 0x1131, 0x1151, 0x1191, 0x1486, 0x1541,
                                         0x1562, 0x1565, 0x1721, 0x1725, 0x1955, 0x1956, 0x2042, 0x3001, 0x3102, 0x3103,
                                         0x3104, 0x3105, 0x3108, 0x3201, 0x3220, 0x4001, 0x9601, 0x9602, 0x9603};
    std::set<uint32_t> found;
    for (const model_brief &row : delivered) {
        found.insert(row.id);
    }
    EXPECT_EQ(std::size(delivered), 173U);
    EXPECT_EQ(expected.size(), 39U);
    EXPECT_EQ(found, expected);
}

TEST(Delivered, Are23ManufacturersTheEmptyOneWithSixRows)
{
    const auto manufacturers = counts([](const model_brief &row) { return row.manufacturer; });
    EXPECT_EQ(manufacturers.size(), 23U);
    EXPECT_EQ(manufacturers.at(""), 6);
    EXPECT_FALSE(manufacturers.contains("Unknown"));
}

TEST(Catalogue, HasTwoAcmeModelsInThisOrder)
{
    std::vector<std::string> names;
    for (const model_brief &row : models()) {
        if (std::string(row.manufacturer) == "Acme") {
            names.emplace_back(row.model_name);
        }
    }
    EXPECT_EQ(names, (std::vector<std::string>{"QX-100", "QX-200"}));
    const model_brief *row = klov_printer_model_brief_find_by_name("QX-100");
    ASSERT_NE(row, nullptr);
    EXPECT_STREQ(row->identity, "Acme QX-100");
    EXPECT_STREQ(row->description, "Acme QX-100 Receipt Printer");
}

TEST(Delivered, EveryClassHasItsRowsTypesAndWidths)
{
    size_t total = 0;
    for (const class_line &line : class_table) {
        size_t rows = 0;
        std::set<int32_t> widths;
        for (const model_brief &row : delivered) {
            if (row.type == line.type && class_of(row) == line.phrase) {
                rows++;
                widths.insert(row.width);
            }
        }
        EXPECT_EQ(rows, line.rows) << line.phrase << " of type " << line.type;
        EXPECT_EQ(widths, line.widths) << line.phrase << " of type " << line.type;
        total += rows;
    }
    EXPECT_EQ(total, std::size(delivered));
}

TEST(Delivered, UnitFactorIsFineOnTheFirst58RowsAndOnOne1191Row)
{
    for (const model_brief &row : std::span(delivered).first(58)) {
        EXPECT_EQ(row.unit_factor, 0.0625F) << row.model_name;
    }
    int fine_1191 = 0;
    for (const model_brief &row : std::span(delivered).subspan(58)) {
        if (row.unit_factor == 0.0625F) {
            EXPECT_EQ(row.id, 0x1191U) << row.model_name;
            fine_1191++;
        } else {
            EXPECT_EQ(row.unit_factor, 0.125F) << row.model_name;
        }
    }
    EXPECT_EQ(fine_1191, 1);
}

TEST(Delivered, TheFirst58RowsAreABoardTheFineReceiptFamiliesAndThe1009Board)
{
    EXPECT_EQ(class_of(delivered[0]), "Receipt Control Board");
    std::set<uint32_t> first_families;
    int boards_1009 = 0;
    for (const model_brief &row : std::span(delivered).subspan(1, 57)) {
        first_families.insert(row.id);
        boards_1009 += row.id == 0x1009 ? 1 : 0;
        EXPECT_EQ(class_of(row), row.id == 0x1009 ? "Receipt Control Board" : "Receipt Printer") << row.model_name;
    }
    EXPECT_EQ(boards_1009, 1);
    EXPECT_EQ(first_families, (std::set<uint32_t>{0x1001, 0x1002, 0x1003, 0x1004, 0x1005, 0x1006, 0x1009}));
    first_families.insert(delivered[0].id);
    for (const model_brief &row : std::span(delivered).subspan(58)) {
        EXPECT_FALSE(first_families.contains(row.id)) << row.model_name;
    }
}

TEST(Catalogue, RowsOfOneFamilyStandTogether)
{
    std::set<uint32_t> closed;
    for (size_t i = 1; i < models().size(); i++) {
        if (models()[i].id != models()[i - 1].id) {
            closed.insert(models()[i - 1].id);
            EXPECT_FALSE(closed.contains(models()[i].id)) << models()[i].model_name;
        }
    }
}

TEST(Delivered, ThreeNamesAndTwoIdentitiesStandTwice)
{
    const auto names = repeated(counts([](const model_brief &row) { return row.model_name; }));
    const auto identities = repeated(counts([](const model_brief &row) { return row.identity; }));
    EXPECT_EQ(names.size(), 3U);
    EXPECT_EQ(identities.size(), 2U);

    int within_one_manufacturer = 0;
    for (const std::string &name : names) {
        std::set<std::string> manufacturers;
        for (const model_brief &row : delivered) {
            if (name == row.model_name) {
                manufacturers.insert(row.manufacturer);
            }
        }
        within_one_manufacturer += manufacturers.size() == 1 ? 1 : 0;
    }
    EXPECT_EQ(within_one_manufacturer, 2);
}

// The CUPS driver files take the name as file name and ShortNickName, on file systems that may ignore case.
TEST(Catalogue, NamesAreUsableInDriverFiles)
{
    std::map<std::string, std::string> by_lower_case;
    for (const model_brief &row : models()) {
        const std::string name = row.model_name;
        EXPECT_TRUE(!name.empty() && name.size() <= 24) << name;
        std::string lower;
        for (const char c : name) {
            const auto byte = static_cast<unsigned char>(c);
            EXPECT_TRUE(std::isalnum(byte) != 0 || c == '-') << name;
            lower.push_back(static_cast<char>(std::tolower(byte)));
        }
        EXPECT_EQ(by_lower_case.emplace(lower, name).first->second, name);
    }
}

TEST(Delivered, MostIdentitiesAndDescriptionsFollowTheRuleAndAFewDoNot)
{
    const auto odd_identities = count_rows([](const model_brief &row) { return row.identity != ruled_identity(row); });
    EXPECT_GE(odd_identities, 2);
    EXPECT_LE(odd_identities, 25);

    const auto odd_descriptions = count_rows([](const model_brief &row) {
        const std::string phrase = class_of(row);
        return !phrase.empty() && row.description != std::string(row.identity) + " " + phrase;
    });
    EXPECT_GE(odd_descriptions, 2);
    EXPECT_LE(odd_descriptions, 25);
}

TEST(Delivered, FlagWordsAreTheKnownOnes)
{
    std::map<uint32_t, size_t> flags_a;
    std::map<uint32_t, size_t> flags_b;
    std::set<std::pair<std::string, uint32_t>> small_models;
    for (const model_brief &row : delivered) {
        flags_a[row.flags_a]++;
        flags_b[row.flags_b]++;
        const bool small =
            row.width == 384 && (class_of(row) == "Receipt Printer" || class_of(row) == "Mobile Printer");
        if (small) {
            small_models.insert({class_of(row), row.flags_a});
        } else {
            EXPECT_EQ(row.flags_a, 0x20D1U) << row.model_name;
        }
    }
    EXPECT_EQ(flags_a.size(), 2U);
    EXPECT_GT(flags_a[0x20D1], std::size(delivered) / 2);
    EXPECT_GT(flags_a[0x2AAF], 0U);
    EXPECT_EQ(small_models.size(), 4U) << "each of the two classes has rows with both words";

    EXPECT_EQ(flags_b.size(), 5U);
    EXPECT_GT(flags_b[0x7008], std::size(delivered) / 2);
    for (const uint32_t rare : {0x7007U, 0x7009U, 0xA101U, 0xA2101U}) {
        EXPECT_GT(flags_b[rare], 0U) << rare;
    }
}

// The printers that take whole lines only must be reachable by name, and must take ESC/POS-type commands at all.
TEST(Delivered, FixedWidthFamiliesCanPrint)
{
    for (const uint32_t id : {0x1955U, 0x1956U}) {
        const auto printing = count_rows([id](const model_brief &row) { return row.id == id && (row.type & 1) != 0; });
        EXPECT_GE(printing, 1) << id;
    }
}
