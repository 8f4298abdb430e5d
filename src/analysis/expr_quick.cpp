// A descent through the levels of the grammar. Each routine reads one level from text on, stores its value
// and gives the place behind it and its blanks; null means that the text is for eval_expr. depth is the
// number of parentheses and brackets that are open.
#include "analysis/expr_quick.h"

#include "analysis/expr_lexer.h"
#include "analysis/var_store.h"
#include "support/char_masks.h"
#include "support/number.h"
#include "support/text.h"

#include <stddef.h>

constexpr int depth_max = 4;    // far from where eval_expr has no more room
constexpr int digits_max = 15;  // a number of so many digits is exact
constexpr int keyword_size = 7; // of the longest keyword

static const char *quick_sum(const char *text, int depth, double *value);
static const char *quick_comparison(const char *text, int depth, double *value);

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
    int run = word_run(reinterpret_cast<const unsigned char *>(text));
    auto size = static_cast<size_t>(run);
    if (run == word_run_max)
        return 0;
    bool perhaps_keyword = run <= keyword_size && text_is(text[run - 1], CHAR_LETTER);
    return perhaps_keyword && lex_is_keyword(text, size) ? 0 : size;
}

// The subscripts at text, of which there may be none.
static const char *quick_subscripts(const char *text, int depth, int32_t *count, int32_t *subscripts)
{
    *count = 0;
    while (*text == '[') {
        double value;
        if (*count == var_dims_max || depth == depth_max)
            return nullptr;
        text = quick_sum(skip_blanks(text + 1), depth + 1, &value);
        if (text == nullptr || *text != ']')
            return nullptr;
        subscripts[(*count)++] = int_from_double(value);
        text = skip_blanks(text + 1);
    }
    return text;
}

// A variable or an element.
static const char *quick_variable(const char *text, int depth, double *value)
{
    const char *name = text;
    size_t size = name_size(name);
    if (size == 0)
        return nullptr;
    text = skip_blanks(text + size);
    if (*text != '[') {
        if (var_read_sized(name, size, nullptr) == VAR_UNKNOWN)
            return nullptr;
    } else {
        int32_t count;
        int32_t subscripts[var_dims_max];
        text = quick_subscripts(text, depth, &count, subscripts);
        if (text == nullptr || var_read_element_sized(name, size, count, subscripts) != 0)
            return nullptr;
    }
    *value = var_current.value;
    return text;
}

static inline const char *quick_operand(const char *text, int depth, double *value)
{
    if (text_is(*text, CHAR_LETTER))
        return quick_variable(text, depth, value);
    if (text_is(*text, CHAR_DIGIT) || (*text == '.' && text_is(text[1], CHAR_DIGIT)))
        return quick_number(text, value);
    if (*text != '(' || depth == depth_max)
        return nullptr;
    text = quick_comparison(skip_blanks(text + 1), depth + 1, value);
    return text != nullptr && *text == ')' ? skip_blanks(text + 1) : nullptr;
}

// An operand, perhaps with a minus sign.
static inline const char *quick_signed(const char *text, int depth, double *value)
{
    bool minus = *text == '-';
    text = quick_operand(minus ? skip_blanks(text + 1) : text, depth, value);
    *value = minus ? -*value : *value;
    return text;
}

static inline const char *quick_product(const char *text, int depth, double *value)
{
    text = quick_signed(text, depth, value);
    while (text != nullptr && (*text == '*' || *text == '/')) {
        bool divides = *text == '/';
        double right = 0;
        text = quick_signed(skip_blanks(text + 1), depth, &right);
        if (divides && right == 0)
            return nullptr;
        *value = divides ? *value / right : *value * right;
    }
    return text;
}

static const char *quick_sum(const char *text, int depth, double *value)
{
    text = quick_product(text, depth, value);
    while (text != nullptr && (*text == '+' || *text == '-')) {
        bool minus = *text == '-';
        double right = 0;
        text = quick_product(skip_blanks(text + 1), depth, &right);
        *value = minus ? *value - right : *value + right;
    }
    return text;
}

// A sum, or two of them compared. What may follow is no operator: the pairs <= and >= would draw it into
// their right side. The pair != is missing, as it draws its left side out of a sum.
static const char *quick_comparison(const char *text, int depth, double *value)
{
    text = quick_sum(text, depth, value);
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
    text = quick_sum(skip_blanks(text + (equal ? 1 : 0)), depth, &right);
    if (first == '<')
        *value = equal ? left <= right : left < right;
    else if (first == '>')
        *value = equal ? left >= right : left > right;
    else
        *value = left == right;
    return text;
}

bool quick_expr(const char *text, const char *end, double *value)
{
    var_selection selected = var_current;
    *value = 0;
    if (quick_comparison(skip_blanks(text), 0, value) == end)
        return true;
    var_current = selected;
    return false;
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
    text = quick_subscripts(skip_blanks(text + size), 0, &count, subscripts);
    if (text == nullptr || *text != '=' || text[1] == '=')
        return false;
    if (quick_comparison(skip_blanks(text + 1), 0, &value) != end)
        return false;
    if (count > 0 ? var_read_element_sized(name, size, count, subscripts) != 0
                  : var_read_sized(name, size, nullptr) != 0)
        return false;
    (void)var_store_value(value);
    return true;
}

bool quick_assignment(const char *text, const char *end)
{
    var_selection selected = var_current;
    if (assign(text, end))
        return true;
    var_current = selected;
    return false;
}
