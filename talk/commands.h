// Printer commands in a row, made by the library's encoders.
#pragma once

#include <klov/klov.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace talk {

// The class word where the model is not known: a printer with the ESC/POS-type command set.
constexpr uint32_t any_printer_class = 0x1;

class Commands {
public:
    explicit Commands(uint32_t printer_class) : printer_class_(printer_class) {}

    // add(encoder, arguments between the class word and the buffer). False, and nothing added, when it refuses.
    template <typename Encoder, typename... Arguments>
    bool add(Encoder encode, Arguments... arguments)
    {
        return add_data(0, encode, arguments...);
    }

    // For an encoder that copies so many bytes of data.
    template <typename Encoder, typename... Arguments>
    bool add_data(size_t data_size, Encoder encode, Arguments... arguments)
    {
        constexpr size_t longest_frame = 768;  // a feed over the length of a roll is many commands
        const size_t before = bytes_.size();
        bytes_.resize(before + longest_frame + data_size);
        auto length = static_cast<uint32_t>(before);
        const bool made = encode(printer_class_, arguments..., bytes_.data(), static_cast<uint32_t>(bytes_.size()),
                                 &length) == KLOV_OK;
        bytes_.resize(made ? length : before);
        return made;
    }

    void add_text(const char *text)
    {
        while (*text != '\0') {
            bytes_.push_back(static_cast<uint8_t>(*text++));
        }
    }

    const std::vector<uint8_t> &bytes() const
    {
        return bytes_;
    }

private:
    uint32_t printer_class_;
    std::vector<uint8_t> bytes_;
};

// What commandtoklov and klovctl both do. False: an argument is out of range.
bool add_cut(Commands &commands, bool full);
bool add_feed(Commands &commands, int millimetres);
bool add_beep(Commands &commands, int times);
bool add_drawer(Commands &commands, int drawer);

}  // namespace talk
