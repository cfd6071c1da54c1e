// This program's calloc and free: counted, and made to fail.
#pragma once

namespace wrapped {

// From now on the n-th block cannot be had, counted from 1; 0: every block can.
void start_counting(int failing_block = 0);
void stop_counting();

int blocks_made();
int blocks_freed();

}  // namespace wrapped
