// Judgement: which kinds of items a statement gives, from the rule that converted it and from the record of
// its conversion.
#pragma once

#include "report/item.h"
#include "report/journal.h"
#include "report/source_lines.h"

// What the judgement keeps of a script from statement to statement.
struct judge_state {
    script_report *report;
    bool broken_line = false;     // what comes is the rest of the line of a statement whose arguments failed
    size_t broken_item = 0;       // index of its item
    uint32_t if_line = 0;         // of an IF whose statement hasn't come yet; else 0
    uint64_t if_output_line = 0;  // of the same IF
    size_t open_guard = SIZE_MAX; // index of a guarded item that doesn't know what its IF guards now
    bool base_seen = false;       // a BASEDIM stands in this script
    source_end end;               // where reading ended
};

// Judges a finished statement, or the end of the reading, and adds its items to the report.
void judge_statement(judge_state *state, const journal_statement &statement);

// Lines of an output that are statements: neither empty nor comments.
int live_lines(std::string_view output);
