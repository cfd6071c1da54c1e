/**
 * \file
 * libklov for C++17 and later: a buffer of commands that grows, over the functions of klov/klov.h.
 *
 * \code
 * klov::buffer job("QX-100");
 * job.add(klov_cmd_initialize_printer);
 * job.add(klov_cmd_select_justification, KLOV_JUSTIFY_CENTRE);
 * job.text("Hello\n");
 * job.add(klov_cmd_print_bar_code, KLOV_BAR_CODE128, klov::data("{B4711"));
 * job.add(klov_cmd_select_cut_mode_and_feed_paper, KLOV_FEED_AND_CUT_PARTIAL, 40);
 * std::fwrite(job.data(), 1, job.size(), stdout);
 * \endcode
 *
 * add() takes any command function and its parameters between the class word and the buffer; caller data and its count
 * are one klov::data. It makes the room that the command needs, also for the few that do not ask for all of theirs. A
 * command that is refused adds nothing: add() throws klov::error, try_add() returns the result code.
 */
#ifndef KLOV_KLOV_HPP
#define KLOV_KLOV_HPP

#include <klov/klov.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

namespace klov {

/** The words for a result code. */
inline std::string message(int32_t code, int32_t language = KLOV_LANGUAGE_ENGLISH)
{
    char text[256] = "";
    klov_format_error_ansi(code, language, text, 0, static_cast<int32_t>(sizeof text - 1));
    return text;
}

/** A refusal, with the library's code and its text. */
class error : public std::runtime_error {
public:
    /** For a result code. */
    explicit error(int32_t result) : std::runtime_error(message(result)), code_(result) {}

    /** One of the codes of klov/result.h. */
    int32_t code() const noexcept
    {
        return code_;
    }

private:
    int32_t code_;
};

/** Caller data with its count. It does not own the bytes. */
class data {
public:
    /** So many bytes from here on. */
    data(const uint8_t *bytes, std::size_t size) : bytes_(bytes), size_(size) {}
    /** The characters of a text. */
    data(std::string_view text) : data(reinterpret_cast<const uint8_t *>(text.data()), text.size()) {}
    /** The characters of a text. */
    data(const char *text) : data(std::string_view(text)) {}
    /** The characters of a text. */
    data(const std::string &text) : data(std::string_view(text)) {}
    /** All bytes of a vector. */
    data(const std::vector<uint8_t> &bytes) : data(bytes.data(), bytes.size()) {}

    /** The first byte. */
    const uint8_t *begin() const noexcept
    {
        return bytes_;
    }
    /** How many there are. */
    std::size_t size() const noexcept
    {
        return size_;
    }

private:
    const uint8_t *bytes_;
    std::size_t size_;
};

/** \cond */
namespace detail {

inline std::size_t size_of(const data &bytes)
{
    return bytes.size();
}

template <typename Number>
std::size_t size_of(const Number &)
{
    return 0;
}

}  // namespace detail
/** \endcond */

/** Commands and text for one printer, one after the other. */
class buffer {
public:
    /** For a printer with this class word. */
    explicit buffer(uint32_t printer_class) : class_(printer_class) {}

    /** For a model of the catalogue, by its name. Throws klov::error when the catalogue has no such model. */
    explicit buffer(const std::string &model_name) : class_(class_of(model_name)) {}

    /** Adds a command, or throws klov::error and adds nothing. */
    template <typename Function, typename... Argument>
    buffer &add(Function command, const Argument &...argument)
    {
        const int32_t code = try_add(command, argument...);
        if (code != KLOV_OK) {
            throw error(code);
        }
        return *this;
    }

    /** Adds a command and returns KLOV_OK, or returns why not and adds nothing. */
    template <typename Function, typename... Argument>
    int32_t try_add(Function command, const Argument &...argument)
    {
        static_assert(std::is_pointer_v<Function>, "the first argument is a command function of klov/klov.h");
        const std::size_t size = (std::size_t{0} + ... + detail::size_of(argument));
        if (size > most) {
            return KLOV_E_BUFFER_TOO_SMALL;
        }
        std::size_t room = size + frame;
        if constexpr (std::is_same_v<Function, decltype(&klov_cmd_print_and_feed_paper)>) {
            // These two repeat themselves for every 255 units.
            const int64_t n = first(argument...);
            const std::size_t groups = n > 0 ? static_cast<std::size_t>((n + 254) / 255) : 0;
            if (command == &klov_cmd_print_and_reverse_feed_n_line) {
                return n > 254 ? add_long_reverse(static_cast<int32_t>(n)) : call(command, frame, argument...);
            }
            if (command == &klov_cmd_print_and_feed_paper) {
                room = 3 * groups + frame;
            }
        }
        return call(command, room, argument...);
    }

    /** Adds text, which is no command: its bytes go in as they are, in the printer's code table. */
    buffer &text(std::string_view characters)
    {
        bytes_.insert(bytes_.end(), characters.begin(), characters.end());
        return *this;
    }

    /** The bytes for the printer. */
    const uint8_t *data() const noexcept
    {
        return bytes_.data();
    }
    /** How many there are. */
    std::size_t size() const noexcept
    {
        return bytes_.size();
    }
    /** The bytes for the printer. */
    const std::vector<uint8_t> &bytes() const noexcept
    {
        return bytes_;
    }
    /** Forgets all of them. */
    void clear() noexcept
    {
        bytes_.clear();
    }
    /** The class word. */
    uint32_t printer_class() const noexcept
    {
        return class_;
    }

private:
    // No command has more bytes beside its data.
    static constexpr std::size_t frame = 64;
    static constexpr std::size_t most = std::numeric_limits<uint32_t>::max() - 2 * frame;

    static uint32_t class_of(const std::string &model_name)
    {
        const klov_model_brief *row = klov_printer_model_brief_find_by_name(model_name.c_str());
        if (row == nullptr) {
            throw error(KLOV_E_UNKNOWN_MODEL);
        }
        return row->type;
    }

    template <typename... Argument>
    static int64_t first(const Argument &...argument)
    {
        int64_t number = 0;
        const bool numbers[] = {true, (number = number_of(argument), true)...};
        (void)numbers;
        return number;
    }
    static int64_t number_of(const klov::data &)
    {
        return 0;
    }
    template <typename Number>
    static int64_t number_of(const Number &number)
    {
        return static_cast<int32_t>(number);
    }

    // The library writes a long reverse feed without counting it, so it goes in by steps that it counts.
    int32_t add_long_reverse(int32_t lines)
    {
        const std::size_t before = bytes_.size();
        for (int32_t rest = lines; rest > 0; rest -= 254) {
            const int32_t code = call(&klov_cmd_print_and_reverse_feed_n_line, frame, rest < 254 ? rest : 254);
            if (code != KLOV_OK) {
                bytes_.resize(before);
                return code;
            }
        }
        return KLOV_OK;
    }

    template <typename Function, typename... Argument>
    int32_t call(Function command, std::size_t room, const Argument &...argument)
    {
        const std::size_t before = bytes_.size();
        bytes_.resize(before + room);
        uint32_t length = 0;
        const int32_t code =
            expand(command, bytes_.data() + before, static_cast<uint32_t>(room), &length, std::tuple<>(), argument...);
        bytes_.resize(code == KLOV_OK ? before + length : before);
        return code;
    }

    template <typename Function, typename... Done>
    int32_t expand(Function command, uint8_t *to, uint32_t room, uint32_t *length, const std::tuple<Done...> &done)
    {
        const auto target = [to] {
            // One command takes the buffer as an address.
            if constexpr (std::is_same_v<Function, decltype(&klov_cmd_print_raster_img_cmd_header)>) {
                return reinterpret_cast<uintptr_t>(to);
            } else {
                return to;
            }
        };
        return std::apply([&](const Done &...value) { return command(class_, value..., target(), room, length); },
                          done);
    }
    template <typename Function, typename... Done, typename... Argument>
    int32_t expand(Function command, uint8_t *to, uint32_t room, uint32_t *length, const std::tuple<Done...> &done,
                   const klov::data &bytes, const Argument &...argument)
    {
        if constexpr (std::is_same_v<Function, decltype(&klov_cmd_print_raster_bit_image)>) {
            // An image's data come without a count: its width and height are the count.
            if (int64_t{std::get<1>(done)} * std::get<2>(done) != static_cast<int64_t>(bytes.size())) {
                return KLOV_E_PARAMETER;
            }
            return expand(command, to, room, length, std::tuple_cat(done, std::make_tuple(bytes.begin())), argument...);
        } else {
            const uint32_t size = static_cast<uint32_t>(bytes.size());
            return expand(command, to, room, length, std::tuple_cat(done, std::make_tuple(bytes.begin(), size)),
                          argument...);
        }
    }
    template <typename Function, typename... Done, typename Number, typename... Argument>
    int32_t expand(Function command, uint8_t *to, uint32_t room, uint32_t *length, const std::tuple<Done...> &done,
                   const Number &number, const Argument &...argument)
    {
        return expand(command, to, room, length, std::tuple_cat(done, std::make_tuple(static_cast<int32_t>(number))),
                      argument...);
    }

    uint32_t class_;
    std::vector<uint8_t> bytes_;
};

}  // namespace klov

#endif
