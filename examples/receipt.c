/*
 * A receipt from scratch: text, emphasis, a bar code, a QR Code symbol and a cut, composed into a buffer and written to
 * a file or a printer's device, or to standard output.
 *
 *     receipt [-m MODEL] [FILE]
 *     receipt -m QX-100 /dev/usb/lp0
 *
 * receipt.py makes the same bytes.
 */
#include <klov/klov.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

struct receipt {
    uint32_t printer_class;
    uint8_t bytes[1024];
    uint32_t length;
};

/* The last three arguments of every encoder. */
#define INTO(receipt) (receipt)->bytes, sizeof(receipt)->bytes, &(receipt)->length

static void fail(const char *step, int32_t code)
{
    char text[256] = "";
    klov_format_error_ansi(code, 0, text, 0, (int32_t)sizeof text - 1);
    fprintf(stderr, "receipt: %s: %s (%d)\n", step, text, code);
    exit(1);
}

/* Half a receipt is none: the first command that fails ends the program before a byte goes out. */
static void must(const char *step, int32_t code)
{
    if (code != KLOV_OK) {
        fail(step, code);
    }
}

static uint32_t class_of_model(const char *name)
{
    printer_model *model = NULL;
    must(name, klov_printer_model_creator2(name, &model));
    const uint32_t printer_class = model->type;
    klov_printer_model_destroy(model);
    return printer_class;
}

static void need_room(const struct receipt *receipt, size_t size, const char *step)
{
    if (size > sizeof receipt->bytes - receipt->length) {
        fail(step, KLOV_E_BUFFER_TOO_SMALL);
    }
}

/* Text is no command: its bytes go into the buffer as they are. A line feed prints the line. */
static void add_text(struct receipt *receipt, const char *text)
{
    const size_t size = strlen(text);
    need_room(receipt, size, "text");
    memcpy(receipt->bytes + receipt->length, text, size);
    receipt->length += (uint32_t)size;
}

static void add_heading(struct receipt *r, const char *text)
{
    must("justification", klov_cmd_select_justification(r->printer_class, 1, INTO(r)));
    must("emphasis", klov_cmd_turn_emphasized_mode_on_off(r->printer_class, 1, INTO(r)));
    must("size", klov_cmd_select_character_size(r->printer_class, 0x11, INTO(r)));
    add_text(r, text);
    must("size", klov_cmd_select_character_size(r->printer_class, 0x00, INTO(r)));
    must("emphasis", klov_cmd_turn_emphasized_mode_on_off(r->printer_class, 0, INTO(r)));
}

static void add_items(struct receipt *r)
{
    must("justification", klov_cmd_select_justification(r->printer_class, 0, INTO(r)));
    add_text(r, "Coffee                      2.80\n");
    add_text(r, "Cheese cake                 4.20\n");
    must("emphasis", klov_cmd_turn_emphasized_mode_on_off(r->printer_class, 1, INTO(r)));
    add_text(r, "Total                       7.00\n");
    must("emphasis", klov_cmd_turn_emphasized_mode_on_off(r->printer_class, 0, INTO(r)));
    must("feed", klov_cmd_print_and_feed_n_line(r->printer_class, 1, INTO(r)));
}

/* The receipt's number in CODE128, code set B, with its digits below. */
static void add_bar_code(struct receipt *r, const char *number)
{
    char data[64];
    const int size = snprintf(data, sizeof data, "{B%s", number);
    if (size < 0 || (size_t)size >= sizeof data) {
        fail("bar code", KLOV_E_PARAMETER);
    }
    must("justification", klov_cmd_select_justification(r->printer_class, 1, INTO(r)));
    must("digits", klov_cmd_select_print_position_HRI_characters(r->printer_class, 2, INTO(r)));
    must("bar code height", klov_cmd_set_bar_code_height(r->printer_class, 80, INTO(r)));
    must("bar code width", klov_cmd_set_bar_code_width(r->printer_class, 2, INTO(r)));
    must("bar code", klov_cmd_print_bar_code(r->printer_class, 73, (const uint8_t *)data, (uint32_t)size, INTO(r)));
    must("feed", klov_cmd_print_and_feed_n_line(r->printer_class, 1, INTO(r)));
}

static void add_qr_code(struct receipt *r, const char *data)
{
    const uint32_t size = (uint32_t)strlen(data);
    must("QR model", klov_cmd_qr_select_the_model(r->printer_class, 50, INTO(r)));
    must("QR module", klov_cmd_qr_set_the_size_of_module(r->printer_class, 6, INTO(r)));
    must("QR correction", klov_cmd_qr_select_the_error_correction_level(r->printer_class, 49, INTO(r)));
    /* This encoder asks for 8 bytes of room only; the room for the data is the caller's business. */
    need_room(r, size + 8, "QR data");
    must("QR data",
         klov_cmd_qr_store_the_data_in_the_symbol_storage_area(r->printer_class, (const uint8_t *)data, size, INTO(r)));
    must("QR symbol", klov_cmd_qr_print_the_symbol_data_in_the_symbol_storage_area(r->printer_class, INTO(r)));
}

static void compose(struct receipt *r)
{
    must("initialize", klov_cmd_initialize_printer(r->printer_class, INTO(r)));
    add_heading(r, "CORNER CAFE\n");
    add_items(r);
    add_bar_code(r, "2024000117");
    add_qr_code(r, "https://example.com/r/2024000117");
    must("cut", klov_cmd_select_cut_mode_and_feed_paper(r->printer_class, 66, 40, INTO(r)));
}

static void write_to(const char *path, const struct receipt *receipt)
{
    FILE *out = path != NULL ? fopen(path, "wb") : stdout;
    if (out == NULL) {
        perror(path);
        exit(1);
    }
    const size_t written = fwrite(receipt->bytes, 1, receipt->length, out);
    if (fclose(out) != 0 || written != receipt->length) {
        perror(path != NULL ? path : "standard output");
        exit(1);
    }
}

static int usage(void)
{
    fputs("usage: receipt [-m MODEL] [FILE]\n", stderr);
    return 1;
}

int main(int argc, char **argv)
{
    const char *model = "QX-100";
    int option;
    while ((option = getopt(argc, argv, "m:")) != -1) {
        if (option != 'm') {
            return usage();
        }
        model = optarg;
    }
    if (argc - optind > 1) {
        return usage();
    }
    struct receipt receipt = {.printer_class = class_of_model(model)};
    compose(&receipt);
    write_to(argv[optind], &receipt);
    return 0;
}
