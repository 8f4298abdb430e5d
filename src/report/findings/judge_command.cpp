#include "report/findings/judge_command.h"

#include "report/findings/judge_arguments.h"
#include "report/findings/live_form.h"
#include "report/show.h"
#include "rules/rule_table.h"

#include <string.h>

#include <utility>

static const char *byhand_detail(const rule_row *row)
{
    bool there = strstr(row->new_form.text, "new MURL command syntax:") != nullptr;
    return there ? "the new form is a comment" : "a tip is in its place, and no new form";
}

// The item of an effect; item_kind_count if it has none.
struct effect_item {
    int kind;
    const char *detail;
};

static effect_item effect_item_of(const rule_row *row)
{
    switch (row->effect) {
    case EFFECT_TIP: return {ITEM_CHECK, "the new command is below a tip"};
    case EFFECT_BY_HAND:
    case EFFECT_BY_HAND_NO_TIP: return {ITEM_BYHAND, byhand_detail(row)};
    case EFFECT_COMMENTED: return {ITEM_QUIET, "commented out"};
    case EFFECT_NOT_IMPLEMENTED: return {ITEM_GONE, "the new dialect has no such command"};
    case EFFECT_DROPPED: return {ITEM_LOST, "the statement has left nothing"};
    default: return {item_kind_count, ""};
    }
}

// An added dimension names a parent that only the first one of a group declares. An ORDDIM outside of SET
// COLLECT, 1 can be the first one, too.
static void judge_base(judge_state *state, const statement_view &statement)
{
    if (rule_last.choice.row == ORDDIM_FOLLOWING && !state->base_seen)
        add_item(state, statement, ITEM_BASE, "no BASEDIM of its group in this script declares its parent",
                 lines_of(statement, false));
    if (rules_run.basedim_count == 1)
        state->base_seen = rule_last.choice.row == ORDDIM_FIRST;
}

void judge_command(judge_state *state, const statement_view &statement)
{
    if (rule_find(statement.row->id)->effect == EFFECT_SYSTEM) {
        add_item(state, statement, ITEM_DROPPED, "a system command" + arguments_in_detail(statement), {})
            ->summed = true;
        return;
    }
    const rule_row *row = rule_last.row;
    effect_item item = effect_item_of(row);
    bool carried_out = item.kind == ITEM_CHECK || item.kind == item_kind_count;
    if (item.kind != item_kind_count)
        add_item(state, statement, static_cast<item_kind>(item.kind),
                 item.detail + (carried_out ? std::string() : arguments_in_detail(statement)),
                 lines_of(statement, false));
    size_t items = state->report->items.size();
    judge_arguments(state, statement, carried_out);
    bool decoded = state->report->items.size() > items && state->report->items.back().kind == ITEM_DECODED;
    judge_live_form(state, statement, decoded);
    if (std::string_view(statement.row->name) == "ORDDIM")
        judge_base(state, statement);
}
