// The form of live lines: whether what is carried out is a well-formed list.
//
// The output is right as it is. Whether the current dialect takes such a line can't be known here, so it is
// reported.
#pragma once

#include "report/findings/judge_state.h"

// Adds an item of the kind form for each fault of a command's live lines that makes one no well-formed list.
// Where a string was decoded, what it has become doesn't count.
void judge_live_form(judge_state *state, const statement_view &statement, bool decoded);

// True if an argument is an option of the statement's menu string, which may be empty.
bool is_option(const statement_view &statement, int32_t position);

// The items of a line's list: what is between commas outside of quotes and parentheses, trimmed. The first
// one begins after the line's word.
std::vector<std::string_view> list_items(std::string_view line);

// True if an item of a list is a whole string.
bool item_is_string(std::string_view item);

// Why a line is none, given the texts of the statement's arguments, which are right as they are; empty if it
// is one.
std::string live_form_fault(std::string_view line, const std::vector<std::string_view> &arguments);
