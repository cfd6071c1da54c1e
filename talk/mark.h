// One small file for each printer, in CUPS's cache folder. A lock on it makes the queues of one printer take turns, for
// such a printer serves one connection at a time. A byte in it says that a job's bytes are on their way: when it is
// still there at the next job, the last one ended without word that all was printed (killed, cancelled, cable pulled)
// and the printer may be waiting for the rest of a command. The cache folder, because user lp may write there and it
// outlives a restart of the computer, as the printer does.
#pragma once

namespace talk {

struct mark {
    int descriptor = -1;  // -1: no file; the job does without
};

// `device_uri` may be null. Options behind '?' do not make another printer.
mark open_mark(const char *folder, const char *device_uri);

// False while another job has it.
bool lock_mark(const mark &of);

bool is_marked(const mark &of);
void set_mark(const mark &of);
void remove_mark(const mark &of);

}  // namespace talk
