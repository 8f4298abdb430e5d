// Statement loop: the conversion of one file, from its first statement to its end.
#pragma once

#include <stdint.h>

// Reads the source to its end and writes what becomes of each statement. The source and the output are open,
// the per-file objects made.
void statement_loop();
