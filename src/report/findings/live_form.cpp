#include "report/findings/live_form.h"

#include "expressions/expr_lexer.h"
#include "report/findings/arguments.h"
#include "report/findings/line_text.h"
#include "report/show.h"
#include "support/text.h"

#include <string.h>

#include <algorithm>
#include <utility>

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

static constexpr const char *no_character = "a character that no expression has";
static constexpr const char *no_operator = "two values with neither a comma nor an operator between them";

// Walks the tokens of a text as operand, operator, operand. Why it is no expression; null if it is one. Where
// parentheses don't pair up, other faults follow from that.
static const char *expression_fault(std::string_view item)
{
    constexpr const char *no_operand = "an operator lacks its operand";
    if (item.find('\0') != item.npos)
        return no_character;
    const char *first = nullptr;
    auto note = [&first](const char *fault) { first = first == nullptr ? fault : first; };
    const std::string text = lexer_text(item);
    lex_start(text.data(), text.size() - lex_slack);
    bool operand = false; // the token before can end one
    int open = 0;
    for (const char *at = lex_skip(text.data());;) {
        lex_token token = lex_read(at);
        if (token.code == TOKEN_END)
            break;
        bool opens = token.code == '(' || token.code == '[';
        bool closes = token.code == ')' || token.code == ']';
        bool is_unit = token.code == '\'' || token.code == '"';
        if (token.code == TOKEN_NUMBER || token.name.size > 0) {
            if (operand && at[-1] != '\'' && (at - 2 < text.data() || at[-2] != '\''))
                note(no_operator);
            operand = true;
        } else if (opens) {
            open++;
            operand = false;
        } else if (closes || is_unit) {
            if (!operand && token.code != ')')
                note(no_operand);
            open -= closes;
            operand = true;
        } else if (!operand && !is_sign(token.code)) {
            note(is_binary(token.code) ? no_operand : no_character);
        } else if (is_binary(token.code)) {
            operand = false;
            if (token.end < lex.end && is_pair(*at, *token.end))
                token.end++;
        } else if (operand) {
            note(no_character);
        }
        if (open < 0)
            break;
        at = lex_skip(token.end);
    }
    if (!operand)
        note(no_operand);
    return open == 0 ? first : "a parenthesis without its pair";
}

// ---- Lines ----

// Why an item of a list is none; empty if it is well formed.
static std::string item_fault(std::string_view item, const std::vector<std::string_view> &names)
{
    bool plain = std::all_of(item.begin(), item.end(), [](char c) { return text_is(c, CHAR_DIGIT); });
    if (plain || item_is_string(item) || std::find(names.begin(), names.end(), item) != names.end())
        return {};
    if (std::count(item.begin(), item.end(), '"') % 2 != 0 && item.front() == '"')
        return "an open quote";
    const char *fault = expression_fault(item);
    return fault != nullptr ? fault : std::string();
}

static bool has_comma_after_word(std::string_view line)
{
    line = text_trimmed(line);
    auto end = std::find_if_not(line.begin(), line.end(), [](char c) { return text_is(c, CHAR_WORD); });
    return end != line.end() && *end == ',';
}

std::string live_form_fault(std::string_view line, const std::vector<std::string_view> &names)
{
    line = text_trimmed(line);
    if (comment_in(line) != line.npos)
        return comment_inside;
    size_t word = 0;
    while (word < line.size() && text_is(line[word], CHAR_WORD))
        word++;
    if (word == line.size())
        return {};
    if (line[word] != ' ' && line[word] != ',') {
        std::string_view value = text_trimmed(line.substr(std::min(line.find('='), line.size() - 1) + 1));
        return value.empty() ? "an assignment lacks its value" : item_fault(value, names);
    }
    if (std::find(names.begin(), names.end(), text_trimmed(line.substr(word))) != names.end())
        return {};
    for (std::string_view item : list_items(line))
        if (std::string fault = item_fault(item, names); !fault.empty())
            return fault;
    return {};
}

// ---- Menus ----

// The options of the menu string that a statement's new form has, in order, empty ones included. None if they
// have left neither quotes nor bars.
static std::vector<emit_write> menu_options()
{
    std::vector<emit_write> options;
    for (const emit_write &write : statement.writes)
        if (write.source == EMIT_OPTION)
            options.push_back(write);
    bool written =
        !options.empty() && (options.back().to > options.front().from ||
                             output_between(options.front().from - 1, options.front().from) == "\"");
    return written ? options : std::vector<emit_write>();
}

bool is_option(int32_t position)
{
    const std::vector<emit_write> options = menu_options();
    return std::any_of(options.begin(), options.end(),
                       [position](const emit_write &option) { return option.slot == position; });
}

// ---- Statements ----

static std::string_view text_of(const live_line &line)
{
    return output_between(line.first->start, line.last->start + line.last->text.size());
}

// The writes of arguments in a line, those of nothing excepted.
static std::vector<emit_write> writes_in(const live_line &line)
{
    uint64_t end = line.last->start + line.last->text.size();
    std::vector<emit_write> writes;
    for (const emit_write &write : statement.writes)
        if (write.slot > 0 && write.from < write.to && write.from >= line.first->start && write.to <= end)
            writes.push_back(write);
    return writes;
}

// A line with an x for each of its strings: what escapes became may be anything.
static std::string without_strings(const live_line &line, const std::vector<emit_write> &writes)
{
    std::string text(text_of(line));
    for (const emit_write &write : writes) {
        auto size = static_cast<size_t>(write.to - write.from);
        size_t quote = size == argument_text(write.slot).size() ? 1 : 0;
        auto at = static_cast<size_t>(write.from - line.first->start);
        if (argument_is_string(write.slot))
            text.replace(at + quote, size - 2 * quote, size - 2 * quote, 'x');
    }
    return text;
}

// True of an argument that is a name, a bare word or a label, and may be no expression.
static bool is_name(int32_t position)
{
    uint8_t type = argument_spec(position) & ARG_TYPE;
    return type == ARG_NAME || type == ARG_WORD;
}

static report_item *add_form(const live_line &line, const std::string &fault)
{
    report_item item{};
    item.kind = ITEM_FORM;
    item.detail = fault + ": " + shown_cut(text_trimmed(text_of(line)), 80);
    item.summed = true;
    item.own_texts.push_back(fault);
    for (const emit_write &write : writes_in(line))
        if (is_name(write.slot)) {
            std::string_view name = output_between(write.from, write.to);
            item.own_texts.emplace_back(text_trimmed(name.substr(0, comment_in(name))));
        }
    for (const written_line *own = line.first; own <= line.last; own++)
        item.own_lines.push_back(own->number);
    if (fault != rest_of_text)
        own_heads(&item);
    return add_item(std::move(item));
}

// Lines that end in a backslash, comments too, which take a live line in.
static void add_joining()
{
    for (const written_line &line : statement.lines)
        if (!line.text.empty() && line.text.back() == '\\')
            add_form({&line, &line}, joins_next);
}

// The second of two arguments that have only blanks between them; null if there are none.
static const emit_write *adjacent_value(const std::vector<emit_write> &writes)
{
    for (size_t i = 1; i < writes.size(); i++) {
        const emit_write &before = writes[i - 1], &write = writes[i];
        if (write.slot != before.slot && write.from > before.to &&
            output_between(before.to, write.from).find_first_not_of(' ') == std::string_view::npos)
            return &write;
    }
    return nullptr;
}

// Options are divided by bars: from the first one that the command has to the last one that was typed there
// is one before each but the first, and none elsewhere. GETCUR's options may begin with an argument before
// them.
static void judge_menu(const live_line &line, const std::vector<emit_write> &options)
{
    std::string fault;
    std::vector<std::string> divided;
    auto type = [&](size_t i) { return argument_spec(options[i].slot) & ARG_TYPE; };
    size_t first = 0, end = options.size();
    while (first + 1 < end && type(first) != type(end - 1))
        first++;
    while (end > first && argument_typed(options[end - 1].slot).empty())
        end--;
    for (size_t i = 0; i < options.size(); i++) {
        std::string_view option = output_between(options[i].from, options[i].to);
        if (option.find('|') != std::string_view::npos)
            divided.emplace_back(option);
        bool bar = i > 0 && options[i].from > options[i - 1].to;
        bool wanted = i > first && i < end;
        if (bar != wanted && fault != option_added)
            fault = bar ? option_added : option_missing;
    }
    if (!divided.empty())
        fault = option_divided;
    if (fault.empty())
        return;
    report_item *item = add_form(line, fault);
    item->own_separators = static_cast<uint32_t>(end - std::min(first + 1, end)); // bars that there should be
    item->own_typed = std::move(divided);
}

// Judges a line as a list of items. Two values with a blank between them are reported apart, and then each is
// an item.
static void judge_list(const live_line &line, std::vector<std::string_view> names)
{
    const std::vector<emit_write> writes = writes_in(line);
    const std::string text = without_strings(line, writes);
    const emit_write *value = adjacent_value(writes);
    std::string both, fault;
    if (value != nullptr) {
        report_item *item = add_form(line, values_without_comma);
        for (const emit_write *one : {&value[-1], value}) {
            item->own_typed.emplace_back(output_between(one->from, one->to));
            if (fault.empty() && !argument_is_string(one->slot))
                fault = item_fault(text_trimmed(item->own_typed.back()), names);
        }
        auto at = static_cast<size_t>(value[-1].from - line.first->start);
        both =
            text_trimmed(std::string_view(text).substr(at, static_cast<size_t>(value->to - value[-1].from)));
        names.push_back(both);
    }
    if (has_comma_after_word(text))
        add_form(line, comma_after_word);
    if (std::string other = live_form_fault(text, names); !other.empty())
        fault = other;
    if (!fault.empty())
        add_form(line, fault)->own_texts.push_back(std::move(both));
}

void judge_live_form()
{
    add_joining();
    std::vector<std::string_view> names;
    for (int32_t position = 1; position <= statement.record->done.fetched; position++)
        if (is_name(position))
            names.push_back(text_trimmed(argument_text(position)));
    const std::vector<emit_write> options = menu_options();
    const written_line *menu = options.empty() ? nullptr : line_at(options.front().from);
    for (const live_line &line : joined_live_lines()) {
        if (line.first->rest)
            add_form(line, rest_of_text);
        else
            judge_list(line, names);
        if (line.first <= menu && menu <= line.last)
            judge_menu(line, options);
    }
}

// ---- Edits ----

// True if a list has a comma between the two values that had a blank there.
static bool has_comma_between(const std::vector<std::string> &values, std::string_view was,
                              std::string_view there)
{
    std::vector<std::string_view> before = list_items(was), after = list_items(there);
    std::string_view first = text_trimmed(values[0]), second = text_trimmed(values[1]);
    for (size_t i = 1; i < after.size(); i++)
        if (after[i - 1] == first && after[i] == second)
            return true;
    bool still = std::any_of(after.begin(), after.end(), [&](std::string_view item) {
        return item.substr(0, first.size()) == first && text_trimmed(item.substr(first.size())) == second;
    });
    return !still && after.size() > before.size();
}

// The menu of a line: the last of its strings.
static std::string_view menu_in(std::string_view line)
{
    std::vector<std::string_view> items = list_items(line.substr(0, comment_in(line)));
    auto menu = std::find_if(items.rbegin(), items.rend(), item_is_string);
    return menu != items.rend() ? *menu : std::string_view();
}

static size_t empty_options(std::string_view menu)
{
    size_t count = 0;
    bool is_empty = true;
    for (char c : without_quotes(menu)) {
        count += c == '|' && is_empty ? 1 : 0;
        is_empty = c == '|';
    }
    return count + (is_empty ? 1 : 0);
}

static bool menu_is_mended(const report_item &item, std::string_view was, std::string_view there)
{
    auto bars = [](std::string_view menu) {
        return static_cast<size_t>(std::count(menu.begin(), menu.end(), '|'));
    };
    std::string_view before = menu_in(was), after = menu_in(there);
    if (item.own_texts[0] == option_added)
        return bars(after) <= item.own_separators && empty_options(after) < empty_options(before);
    auto is_gone = [after](const std::string &option) { return after.find(option) == after.npos; };
    return bars(after) == item.own_separators &&
           std::all_of(item.own_typed.begin(), item.own_typed.end(), is_gone);
}

bool form_is_mended(const report_item &item, std::string_view was, std::string_view there)
{
    const std::string &fault = item.own_texts[0];
    if (fault == joins_next)
        return there.empty() || there.back() != '\\';
    if (fault == rest_of_text || is_comment(there))
        return fault == rest_of_text && is_comment(there);
    if (fault == option_added || fault == option_missing || fault == option_divided)
        return menu_is_mended(item, was, there);
    if (fault != comment_inside)
        there = there.substr(0, comment_in(there));
    if ((fault == values_without_comma && !has_comma_between(item.own_typed, was, there)) ||
        (fault == comma_after_word && list_items(there)[0].empty()))
        return false;
    std::vector<std::string_view> names(item.own_texts.begin() + 1, item.own_texts.end());
    std::string left = live_form_fault(there, names);
    if (left.empty() || (fault != values_without_comma && fault != comma_after_word))
        return left.empty();
    // What else was wrong with the line is another item.
    for (std::string_view one : list_items(was))
        if (fault == values_without_comma && one.find(text_trimmed(item.own_typed[0])) == 0)
            names.push_back(one);
    return left == live_form_fault(was, names);
}
