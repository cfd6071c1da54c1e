// A crash: the trace is to hold the steps that led to it.
#pragma once

// From now on a fatal signal first sends the trace lines that wait, then takes its course.
void catch_crashes();
