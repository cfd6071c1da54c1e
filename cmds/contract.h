// The contract that every command encoder keeps: the order of its checks and the append, in this one place.
//
// Order: class bit 0 (-3), null buffer or fill count (-2), room (-2), parameters (-1), then the bytes. A refusal writes
// nothing.
#pragma once

#include <klov/result.h>
#include <stdint.h>
#include <string.h>

// Class word: bit 0 says that the printer knows the ESC/POS-type command set.
constexpr uint32_t class_escpos = 0x1;

// The caller's command buffer as one value: the command goes to buf + *len, and *len grows by its length.
struct command_buffer {
    uint8_t *buf;
    uint32_t cap;
    uint32_t *len;
};

// Bytes of a wider value, least significant first: nL nH is low_byte(n), second_byte(n). A negative value gives the
// bytes of its two's complement.
template <typename Integer>
constexpr uint8_t low_byte(Integer value)
{
    return static_cast<uint8_t>(value & 0xFF);
}

template <typename Integer>
constexpr uint8_t second_byte(Integer value)
{
    return low_byte(value >> 8);
}

constexpr bool in_range(int32_t value, int32_t first, int32_t last)
{
    return value >= first && value <= last;
}

// Many commands take a small number or the character of that digit: 0-2 or 48-50.
constexpr bool number_or_digit(uint8_t value, int32_t first, int32_t last)
{
    return in_range(value, first, last) || in_range(value, first + '0', last + '0');
}

// Images kept in the printer are named by a key code of two printable characters.
constexpr bool is_key_code(int32_t kc1, int32_t kc2)
{
    return in_range(low_byte(kc1), 32, 126) && in_range(low_byte(kc2), 32, 126);
}

// The checks before the parameters. The room is unsigned: a *len beyond cap wraps to a huge room and passes. That is
// part of the interface, and so a command of a single byte fails only on a buffer that is exactly full.
inline int32_t admit(uint32_t printer_class, command_buffer out, uint32_t need)
{
    if ((printer_class & class_escpos) == 0) {
        return KLOV_E_MODEL_TYPE;
    }
    if (out.buf == nullptr || out.len == nullptr) {
        return KLOV_E_BUFFER_TOO_SMALL;
    }
    const uint32_t room = out.cap - *out.len;
    return room >= need ? KLOV_OK : KLOV_E_BUFFER_TOO_SMALL;
}

// Whether the room that is asked for covers the caller's data. One command asks for its frame alone.
enum class data_room { asked, not_asked };

// The same checks for a command that takes caller data: so many bytes of its own around so many of the caller's. A
// length that does not fit 32 bits is one that no buffer holds.
inline int32_t admit_data(uint32_t printer_class, command_buffer out, uint32_t frame, uint32_t size,
                          data_room room = data_room::asked)
{
    const uint32_t length = frame + size;
    const int32_t refusal = admit(printer_class, out, room == data_room::asked ? length : frame);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    return length >= size ? KLOV_OK : KLOV_E_BUFFER_TOO_SMALL;
}

// Append bytes, each the low byte of its argument; the caller has been admitted.
template <typename... Byte>
inline void append(command_buffer out, Byte... byte)
{
    const uint8_t bytes[] = {static_cast<uint8_t>(byte)...};
    memcpy(out.buf + *out.len, bytes, sizeof bytes);
    *out.len += static_cast<uint32_t>(sizeof bytes);
}

// Whether the caller's data are there: nothing needs no place.
inline bool has_data(const uint8_t *data, uint32_t size)
{
    return data != nullptr || size == 0;
}

// Append caller data behind the head of their command; the caller has been admitted. The data go to their place before
// the head is written, so that they may lie anywhere, in the command buffer too.
template <typename... Byte>
inline void append_with_data(command_buffer out, const uint8_t *data, uint32_t size, Byte... head)
{
    if (size > 0) {
        memmove(out.buf + *out.len + sizeof...(head), data, size);
    }
    append(out, head...);
    *out.len += size;
}

// A whole command of fixed length: the checks, the verdict on its parameters, the bytes.
template <typename... Byte>
inline int32_t emit_if(bool valid, uint32_t printer_class, command_buffer out, Byte... byte)
{
    const int32_t refusal = admit(printer_class, out, sizeof...(byte));
    if (refusal != KLOV_OK) {
        return refusal;
    }
    if (!valid) {
        return KLOV_E_PARAMETER;
    }
    append(out, byte...);
    return KLOV_OK;
}

// A command whose parameters take any value.
template <typename... Byte>
inline int32_t emit(uint32_t printer_class, command_buffer out, Byte... byte)
{
    return emit_if(true, printer_class, out, byte...);
}
