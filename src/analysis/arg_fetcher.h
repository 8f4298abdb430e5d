// Argument fetcher: turns the rest of a command statement into slots, driven by the row's spec bytes alone.
//
// It sees no lines but a stream of characters, in which a quoted string may run over a line end. An argument
// that needs no change stays in the source's buffer (arg_ready.h); any other is gathered in line_buf
// (arg_gather.h) and stored from there (arg_store.h). After a failure line_buf, which the statement loop
// prints, holds the text read last; if that was evaluated, it ends behind its first name. After a success it
// is nobody's.
#pragma once

#include <stdint.h>

struct plat_file;

constexpr uint32_t arg_pool_block = 3008; // bytes of arg_pool
constexpr int32_t arg_pool_size =
    3001; // of them in use: values from the bottom up, strings from the top down

// The argument store, one block for each file. Its size bounds the values and the strings of a statement.
extern char *arg_pool;

// Fetches a statement's arguments and reads on behind its line feed. Entered with arg_cursor on slot 1 and
// arg_type_cursor on the first arg_types byte. Gives the number of spec positions walked, repetitions
// included, with both cursors on their first element (slot 0); or -1 for an argument that is missing or
// wrong, with the source right behind the place of the fault. keep_absent gives absent positions a slot from
// the first one on; without it they have one only behind an empty argument.
int32_t fetch_args(plat_file *stream, int32_t spec_count, const uint8_t *spec, bool keep_absent);
