// The job's options: keywords, where their values come from, and what they set.
#pragma once

#include "filter/device.h"

// Fill dev->devOptions from the PPD (environment variable PPD) and the job's option string (may be null); a job option
// goes before the PPD's default. A missing or unreadable PPD and a model that is not in the catalogue end the process.
void get_options(printer_dev *dev, const char *options);
