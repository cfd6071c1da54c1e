// Text conversions for callers that hold wide text.
#include <klov/text.h>
#include <locale.h>
#include <stdlib.h>
#include <string.h>

namespace {

constexpr int32_t code_page_chinese = 4;
constexpr size_t failed = static_cast<size_t>(-1);

void select_code_page(int32_t code_page)
{
    if (code_page == code_page_chinese) {
        setlocale(LC_ALL, "zh_CN.utf8");
    }
}

// Whether a text of this measured length can go to a destination of this size.
int32_t admit_text(size_t length, int32_t dst_size)
{
    if (length == failed) {
        return KLOV_E_PARAMETER;
    }
    const bool fits = dst_size > 0 && static_cast<size_t>(dst_size) > length;
    return fits ? KLOV_OK : KLOV_E_BUFFER_TOO_SMALL;
}

int32_t report_converted(size_t count, int32_t *count_out)
{
    if (count == failed) {
        return KLOV_E_PARAMETER;
    }
    *count_out = static_cast<int32_t>(count);
    return KLOV_OK;
}

}  // namespace

int32_t w2a(char *dst, int32_t dst_size, const wchar_t *src, int32_t /*src_len*/, int32_t code_page, int32_t *count_out)
{
    select_code_page(code_page);
    const int32_t refusal = admit_text(wcstombs(nullptr, src, 0), dst_size);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    // The limit counts characters of the source against bytes of the result. Callers rely on the truncated count.
    return report_converted(wcstombs(dst, src, wcslen(src) + 1), count_out);
}

int32_t a2w(wchar_t *dst, int32_t dst_size, const char *src, int32_t /*src_len*/, int32_t code_page, int32_t *count_out)
{
    select_code_page(code_page);
    const int32_t refusal = admit_text(mbstowcs(nullptr, src, 0), dst_size);
    if (refusal != KLOV_OK) {
        return refusal;
    }
    return report_converted(mbstowcs(dst, src, strlen(src) + 1), count_out);
}
