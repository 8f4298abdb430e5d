// Batch driver: pairs each input with its output, X.mrl with X_conv.mrl beside it, and converts one pair
// after the other. A file that can't be opened costs a message; the run goes on with the next.
//
// The pool heap of a file's variables exists while the file is converted. The tables of variables and labels
// start empty with each file, in the same memory.
#pragma once

#include "support/pool_heap.h"

#include <stdint.h>

struct plat_file;

// Results of the driver. Only the last one changes the exit status.
enum : int { BATCH_DONE = 0, BATCH_CANCELLED = -1, BATCH_NO_MEMORY = -2 };

extern pool_heap *Vbuf; // blocks of variables, from pools_init to pools_free; null between two files

// Converts the paths among the arguments, or with none the ones that the user picks.
int conv_main(int arg_count, char **arg_vector);

// Makes a file's heap, and empties the tables. It is called before the output is opened, so that an earlier
// output stays when memory runs out. 0, or 1 without memory.
int pools_init();

// Returns the file's heap and the blocks of its variables to the system.
void pools_free();

// Converts one opened source, after pools_init, and calls pools_free; the output is open in out_file.
void convert_file(const char *source_name, plat_file *source_stream);
