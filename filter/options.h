// The job's options: keywords, where their values come from, and what they set.
#pragma once

#include "printops/device.h"

// Fill dev->devOptions from the PPD (environment variable PPD) and the job's option string (may be null); a job option
// goes before the PPD's default. A missing or unreadable PPD and a model that is not in the catalogue end the process.
void get_options(printer_dev *dev, const char *options);

// Copy the catalogue's properties of a model into the options. Returns 0, KLOV_E_UNKNOWN_MODEL (a null name included)
// or KLOV_E_NO_MEMORY; on failure the options stay as they are.
int32_t get_model_info(dev_options *options, const char *model_name);
