#include "report/findings/live_form.h"

#include "expressions/expr_lexer.h"
#include "report/findings/judge_text.h"
#include "report/show.h"
#include "support/text.h"

#include <fmt/core.h>

#include <algorithm>

// ---- One item of a list ----

static bool is_sign(int16_t code)
{
    return code == '+' || code == '-' || code == '~';
}

static bool is_binary(int16_t code)
{
    return code == TOKEN_EQEQ || (code < 128 && strchr("+-*/%^<>=!#&|?:,", code) != nullptr);
}

// An operator of two characters.
static bool is_pair(char first, char second)
{
    return second == '=' ? strchr("<>!=", first) != nullptr
                         : first == second && strchr("<>&|", first) != nullptr;
}

static constexpr const char *values_without_comma = "a blank between two values where a comma is expected";
static constexpr const char *no_character = "a character that no expression has";

// Walks the tokens of a text as operand, operator, operand. Why it is no expression; null if it is one.
static const char *expression_fault(std::string_view item)
{
    constexpr const char *no_operand = "an operator lacks its operand";
    if (item.find('\0') != item.npos)
        return no_character;
    const std::string text = std::string(item.substr(0, lex_text_max)) + std::string(lex_slack, '\0');
    lex_start(text.data(), text.size() - lex_slack);
    bool operand = false; // the token before can end one
    int open = 0;
    for (const char *at = lex_skip(text.data());;) {
        lex_token token = lex_read(at);
        if (token.code == TOKEN_END)
            break;
        bool opens = token.code == '(' || token.code == '[';
        bool closes = token.code == ')' || token.code == ']';
        bool marks = token.code == '\'' || token.code == '"';
        if (token.code == TOKEN_NUMBER || token.name.size > 0) {
            if (operand && at[-1] != '\'' && (at - 2 < text.data() || at[-2] != '\''))
                return values_without_comma;
            operand = true;
        } else if (opens) {
            open++;
            operand = false;
        } else if (closes || marks) {
            if (!operand && token.code != ')')
                return no_operand;
            open -= closes ? 1 : 0;
            operand = true;
        } else if (!operand && !is_sign(token.code)) {
            return is_binary(token.code) ? no_operand : no_character;
        } else if (is_binary(token.code)) {
            operand = false;
            if (token.end < lex.end && is_pair(*at, *token.end))
                token.end++;
        }
        if (open < 0)
            break;
        at = lex_skip(token.end);
    }
    if (open != 0)
        return "a parenthesis without its pair";
    return operand ? nullptr : no_operand;
}

// ---- Lists ----

// Takes the next item off a list: up to a comma outside of quotes and parentheses.
static std::string_view take_item(std::string_view *list, bool *more)
{
    bool quoted = false;
    int open = 0;
    size_t at = 0;
    for (; at < list->size(); at++) {
        char c = (*list)[at];
        quoted ^= c == '"' && (quoted || !is_inch_mark(*list, at));
        open += quoted ? 0 : (c == '(' || c == '[') - (c == ')' || c == ']');
        if (c == ',' && !quoted && open <= 0)
            break;
    }
    std::string_view item = list->substr(0, at);
    *more = at < list->size();
    list->remove_prefix(std::min(at + 1, list->size()));
    return text_trimmed(item);
}

std::vector<std::string_view> list_items(std::string_view line)
{
    std::vector<std::string_view> items;
    for (bool more = true; more;)
        items.push_back(take_item(&line, &more));
    items[0].remove_prefix(std::min(items[0].find_first_of(" \t"), items[0].size()));
    items[0] = text_trimmed(items[0]);
    return items;
}

static bool is_string(std::string_view item)
{
    return item.size() >= 2 && item.front() == '"' && item.find('"', 1) == item.size() - 1;
}

// Options are between bars: an empty one is a bar at either end, or after another.
static std::string menu_fault(std::string_view menu, const menu_gaps &gaps)
{
    int all = menu.front() == '|';
    int inside = 0;
    for (size_t at = 0; at < menu.size(); at++) {
        bool empty = menu[at] == '|' && (at + 1 == menu.size() || menu[at + 1] == '|');
        all += empty;
        inside += empty && at > 0 && menu.find_first_not_of('|', at) != menu.npos &&
                  menu.find_first_not_of('|') < at;
    }
    if (all > gaps.all)
        return "an empty menu option that the script didn't have";
    return inside < gaps.inside ? "an empty menu option of the script is missing" : std::string();
}

// An item as it is shown; empty if it is well formed.
static std::string item_fault(std::string_view item, const std::vector<std::string_view> &arguments,
                              const menu_gaps &gaps)
{
    if (gaps.bars && is_string(item) && item.find('|') != item.npos)
        return "an option of the script has a bar, which divides options";
    if (item.empty() || std::find(arguments.begin(), arguments.end(), item) != arguments.end())
        return {};
    bool bars = item.find('|') != item.npos;
    if (is_string(item) || (bars && item.find_first_not_of('|') == item.npos))
        return bars ? menu_fault(without_quotes(item), gaps) : std::string();
    if (std::count(item.begin(), item.end(), '"') % 2 != 0 && item.front() == '"')
        return "an open quote";
    const char *fault = expression_fault(item);
    return fault != nullptr ? fault : std::string();
}

std::string live_form_fault(std::string_view line, const std::vector<std::string_view> &arguments,
                            const menu_gaps &gaps)
{
    line = text_trimmed(line);
    if (comment_in(line) != line.npos)
        return "a comment inside the line";
    size_t word = 0;
    while (word < line.size() && text_is(line[word], CHAR_WORD))
        word++;
    if (word == line.size())
        return {};
    if (line[word] == ',')
        return "a comma directly after the word";
    std::string_view list = line.substr(word);
    if (line[word] != ' ') {
        std::string_view value = text_trimmed(line.substr(std::min(line.find('='), line.size() - 1) + 1));
        return value.empty() ? "an assignment lacks its value" : item_fault(value, arguments, gaps);
    }
    if (std::find(arguments.begin(), arguments.end(), text_trimmed(list)) != arguments.end())
        return {};
    for (bool more = true; more;) {
        std::string fault = item_fault(take_item(&list, &more), arguments, gaps);
        if (!fault.empty())
            return fault;
    }
    return {};
}

// ---- Statements ----

// The options of a menu: positions of the strings that were written without their quotes.
struct menu_options {
    int32_t first, last; // 0: there is none
    int32_t begin; // position of the first option, which may be empty: there is a bar for each before it
    bool bars;     // an option has a bar in its text
};

static menu_options options_of(const statement_view &statement)
{
    menu_options options{};
    uint64_t start = statement.lines.empty() ? 0 : statement.lines.front().start;
    for (int32_t i = 0; i < statement.record->write_count; i++) {
        const emit_write &write = statement.record->writes[i];
        if (!argument_is_string(write.slot) || write.to - write.from + 2 != argument_text(write.slot).size())
            continue;
        if (options.first == 0) {
            std::string_view before = statement.output.substr(0, static_cast<size_t>(write.from - start));
            options.first = write.slot;
            options.begin =
                write.slot - static_cast<int32_t>(before.size() - 1 - before.find_last_not_of('|'));
        }
        options.last = write.slot;
        options.bars |= argument_text(write.slot).find('|') != std::string_view::npos;
    }
    return options;
}

// True if a position is one of the menu's: its arguments are of the type of those that were written.
static bool is_in_menu(const statement_view &statement, const menu_options &options, int32_t position)
{
    auto type = [&statement](int32_t at) {
        return statement.row->spec[std::min<int32_t>(at, statement.row->spec_count) - 1] & ARG_TYPE;
    };
    return options.first != 0 && position >= options.begin && type(position) == type(options.first);
}

bool is_option(const statement_view &statement, int32_t position)
{
    return is_in_menu(statement, options_of(statement), position);
}

static menu_gaps menu_gaps_of(const statement_view &statement)
{
    menu_gaps gaps{};
    const menu_options options = options_of(statement);
    gaps.bars = options.bars;
    for (int32_t position = 1; position <= statement.record->done.fetched; position++) {
        if (!without_quotes(argument_text(position)).empty())
            continue;
        bool in_menu = options.first == 0 || is_in_menu(statement, options, position);
        gaps.all += in_menu && (position < options.last || !argument_typed(statement, position).empty());
        gaps.inside += in_menu && position > options.first && position < options.last;
    }
    return gaps;
}

// The line in which two arguments have only a blank between them: read again, they could be one expression.
static const written_line *blank_between(const statement_view &statement)
{
    const journal_record &record = *statement.record;
    for (int32_t i = 1; i < record.write_count; i++) {
        const emit_write &before = record.writes[i - 1];
        const emit_write &write = record.writes[i];
        const written_line *line = line_at(statement.lines, before.from);
        if (line == nullptr || !line->live || before.slot == 0 || write.slot == before.slot ||
            before.from == before.to || write.from == write.to || write.from <= before.to)
            continue;
        auto begin = static_cast<size_t>(before.to - statement.lines.front().start);
        std::string_view between = statement.output.substr(begin);
        if (between.find_first_not_of(' ') == write.from - before.to)
            return line;
    }
    return nullptr;
}

// A live line, with those that a text of it goes on into.
struct live_line {
    std::string text;
    std::vector<uint64_t> own;
};

static live_line live_line_of(const std::vector<const written_line *> &lines)
{
    live_line whole;
    for (const written_line *line : lines) {
        whole.text.append(whole.text.empty() ? "" : "\n").append(line->text);
        whole.own.push_back(line->number);
    }
    return whole;
}

// Puts x in the place of the strings in a line that begins at an offset of the output: what escapes became
// may be anything.
static std::string without_strings(const statement_view &statement, std::string text, uint64_t start)
{
    for (int32_t i = 0; i < statement.record->write_count; i++) {
        const emit_write &write = statement.record->writes[i];
        if (!argument_is_string(write.slot) || write.from < start || write.to > start + text.size())
            continue;
        uint64_t quote = write.to - write.from == argument_text(write.slot).size() ? 1 : 0;
        for (uint64_t at = write.from + quote; at + quote < write.to; at++)
            text[static_cast<size_t>(at - start)] = 'x';
    }
    return text;
}

static void add_form(judge_state *state, const statement_view &statement, const live_line &line,
                     const std::string &fault)
{
    report_item *item = add_item(state, statement, ITEM_FORM,
                                 fault + ": " + shown_cut(text_trimmed(line.text), 80), line.own);
    item->summed = true;
    item->own_texts.push_back(fault);
}

void judge_live_form(judge_state *state, const statement_view &statement, bool decoded)
{
    std::vector<std::string_view> arguments;
    for (int32_t position = 1; position <= statement.record->done.fetched; position++)
        arguments.push_back(text_trimmed(argument_text(position)));
    const menu_gaps gaps = menu_gaps_of(statement);
    const written_line *blank = blank_between(statement);
    size_t at = 0;
    bool rest;
    for (auto lines = next_live(statement, &at, &rest); !lines.empty();
         lines = next_live(statement, &at, &rest)) {
        live_line line = live_line_of(lines);
        std::string read = decoded ? without_strings(statement, line.text, lines.front()->start) : line.text;
        std::string fault = rest ? "the rest of a text that began in the comment before it"
                                 : live_form_fault(read, arguments, gaps);
        bool beside = std::find(lines.begin(), lines.end(), blank) != lines.end();
        if (!fault.empty())
            add_form(state, statement, line, fault);
        if (beside && fault != values_without_comma)
            add_form(state, statement, line, values_without_comma);
    }
}
