// Journal: one record of each statement, for murlreport.
//
// It joins what the hooks of the fetcher, the emission, the evaluator and the statement loop report of a
// statement; each hook is declared where it is called. The converter itself sets none of them.
#pragma once

#include "driver/statement_loop.h"
#include "rules/slot_writer.h"

#include <stddef.h>
#include <stdint.h>

// A text as it is in the script.
struct journal_text {
    const char *text;
    size_t size;
};

// The record of a statement, or of the end of the reading, valid during the callback.
struct journal_record {
    statement_result done;
    const char *message;       // the evaluator's first one in this statement, or empty
    const journal_text *typed; // of a command's arguments, by position less 1, quotes and escapes as typed
    int32_t typed_count;       // positions whose texts were kept whole
    journal_text surplus;      // of a command: the rest of the line, for which it has no argument
    const emit_write *writes;  // of the arguments, in order
    int32_t write_count;
};

// Calls callback with the record of each statement, until journal_stop.
void journal_start(void (*callback)(const journal_record &record));
void journal_stop();
