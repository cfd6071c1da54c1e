/*
 * A program that has all of the library's short names for things of its own, and uses the long ones. That it compiles
 * is most of the test.
 */
#define KLOV_NO_SHORT_NAMES
#include <klov/klov.h>

#ifdef MODEL_BRIEF_ROWS
#error MODEL_BRIEF_ROWS is there
#endif
#if defined(MODEL_PROP_ID) || defined(MODEL_PROP_NAME) || defined(MODEL_PROP_FEATURE_FLAG) ||              \
    defined(MODEL_PROP_PAGEMODE_AREA) || defined(MODEL_PROPTYPE_BOOL) || defined(MODEL_PROPTYPE_STRING) || \
    defined(MODEL_PROPTYPE_INT) || defined(MODEL_PROPTYPE_BYTE)
#error a short macro is there
#endif

struct model_brief {
    int a;
};
struct printer_model {
    int b;
};
struct printer_status {
    int c;
};
typedef double model_brief;
typedef double printer_model;
typedef double printer_status;
static int model_brief_table = 1, models_table = 2, cpystr = 3, get_item = 4, w2a = 5, a2w = 6, CRC32 = 7, CRC32Tab = 8;
static int format_error = 9, format_error_wchar = 10, format_klov_error = 11, format_klov_error_wchar = 12;

int main(void)
{
    const klov_model_brief *row = klov_printer_model_brief_find_by_name("QX-100");
    klov_printer_model *model = 0;
    klov_printer_status status = {0};
    if (row == 0 || klov_printer_model_creator2("QX-100", &model) != KLOV_OK || model->width != row->width) {
        return 1;
    }
    klov_printer_model_destroy(model);
    if (klov_cmd_parse_real_time_status(row->type, KLOV_REAL_TIME_PAPER, 0x72, &status) != KLOV_OK ||
        status.paper_end != 1) {
        return 2;
    }
    const int sum = model_brief_table + models_table + cpystr + get_item + w2a + a2w + CRC32 + CRC32Tab + format_error +
                    format_error_wchar + format_klov_error + format_klov_error_wchar;
    const model_brief number = 78;
    return sum == (int)number ? 0 : 3;
}
