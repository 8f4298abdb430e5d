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

// True of a constant that has the same value outside of the drawing: it has no mark of feet or inches.
static bool is_constant(int32_t position)
{
    std::string_view text = argument_text(position);
    return expression_is_constant(text) && text.find_first_of("'\"") == std::string_view::npos;
}

bool is_constant_zero(int32_t position)
{
    return is_constant(position) && argument_number(position) == 0;
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
