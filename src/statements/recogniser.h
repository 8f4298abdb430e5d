// Recogniser: reads a statement up to the point where its kind is known.
//
// For a command it returns the row of the command table. Every other statement it writes itself: assignments,
// labels, the statement keywords, and any line that isn't recognised. Such a line is evaluated for its effect
// on the variable store and written with only its white space changed.
#pragma once

#include <stdint.h>

// What a statement was recognised as.
enum statement_kind : uint8_t {
    KIND_NONE,       // the source ended before a statement began
    KIND_COMMAND,    // a word of the command table
    KIND_EXPRESSION, // text that the evaluator accepted, usually an assignment
    KIND_TEXT,       // text that begins with no plain word, or an assignment that the evaluator refused
    KIND_UNKNOWN,    // a line whose first word is in no table, and that is no expression
    KIND_LABEL,
    KIND_KEYWORD // REM, ON, #LINE, a declaration
};

// What a statement is and where it begins.
struct statement_head {
    statement_kind kind;
    uint32_t line;         // line of the source that its first character is on
    uint64_t output_start; // bytes of the output in front of it, its indentation included
};

// Reads one statement. Returns the index of a command's row, with the word in slot 0; or a statement result
// code, and then the statement is written. Fills *head, unless it is null.
int32_t next_statement(statement_head *head = nullptr);
