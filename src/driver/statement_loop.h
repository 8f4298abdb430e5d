// Statement loop: the conversion of one file, from its first statement to its end.
#pragma once

#include "statements/recogniser.h"

#include <stdint.h>

// The result of one statement, or of the end of the source.
struct statement_result {
    statement_head head;
    int32_t result;       // of next_statement: a row of the command table, or a statement result code
    int32_t fetched;      // of fetch_args, for a command: a count, or a FETCH_ code; else 0
    int32_t failed_at;    // of a failed fetch the spec position of its argument, from 1; else 0
    uint32_t next_line;   // line of the source on which the next character is
    bool line_left;       // the statement's line goes on, and is read as the next statement
    bool source_complete; // at the end of the source: nothing of the file follows; a byte 26 ends it early
    uint64_t output_end;  // bytes written by then, with one byte for a line end on every platform
};

// The hook that is called after each statement, and once more when the reading of the source stops (result is
// STATEMENT_END or a code that stops). The slots, line_buf and the source are as the statement left them.
// Null: none.
extern void (*statement_done)(const statement_result &done);

// Reads the source to its end and writes the output of each statement. The source, the output and the heap
// and tables of the file are open.
void statement_loop();
