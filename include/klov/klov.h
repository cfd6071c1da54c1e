/**
 * \file
 * libklov: printer commands, models and error texts for receipt and label printers of the ESC/POS type.
 *
 * A whole job, from the model's name to the bytes for the printer:
 *
 * \code
 * #include <klov/klov.h>
 * #include <stdio.h>
 * #include <string.h>
 *
 * int main(void)
 * {
 *     uint8_t bytes[64];
 *     uint32_t size = 0;
 *     const klov_model_brief *model = klov_printer_model_brief_find_by_name("QX-100");
 *     if (model == NULL || klov_cmd_initialize_printer(model->type, bytes, sizeof bytes, &size) != KLOV_OK)
 *         return 1;
 *     memcpy(bytes + size, "Hello\n", 6); // text is no command: its bytes go in as they are
 *     size += 6;
 *     if (klov_cmd_select_cut_mode_and_feed_paper(model->type, KLOV_FEED_AND_CUT_PARTIAL, 40,
 *                                                 bytes, sizeof bytes, &size) != KLOV_OK)
 *         return 1;
 *     return fwrite(bytes, 1, size, stdout) == size ? 0 : 1;
 * }
 * \endcode
 *
 * What every function keeps to is said here once, by number. The other headers say what is peculiar.
 *
 *  1. **Class word.** The first argument of commands and parsers says what the printer understands. It is the
 *     `type` of a catalogue row or of a printer_model (klov/model.h), and its bits are enum klov_class_bits. A
 *     look-up that gives it as int32_t and a command that takes it as uint32_t mean the same 32 bits: cast it, no
 *     bit is lost. printer_model.type has the low byte of the model's id in bits 16 to 23, a row's type has zeros
 *     there. One command compares bits 16 to 31 with a number, klov_cmd_set_print_area_in_page_mode(), and no word
 *     of the catalogue has that number: a program that needs the form sets the bits itself. The closing row
 *     "unknown" has all bits set, so that every command accepts its class word.
 *  2. **Command buffer.** The last three arguments are buf, its capacity cap in bytes, and *len, the bytes that are
 *     in it. A command goes to buf + *len; on success, and only then, *len grows by the command's length. So calls
 *     in a row make commands in a row. Nothing is ever written to a printer: that is the caller's part.
 *  3. **Order of checks.** Bit 0 of the class word clear: KLOV_E_MODEL_TYPE. Then buf or len null, or less room
 *     than the command needs: KLOV_E_BUFFER_TOO_SMALL. Then any parameter out of its range: KLOV_E_PARAMETER. A
 *     refusal writes nothing and leaves *len.
 *  4. **Room** is cap - *len in unsigned arithmetic: a *len beyond cap is not noticed. Commands of a single byte
 *     only test whether cap equals *len. Caller data whose length does not fit 32 bits with its command around it
 *     is KLOV_E_BUFFER_TOO_SMALL, before a byte of it is read. A function that asks for less room than it writes
 *     says so.
 *  5. **Numbers.** A parameter that is sent as one byte is tested and sent as its low 8 bits, so that 257 is 1; one
 *     that is sent as two or four bytes is tested whole. A function that does otherwise says so. "any" is not
 *     tested. Bytes are hexadecimal; nL nH is a number in two bytes, low byte first, p1 p2 p3 p4 one in four.
 *  6. **Null data.** With a count of 0 data may be null. With any other count null data is KLOV_E_PARAMETER, in its
 *     place among the checks. Three commands differ, and say so: klov_cmd_print_bar_code(),
 *     klov_cmd_select_bit_image_mode(), klov_cmd_qr_store_the_data_in_the_symbol_storage_area().
 *  7. **Null len** is a null buffer: KLOV_E_BUFFER_TOO_SMALL, in its place among the checks.
 *  8. **Overlap.** Data may lie anywhere, in the command buffer too, even where the command is going to stand: the
 *     command has the bytes that were there before the call.
 *  9. **Result codes** are signed 32-bit: KLOV_OK, a negative code of klov/result.h, or a positive errno where a
 *     system call failed. One function counts otherwise and says so (the wide listing of model names).
 *  10. **Never checked:** that buf has cap bytes and data its count; other pointers, null ones included, unless a
 *     function says what null does; bar code data against the symbology; whether this model knows this command,
 *     beyond bit 0.
 *  11. **Ownership.** Catalogue rows and their strings belong to the library and live as long as it. What a creator
 *     made goes back through klov_printer_model_destroy(). Everything else is the caller's.
 *  12. **Threads.** Commands, parsers, catalogue look-ups and checksums share no state: call them from any thread,
 *     each with a buffer of its own. These share state and are for one thread: the id queries with
 *     klov_printer_model_detach() (the cache models_table), the last-error slot, the trace, the wide error texts,
 *     and conversions with code page 4 (the locale of the process).
 *  13. **Stability.** Within one soname no name goes, and no signature, record, constant or byte of a command
 *     changes. A minor release may add names and models. model_brief_table has MODEL_BRIEF_ROWS rows or more;
 *     klov_model_count() and klov_model_at() reach every model of the library that the program runs with.
 *
 * With KLOV_NO_SHORT_NAMES defined before the include, every name that does not begin with klov_ or KLOV_ is left out,
 * for programs that have a model_brief or a format_error() of their own.
 */
#ifndef KLOV_KLOV_H
#define KLOV_KLOV_H

#include <klov/barcode.h>
#include <klov/card.h>
#include <klov/control.h>
#include <klov/error.h>
#include <klov/graphics.h>
#include <klov/layout.h>
#include <klov/model.h>
#include <klov/printing.h>
#include <klov/result.h>
#include <klov/status.h>
#include <klov/text.h>
#include <klov/trace.h>
#include <klov/version.h>

#endif
