/* A till in C: two sales, a bar code and a QR Code, written to standard output. */
#include <klov/klov.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static uint8_t job[2048];
static uint32_t length;
static uint32_t printer;

#define COMMAND(name, ...) check(klov_cmd_##name(printer, __VA_ARGS__, job, sizeof job, &length))

static void check(int32_t code)
{
    if (code != KLOV_OK) {
        char text[256];
        klov_format_error_ansi(code, KLOV_LANGUAGE_ENGLISH, text, 0, sizeof text - 1);
        fprintf(stderr, "till: %s\n", text);
        exit(1);
    }
}

static void print(const char *text)
{
    check(strlen(text) <= sizeof job - length ? KLOV_OK : KLOV_E_BUFFER_TOO_SMALL);
    memcpy(job + length, text, strlen(text));
    length += (uint32_t)strlen(text);
}

static void sale(const char *what, double price)
{
    char line[64];
    snprintf(line, sizeof line, "%-40s%8.2f\n", what, price);
    print(line);
}

int main(void)
{
    const klov_model_brief *model = klov_printer_model_brief_find_by_name("QX-100");
    check(model != NULL ? KLOV_OK : KLOV_E_UNKNOWN_MODEL);
    printer = model->type;
    check(klov_cmd_initialize_printer(printer, job, sizeof job, &length));
    COMMAND(select_justification, KLOV_JUSTIFY_CENTRE);
    COMMAND(select_character_size, 0x11);
    print("CORNER CAFE\n");
    COMMAND(select_character_size, 0x00);
    COMMAND(select_justification, KLOV_JUSTIFY_LEFT);
    sale("Coffee", 2.80);
    sale("Cheese cake", 4.20);
    COMMAND(turn_emphasized_mode_on_off, 1);
    sale("Total", 7.00);
    COMMAND(turn_emphasized_mode_on_off, 0);
    COMMAND(print_and_feed_n_line, 1);
    COMMAND(select_justification, KLOV_JUSTIFY_CENTRE);
    COMMAND(select_print_position_HRI_characters, KLOV_HRI_BELOW);
    COMMAND(set_bar_code_height, 80);
    COMMAND(set_bar_code_width, 2);
    COMMAND(print_bar_code, KLOV_BAR_CODE128, (const uint8_t *)"{B4711", 6);
    COMMAND(print_and_feed_paper, 24);
    COMMAND(qr_select_the_model, KLOV_QR_MODEL_2);
    COMMAND(qr_set_the_size_of_module, 6);
    COMMAND(qr_select_the_error_correction_level, KLOV_QR_CORRECTION_M);
    COMMAND(qr_store_the_data_in_the_symbol_storage_area, (const uint8_t *)"https://example.com/4711", 24);
    check(klov_cmd_qr_print_the_symbol_data_in_the_symbol_storage_area(printer, job, sizeof job, &length));
    COMMAND(print_and_feed_paper, 24);
    COMMAND(select_cut_mode_and_feed_paper, KLOV_FEED_AND_CUT_PARTIAL, 40);
    return fwrite(job, 1, length, stdout) == length && fflush(stdout) == 0 ? 0 : 1;
}
