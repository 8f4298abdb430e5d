// Renewing: what --convert and --adopt do to the output of a script, by its state.
//
// Nothing that somebody wrote is lost: what isn't remembered byte for byte is kept as a .bak before it is
// written over, and an edited output takes what has changed by a merge, or stays as it is.
#pragma once

#include "report/script_run.h"

// Writes what is written now where that loses nothing, or merges it, and remembers it. Reports what it did
// and what it left. The run's texts and states are then those of the files.
void output_renew(script_run *run, folder_memory *memory, bool force);

// Remembers what is written now as what is in the output that is there. Refuses an output that lacks some of
// it, unless forced.
void output_adopt(script_run *run, folder_memory *memory, bool force);
