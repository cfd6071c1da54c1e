// The per-job device object that every printer operation gets: print options, render state and the two work buffers.
// Plain records; only the filter's start fills the options.
#pragma once

#include <stdint.h>

// Everything that the job asks of the printer. Filled once from the built-in defaults, the PPD's defaults and the job's
// options, read-only afterwards. -1 in speed, density and linespacing leaves the printer's own setting alone.
struct dev_options {
    uint32_t model;             // catalogue identifier
    const char *name;           // model name, in the catalogue's own storage
    uint32_t type;              // class word, the first argument of every command encoder
    int32_t printer_width;      // printable width in bytes, 8 dots each
    int32_t max_render_height;  // rows in a strip and in one raster command
    bool issupportshiftline;    // the printer takes a left margin before a band
    bool islabelprinter;
    float cut_spacing;
    float motion_v;       // millimetres per motion step
    int32_t resolution;   // dots per inch
    float dot_unit;       // millimetres per dot
    int32_t compression;  // non-zero: raster bands are run-length coded
    int32_t papertype;    // 1 or 2: move to the next ticket or label after each page
    bool pagemode;
    bool ticketmode;
    int32_t finalcut;  // kind of cut
    bool is_page_cut;
    int32_t fwdfeed;  // dots fed at the document's end, -1 for none
    int32_t backfeed;
    int32_t speed;
    int32_t density;
    int32_t linespacing;
    int32_t beepcontrol;  // 0 never, 1 at the document's start, 2 at its end; so are the other controls
    int32_t beepduration;
    int32_t beepinterval;
    int32_t beeptimes;
    int32_t externalbeepcontrol;
    int32_t externalbeepduration;
    int32_t externalbeepinterval;
    int32_t externalbeeptimes;
    int32_t drawer1;
    int32_t drawer2;
    int32_t postprintaction;  // 1 feed at the end, 2 feed and cut at the end, 3 feed and cut after every page
    int32_t feeddistance;     // millimetres, for action 1
    int32_t cutdistance;      // millimetres, for actions 2 and 3
    int32_t printlogo;
    int32_t logoindex;
    int32_t logoalign;
    int32_t papersavemode;    // quarters of every blank run that are not fed, 1 to 3
    int32_t papersavebottom;  // non-zero: blank rows at the bottom of a page are withheld
    int32_t reserved;
};

// Row counters that live from page to page.
struct render_state {
    int32_t reserved;
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
