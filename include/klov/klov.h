/**
 * \file
 * libklov: printer commands, models and error texts for receipt and label printers of the ESC/POS type.
 *
 * Command encoders (printing.h, layout.h, graphics.h, status.h, barcode.h, card.h, control.h) share one contract:
 *
 *  1. The first argument is the printer class word: the `type` of a printer_model (model.h). Bit 0 set says that the
 *     printer knows the ESC/POS-type command set; bit 1 and bit 2 select the form of the version query; bit 12 says
 *     that it takes USB control sequences; bits 16 to 31 are a model's number, which a single command looks at
 *     (klov_cmd_set_print_area_in_page_mode()).
 *  2. The last three arguments are the command buffer: buf, its capacity cap in bytes, and *len, the bytes already in
 *     it. A command goes to buf + *len; on success, and only then, *len grows by the command's length. Several commands
 *     in one buffer are made by several calls. Nothing is ever written to a printer: that is the caller's part.
 *  3. Checks come in this order: class bit 0 clear KLOV_E_MODEL_TYPE; buf null, or less room than the command needs,
 *     KLOV_E_BUFFER_TOO_SMALL; a parameter out of its range KLOV_E_PARAMETER. A refusal writes nothing.
 *  4. The room is cap - *len in unsigned arithmetic: a *len beyond cap is not noticed. Commands of a single byte only
 *     test whether cap equals *len. Functions that ask for less room than they write say so. Caller data whose length
 *     does not fit 32 bits with its command around it is KLOV_E_BUFFER_TOO_SMALL, before a byte of it is read.
 *  5. A parameter that is sent as one byte is tested on its low 8 bits unless its function says otherwise; wider
 *     parameters are tested whole. Numbers of several bytes go out least significant byte first unless noted.
 *
 * Encoders and parsers keep no state and may run on any thread. The catalogue's cache, the last-error slot, the wide
 * text functions and the trace are for one thread.
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
