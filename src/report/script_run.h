// One script: its conversion in memory, the output that is there, and its items.
#pragma once

#include "report/memory/memory.h"
#include "report/report_types.h"

#include <optional>
#include <string>

struct script_run {
    script_report report;
    std::string script;
    std::string now;                  // what is written now, with line feeds
    std::optional<std::string> there; // the output that is there
    std::optional<std::string> last;  // what was written last, if it is remembered
    rules_run_state started{};        // the run state before the script
    bool conflict = false;            // the output could not be merged
    bool unreadable = false;          // there is an output that can't be read
    bool written = false;             // the output was written by this run
};

// Converts and judges a script, and compares its output. It starts from the state that its memory has, or
// else the initial one; from *carried if all scripts are one run, or if its output was written from that.
// *carried moves on to the state after the script. False, and reported, if it can't be read.
bool script_examine(const report_options &options, const std::string &path, const folder_memory &memory,
                    rules_run_state *carried, script_run *run);

// Compares the output that is there, and settles the state of each item.
void script_compare(const folder_memory &memory, script_run *run);
