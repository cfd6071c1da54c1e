// The per-job device object that every printer operation gets: print options, render state and the two work buffers.
// Plain records; only the filter's start fills the options.
#pragma once

#include <stdint.h>

// Everything that the job asks of the printer, with the built-in defaults. Filled once from the model, the PPD's
// defaults and the job's options, read-only afterwards. Nothing sets the fields marked "fixed": the operations that
// look at them are ready for printers that need them. -1 in speed, density and linespacing leaves the printer's own
// setting alone.
struct dev_options {
    uint32_t model = 0x1001;                                  // catalogue identifier
    const char *name = nullptr;                               // model name, in the catalogue's own storage
    uint32_t type = 0x10010001;                               // class word, the first argument of every command encoder
    int32_t printer_width = 48;                               // printable width in bytes, 8 dots each
    int32_t max_render_height = 14;                           // rows in a strip and in one raster command
    bool issupportshiftline = false;                          // fixed; the printer takes a left margin before a band
    bool islabelprinter = false;                              // fixed
    float cut_spacing = 0;                                    // fixed
    float motion_v = 0;                                       // millimetres per motion step
    int32_t resolution = 203;                                 // dots per inch
    float dot_unit = static_cast<float>(254.0 / 203 / 10.0);  // millimetres per dot
    int32_t compression = 0;                                  // non-zero: raster bands are run-length coded
    int32_t papertype = 0;    // 1 or 2: move to the next ticket or label after each page
    bool pagemode = false;    // fixed
    bool ticketmode = false;  // fixed
    int32_t finalcut = 0;     // kind of cut
    bool is_page_cut = false;
    int32_t fwdfeed = 0;       // fixed; dots fed at the document's end, -1 for none
    int32_t backfeed = 0;      // fixed
    int32_t speed = -1;        // fixed
    int32_t density = -1;      // fixed
    int32_t linespacing = -1;  // fixed
    int32_t beepcontrol = 0;   // 0 never, 1 at the document's start, 2 at its end; so are the other controls
    int32_t beepduration = 0;
    int32_t beepinterval = 0;
    int32_t beeptimes = 1;
    int32_t externalbeepcontrol = 0;
    int32_t externalbeepduration = 0;
    int32_t externalbeepinterval = 0;
    int32_t externalbeeptimes = 1;
    int32_t drawer1 = 0;
    int32_t drawer2 = 0;
    int32_t postprintaction = 2;  // 1 feed at the end, 2 feed and cut at the end, 3 feed and cut after every page
    int32_t feeddistance = 0;     // millimetres, for action 1
    int32_t cutdistance = -1;     // millimetres, for actions 2 and 3
    int32_t printlogo = 0;
    int32_t logoindex = 0;
    int32_t logoalign = 0;
    int32_t papersavemode = 0;    // quarters of every blank run that are not fed, 1 to 3
    int32_t papersavebottom = 1;  // non-zero: blank rows at the bottom of a page are withheld
    int32_t reserved = 0;         // fixed
};

// Row counters that live from page to page.
struct render_state {
    int32_t reserved;  // fixed at 0
    int32_t unfed_blank_rows;
    int32_t lastStripBlanksHeight;  // blank rows withheld at the bottom of the last page
};

struct printer_dev {
    dev_options *devOptions;
    render_state *state;
    uint8_t *render_data;  // strip buffer: the rows just read
    uint32_t render_data_size;
    uint8_t *data_buf;  // band work buffer: cropped rows
    uint32_t data_buf_size;
};

// Two models take untrimmed lines, the print-and-feed command for blank runs and a zero feed after every section.
inline bool is_fixed_width_model(const dev_options &options)
{
    return options.model == 0x1955 || options.model == 0x1956;
}
