// Conversion: a script is converted in memory, and a listener is called after each statement.
//
// One conversion runs at a time.
#pragma once

#include "rules/rule_table.h"

#include <stdint.h>

#include <string>

// Converts a script from a run state, which becomes the one after it. The output goes to *output, with line
// feeds. The listener, which may be null, finds the statement that was finished in the global of that name.
// False if the script can't be read; file_fault says why.
bool script_convert(const std::string &path, rules_run_state *state, std::string *output,
                    void (*statement_finished)());

// The label at which the reading of the last script has stopped, and the line of the script where one of that
// name is.
const std::string &refused_label();
uint32_t label_line(const std::string &name);
