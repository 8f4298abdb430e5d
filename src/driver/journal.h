// Journal: one record of each statement, for a companion program that follows a conversion.
//
// It joins what the fetcher, the emission, the evaluator and the statement loop say of a statement; each of
// their hooks is declared where it is raised. The converter itself sets none of them and keeps no records.
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

// The record of a statement, or of the end of the reading. All of it is valid while it is handed over.
struct journal_record {
    statement_result done;
    const char *message;       // the evaluator's first one in this statement, or empty
    const journal_text *typed; // of a command's arguments, by position less 1, quotes and escapes as typed
    int32_t typed_count;       // positions whose texts were kept whole
    journal_text surplus;      // of a command: the rest of the line, for which it has no argument
    const emit_write *writes;  // what was written of which argument, in order
    int32_t write_count;
};

// Has take called with the record of each statement from now on.
void journal_start(void (*take)(const journal_record &record));

// Ends that.
void journal_stop();
