// Argument fetcher: turns the rest of a command statement into slots, driven by the row's spec bytes alone.
//
// It sees no lines but a stream of characters, in which a quoted string may run over a line end. Each
// argument is gathered in line_buf first. Numeric arguments are evaluated there, in place, after their typed
// text has been put by: so after a failure line_buf, which the statement loop prints, ends behind the first
// name of the last text that was evaluated. Plain numbers, the commonest arguments, go straight from the
// source to their slot; line_buf gets such a text only when the fetch fails. After a success it is nobody's.
#pragma once

#include <stdint.h>

struct plat_file;

constexpr uint32_t arg_pool_block = 3008; // bytes of arg_pool
constexpr int32_t arg_pool_size =
    3001; // of them in use: values from the bottom up, strings from the top down

// The argument store, one block for each file: the values of type 4 arguments and the strings.
extern char *arg_pool;

// Fetches a statement's arguments and reads on behind its line feed. Entered with arg_cursor on slot 1 and
// arg_type_cursor on the first arg_types byte. Gives the number of spec positions walked, repetitions
// included, with both cursors on their first element (slot 0); or -1 for an argument that is missing or
// wrong, with the source right behind the place of the fault. keep_absent gives absent positions a slot from
// the first one on; without it they have one only behind an empty argument.
int32_t fetch_args(plat_file *stream, int32_t spec_count, const uint8_t *spec, bool keep_absent);
