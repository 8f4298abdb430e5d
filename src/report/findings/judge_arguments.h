// What has become of the arguments of a command that was converted.
#pragma once

#include "report/findings/statement.h"

#include <string>
#include <string_view>

// Adds the items of a statement's arguments: of one that is carried out frozen, lost and decoded, in this
// order; of one that has become a comment decoded alone, where a string leaves a line outside of it. source:
// the statement's lines of the script.
void judge_arguments(script_report *report, const statement_view &statement, std::string_view source,
                     bool carried_out);

// Of a statement that isn't carried out: its arguments as typed, and what its comment lacks of them, to be
// added to a detail.
std::string arguments_in_detail(const statement_view &statement);
