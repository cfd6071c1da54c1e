// The options record in the scheduler's log, one line a field, for support.
#pragma once

#include "printops/device.h"

void dump_options(const dev_options *options);
