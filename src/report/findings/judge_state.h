// The state of a judgement, and the adding of items.
#pragma once

#include "report/findings/source_lines.h"
#include "report/findings/statement.h"
#include "report/item.h"
#include "report/memory/text_lines.h"

#include <stdint.h>

#include <string>
#include <vector>

// What the judgement keeps of a script from statement to statement.
struct judge_state {
    script_report *report;
    const text_lines *script;
    bool line_left = false;       // the line of a statement whose arguments failed goes on
    size_t broken_item = 0;       // index of its item
    uint32_t if_line = 0;         // of an IF whose statement hasn't come yet; else 0
    uint64_t if_output_line = 0;  // of the same IF
    size_t open_guard = SIZE_MAX; // index of a guarded item that doesn't know what its IF guards now
    bool base_seen = false;       // an ORDDIM of this script has become a BASEDIM
    source_end end;               // where reading ended
};

// True if the lines of a statement in the script have a text.
bool script_has(const judge_state &state, const statement_view &statement, std::string_view text);

// Adds an item of a statement. own are the lines of what is written now that it is about.
report_item *add_item(judge_state *state, const statement_view &statement, item_kind kind, std::string detail,
                      std::vector<uint64_t> own);
