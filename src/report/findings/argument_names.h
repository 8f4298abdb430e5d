// Names of arguments, from the old forms of the rule tables.
#pragma once

#include "report/findings/statement.h"
#include "rules/rule_table.h"

#include <stddef.h>
#include <stdint.h>

#include <string>

constexpr size_t text_shown = 60; // characters of an argument in a detail

// The name of an argument in the old form of its command. Empty if it has none, as what "..." stands for.
std::string argument_name(const rule_row *row, int32_t position);

// True of an attribute: the letter a and a number.
bool is_attribute(const std::string &name);

// An argument in a detail: its number, its name if that says something, and its text as typed.
std::string argument_shown(const statement_view &statement, int32_t position, const rule_row *row);
