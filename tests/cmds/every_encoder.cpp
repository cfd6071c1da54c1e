#include "tests/cmds/every_encoder.h"

#include <klov/klov.h>

#include <algorithm>
#include <tuple>
#include <type_traits>
#include <utility>

namespace kit {

namespace {

template <typename Type>
Type as(const Value &value)
{
    if constexpr (std::is_pointer_v<Type>) {
        return value.data;
    } else {
        return static_cast<Type>(value.number);
    }
}

// The buffer travels as an address in one of them.
template <typename Type>
Type as_buffer(uint8_t *buf)
{
    if constexpr (std::is_pointer_v<Type>) {
        return buf;
    } else {
        return reinterpret_cast<Type>(buf);
    }
}

template <auto encoder>
struct Adapter;

template <typename... Parameter, int32_t (*encoder)(Parameter...)>
struct Adapter<encoder> {
    using Types = std::tuple<Parameter...>;
    static constexpr size_t target = sizeof...(Parameter) - 3;

    static int32_t call(uint32_t printer_class, const Value *values, uint8_t *buf, uint32_t cap, uint32_t *len)
    {
        return expand(std::make_index_sequence<target - 1>(), printer_class, values, buf, cap, len);
    }

    template <size_t... place>
    static int32_t expand(std::index_sequence<place...>, uint32_t printer_class, [[maybe_unused]] const Value *values,
                          uint8_t *buf, uint32_t cap, uint32_t *len)
    {
        return encoder(printer_class, as<std::tuple_element_t<place + 1, Types>>(values[place])...,
                       as_buffer<std::tuple_element_t<target, Types>>(buf), cap, len);
    }

    static std::vector<Kind> parameters()
    {
        std::vector<Kind> kinds;
        for (const bool pointer : {std::is_pointer_v<Parameter>...}) {
            const bool counts = !kinds.empty() && kinds.back() == Kind::data;
            kinds.push_back(pointer ? Kind::data : counts ? Kind::size : Kind::number);
        }
        return {kinds.begin() + 1, kinds.begin() + target};
    }
};

#define ROW(encoder) {#encoder, Adapter<encoder>::parameters(), Adapter<encoder>::call},

}  // namespace

bool Encoder::takes_data() const
{
    return std::find(parameters.begin(), parameters.end(), Kind::data) != parameters.end();
}

bool Encoder::is(std::string_view short_name) const
{
    return name.substr(std::string_view("klov_cmd_").size()) == short_name;
}

const std::vector<Encoder> &every_encoder()
{
    static const std::vector<Encoder> all = {
#include "encoder_table.inc"
    };
    return all;
}

uint32_t Numbers::any32()
{
    return static_cast<uint32_t>(random_());
}

uint32_t Numbers::below(uint32_t limit)
{
    return any32() % limit;
}

uint32_t Numbers::any()
{
    static constexpr uint32_t ends[] = {0,      1,       127,        128,        255,        256,
                                        0xFFFF, 0x10000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFFE,
                                        0xFF00, 0x10001, 0xFFFFFFF8, 0xFFFFFFF4};
    const uint32_t kind = below(8);
    if (kind < 4) {
        return below(300);
    }
    return kind < 6 ? ends[below(std::size(ends))] : any32();
}

}  // namespace kit
