// A descent through the levels of the grammar. Each routine reads one level from text on, stores its value
// and gives the place behind it and its blanks; null means that the text is for eval_expr.
#include "analysis/expr_quick.h"

#include "analysis/expr_lexer.h"
#include "analysis/math_functions.h"
#include "analysis/var_store.h"
#include "support/char_masks.h"
#include "support/number.h"
#include "support/text.h"

#include <stddef.h>

constexpr int digits_max = 15;     // a number of so many digits is exact
constexpr size_t keyword_size = 7; // of the longest keyword

static const char *quick_sum(const char *text, double *value);
static const char *quick_condition(const char *text, double *value);

// As a rule there is one blank or none.
static inline const char *skip_blanks(const char *text)
{
    text += *text == ' ';
    while (*text == ' ' || *text == '\t')
        text++;
    return text;
}

// The digits from c on, added to the right of those in number. Gives the place behind them.
static inline const char *read_digits(const char *c, uint64_t *number)
{
    for (; text_is(*c, CHAR_DIGIT); c++)
        *number = *number * 10 + static_cast<uint64_t>(*c - '0');
    return c;
}

// Digits, a point, digits; no exponent, and no 0 in front, which would make it octal or hexadecimal.
static const char *quick_number(const char *text, double *value)
{
    uint64_t digits = 0;
    const char *c = read_digits(text, &digits);
    const char *point = c;
    int32_t fraction_digits = 0;
    if (*c == '.') {
        c = read_digits(c + 1, &digits);
        fraction_digits = static_cast<int32_t>(c - point) - 1;
    }
    bool octal = *text == '0' && point - text > 1;
    if (c - text > digits_max || octal || text_is(*c, CHAR_WORD))
        return nullptr;
    *value = static_cast<double>(digits) * power_of_ten(-fraction_digits);
    return skip_blanks(c);
}

// The length of the name at text, of letters, digits and underscores; 0 for a keyword or a name too long.
static inline size_t name_size(const char *text)
{
    size_t run = word_run(reinterpret_cast<const unsigned char *>(text));
    if (run == word_run_max)
        return 0;
    bool perhaps_keyword = run <= keyword_size && text_is(text[run - 1], CHAR_LETTER);
    return perhaps_keyword && lex_is_keyword(text, run) ? 0 : run;
}

// The subscripts at text, of which there may be none.
static const char *quick_subscripts(const char *text, int32_t *count, int32_t *subscripts)
{
    *count = 0;
    while (*text == '[') {
        double value;
        if (*count == var_dims_max)
            return nullptr;
        text = quick_sum(skip_blanks(text + 1), &value);
        if (text == nullptr || *text != ']')
            return nullptr;
        subscripts[(*count)++] = int_from_double(value);
        text = skip_blanks(text + 1);
    }
    return text;
}

// What a text that turns out to be for eval_expr has to find as it was.
static struct {
    var_selection selected;
    void (*unread)();
} before;

static void keep_selection()
{
    before.selected = var_current;
    before.unread = var_unread;
}

// False, for the text is for eval_expr.
static bool give_up()
{
    var_current = before.selected;
    var_unread = before.unread;
    return false;
}

// Reads a variable, or an element if there are subscripts. Gives what var_read and var_read_element give. If
// the name is unknown, names that were put off have been read by that, and this stays.
static inline int32_t read_variable(const char *name, size_t size, int32_t count, const int32_t *subscripts)
{
    bool unread = var_unread != nullptr;
    int32_t code = count > 0 ? var_read_element_sized(name, size, count, subscripts)
                             : var_read_sized(name, size, nullptr);
    if (code == VAR_UNKNOWN && unread)
        keep_selection();
    return code;
}

// A function of numbers; text is at its parenthesis.
static const char *quick_call(const char *name, size_t size, const char *text, double *value)
{
    double arguments[MATH_ARGUMENTS];
    uint32_t count = 0;
    const math_func *row = math_find_sized(name, size);
    if (row == nullptr)
        return nullptr;
    do {
        if (count == (row->flags & MATH_ARGUMENTS))
            return nullptr;
        text = quick_condition(skip_blanks(text + 1), &arguments[count++]);
    } while (text != nullptr && *text == ',');
    if (text == nullptr || *text != ')' || count != (row->flags & MATH_ARGUMENTS))
        return nullptr;
    return math_call(row, arguments, value) ? skip_blanks(text + 1) : nullptr;
}

// A variable, an element or a function.
static const char *quick_name(const char *text, double *value)
{
    const char *name = text;
    size_t size = name_size(name);
    if (size == 0)
        return nullptr;
    text = skip_blanks(text + size);
    if (*text == '(')
        return quick_call(name, size, text, value);
    if (*text != '[') {
        // An unknown name has the value of the variable read before it.
        (void)read_variable(name, size, 0, nullptr);
    } else {
        int32_t count;
        int32_t subscripts[var_dims_max];
        text = quick_subscripts(text, &count, subscripts);
        if (text == nullptr || read_variable(name, size, count, subscripts) != 0)
            return nullptr;
    }
    *value = var_current.value;
    return text;
}

static const char *quick_parentheses(const char *text, double *value)
{
    if (*text != '(')
        return nullptr;
    text = quick_condition(skip_blanks(text + 1), value);
    return text != nullptr && *text == ')' ? skip_blanks(text + 1) : nullptr;
}

// The right side behind an operand's !=, which binds as closely as nothing else does on its left.
static const char *quick_unequal(const char *text, double *value)
{
    double right = 0;
    if (text[1] != '=')
        return nullptr;
    text = quick_sum(skip_blanks(text + 2), &right);
    if (text == nullptr || *text == '<' || *text == '>')
        return nullptr;
    *value = *value != right;
    return text;
}

static inline const char *quick_operand(const char *text, double *value)
{
    if (text_is(*text, CHAR_LETTER))
        text = quick_name(text, value);
    else if (text_is(*text, CHAR_DIGIT) || (*text == '.' && text_is(text[1], CHAR_DIGIT)))
        text = quick_number(text, value);
    else
        text = quick_parentheses(text, value);
    return text != nullptr && *text == '!' ? quick_unequal(text, value) : text;
}

// An operand, perhaps with a minus sign.
static inline const char *quick_signed(const char *text, double *value)
{
    bool minus = *text == '-';
    text = quick_operand(minus ? skip_blanks(text + 1) : text, value);
    *value = with_sign(*value, minus);
    return text;
}

static inline const char *quick_product(const char *text, double *value)
{
    text = quick_signed(text, value);
    while (text != nullptr && (*text == '*' || *text == '/')) {
        bool divides = *text == '/';
        double right = 0;
        text = quick_signed(skip_blanks(text + 1), &right);
        if (divides && right == 0)
            return nullptr;
        *value = one_of(divides, *value / one_of(divides, right, 1), *value * right);
    }
    return text;
}

static const char *quick_sum(const char *text, double *value)
{
    text = quick_product(text, value);
    while (text != nullptr && (*text == '+' || *text == '-')) {
        bool minus = *text == '-';
        double right = 0;
        text = quick_product(skip_blanks(text + 1), &right);
        *value = one_of(minus, *value - right, *value + right);
    }
    return text;
}

// A sum, or two of them compared. The pairs <= and >= draw whatever follows into their right side: nothing
// may.
static inline const char *quick_comparison(const char *text, double *value)
{
    text = quick_sum(text, value);
    if (text == nullptr || (*text != '<' && *text != '>' && *text != '='))
        return text;
    char first = *text++;
    if (first != '=')
        text = skip_blanks(text);
    bool equal = *text == '=';
    if (first == '=' && !equal)
        return nullptr;
    double left = *value;
    double right = 0;
    text = quick_sum(skip_blanks(text + (equal ? 1 : 0)), &right);
    if (text == nullptr || *text == '<' || *text == '>' || *text == '=')
        return nullptr;
    if (first == '=')
        *value = left == right;
    else if (!equal)
        *value = first == '<' ? left < right : left > right;
    else if (*text == '&' || *text == '|')
        return nullptr;
    else
        *value = first == '<' ? left <= right : left >= right;
    return text;
}

// Comparisons joined by one kind of pair, && or ||.
static const char *quick_condition(const char *text, double *value)
{
    text = quick_comparison(text, value);
    if (text == nullptr || (*text != '&' && *text != '|'))
        return text;
    char pair = *text;
    while (text != nullptr && (*text == '&' || *text == '|')) {
        double right = 0;
        if (*text != pair || text[1] != pair)
            return nullptr;
        text = quick_comparison(skip_blanks(text + 2), &right);
        *value = pair == '&' ? *value != 0 && right != 0 : *value != 0 || right != 0;
    }
    return text;
}

bool quick_expr(const char *text, const char *end, double *value)
{
    if (end - text > quick_size_max)
        return false;
    keep_selection();
    *value = 0;
    return quick_condition(skip_blanks(text), value) == end || give_up();
}

// quick_assignment, which may leave another variable selected if it fails.
static bool assign(const char *text, const char *end)
{
    const char *name = text;
    size_t size = name_size(name);
    int32_t count;
    int32_t subscripts[var_dims_max];
    double value = 0;
    if (size == 0)
        return false;
    text = quick_subscripts(skip_blanks(text + size), &count, subscripts);
    if (text == nullptr || *text != '=' || text[1] == '=')
        return false;
    if (quick_condition(skip_blanks(text + 1), &value) != end)
        return false;
    if (read_variable(name, size, count, subscripts) != 0)
        return false;
    (void)var_store_value(value);
    return true;
}

bool quick_assignment(const char *text, const char *end)
{
    if (end - text > quick_size_max)
        return false;
    keep_selection();
    return assign(text, end) || give_up();
}
