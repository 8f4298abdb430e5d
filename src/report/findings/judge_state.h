// The state of a judgement, and the adding of items.
#pragma once

#include "report/findings/source_lines.h"
#include "report/findings/statement.h"
#include "report/item.h"
#include "report/memory/text_lines.h"

#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

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
    source_end end;         // where reading ended
};

// The lines of a statement in the script.
std::string_view script_lines(const judge_state &state, const statement_view &statement);

// Adds an item of a statement. own are the lines of what is written now that it is about.
report_item *add_item(judge_state *state, const statement_view &statement, item_kind kind, std::string detail,
                      std::vector<uint64_t> own);
