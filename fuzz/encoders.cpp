// Every command encoder with any arguments, at any place in a buffer of any room. A refusal leaves everything as it
// was; a success writes what it says and nothing else.
#include "fuzz/input.h"

#include <klov/klov.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace {

constexpr uint32_t most_room = 70000;

// Four commands write more than they ask room for; callers know their counting and make room.
struct Habit {
    std::string_view name;
    uint32_t uncounted;  // bytes written behind the old length though the new length does not count them
    uint32_t beyond;     // bytes written beyond the capacity
    uint32_t largest;    // of the numbers that it is called with
};

constexpr Habit habits[] = {
    // A count of -5 to -1: its five header bytes all the same.
    {"klov_cmd_select_bit_image_mode", 5, 5, UINT32_MAX},
    // No room test.
    {"klov_cmd_select_character_code_table", 0, 36, UINT32_MAX},
    // 3 bytes for every 255 lines, neither tested nor counted.
    {"klov_cmd_print_and_reverse_feed_n_line", 63, 63, 255 * 20},
    // Room is asked for the frame alone.
    {"klov_cmd_qr_store_the_data_in_the_symbol_storage_area", 0, most_room + 1000, UINT32_MAX},
};

constexpr Habit habit_of(std::string_view name)
{
    for (const Habit &habit : habits) {
        if (habit.name == name) {
            return habit;
        }
    }
    return {name, 0, 0, UINT32_MAX};
}

// The buffer of one call: somewhere in it the command is to go.
struct Buffer {
    Buffer(fuzz::Input &input, uint32_t beyond)
        : cap(input.number() % most_room), len(input.number() % (cap + 1)), bytes(cap + beyond)
    {
    }

    uint32_t cap;
    uint32_t len;
    fuzz::Fenced bytes;
};

// The arguments of one call, made in their order.
struct Arguments {
    fuzz::Input &input;
    uint32_t largest;
    std::vector<uint8_t> data;
    bool data_given = false;

    template <typename Type>
    Type next()
    {
        if constexpr (std::is_same_v<Type, const uint8_t *>) {
            data_given = true;
            return data.data();
        } else {
            // The number behind the data counts it: told as it is, or negative.
            if (data_given && (std::is_unsigned_v<Type> || input.byte() < 240)) {
                data_given = false;
                return static_cast<Type>(data.size());
            }
            const uint32_t number = input.number();
            if (data_given) {
                return static_cast<Type>(~number | 0x80000000U);
            }
            return static_cast<Type>(largest == UINT32_MAX ? number : number % largest);
        }
    }
};

// Exactly as long as it says, so that no encoder reads on. Image rows come without a count and may need all the room;
// so may the low byte of a negative count.
std::vector<uint8_t> data_for(fuzz::Input &input, bool counted, bool may_be_negative)
{
    const size_t least = may_be_negative ? 256 : 0;
    const size_t size = counted ? input.number() % (most_room + 1000) : most_room;
    const std::vector<uint8_t> front = input.bytes(input.byte());
    std::vector<uint8_t> data(std::max(least, size), input.byte());
    std::copy_n(front.begin(), std::min(front.size(), data.size()), data.begin());
    return data;
}

template <typename... Parameter>
void call(int32_t (*encoder)(Parameter...), const Habit &habit, fuzz::Input &input)
{
    using Types = std::tuple<Parameter...>;
    constexpr size_t count = sizeof...(Parameter);
    constexpr size_t target = count - 3;
    constexpr bool has_data = (std::is_same_v<Parameter, const uint8_t *> || ...);
    constexpr bool counted = !std::is_same_v<std::tuple_element_t<target - 1, Types>, const uint8_t *>;
    constexpr bool may_be_negative = std::is_same_v<std::tuple_element_t<target - 1, Types>, int32_t>;

    Buffer out(input, habit.beyond);
    Arguments arguments{input, habit.largest,
                        has_data ? data_for(input, counted, may_be_negative) : std::vector<uint8_t>()};
    const uint32_t printer_class = input.number() << 1 | (input.byte() % 8 != 0 ? 1U : 0U);
    const uint32_t before = out.len;
    const auto argument = [&]<size_t place>() -> std::tuple_element_t<place, Types> {
        using Type = std::tuple_element_t<place, Types>;
        if constexpr (place == 0) {
            return printer_class;
        } else if constexpr (place < target) {
            return arguments.template next<Type>();
        } else if constexpr (place == target && std::is_pointer_v<Type>) {
            return out.bytes.data();
        } else if constexpr (place == target) {
            return reinterpret_cast<uintptr_t>(out.bytes.data());
        } else if constexpr (place == target + 1) {
            return out.cap;
        } else {
            return &out.len;
        }
    };
    const Types values = [&]<size_t... place>(std::index_sequence<place...>)
    {
        return Types{argument.template operator()<place>()...};
    }
    (std::make_index_sequence<count>());
    const int32_t status = std::apply(encoder, values);

    if (status != KLOV_OK) {
        FUZZ_CHECK(status == KLOV_E_PARAMETER || status == KLOV_E_BUFFER_TOO_SMALL || status == KLOV_E_MODEL_TYPE);
        FUZZ_CHECK(out.len == before);
        FUZZ_CHECK(out.bytes.intact_outside(0, 0));
        return;
    }
    const uint32_t grown = out.len - before;
    FUZZ_CHECK(out.len >= before && out.len <= out.cap + habit.beyond);
    FUZZ_CHECK(out.bytes.intact_outside(before, std::max(grown, habit.uncounted)));
}

// What an input calls an encoder: the folded FNV-1a hash of its name. So kept inputs go on reaching their encoder when
// others come and go.
constexpr uint16_t key_of(std::string_view name)
{
    uint32_t value = 0x811C9DC5;
    for (const char letter : name) {
        value = (value ^ static_cast<uint8_t>(letter)) * 0x01000193U;
    }
    return static_cast<uint16_t>(value >> 16 ^ value);
}

struct Row {
    uint16_t key;
    void (*run)(fuzz::Input &input);
};

#define ROW(encoder) Row{key_of(#encoder), [](fuzz::Input &input) { call(encoder, habit_of(#encoder), input); }},

// Made from the public headers by the build, so that no encoder is left out; sorted by key.
constexpr auto table = [] {
    auto rows = std::to_array<Row>({
#include "encoder_table.inc"
    });
    std::sort(rows.begin(), rows.end(), [](const Row &one, const Row &other) { return one.key < other.key; });
    return rows;
}();
static_assert(table.size() > 150);
static_assert(std::adjacent_find(table.begin(), table.end(),
                                 [](const Row &one, const Row &other) { return one.key == other.key; }) == table.end(),
              "two encoders have the same key: take more bits of the hash");

// The encoder of this key, or of the next one that is taken.
const Row &row_of(uint16_t key)
{
    const auto found =
        std::find_if(table.begin(), table.end(), [key](const Row &candidate) { return candidate.key >= key; });
    return found != table.end() ? *found : table.front();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const uint16_t low = input.byte();
    row_of(static_cast<uint16_t>(low | input.byte() << 8)).run(input);
    return 0;
}
