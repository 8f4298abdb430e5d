// Command table: finds a command's row by its word, in any case.
//
// The table knows names, ids and specs; it knows no handler. It is constant data in ascending order of the
// lower-case names, made at compile time from command_rows. The order matters for SPLINE and SPLINE3, whose
// rows have to follow each other.
#pragma once

#include "statements/command_rows.h"
#include "support/word_index.h"

#include <stddef.h>
#include <stdint.h>

constexpr int command_name_size = 12; // bytes of a name: 11 characters and a NUL
constexpr int command_count = 472;

struct cmd_row {
    char name[command_name_size];
    int32_t id;
    const uint8_t *spec; // spec_count bytes; null when there are none
    uint8_t spec_count;
};

// The row that says how a command's arguments are fetched. index is from 0 to command_count - 1.
const cmd_row &command_row_at(int32_t index);

// Index of the row of a word, or -1.
int32_t command_find(const word_key &key);

// Index of the row of SPLINE. The row after it is SPLINE3's, for the list of its points in space.
extern const int32_t command_spline;
