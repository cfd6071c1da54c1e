// rastertoklov: CUPS raster to the byte commands of receipt and label printers.
#include "diag/messages.h"
#include "diag/trace.h"
#include "filter/cancel.h"
#include "filter/crash.h"
#include "filter/device.h"
#include "filter/document.h"
#include "filter/page.h"
#include "filter/raster_guard.h"
#include "printops/blank.h"
#include "printops/output.h"

#include <fcntl.h>
#include <klov/trace.h>
#include <klov/version.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr char trace_path[] = "/tmp/klov-raster";

// While this file exists the filter waits at its start, so that a debugger can be attached to it.
#ifndef KLOV_HOLD_FILE
#define KLOV_HOLD_FILE "/home/klov/rastertoklov.hold"
#endif

raster_guard input;

// A stream that was closed before the filter started must not come back as the trace or the raster file: its place is
// taken by something that refuses to be written, or read.
void occupy_standard_streams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

void open_diagnostics()
{
    klov_trace_init(trace_path);
    while (access(KLOV_HOLD_FILE, F_OK) == 0) {
    }
    setbuf(stderr, nullptr);
    msg(level_info, "rastertoklov filter started");
    log_line("DEBUG: rastertoklov compiled with KLOV library version %s\n", KLOV_COMMANDS_VERSION_STRING);
}

// A vanished backend or scheduler, and a limit on the size of files, must show as a failed write and not kill the
// filter without a word.
void prepare_streams()
{
    occupy_standard_streams();
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

// On the heap: a job's option string may be longer than the stack.
printer_dev *create_device(const char *job_options)
{
    char *const options = strdup(job_options);
    if (options == nullptr) {
        error("Cannot allocate options buffer");
    }
    printer_dev *device = nullptr;
    const int32_t status = klov_printer_dev_creator(options, &device);
    if (status != 0) {
        msgerrno2(level_fatal, status, "ERROR: failed init printer device object.");
    }
    free(options);
    return device;
}

int open_input(int argc, char **argv)
{
    if (argc != 7) {
        return STDIN_FILENO;
    }
    const int descriptor = open(argv[6], O_RDONLY | O_CLOEXEC);
    if (descriptor == -1) {
        error("Unable to open raster file");
    }
    return descriptor;
}

// A job whose bytes were lost must never count as printed.
void flush_and_check_output()
{
    flush_output();
    if (output_failed()) {
        error("Unable to write printer data");
    }
}

bool read_header(cups_raster_t *stream, cups_page_header_t *header)
{
    admit_cancellation();
    const unsigned read = read_guarded_header(input, stream, header);
    defer_cancellation();
    return read != 0;
}

void print_pages(printer_dev *device, cups_raster_t *stream)
{
    cups_page_header_t header;
    int32_t page = 0;
    while (read_header(stream, &header) && cancel_flag == 0) {
        page += 1;
        hold_messages();
        page_message(page, header.NumCopies);
        dump_header(header);
        process_page(device, &header, stream);
        flush_and_check_output();
    }
}

void end_document(printer_dev *device)
{
    const int32_t withheld = device->state->lastStripBlanksHeight;
    const bool pagemode = device->devOptions->pagemode;
    trace_put("\tbefore end_doc,lastStripBlanksHeight:", withheld, ",pagemode:", pagemode ? "YES" : "NO", ".\n");
    if (withheld != 0 && pagemode) {
        trace_put("print lastStripBlanksHeight:", withheld, ".\n");
        print_blank(device, withheld);
    }
    trace_put("end_docing.\n");
    end_doc(device);
}

void print_document(printer_dev *device, cups_raster_t *stream)
{
    flush_output();
    start_doc(device);
    trace_put("\tstart_doc.\n");
    print_pages(device, stream);
    if (input.input.failed && cancel_flag == 0) {
        error("Unable to read raster data");
    }
    if (cancel_flag == 0) {
        end_document(device);
    } else {
        msg(level_debug, "Print job was cancelled");
    }
    trace_put("Closing.\n");
    flush_and_check_output();
}

}  // namespace

int main(int argc, char **argv)
{
    prepare_streams();
    catch_crashes();
    open_diagnostics();
    if (argc < 6 || argc > 7) {
        error("ERROR: rastertoklov job-id user title copies options [file]\n");
    }
    printer_dev *const device = create_device(argv[5]);
    dump_args(argc, argv);

    const int descriptor = open_input(argc, argv);
    start_guard(input, descriptor, device->render_data_size);
    catch_cancellation();
    cups_raster_t *stream = cupsRasterOpenIO(read_guarded, &input, CUPS_RASTER_READ);
    if (stream == nullptr) {
        error("cupsRasterOpen failed");
    }
    print_document(device, stream);

    cupsRasterClose(stream);
    klov_printer_dev_destroy(device);
    release_cancellation();
    if (descriptor != STDIN_FILENO) {
        close(descriptor);
    }
    msg(level_debug, "rastertoklov filter finished");
    klov_trace_exit();
    return 0;
}
