#include "report/findings/argument_values.h"

#include "expressions/math_functions.h"
#include "report/show.h"
#include "support/text.h"

#include <stdlib.h>

#include <algorithm>

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

// True if an argument is a number and nothing else.
static bool is_number(int32_t position, double *value)
{
    std::string text(text_trimmed(argument_text(position)));
    char *end;
    *value = strtod(text.c_str(), &end);
    return !text.empty() && *end == '\0' && expression_is_constant(text);
}

// True if an argument has a mark of feet or inches, and so no value outside of the drawing.
static bool has_unit(int32_t position)
{
    return argument_text(position).find_first_of("'\"") != std::string_view::npos;
}

bool is_constant_zero(int32_t position)
{
    double number;
    if (is_number(position, &number))
        return number == 0;
    return expression_is_constant(argument_text(position)) && !has_unit(position) &&
           argument_value(position) == 0;
}

// The word DEFAULT also stands for numbers that the new form has no word for.
bool is_whole_value(int32_t position, const argument_use &use)
{
    double number;
    if (!expression_is_constant(argument_text(position)) || has_unit(position) || use.written.empty())
        return false;
    if (use.code)
        return is_number(position, &number) && number != argument_value(position)
                   ? false
                   : argument_value(position) == 0 || text_trimmed(use.written) != "DEFAULT";
    return !is_number(position, &number) || number == strtod(std::string(use.written).c_str(), nullptr);
}
