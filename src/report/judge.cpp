#include "report/judge.h"

#include "expressions/var_store.h"
#include "report/judge_arguments.h"
#include "report/show.h"
#include "rules/rule_table.h"
#include "statements/statement_text.h"
#include "support/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

static report_item *add_item(judge_state *state, const journal_statement &statement, item_kind kind,
                             std::string detail)
{
    report_item item{};
    item.kind = kind;
    item.line = statement.line;
    item.last_line = statement.last_line;
    item.output_line = statement.output_line;
    item.output_lines = statement.output_lines;
    if (statement.row != nullptr)
        item.command = statement.row->name;
    item.detail = std::move(detail);
    state->report->items.push_back(std::move(item));
    return &state->report->items.back();
}

// ---- The end of the reading ----

// Why a declaration's variable isn't taken.
static std::string store_fault(int32_t code)
{
    switch (code) {
    case VAR_TABLE_FULL: return "a script has at most 1,000 variables";
    case VAR_NO_MEMORY: return "the variable has too many dimensions, a negative one, or is too large";
    case VAR_SYSTEM_NAME: return "a name that starts with @ can't be declared";
    case VAR_SCALAR: return "the variable exists already, and one of the two is no array";
    case VAR_DIMENSIONS: return "a string has one dimension and a string list has two";
    case VAR_TYPE: return "the type doesn't fit the variable or the prefix of its name";
    default: return fmt::format("the variable can't be declared ({})", code);
    }
}

static std::string second_label()
{
    const std::string &name = journal_refused_label();
    return fmt::format("second label {}, first in line {}", shown(name), journal_label_line(name));
}

static std::string stop_reason(const journal_statement &statement)
{
    switch (statement.result) {
    case STATEMENT_END: return "byte 26, which ends a script";
    case STOP_LABEL_TWICE: return second_label();
    case STOP_LABELS_FULL: return "label 1,001: a script has at most 1,000";
    case STOP_ON_WITHOUT_GOTO: return "ON without GOTO";
    case STOP_DECL_EMPTY: return "a declaration without an item";
    case STOP_DECL_ITEM:
        return "an item of the declaration begins with no name, or has a quote or unpaired brackets";
    case STOP_DECL_COMMA: return "two words of the declaration have no comma between them";
    case STOP_DECL_REFERENCE: return "an item of the declaration is no name with subscripts";
    case STOP_ARRAY_VALUES: return "the initial values lack their braces, or belong to a string list";
    default: return store_fault(STOP_STORE - statement.result);
    }
}

// How many lines were not read is added when the script's lines are looked at.
static void judge_end(judge_state *state, const journal_statement &statement)
{
    if (statement.result == STATEMENT_END && statement.source_complete)
        return;
    journal_statement end = statement;
    if (statement.kind == KIND_NONE)
        end.line = end.last_line = statement.next_line;
    state->end = {statement.next_line, statement.kind == KIND_NONE};
    add_item(state, end, ITEM_STOPPED, stop_reason(statement));
}

// ---- What an IF guards ----

static bool is_comment(std::string_view line)
{
    if (line.substr(0, 2) == "//")
        return true;
    return line.size() >= 3 && char_lower(line[0]) == 'r' && char_lower(line[1]) == 'e' &&
           char_lower(line[2]) == 'm' && (line.size() == 3 || !text_is(line[3], CHAR_WORD));
}

static bool is_comment_statement(const journal_statement &statement)
{
    return (statement.kind == KIND_TEXT || statement.kind == KIND_KEYWORD) &&
           (statement.output.empty() || is_comment(statement.output));
}

// Takes the next line off an output. A line end inside a string is none, unless the line is a comment.
static std::string_view take_line(std::string_view *output)
{
    size_t end = output->find('\n');
    if (!is_comment(*output)) {
        auto quotes = [&] {
            return std::count(output->begin(), output->begin() + static_cast<long>(end), '"');
        };
        while (end != std::string_view::npos && quotes() % 2 != 0)
            end = output->find('\n', end + 1);
    }
    std::string_view line = output->substr(0, end);
    output->remove_prefix(end == std::string_view::npos ? output->size() : end + 1);
    return line;
}

int live_lines(std::string_view output)
{
    int lines = 0;
    while (!output.empty()) {
        output.remove_prefix(std::min(output.find_first_not_of(" \t\r\n"), output.size()));
        bool comment = is_comment(output);
        if (!take_line(&output).empty() && !comment)
            lines++;
    }
    return lines;
}

// How a statement is called in a detail: by its command or its first characters.
static std::string statement_name(const journal_statement &statement)
{
    if (statement.row != nullptr)
        return statement.row->name;
    std::string_view text = statement.output;
    return shown(text.substr(0, std::min(text.find('\n'), size_t{40})));
}

// The statement under an IF. The guarded item belongs to the IF.
static void judge_guarded(judge_state *state, const journal_statement &statement)
{
    uint32_t line = std::exchange(state->if_line, 0);
    if (line == 0)
        return;
    int lines = live_lines(statement.output);
    if (lines == 1)
        return;
    std::string name = statement_name(statement);
    std::string detail;
    if (lines > 1)
        detail = fmt::format("{} in line {} has become several statements; the IF guards only the first",
                             name, statement.line);
    else
        detail = fmt::format("{} in line {} {}", name, statement.line,
                             statement.output.find_first_not_of(" \t\r\n") == std::string_view::npos
                                 ? "has left nothing"
                                 : "has become only comments");
    report_item *item = add_item(state, statement, ITEM_GUARDED, std::move(detail));
    item->line = line;
    item->output_line = state->if_output_line;
    item->output_lines += statement.output_line - state->if_output_line;
    item->command = "IF";
    if (lines == 0)
        state->open_guard = state->report->items.size() - 1;
}

// The first statement after a guarded one that has gone is what its IF guards now.
static void judge_next_live(judge_state *state, const journal_statement &statement)
{
    if (state->open_guard == SIZE_MAX || live_lines(statement.output) == 0)
        return;
    report_item &item = state->report->items[std::exchange(state->open_guard, SIZE_MAX)];
    item.detail += fmt::format("; the IF guards line {} now: {}", statement.line, statement_name(statement));
}

static void note_if(judge_state *state, const journal_statement &statement)
{
    if (statement.row == nullptr || statement.fetched < 0 || statement.row->id != id_if)
        return;
    state->if_line = statement.line;
    state->if_output_line = statement.output_line;
}

// ---- Commands ----

static void judge_broken(judge_state *state, const journal_statement &statement)
{
    state->broken_line = statement.line_left;
    state->broken_item = state->report->items.size();
    add_item(state, statement, ITEM_BROKEN, broken_detail(statement));
}

// Whether the new form stands as a comment.
static const char *byhand_detail(const journal_statement &statement)
{
    bool there = statement.output.find("new MURL command syntax:") != std::string_view::npos;
    return there ? "the new form stands as a comment" : "the tip tells what to write";
}

static void judge_effect(judge_state *state, const journal_statement &statement)
{
    switch (rule_last.row->effect) {
    case EFFECT_TIP: add_item(state, statement, ITEM_CHECK, "the new command stands under a tip"); break;
    case EFFECT_BY_HAND:
    case EFFECT_BY_HAND_NO_TIP: add_item(state, statement, ITEM_BYHAND, byhand_detail(statement)); break;
    case EFFECT_COMMENTED: add_item(state, statement, ITEM_QUIET, "commented out"); break;
    case EFFECT_NOT_IMPLEMENTED:
        add_item(state, statement, ITEM_GONE, "the new dialect has no such command");
        break;
    case EFFECT_DROPPED: add_item(state, statement, ITEM_LOST, "the statement has left nothing"); break;
    default: break;
    }
}

// An added dimension names a parent that only the first one of a group declares.
static void judge_base(judge_state *state, const journal_statement &statement)
{
    if (statement.output.find("// BASEDIM ") != std::string_view::npos)
        state->base_seen = true;
    else if (!state->base_seen && statement.output.find("// ADDBASEDIM ") != std::string_view::npos)
        add_item(state, statement, ITEM_BASE, "no BASEDIM before it in this script declares its parent");
}

static void judge_converted(judge_state *state, const journal_statement &statement)
{
    std::vector<argument_item> items;
    judge_arguments(statement, &items);
    for (argument_item &item : items)
        add_item(state, statement, item.kind, std::move(item.detail))->summed = item.summed;
}

static void judge_command(judge_state *state, const journal_statement &statement)
{
    if (rule_find(statement.row->id)->effect == EFFECT_SYSTEM) {
        add_item(state, statement, ITEM_DROPPED, "a system command")->summed = true;
        return;
    }
    const rule_row *row = rule_last.row;
    judge_effect(state, statement);
    if (row->effect != EFFECT_DROPPED)
        judge_converted(state, statement);
    if (rule_is_by_hand(row))
        judge_base(state, statement);
}

// ---- Statements ----

// A rest of a line whose command has failed is read as a statement of its own, but nobody meant it as one.
static void judge_rest(judge_state *state, const journal_statement &statement)
{
    report_item &broken = state->report->items[state->broken_item];
    broken.last_line = std::max(broken.last_line, statement.last_line);
    broken.output_lines = statement.output_line + statement.output_lines - broken.output_line;
    state->broken_line = statement.line_left;
}

// A line that begins with a word joined to something else, which the evaluator takes for no expression at
// all. What it refuses for a value (a division by zero, say) is an expression.
static bool is_refused_word(const journal_statement &statement)
{
    constexpr std::string_view no_function = "is not a function";
    std::string_view message = statement.message;
    return statement.kind == KIND_TEXT && !statement.output.empty() &&
           text_is(statement.output[0], CHAR_LETTER) &&
           (message == "syntax error" ||
            (message.size() > no_function.size() &&
             message.substr(message.size() - no_function.size()) == no_function));
}

static void judge_kind(judge_state *state, const journal_statement &statement)
{
    if (statement.kind == KIND_COMMAND && statement.fetched < 0)
        judge_broken(state, statement);
    else if (statement.kind == KIND_COMMAND)
        judge_command(state, statement);
    else if (statement.kind == KIND_UNKNOWN || is_refused_word(statement))
        add_item(state, statement, ITEM_UNKNOWN, "it went through unchanged");
}

void judge_statement(judge_state *state, const journal_statement &statement)
{
    if (statement_stops(statement.result)) {
        judge_end(state, statement);
        return;
    }
    state->report->statements++;
    if (state->broken_line) {
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
