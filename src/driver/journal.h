// Journal: the hook by which a companion program follows a conversion, statement by statement.
//
// The converter itself sets no hook and keeps no records. While one is called, the slots, line_buf and the
// source are as the statement left them.
#pragma once

#include "statements/recogniser.h"

#include <stdint.h>

// What is known of one statement when it is finished, and of the end of the source when that is met.
struct statement_record {
    statement_head head;
    int32_t result;       // what next_statement gave: a row of the command table, or a statement result code
    int32_t fetched;      // of a command what fetch_args gave: a count, or a fetch failure code; else 0
    int32_t failed_at;    // of a failed fetch the spec position of its argument, from 1; else 0
    uint32_t next_line;   // line of the source on which the next character stands
    bool line_left;       // the statement's line goes on, and is read as the next statement
    uint64_t output_end;  // bytes written by then, with one byte for a line end on every platform
    bool source_complete; // at the end of the source: nothing of the file follows; a byte 26 ends it early
};

// Told after each statement, and once more when the reading of the source stops (result is STATEMENT_END or
// a code that stops). Null: nobody listens.
extern void (*statement_seen)(const statement_record *record);
