#include "report/findings/arguments.h"

#include "expressions/expr_lexer.h"
#include "expressions/math_functions.h"
#include "report/findings/line_text.h"
#include "report/show.h"
#include "statements/arg_slots.h"
#include "support/text.h"

#include <fmt/core.h>

#include <stdlib.h>

#include <algorithm>

int32_t argument_last()
{
    return std::max(statement.record->done.fetched, statement.record->typed_count);
}

// ---- Texts ----

std::string_view argument_text(int32_t position)
{
    return {arg_slots[position].text, arg_slots[position].text_size};
}

bool argument_is_string(int32_t position)
{
    return arg_slots[position].holds == HOLDS_STRING;
}

std::string_view argument_typed(int32_t position)
{
    if (position > statement.record->typed_count)
        return argument_text(position);
    const journal_text &typed = statement.record->typed[position - 1];
    return text_trimmed({typed.text, typed.size});
}

// White space counts where it kept two words apart.
bool has_dropped(int32_t position)
{
    if (argument_is_string(position))
        return false;
    std::string_view typed = argument_typed(position);
    auto is_word = [&](size_t at) { return at < typed.size() && text_is(typed[at], CHAR_WORD); };
    for (size_t at = 0; at < typed.size(); at++)
        if (!text_is(typed[at], CHAR_GRAPH) && typed[at] != ' ' &&
            (!text_is(typed[at], CHAR_WHITE) || (is_word(at - 1) && is_word(at + 1))))
            return true;
    return false;
}

std::string_view surplus_text()
{
    std::string_view text(statement.record->surplus.text, statement.record->surplus.size);
    return text_trimmed(text.substr(0, text.find_last_not_of(", \t\r\n\v\f") + 1));
}

// ---- Values ----

// The number of a numeric argument; 0 of other ones.
static double argument_number(int32_t position)
{
    uint8_t holds = arg_slots[position].holds & ARG_TYPE;
    return holds >= HOLDS_LONG && holds <= HOLDS_DOUBLE ? slot_number(&arg_slots[position]) : 0;
}

double argument_value(int32_t position)
{
    uint8_t holds = arg_slots[position].holds & ARG_TYPE;
    double number = argument_number(position);
    return holds == HOLDS_LONG || holds == HOLDS_INT ? int_from_double(number) : number;
}

uint8_t argument_spec(int32_t position)
{
    return statement.row->spec[std::min<int32_t>(position, statement.row->spec_count) - 1];
}

bool is_numeric(int32_t position)
{
    uint8_t type = argument_spec(position) & ARG_TYPE;
    return type >= ARG_LONG && type <= ARG_DOUBLE;
}

std::string lexer_text(std::string_view text)
{
    std::string copy(std::min(text.size(), lex_text_max) + lex_slack, '\0');
    text.copy(copy.data(), copy.size() - lex_slack);
    return copy;
}

bool expression_is_constant(std::string_view text)
{
    const std::string copy = lexer_text(text);
    lex_start(copy.data(), copy.size() - lex_slack);
    for (const char *at = lex_skip(copy.data());;) {
        lex_token token = lex_read(at);
        if (token.code == TOKEN_END)
            return true;
        at = lex_skip(token.end);
        bool call = *at == '(' && math_find(token.name.text, token.name.size) != nullptr;
        if (token.name.size > 0 && !call)
            return false;
    }
}

// True of a constant that has the same value outside of the drawing: it has no sign of feet or inches.
static bool is_constant(int32_t position)
{
    std::string_view text = argument_text(position);
    return text.find_first_of("'\"") == std::string_view::npos && expression_is_constant(text);
}

bool is_default(int32_t position)
{
    return argument_number(position) == 0 && is_numeric(position) &&
           ((argument_spec(position) & ARG_OPTIONAL) != 0 || is_attribute(position)) && is_constant(position);
}

// ---- Names ----

// Takes the next name off an old form, such as "x, y [, a1..a5]".
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

std::string argument_name(int32_t position)
{
    std::string_view form = statement.rule != nullptr ? statement.rule->old_form : "";
    for (int32_t at = 1; !form.empty();) {
        std::string_view name = take_name(&form);
        if (name == "...")
            return {};
        size_t range = name.find("..");
        if (range == std::string_view::npos) {
            if (at++ == position)
                return std::string(name);
            continue;
        }
        // a1..a5 stands for five names.
        size_t digits = std::min(name.find_first_of("0123456789"), range);
        int first = atoi(name.data() + digits);
        int last = atoi(name.data() + range + 2 + digits);
        if (position <= at + last - first)
            return fmt::format("{}{}", name.substr(0, digits), first + position - at);
        at += last - first + 1;
    }
    return {};
}

// A letter and a number: it says no more than the position, but that a is an attribute.
static bool is_numbered(const std::string &name)
{
    return name.size() >= 2 && text_is(name[0], CHAR_LETTER) &&
           name.find_first_not_of("0123456789", 1) == std::string::npos && name[0] != 'x' && name[0] != 'y' &&
           name[0] != 'z';
}

bool is_attribute(int32_t position)
{
    const std::string name = argument_name(position);
    return is_numbered(name) && name[0] == 'a';
}

std::string argument_shown(int32_t position)
{
    std::string name = argument_name(position);
    if (is_numbered(name))
        name = name[0] == 'a' ? "attribute" : "";
    else if (!name.empty() && !text_is(name[0], CHAR_LETTER))
        name.clear();
    return fmt::format("{}{}: {}", position, name.empty() ? "" : " (" + name + ")",
                       shown_cut(argument_typed(position), text_shown));
}

// ---- What the output has ----

// True if what is written is an argument's text, quotes apart: as it is, or with its escapes written again.
static bool is_text_of(std::string_view written, std::string_view text)
{
    std::string_view content = without_quotes(text);
    return without_quotes(written) == content || escapes_decoded(written) == content;
}

void arguments_take()
{
    const auto count = static_cast<size_t>(std::max(argument_last(), 0)) + 1;
    for (std::vector<argument_use> &uses : statement.uses)
        uses.assign(count, {});
    for (const emit_write &write : statement.writes) {
        const written_line *line = line_at(write.from);
        auto position = static_cast<size_t>(write.slot);
        if (line == nullptr || position == 0 || position >= count)
            continue;
        argument_use &use = statement.uses[line->live && !line->rest ? 1 : 0][position];
        std::string_view written = output_between(write.from, write.to);
        bool value = write.source == EMIT_VALUE || write.source == EMIT_CODE;
        bool text = !value && is_text_of(written, argument_text(write.slot));
        use.text |= text;
        use.value |= value;
        use.code |= write.source == EMIT_CODE;
        if (use.line == 0 && (text || value)) {
            use.line = line->number;
            use.written = written;
        }
    }
}

argument_use argument_use_of(int32_t position, bool live)
{
    const std::vector<argument_use> &uses = statement.uses[live ? 1 : 0];
    auto at = static_cast<size_t>(position);
    return at < uses.size() ? uses[at] : argument_use{};
}

// A number is compared with what was written of it; the decimals of an expression may have no end. The word
// DEFAULT also stands for numbers that the new form has no word for.
bool is_whole_value(int32_t position, const argument_use &use)
{
    double value = argument_value(position);
    if (!is_constant(position) || use.written.empty() || argument_number(position) != value)
        return false;
    if (use.code)
        return value == 0 || text_trimmed(use.written) != "DEFAULT";
    std::string text(text_trimmed(argument_text(position))), written(use.written);
    char *end;
    double number = strtod(text.c_str(), &end);
    return *end != '\0' || number == strtod(written.c_str(), nullptr);
}
