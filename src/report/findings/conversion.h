// Conversion: a script is converted in memory, and a listener is called with each statement as it is
// finished.
//
// One conversion runs at a time.
#pragma once

#include "report/findings/statement.h"
#include "rules/rule_table.h"

#include <stdint.h>

#include <string>

// The listener. The view is valid during the call.
using take_statement = void (*)(const statement_view &statement, void *context);

// Converts a script from a run state, which becomes the one after it. The output goes to *output, with line
// feeds. take may be null. False if the script can't be read; file_fault says why.
bool script_convert(const std::string &path, rules_run_state *state, std::string *output, take_statement take,
                    void *context);

// The label at which the reading of the last script has stopped, and the line of the script where one of that
// name is.
const std::string &refused_label();
uint32_t label_line(const std::string &name);
