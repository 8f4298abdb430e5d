// Argument fetcher: turns the rest of a command statement into slots, driven by the row's spec bytes alone.
//
// A quoted string may run over line ends. The text of an argument stays in the source's window (arg_text.h)
// until the statement is done. After a failure line_buf holds the text read last; if that was evaluated, up
// to the end of its first name.
#pragma once

#include <stdint.h>

// The most bytes of one statement's values and strings: 8 for each value of type 4, a string's length and 1.
constexpr int32_t arg_pool_size = 3001;

// The hook that is called before the text of a position is read, and with 0 before the rest of the line for
// which the command has no argument. arg_typed (arg_text.h) then gets the text. Null: none.
extern void (*arg_begins)(int32_t position);

// The spec position, from 1, at which fetch_args failed last.
extern int32_t fetch_failed_at;

// Fetches a statement's arguments and reads over its line feed. Returns the number of spec positions walked,
// repetitions included; or a FETCH_ code, with the source after the character at fault.
int32_t fetch_args(int32_t spec_count, const uint8_t *spec);
