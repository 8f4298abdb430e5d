// Command table: finds a command's row by its word, in any case.
//
// The compiler makes the table from command_rows, in the same order.
#pragma once

#include "statements/command_rows.h"
#include "support/word_index.h"

#include <stdint.h>

struct cmd_row {
    const char *name;
    int32_t id;
    const uint8_t *spec; // spec_count bytes; null when there are none
    uint8_t spec_count;
};

// The row that says how a command's arguments are fetched. index is from 0 to command_count - 1.
const cmd_row &command_row_at(int32_t index);

// Index of the row of a word, or -1.
int32_t command_find(const word_key &key);

// Indexes of the rows of SPLINE and of SPLINE3, which has the list for points in space.
extern const int32_t command_spline;
extern const int32_t command_spline3;
