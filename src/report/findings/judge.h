// Judgement: which items a statement gives, from the record of its conversion.
#pragma once

#include "report/findings/statement.h"
#include "report/item.h"
#include "report/memory/text_lines.h"

#include <stdint.h>

#include <string>

// What the judgement keeps of a script from statement to statement.
struct judge_state {
    script_report *report;
    const text_lines *script;
    bool line_left = false;       // the line of a statement whose arguments failed goes on
    size_t broken_item = 0;       // index of its item
    std::string broken_fault;     // why they failed
    std::string broken_left;      // what is left of it, and of the rest of its line
    uint32_t if_line = 0;         // of an IF whose statement hasn't come yet; else 0
    uint64_t if_output_line = 0;  // of the same IF
    size_t open_guard = SIZE_MAX; // index of a guarded item that doesn't know what its IF guards now
    bool base_seen = false; // the group of ORDDIMs that comes next or goes on has a BASEDIM in this script
};

// Judges a finished statement, or the end of the reading, and adds its items to the report.
void judge_statement(judge_state *state, const statement_view &statement);
