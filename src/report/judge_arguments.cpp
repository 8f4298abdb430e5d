#include "report/judge_arguments.h"

#include "expressions/math_functions.h"
#include "report/show.h"
#include "report/slot_use.h"
#include "rules/rule_table.h"
#include "statements/arg_slots.h"
#include "statements/arg_text.h"
#include "support/text.h"

#include <fmt/format.h>

#include <string.h>

#include <algorithm>

// ---- Arguments that failed ----

static std::string fetch_fault(const journal_statement &statement)
{
    if (!statement.message.empty())
        return fmt::format("argument {}: {}", statement.failed_at, shown(statement.message));
    switch (statement.fetched) {
    case FETCH_MISSING: return fmt::format("argument {} is missing", statement.failed_at);
    case FETCH_AFTER_QUOTE:
        return fmt::format("argument {}: something stands after the closing quote", statement.failed_at);
    case FETCH_PARENTHESES:
        return fmt::format("argument {}: the parentheses don't pair up", statement.failed_at);
    case FETCH_TOO_LONG: return fmt::format("argument {} has more than 251 characters", statement.failed_at);
    case FETCH_NO_ROOM: return fmt::format("argument {}: the statement is too long", statement.failed_at);
    case FETCH_TOO_MANY: return "the statement has more than 100 arguments";
    default: return fmt::format("argument {}: syntax error", statement.failed_at);
    }
}

std::string broken_detail(const journal_statement &statement)
{
    std::string_view left = text_trimmed(statement.output);
    if (left.empty())
        return fetch_fault(statement) + "; nothing is left";
    return fmt::format("{}; left: {}", fetch_fault(statement), shown(text_cut(left, 60)));
}

static bool is_command(std::string_view word)
{
    return command_find(word_key_make(word.data(), word.size())) >= 0;
}

// The first word of a text that is a command, from a place on; empty if there is none.
static std::string_view command_in(std::string_view text)
{
    for (size_t at = 0; at < text.size();) {
        size_t end = at;
        while (end < text.size() && text_is(text[end], CHAR_WORD))
            end++;
        std::string_view word = text.substr(at, end - at);
        if (is_command(word))
            return word;
        at = end + 1;
    }
    return {};
}

// Where a comment begins in a line, outside of strings.
static size_t comment_in(std::string_view line)
{
    char quote = 0;
    for (size_t at = 0; at < line.size(); at++) {
        char c = line[at];
        if (quote != 0)
            quote = c == quote ? '\0' : quote;
        else if (c == '"' || c == '`')
            quote = c;
        else if (line.substr(at, 2) == "//")
            return at;
    }
    return std::string_view::npos;
}

std::string broken_hint(std::string_view command, std::string_view source)
{
    if (comment_in(source) != std::string_view::npos)
        return "a comment on the command's line: give it a line of its own";
    std::string_view text = text_trimmed(source);
    text.remove_prefix(std::min(command.size(), text.size()));
    std::string_view word = command == "IF" ? command_in(text) : std::string_view();
    if (!word.empty())
        return fmt::format("{} on the line of an IF: give it a line of its own", word);
    return {};
}

// ---- Arguments that were converted ----

bool expression_is_constant(std::string_view text)
{
    for (size_t at = 0; at < text.size();) {
        size_t end = at;
        while (end < text.size() && (text_is(text[end], CHAR_WORD) || text[end] == '$' || text[end] == '@'))
            end++;
        std::string_view word = text.substr(at, end - at);
        bool number = !word.empty() && text_is(word[0], CHAR_DIGIT);
        bool exponent =
            at > 0 && text[at - 1] == '.' && (word.substr(0, 1) == "e" || word.substr(0, 1) == "E");
        size_t next = text.find_first_not_of(" \t", end);
        bool call =
            next != std::string_view::npos && text[next] == '(' && math_find(word.data(), word.size());
        if (!word.empty() && !number && !exponent && !call)
            return false;
        at = std::max(end, at + 1);
    }
    return true;
}

// Takes the next name off an old form, such as "x, y [, a3..a7]".
static std::string_view take_name(std::string_view *form)
{
    auto parts = [](char c) { return c == ' ' || c == ',' || c == '[' || c == ']'; };
    auto begin = std::find_if_not(form->begin(), form->end(), parts);
    auto end = std::find_if(begin, form->end(), parts);
    auto at = static_cast<size_t>(begin - form->begin());
    std::string_view name = form->substr(at, static_cast<size_t>(end - begin));
    form->remove_prefix(at + name.size());
    return name;
}

// The name of an argument in the old form of its command; "..." repeats the last one. Empty if there is none.
static std::string argument_name(const rule_row *row, int32_t position)
{
    std::string_view form = row->old_form;
    std::string_view last_name;
    for (int32_t at = 1; !form.empty();) {
        std::string_view name = take_name(&form);
        if (name == "...")
            return std::string(last_name);
        last_name = name;
        size_t range = name.find("..");
        if (range == std::string_view::npos) {
            if (at++ == position)
                return std::string(name);
            continue;
        }
        // a3..a7 stands for five names.
        size_t digits = std::min(name.find_first_of("0123456789"), range);
        int first = std::atoi(name.data() + digits);
        int last = std::atoi(name.data() + range + 2 + digits);
        if (position <= at + last - first)
            return fmt::format("{}{}", name.substr(0, digits), first + position - at);
        at += last - first + 1;
    }
    return {};
}

// Whether a name is only a letter and a position.
static bool is_numbered(const std::string &name)
{
    return name.size() >= 2 && text_is(name[1], CHAR_DIGIT);
}

static bool is_attribute(const std::string &name)
{
    return is_numbered(name) && name[0] == 'a';
}

// An argument in a detail: its number, its name if it has one, and its text.
static std::string argument_shown(int32_t position, const std::string &name)
{
    std::string text = shown(text_cut(journal_text(position), 60));
    return name.empty() || is_numbered(name) ? fmt::format("{}: {}", position, text)
                                             : fmt::format("{} ({}): {}", position, name, text);
}

// A value in place of an expression whose text stands nowhere, or only in a comment beside the new command.
static bool is_frozen(const rule_row *row, unsigned use, int32_t position)
{
    bool comment_only = rule_is_by_hand(row) || row->effect == EFFECT_COMMENTED;
    return (use & USE_VALUE) != 0 && ((use & USE_TEXT) == 0 || !comment_only) &&
           !expression_is_constant(journal_text(position));
}

// A row may be for one value of an argument alone, which its form then has as it stands.
static bool is_written_out(const std::string &name)
{
    return !name.empty() && (name[0] == '-' || text_is(name[0], CHAR_DIGIT));
}

// A 0 where nothing could stand as well: in the place of a first attribute the output has this very constant.
static bool is_default(const journal_statement &statement, int32_t position, const std::string &name)
{
    int32_t place = std::min<int32_t>(position, statement.row->spec_count) - 1;
    uint8_t spec = statement.row->spec[place];
    uint8_t type = spec & ARG_TYPE;
    return ((spec & ARG_OPTIONAL) != 0 || is_attribute(name)) && type >= ARG_LONG && type <= ARG_DOUBLE &&
           expression_is_constant(journal_text(position)) && journal_value(position) == 0;
}

static void add_detail(std::string *detail, const std::string &text)
{
    *detail += detail->empty() ? "" : ", ";
    *detail += text;
}

static void add_frozen(int32_t position, const std::string &name, std::string *frozen)
{
    bool written_out = is_written_out(name);
    if (written_out && expression_is_constant(journal_text(position)))
        return;
    add_detail(frozen,
               fmt::format("{} is written as its value {:g}",
                           argument_shown(position, written_out ? "" : name), journal_value(position)));
}

void judge_arguments(const journal_statement &statement, std::vector<argument_item> *items)
{
    const rule_row *row = rule_last.row;
    std::string frozen;
    std::string lost;
    bool attributes_only = true;
    for (int32_t position = 1; position <= statement.fetched; position++) {
        if (!journal_given(position))
            continue;
        unsigned use = slot_use(position);
        bool value = is_frozen(row, use, position);
        if (use != 0 && !value)
            continue;
        std::string name = argument_name(row, position);
        if (value || is_written_out(name)) {
            add_frozen(position, name, &frozen);
        } else if (!is_default(statement, position, name)) {
            attributes_only &= is_attribute(name);
            add_detail(&lost, argument_shown(position, name));
        }
    }
    if (!frozen.empty())
        items->push_back({ITEM_FROZEN, false, "argument " + frozen});
    if (!lost.empty())
        items->push_back({ITEM_LOST, attributes_only, "no line holds argument " + lost});
}
