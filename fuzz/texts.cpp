// Text conversions and error texts in buffers of any size.
#include "fuzz/input.h"

#include <klov/error.h>
#include <klov/text.h>
#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <memory>

namespace {

constexpr uint32_t most_room = 600;

template <typename Character>
std::unique_ptr<Character[]> terminated(const std::vector<uint8_t> &bytes)
{
    const size_t count = bytes.size() / sizeof(Character);
    auto text = std::make_unique<Character[]>(count + 1);
    if (count > 0) {
        memcpy(text.get(), bytes.data(), count * sizeof(Character));
    }
    return text;
}

void narrow(fuzz::Input &input)
{
    const uint32_t size = input.number() % most_room;
    fuzz::Fenced out(size);
    const auto source = terminated<wchar_t>(input.rest());
    int32_t count = 0;
    if (w2a(out.as<char>(), static_cast<int32_t>(size), source.get(), 0, 0, &count) == KLOV_OK) {
        FUZZ_CHECK(count >= 0 && static_cast<uint32_t>(count) < size);
    }
    FUZZ_CHECK(out.intact_outside());
}

void widen(fuzz::Input &input)
{
    const uint32_t size = input.number() % most_room;
    fuzz::Fenced out(size * sizeof(wchar_t));
    const auto source = terminated<char>(input.rest());
    int32_t count = 0;
    if (a2w(out.as<wchar_t>(), static_cast<int32_t>(size), source.get(), 0, 0, &count) == KLOV_OK) {
        FUZZ_CHECK(count >= 0 && static_cast<uint32_t>(count) < size);
        FUZZ_CHECK(static_cast<size_t>(count) == wcsnlen(out.as<wchar_t>(), size));
    }
    FUZZ_CHECK(out.intact_outside());
}

int32_t some_code(fuzz::Input &input)
{
    const uint8_t choice = input.byte();
    if (choice < 100) {
        return -static_cast<int32_t>(choice);
    }
    return choice < 180 ? -1000 - static_cast<int32_t>(input.number() % 400) : static_cast<int32_t>(input.number());
}

// One byte more than the size told: the terminator of a text that just fits.
void error_text(fuzz::Input &input)
{
    const int32_t code = some_code(input);
    const int32_t language = static_cast<int32_t>(input.number());
    const uint32_t size = input.number() % most_room;
    fuzz::Fenced out(size + 1);
    memset(out.data(), 0, size + 1);
    int32_t length = 0;
    format_klov_error(code, out.as<char>(), static_cast<int32_t>(size), language, &length);
    FUZZ_CHECK(out.intact_outside());
    format_error(code, out.as<char>(), static_cast<int32_t>(size), language, &length);
    FUZZ_CHECK(out.intact_outside());
    const uint32_t start = size > 0 ? input.number() % size : 0;
    klov_format_error_ansi(code, language, out.as<char>(), static_cast<int32_t>(start), static_cast<int32_t>(size));
    FUZZ_CHECK(out.intact_outside());
}

void wide_error_text(fuzz::Input &input)
{
    const int32_t code = some_code(input);
    const int32_t language = static_cast<int32_t>(input.number());
    const uint32_t size = input.number() % most_room;
    fuzz::Fenced out(size * sizeof(wchar_t));
    memset(out.data(), 0, size * sizeof(wchar_t));
    int32_t length = 0;
    format_klov_error_wchar(code, out.as<wchar_t>(), static_cast<int32_t>(size), language, &length);
    format_error_wchar(code, out.as<wchar_t>(), static_cast<int32_t>(size), language, &length);
    constexpr uint32_t wide = sizeof(wchar_t);
    const uint32_t end = size * wide;
    const uint32_t start = size > 0 ? input.number() % size * wide : 0;
    klov_format_error_wchar(code, language, out.as<wchar_t>(), static_cast<int32_t>(start), static_cast<int32_t>(end));
    FUZZ_CHECK(out.intact_outside());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const char *const locale = setlocale(LC_ALL, "C.UTF-8");
    (void)locale;
    fuzz::Input input(data, size);
    void (*const kinds[])(fuzz::Input &) = {narrow, widen, error_text, wide_error_text};
    kinds[input.byte() % 4](input);
    return 0;
}
