// The statement that was finished last, as the judgement sees it: its record, its lines of the output, and
// the items that it gets.
//
// All of it is valid while the statement's record is handed over. One script is judged at a time.
#pragma once

#include "driver/journal.h"
#include "report/item.h"
#include "rules/rule_table.h"
#include "statements/command_table.h"

#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

// A line of a statement's output.
struct written_line {
    uint64_t start; // offset of its first byte in the output
    uint64_t number;
    std::string_view text; // without its line end
    bool live;             // it is live, or begins inside of a text of a line that is
    bool inside;           // it begins inside of an argument's text
    bool rest;             // that text began in a comment, which is broken off
};

// What the comments, or the live lines, of a statement have of an argument.
struct argument_use {
    bool text;                // its text, quotes apart
    bool value;               // its value
    bool code;                // its value in other words, which may be none: EMIT_CODE
    uint64_t line;            // number of the line that has it, the first one; 0: none has
    std::string_view written; // what is there
};

struct statement_view {
    const journal_record *record;
    const cmd_row *row;      // of a command; else null
    const rule_row *rule;    // by which it was converted; null of one that failed and of a system command
    uint32_t line;           // of the script, where the statement begins
    uint32_t last_line;      // and where it ends
    uint64_t output_line;    // of the output, where its own begins
    uint64_t output_lines;   // line ends in it, and 1 for a rest without one
    std::string_view source; // its lines of the script; judge_statement sets them
    std::string_view output; // what was written, the indentation excepted
    std::vector<written_line> lines;
    std::vector<emit_write> writes;    // of its arguments, in order
    std::vector<argument_use> uses[2]; // by position: in comments, and in live lines
};

extern statement_view statement;
extern script_report *judged_report; // that the items are added to

// Makes the view of a statement whose output begins in a line of the whole output.
void statement_take(const journal_record &record, std::string_view output, uint64_t output_line);

// True if it is a command whose arguments failed.
bool arguments_failed();

// ---- Lines of the output ----

// Lines that are one statement of the output: a live one, with those that a text of it goes on into.
struct live_line {
    const written_line *first, *last;
};
std::vector<live_line> joined_live_lines();

// The line that an offset of the output is in; null if it is in none.
const written_line *line_at(uint64_t offset);

// A part of the statement's output, by offsets of the whole output.
std::string_view output_between(uint64_t from, uint64_t to);

// The lines that are live, or comments; numbers of the whole output.
std::vector<uint64_t> lines_written(bool live);

// ---- Items ----

// Adds an item of the statement, which has its kind and what is said of it, and fills in where it is.
report_item *add_item(report_item item);

// The same with a detail. own are the lines of what is written now that it is about.
report_item *add_item(item_kind kind, std::string detail, std::vector<uint64_t> own);

// Replaces own lines that are inside of a text by the one where it begins. If one is left, sets how many
// lines belong to it.
void own_heads(report_item *item);
