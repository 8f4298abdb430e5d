// The form of live lines: whether what is carried out is a well-formed list.
//
// The output is right as it is. Whether the current dialect takes such a line can't be known here, so it is
// reported.
#pragma once

#include "report/findings/judge_state.h"

// Adds an item of the kind form for each fault of a command's live lines that makes one no well-formed list.
// Where a string was decoded, what it has become doesn't count.
void judge_live_form(judge_state *state, const statement_view &statement, bool decoded);

// True if an argument is an option of a menu, which may be empty.
bool is_option(const statement_view &statement, int32_t position);

// Menu options that the script left empty.
struct menu_gaps {
    int all = 0;       // at most
    int inside = 0;    // between two others
    bool bars = false; // an option has a bar in its text
};

// The items of a line's list: what is between commas outside of quotes and parentheses, trimmed. The first
// one begins after the line's word.
std::vector<std::string_view> list_items(std::string_view line);

// Why a line is none, given the texts of the statement's arguments, which are right as they are; empty if it
// is one.
std::string live_form_fault(std::string_view line, const std::vector<std::string_view> &arguments,
                            const menu_gaps &gaps);
