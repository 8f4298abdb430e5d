// A finished statement as the judgement sees it: its record, its lines of the output, and what of its
// arguments is in which of them.
//
// All of it is valid while the statement's record is handed over.
#pragma once

#include "driver/journal.h"
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
    bool live;             // the new system carries it out: it is neither empty nor a comment
    bool inside;           // it begins inside of an argument's text
    bool rest;             // that text began in a comment, which is broken off
};

struct statement_view {
    const journal_record *record;
    const cmd_row *row;      // of a command; else null
    uint32_t line;           // of the script, where the statement begins
    uint32_t last_line;      // and where it ends
    uint64_t output_line;    // of the output, where its own begins
    uint64_t output_lines;   // line ends in it, and 1 for a rest without one
    std::string_view output; // what was written, the indentation excepted
    std::vector<written_line> lines;
};

// Makes the view of a statement whose output begins at an offset, in a line of the whole output.
statement_view statement_view_of(const journal_record &record, std::string_view output, uint64_t start,
                                 uint64_t output_line);

// True if a line is a comment: it begins with // or with the word REM.
bool is_comment(std::string_view line);

// The next live line from lines[*at] on, with those after it that a text of it goes on into; *at becomes the
// index after them. *rest is set if it is the rest of a text that began in a comment. Empty if there is none.
std::vector<const written_line *> next_live(const statement_view &statement, size_t *at, bool *rest);

// The line that an offset of the output is in; null if it is in none.
const written_line *line_at(const std::vector<written_line> &lines, uint64_t offset);

// The lines that are live, or comments; numbers of the whole output.
std::vector<uint64_t> lines_of(const statement_view &statement, bool live);

// Of lines, by their numbers, those that aren't inside of a text, or the ones before them where they are.
// *more: how many are inside after the only one; 0 if there are several.
std::vector<uint64_t> line_heads(const statement_view &statement, const std::vector<uint64_t> &numbers,
                                 size_t *more);

// ---- Arguments, by their position from 1 ----

// The last position that has an argument, or had one of which the fetcher has left nothing.
int32_t argument_last(const statement_view &statement);

// The text that rules write: a string decoded and between double quotes. Empty if it isn't there or is empty.
std::string_view argument_text(int32_t position);
bool argument_is_string(int32_t position);

// The value of a numeric argument, and what its type holds of it; 0 of other ones.
double argument_number(int32_t position);
double argument_value(int32_t position);

// The byte of the command's spec that a position is fetched by: the last one goes on.
uint8_t argument_spec(const statement_view &statement, int32_t position);

// The text as typed; as rules write it where that isn't known.
std::string_view argument_typed(const statement_view &statement, int32_t position);

// What the lines of one sort have of an argument.
struct argument_use {
    bool text = false;        // its text, quotes apart
    bool value = false;       // its value
    bool code = false;        // what stands for its value; nothing where nothing does
    uint64_t line = 0;        // number of the line that has it, the first one
    std::string_view written; // what is there
};
argument_use argument_use_of(const statement_view &statement, int32_t position, bool live);

// A string's text with its escapes decoded.
std::string escapes_decoded(std::string_view text);

// A text without its double quotes, if it has a pair of them.
std::string_view without_quotes(std::string_view text);
