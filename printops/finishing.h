// Finishing and peripheral operations: each sends one setting or action, and only when its encoder accepts the values.
// All return 0 or the encoder's refusal; a refusal sends nothing and shows in the trace.
#pragma once

#include "printops/device.h"

// finalcut 1 and 2 name the kind of cut; the encoder refuses what 0 turns into, which is how "no cut" works.
int32_t print_cut_page(printer_dev *dev);
int32_t print_position_next_ticket(printer_dev *dev);
int32_t printer_set_speed(printer_dev *dev);
int32_t printer_set_density(printer_dev *dev);
int32_t printer_set_linespacing(printer_dev *dev);
int32_t print_beep(printer_dev *dev);

// The external buzzer hangs on the drawer connector: one pulse a beep, times in units of 100 ms (50 x 2 ms).
int32_t print_external_beep(printer_dev *dev);

// drawer 0 or 1: the connector pin.
int32_t print_open_drawer(printer_dev *dev, int32_t drawer);

// Print the stored logo and go back to left justification.
int32_t print_logo(printer_dev *dev);
int32_t printer_set_align(printer_dev *dev);
