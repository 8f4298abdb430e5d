#include "report/findings/judge.h"

#include "expressions/var_store.h"
#include "report/findings/conversion.h"
#include "report/findings/judge_arguments.h"
#include "report/findings/judge_text.h"
#include "report/findings/line_text.h"
#include "report/findings/live_form.h"
#include "report/findings/source_lines.h"
#include "report/findings/statement.h"
#include "report/show.h"
#include "rules/rule_table.h"
#include "statements/statement_text.h"

#include <fmt/core.h>

#include <string.h>

#include <algorithm>
#include <utility>

// What is kept of a script from statement to statement.
struct judge_state {
    const text_lines *script;
    bool line_left = false;       // the line of a statement whose arguments failed goes on
    size_t broken_item = 0;       // index of its item
    std::string broken_fault;     // why they failed
    std::string broken_left;      // what is left of it, and of the rest of its line
    std::string broken_hint;      // from its lines of the script
    uint32_t hint_end = 0;        // the last line that was searched for the hint; 0: none was
    uint32_t if_line = 0;         // of an IF whose statement hasn't come yet; else 0
    uint64_t if_output_line = 0;  // of the same IF
    size_t open_guard = SIZE_MAX; // index of a guarded item that doesn't know what its IF guards now
    bool base_seen = false; // the group of ORDDIMs that comes next or goes on has a BASEDIM in this script
};

static judge_state judging;

void judge_start(script_report *report, const text_lines &script)
{
    judged_report = report;
    judging = {};
    judging.script = &script;
}

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

static bool is_comment_statement()
{
    statement_kind kind = statement.record->done.head.kind;
    return (kind == KIND_TEXT || kind == KIND_KEYWORD) &&
           (statement.output.empty() || is_comment(statement.output));
}

static void judge_end()
{
    const statement_result &done = statement.record->done;
    // A comment that the end cuts off is whole: it needs no line end.
    bool comment = done.result == STATEMENT_END && is_comment(statement.output);
    bool by_byte = done.head.kind == KIND_NONE || comment;
    source_end end{by_byte ? done.next_line : statement.last_line + 1, by_byte};
    std::string unread;
    if (done.result == STATEMENT_END && done.source_complete && by_byte) {
        end = {};
    } else if (unread_shown(*judging.script, end, &unread)) {
        std::string reason = by_byte || done.result != STATEMENT_END
                                 ? stop_reason(done.result)
                                 : "the script ends inside this statement";
        report_item *item = add_item(ITEM_STOPPED, reason + unread, {});
        if (by_byte)
            item->line = item->last_line = done.next_line;
    }
    source_lines_add(judged_report, *judging.script, end);
}

// ---- Commands ----

// Lines of the script, as far as there are so many.
static std::string_view script_lines(uint32_t first, uint32_t last)
{
    size_t end = std::min<size_t>(last, line_count(*judging.script));
    return lines_between(*judging.script, std::min<size_t>(first - 1, end), end);
}

static const char *byhand_detail()
{
    bool there = strstr(statement.rule->new_form.text, "new MURL command syntax:") != nullptr;
    return there ? "the new form is a comment" : "a tip is in its place, and no new form";
}

// Adds the item of what has become of a command. True if its new form is carried out.
static bool judge_effect()
{
    auto add = [](item_kind kind, const std::string &detail) {
        bool carried_out = kind == ITEM_CHECK;
        add_item(kind, carried_out ? detail : detail + arguments_in_detail(), lines_written(false));
        return carried_out;
    };
    switch (statement.rule->effect) {
    case EFFECT_TIP: return add(ITEM_CHECK, "the new command is below a tip");
    case EFFECT_BY_HAND:
    case EFFECT_BY_HAND_NO_TIP: return add(ITEM_BYHAND, byhand_detail());
    case EFFECT_COMMENTED: return add(ITEM_QUIET, "commented out");
    case EFFECT_NOT_IMPLEMENTED: return add(ITEM_GONE, "the new dialect has no such command");
    case EFFECT_DROPPED: return add(ITEM_LOST, "the statement has left nothing");
    default: return true;
    }
}

// An added dimension names a parent that only the first one of a group declares. An ORDDIM outside of SET
// COLLECT, 1 can be the first one, too.
static void judge_base()
{
    if (rule_last.choice.row == ORDDIM_FOLLOWING && !judging.base_seen)
        add_item(ITEM_BASE, "no BASEDIM of its group in this script declares its parent",
                 lines_written(false));
    if (rules_run.basedim_count == 1)
        judging.base_seen = rule_last.choice.row == ORDDIM_FIRST;
}

static void judge_command()
{
    if (statement.rule == nullptr) {
        add_item(ITEM_DROPPED, "a system command" + arguments_in_detail(), {})->summed = true;
        return;
    }
    judge_arguments(judge_effect());
    judge_live_form();
    if (std::string_view(statement.row->name) == "ORDDIM")
        judge_base();
}

// ---- What an IF guards ----

// Statements that the output has instead of one. What isn't a command went through as it is.
static size_t statements_left()
{
    size_t count = joined_live_lines().size();
    return statement.row == nullptr ? std::min<size_t>(count, 1) : count;
}

// The first line of what is left of a statement.
static std::string text_left()
{
    std::string_view text = text_trimmed(statement.output);
    return shown_cut(text_trimmed(text.substr(0, text.find('\n'))), 40);
}

// How a statement is called in a detail: by its command or its first characters.
static std::string statement_name()
{
    return statement.row != nullptr ? statement.row->name : text_left();
}

static void own_first_live(report_item *item)
{
    item->own_lines.push_back(joined_live_lines().front().first->number);
}

// What has become of the statement under an IF that is not the one statement that the IF guards; null if it
// is.
static const char *guarded_fate()
{
    if (arguments_failed())
        return "no statement: its arguments failed";
    size_t count = statements_left();
    bool by_hand = statement.rule != nullptr && rule_is_by_hand(statement.rule);
    if (count > 1 || (count == 1 && by_hand))
        return "several statements; it guards only the first";
    if (count == 0)
        return lines_written(false).empty() ? "nothing" : "comments alone";
    const std::vector<live_line> live = joined_live_lines();
    bool rest = std::any_of(live.begin(), live.end(), [](const live_line &line) { return line.first->rest; });
    return rest ? "a comment, and the rest of a text that began in it" : nullptr;
}

// The statement under an IF. The guarded item belongs to the IF. Its detail has no line numbers: what was
// accepted stays so where lines are added above.
static void judge_guarded()
{
    uint32_t line = std::exchange(judging.if_line, 0);
    const char *fate = line != 0 ? guarded_fate() : nullptr;
    if (fate == nullptr)
        return;
    std::string detail = fmt::format("{} under it has become {}", statement_name(), fate);
    report_item *item = add_item(ITEM_GUARDED, std::move(detail), {judging.if_output_line});
    item->line = line;
    item->output_line = judging.if_output_line;
    item->output_lines += statement.output_line - judging.if_output_line;
    item->command = "IF";
    item->guards_itself = statements_left() > 0;
    if (item->guards_itself)
        own_first_live(item);
    else
        judging.open_guard = judged_report->items.size() - 1;
}

// The first statement after a guarded one that has gone is what its IF guards now.
static void judge_next_live()
{
    if (judging.open_guard == SIZE_MAX || statements_left() == 0)
        return;
    report_item &item = judged_report->items[std::exchange(judging.open_guard, SIZE_MAX)];
    item.detail += "; it guards " + (arguments_failed() ? text_left() : statement_name()) + " now";
    own_first_live(&item);
}

static void note_if()
{
    if (statement.row == nullptr || arguments_failed() || std::string_view(statement.row->name) != "IF")
        return;
    judging.if_line = statement.line;
    judging.if_output_line = statement.output_line;
}

// ---- Statements ----

constexpr uint32_t hint_lines = 8; // lines after a statement's first one that are searched for a hint

// Adds what is left of a statement to the item of the broken one that it belongs to.
static void add_left()
{
    report_item &broken = judged_report->items[judging.broken_item];
    std::string &left = judging.broken_left;
    std::string_view text = text_trimmed(statement.output);
    if (!text.empty() && left.size() < 200)
        left += (left.empty() ? "" : ", ") + shown_cut(text.substr(0, text.find('\n')), 60);
    uint32_t hint_end = std::min(broken.last_line, broken.line + hint_lines);
    if (std::exchange(judging.hint_end, hint_end) != hint_end) // a line may be left in very many rests
        judging.broken_hint = broken_hint(broken.command, script_lines(broken.line, hint_end));
    broken.detail =
        judging.broken_fault + (left.empty() ? "; nothing is left" : "; left: " + left) + judging.broken_hint;
    judging.line_left = statement.record->done.line_left;
}

static void judge_broken()
{
    judging.broken_item = judged_report->items.size();
    judging.broken_fault = broken_detail();
    judging.broken_left.clear();
    judging.hint_end = 0;
    add_item(ITEM_BROKEN, {}, lines_written(true));
    add_left();
}

// True if no line end came between a statement and the one before it, whose arguments failed: white space is
// copied to the output.
static bool is_rest()
{
    if (!std::exchange(judging.line_left, false))
        return false;
    const report_item &broken = judged_report->items[judging.broken_item];
    return statement.output_line == broken.output_line + broken.output_lines;
}

// A rest of a line whose command has failed is read as a statement of its own, but nobody meant it as one.
static void judge_rest()
{
    report_item &broken = judged_report->items[judging.broken_item];
    broken.last_line = std::max(broken.last_line, statement.last_line);
    broken.output_lines = statement.output_line + statement.output_lines - broken.output_line;
    for (uint64_t line : lines_written(true))
        broken.own_lines.push_back(line);
    add_left();
    judge_next_live();
}

static void judge_kind()
{
    if (arguments_failed()) {
        judge_broken();
    } else if (statement.row != nullptr) {
        judge_command();
    } else if (statement.record->done.head.kind == KIND_KEYWORD && statement.output.empty()) {
        add_item(ITEM_DROPPED, "nothing is written of it", {})->summed = true;
    } else if (std::string detail = unknown_detail(); !detail.empty()) {
        add_item(ITEM_UNKNOWN, std::move(detail), lines_written(true));
    }
}

void judge_statement()
{
    statement.source = script_lines(statement.line, statement.last_line);
    if (statement_stops(statement.record->done.result)) {
        judge_end();
        return;
    }
    judged_report->statements++;
    if (is_rest()) {
        judge_rest();
        return;
    }
    size_t items = judged_report->items.size();
    judge_kind();
    if (judged_report->items.size() == items)
        judged_report->converted++;
    if (!is_comment_statement()) {
        judge_guarded();
        judge_next_live();
    }
    note_if();
}
