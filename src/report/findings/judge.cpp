#include "report/findings/judge.h"

#include "expressions/var_store.h"
#include "report/findings/conversion.h"
#include "report/findings/judge_arguments.h"
#include "report/findings/judge_text.h"
#include "report/findings/line_text.h"
#include "report/findings/live_form.h"
#include "report/findings/source_lines.h"
#include "report/show.h"
#include "rules/rule_table.h"
#include "statements/statement_text.h"

#include <fmt/core.h>

#include <string.h>

#include <algorithm>
#include <utility>

// ---- The end of the reading ----

// Why a declaration's variable isn't taken.
static std::string store_fault(int32_t code)
{
    switch (code) {
    case VAR_TABLE_FULL: return "a script has at most 1,000 variables";
    case VAR_NO_MEMORY:
        return "the variable has too many dimensions, a negative one, or is too large, or a STRING has no "
               "size";
    case VAR_SYSTEM_NAME: return "a name that starts with @ can't be declared";
    case VAR_SCALAR: return "the variable exists already, and one of the two is no array";
    case VAR_DIMENSIONS: return "a STRING needs one size, and an SLIST two";
    case VAR_TYPE: return "the type doesn't fit the variable or the prefix of its name";
    default: return fmt::format("the variable can't be declared ({})", code);
    }
}

// A label is cut after 12 bytes, which may be inside of a UTF-8 character.
static std::string label_shown(const std::string &name)
{
    for (size_t size = name.size(); size > 0 && size + 4 > name.size(); size--)
        if (is_utf8(name.substr(0, size)))
            return shown(name.substr(0, size));
    return shown(name);
}

static std::string second_label()
{
    const std::string &name = refused_label();
    return fmt::format("second label {} (12 characters of a label count); the first is in line {}",
                       label_shown(name), label_line(name));
}

static std::string stop_reason(int32_t result)
{
    switch (result) {
    case STATEMENT_END: return "byte 26, which ends a script";
    case STOP_LABEL_TWICE: return second_label();
    case STOP_LABELS_FULL: return "label 1,001: a script has at most 1,000";
    case STOP_ON_WITHOUT_GOTO: return "ON without GOTO";
    case STOP_DECL_EMPTY: return "a declaration without an item";
    case STOP_DECL_ITEM:
        return "an item of the declaration begins with no name, or has a quote or unpaired brackets";
    case STOP_DECL_COMMA: return "two words of the declaration have no comma between them";
    case STOP_DECL_REFERENCE: return "an item of the declaration is no name with subscripts";
    case STOP_ARRAY_VALUES: return "the initial values lack one of their braces, or belong to a string list";
    default: return store_fault(STOP_STORE - result);
    }
}

static bool is_comment_statement(const statement_view &statement)
{
    statement_kind kind = statement.record->done.head.kind;
    return (kind == KIND_TEXT || kind == KIND_KEYWORD) &&
           (statement.output.empty() || is_comment(statement.output));
}

static void judge_end(judge_state *state, const statement_view &statement)
{
    const statement_result &done = statement.record->done;
    // A comment needs no line end.
    bool comment = done.result == STATEMENT_END && is_comment(statement.output);
    bool by_byte = done.head.kind == KIND_NONE || comment;
    source_end end{by_byte ? done.next_line : statement.last_line + 1, by_byte};
    std::string unread;
    if (done.result == STATEMENT_END && done.source_complete && by_byte) {
        end = {};
    } else if (unread_shown(*state->script, end, &unread)) {
        statement_view last = statement;
        if (by_byte)
            last.line = last.last_line = done.next_line;
        std::string reason = by_byte || done.result != STATEMENT_END
                                 ? stop_reason(done.result)
                                 : "the script ends inside this statement";
        add_item(state->report, last, ITEM_STOPPED, reason + unread, {});
    }
    source_lines_add(state->report, *state->script, end);
}

// ---- Commands ----

// Lines of the script, as far as there are so many.
static std::string_view script_lines(const judge_state &state, uint32_t first, uint32_t last)
{
    size_t end = std::min<size_t>(last, line_count(*state.script));
    return lines_between(*state.script, std::min<size_t>(first - 1, end), end);
}

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
        add_item(state->report, statement, ITEM_BASE,
                 "no BASEDIM of its group in this script declares its parent", lines_of(statement, false));
    if (rules_run.basedim_count == 1)
        state->base_seen = rule_last.choice.row == ORDDIM_FIRST;
}

static void judge_command(judge_state *state, const statement_view &statement)
{
    if (rule_find(statement.row->id)->effect == EFFECT_SYSTEM) {
        add_item(state->report, statement, ITEM_DROPPED, "a system command" + arguments_in_detail(statement),
                 {})
            ->summed = true;
        return;
    }
    const rule_row *row = rule_last.row;
    effect_item item = effect_item_of(row);
    bool carried_out = item.kind == ITEM_CHECK || item.kind == item_kind_count;
    if (item.kind != item_kind_count)
        add_item(state->report, statement, static_cast<item_kind>(item.kind),
                 item.detail + (carried_out ? std::string() : arguments_in_detail(statement)),
                 lines_of(statement, false));
    judge_arguments(state->report, statement, script_lines(*state, statement.line, statement.last_line),
                    carried_out);
    judge_live_form(state->report, statement);
    if (std::string_view(statement.row->name) == "ORDDIM")
        judge_base(state, statement);
}

// ---- What an IF guards ----

// Statements that the output has instead of one. What isn't a command went through as it is.
static size_t statements_left(const statement_view &statement)
{
    size_t count = live_lines_of(statement).size();
    return statement.row == nullptr ? std::min<size_t>(count, 1) : count;
}

// The first line of what is left of a statement.
static std::string text_left(const statement_view &statement)
{
    std::string_view text = text_trimmed(statement.output);
    return shown_cut(text_trimmed(text.substr(0, text.find('\n'))), 40);
}

// How a statement is called in a detail: by its command or its first characters.
static std::string statement_name(const statement_view &statement)
{
    return statement.row != nullptr ? statement.row->name : text_left(statement);
}

static void own_first_live(report_item *item, const statement_view &statement)
{
    item->own_lines.push_back(live_lines_of(statement).front().first->number);
}

// What has become of the statement under an IF that is not the one statement that the IF guards; null if it
// is.
static const char *guarded_fate(const statement_view &statement)
{
    if (is_broken(statement))
        return "no statement: its arguments failed";
    size_t count = statements_left(statement);
    bool by_hand = statement.row != nullptr && rule_find(statement.row->id)->effect != EFFECT_SYSTEM &&
                   rule_is_by_hand(rule_last.row);
    if (count > 1 || (count == 1 && by_hand))
        return "several statements; it guards only the first";
    if (count == 0)
        return lines_of(statement, false).empty() ? "nothing" : "comments alone";
    const std::vector<live_line> live = live_lines_of(statement);
    bool rest = std::any_of(live.begin(), live.end(), [](const live_line &line) { return line.first->rest; });
    return rest ? "a comment, and the rest of a text that began in it" : nullptr;
}

// The statement under an IF. The guarded item belongs to the IF. Its detail has no line numbers: what was
// accepted stays so where lines are added above.
static void judge_guarded(judge_state *state, const statement_view &statement)
{
    uint32_t line = std::exchange(state->if_line, 0);
    const char *fate = line != 0 ? guarded_fate(statement) : nullptr;
    if (fate == nullptr)
        return;
    std::string detail = fmt::format("{} under it has become {}", statement_name(statement), fate);
    report_item *item =
        add_item(state->report, statement, ITEM_GUARDED, std::move(detail), {state->if_output_line});
    item->line = line;
    item->output_line = state->if_output_line;
    item->output_lines += statement.output_line - state->if_output_line;
    item->command = "IF";
    item->guards_itself = statements_left(statement) > 0;
    if (item->guards_itself)
        own_first_live(item, statement);
    else
        state->open_guard = state->report->items.size() - 1;
}

// The first statement after a guarded one that has gone is what its IF guards now.
static void judge_next_live(judge_state *state, const statement_view &statement)
{
    if (state->open_guard == SIZE_MAX || statements_left(statement) == 0)
        return;
    report_item &item = state->report->items[std::exchange(state->open_guard, SIZE_MAX)];
    item.detail +=
        "; it guards " + (is_broken(statement) ? text_left(statement) : statement_name(statement)) + " now";
    own_first_live(&item, statement);
}

static void note_if(judge_state *state, const statement_view &statement)
{
    if (statement.row == nullptr || is_broken(statement) || std::string_view(statement.row->name) != "IF")
        return;
    state->if_line = statement.line;
    state->if_output_line = statement.output_line;
}

// ---- Statements ----

constexpr uint32_t hint_lines = 8; // lines after a statement's first one that are searched for a hint

// Adds what is left of a statement to the item of the broken one that it belongs to.
static void add_left(judge_state *state, const statement_view &statement)
{
    report_item &broken = state->report->items[state->broken_item];
    std::string &left = state->broken_left;
    std::string_view text = text_trimmed(statement.output);
    if (!text.empty() && left.size() < 200)
        left += (left.empty() ? "" : ", ") + shown_cut(text.substr(0, text.find('\n')), 60);
    std::string_view source =
        script_lines(*state, broken.line, std::min(broken.last_line, broken.line + hint_lines));
    broken.detail = state->broken_fault + (left.empty() ? "; nothing is left" : "; left: " + left) +
                    broken_hint(broken.command, source);
    state->line_left = statement.record->done.line_left;
}

static void judge_broken(judge_state *state, const statement_view &statement)
{
    state->broken_item = state->report->items.size();
    state->broken_fault = broken_detail(statement);
    state->broken_left.clear();
    add_item(state->report, statement, ITEM_BROKEN, {}, lines_of(statement, true));
    add_left(state, statement);
}

// True if no line end came between a statement and the one before it, whose arguments failed: white space is
// copied to the output.
static bool is_rest(judge_state *state, const statement_view &statement)
{
    if (!std::exchange(state->line_left, false))
        return false;
    const report_item &broken = state->report->items[state->broken_item];
    return statement.output_line == broken.output_line + broken.output_lines;
}

// A rest of a line whose command has failed is read as a statement of its own, but nobody meant it as one.
static void judge_rest(judge_state *state, const statement_view &statement)
{
    report_item &broken = state->report->items[state->broken_item];
    broken.last_line = std::max(broken.last_line, statement.last_line);
    broken.output_lines = statement.output_line + statement.output_lines - broken.output_line;
    for (uint64_t line : lines_of(statement, true))
        broken.own_lines.push_back(line);
    add_left(state, statement);
    judge_next_live(state, statement);
}

static void judge_kind(judge_state *state, const statement_view &statement)
{
    if (is_broken(statement)) {
        judge_broken(state, statement);
    } else if (statement.row != nullptr) {
        judge_command(state, statement);
    } else if (statement.record->done.head.kind == KIND_KEYWORD && statement.output.empty()) {
        add_item(state->report, statement, ITEM_DROPPED, "nothing is written of it", {})->summed = true;
    } else if (std::string detail =
                   unknown_detail(statement, script_lines(*state, statement.line, statement.last_line));
               !detail.empty()) {
        add_item(state->report, statement, ITEM_UNKNOWN, std::move(detail), lines_of(statement, true));
    }
}

void judge_statement(judge_state *state, const statement_view &statement)
{
    if (statement_stops(statement.record->done.result)) {
        judge_end(state, statement);
        return;
    }
    state->report->statements++;
    if (is_rest(state, statement)) {
        judge_rest(state, statement);
        return;
    }
    size_t items = state->report->items.size();
    judge_kind(state, statement);
    if (state->report->items.size() == items)
        state->report->converted++;
    if (!is_comment_statement(statement)) {
        judge_guarded(state, statement);
        judge_next_live(state, statement);
    }
    note_if(state, statement);
}
