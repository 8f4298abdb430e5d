// Journal: the records of one conversion. A script is converted by the converter's own library, with what it
// writes taken here, and a listener is told each statement as it is finished.
//
// One conversion runs at a time. What a listener is told is valid while it is called.
#pragma once

#include "statements/command_table.h"
#include "statements/recogniser.h"

#include <stdint.h>

#include <string>
#include <string_view>

struct plat_file;

// A finished statement, or the end of the reading.
struct journal_statement {
    statement_kind kind;
    const cmd_row *row;       // of a command; else null
    int32_t result;           // a statement result code, or the index of row
    int32_t fetched;          // of a command: spec positions walked, or a fetch failure code
    int32_t failed_at;        // of a failed fetch: the position of its argument, from 1
    uint32_t line;            // of the script, where the statement begins
    uint32_t last_line;       // and where it ends
    uint32_t next_line;       // where the next character stands
    bool line_left;           // its arguments failed, and the rest of its line is the next statement
    bool source_complete;     // at the end: nothing of the script follows
    uint64_t output_line;     // of the output, where the statement's own begins
    uint64_t output_lines;    // line ends in it, and 1 for a rest without one
    std::string_view output;  // what was written, the indentation excepted; at most output_kept bytes
    std::string_view message; // of a failure: the evaluator's first one, or empty
};

constexpr size_t output_kept = 1u << 20;

// What a listener may ask of the arguments of a command that were fetched; positions count from 1.
bool journal_given(int32_t position);            // there, and not empty
std::string_view journal_text(int32_t position); // as rules write it
double journal_value(int32_t position);          // of a numeric argument; else 0
bool journal_is_string(int32_t position);        // a quoted string

// The label at which reading has stopped, and the line of the script where one of that name stands.
const std::string &journal_refused_label();
uint32_t journal_label_line(const std::string &name);

struct journal_listener {
    void (*statement)(const journal_statement &statement, void *context);
    void (*output)(std::string_view bytes, void *context); // what is written, piece by piece; or null
    void *context;
};

// Converts an opened script, after pools_init, and closes it.
void journal_convert(const char *path, plat_file *source, const journal_listener &listener);
