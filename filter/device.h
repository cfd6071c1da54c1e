// Making and freeing the per-job device object.
#pragma once

#include "printops/device.h"

// Build the job's device from its option string (may be null) and the PPD. Stores it in *handle and returns 0; every
// failure ends the process with its message.
int32_t klov_printer_dev_creator(const char *options, printer_dev **handle);

// Free the device's five blocks. Returns 0.
int32_t klov_printer_dev_destroy(printer_dev *dev);

// Store the built-in default in every field; returns options.
dev_options *init_dev_mode(dev_options *options);
