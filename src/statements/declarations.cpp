#include "statements/declarations.h"

#include "expressions/expr_eval.h"
#include "expressions/expr_lexer.h"
#include "expressions/var_store.h"
#include "source/src_stream.h"
#include "statements/labels.h"
#include "statements/statement_text.h"
#include "support/number.h"
#include "support/output.h"
#include "support/text.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <charconv>
#include <system_error>

constexpr int32_t value_line_length = 511; // characters of a line of initial values that are read at once

// The type of a word, or VAR_NONE.
static int8_t decl_type_find(const char *word)
{
    const expr_keyword *keyword = lex_keyword({word, strlen(word)});
    return keyword != nullptr ? keyword->type_code : static_cast<int8_t>(VAR_NONE);
}

// ---- Lists and references ----

char *next_item(char *text, char **next, int *delimiter)
{
    char *const item = text_skip_white(text);
    *next = *item != 0 ? item : nullptr;
    if (!text_is(*item, CHAR_NAME))
        return nullptr;
    char *from = item;
    char *to = item;
    int32_t parentheses = 0;
    int32_t brackets = 0;
    bool blank_seen = false; // outside of parentheses and brackets
    for (; *from != 0; from++) {
        char c = *from;
        bool outside = parentheses == 0 && brackets == 0;
        if (text_is(c, CHAR_WHITE)) {
            blank_seen |= outside;
            continue;
        }
        if ((c == ',' && outside) || (blank_seen && c != '['))
            break;
        blank_seen = false;
        parentheses += (c == '(') - (c == ')');
        brackets += (c == '[') - (c == ']');
        if (parentheses < 0 || brackets < 0 || strchr("\"`'", c) != nullptr) {
            *next = from + 1;
            return nullptr;
        }
        *to++ = c;
    }
    *next = *from == ',' ? from + 1 : from;
    if (parentheses > 0 || brackets > 0)
        return nullptr;
    *delimiter = *from == ',' ? ITEM_COMMA : *from != 0 ? ITEM_BLANK : ITEM_LAST;
    *to = 0;
    return item;
}

// Value of a subscript's text: plain digits are decimal, anything else is evaluated. False if it is no
// expression.
static bool subscript_value(const char *text, size_t size, int32_t *value)
{
    auto [digits_end, error] = std::from_chars(text, text + size, *value);
    if (digits_end == text + size && *text != '-') {
        if (error != std::errc{})
            *value = -1;
        return true;
    }
    const double *result = eval_expr(text, size);
    if (result == nullptr)
        return false;
    *value = int_from_double(*result);
    return true;
}

int32_t parse_var_ref(char *text, int32_t max_dims, int32_t *dims)
{
    *std::remove_if(text, text + strlen(text), [](char c) { return text_is(c, CHAR_WHITE); }) = 0;
    char *c = text;
    if (*c == '$')
        c += c[1] == '$' ? 2 : 1;
    if (!text_is(*c, CHAR_LETTER))
        return -1;
    while (text_is(*c, CHAR_WORD))
        c++;
    char *name_end = c;
    int32_t count = 0;
    while (*c == '[') {
        char *subscript = c + 1;
        char *close = strchr(subscript, ']');
        if (close == nullptr || close == subscript || count == max_dims)
            return -1;
        if (!subscript_value(subscript, static_cast<size_t>(close - subscript), &dims[count++]))
            return -1;
        c = close + 1;
    }
    if (*c != 0)
        return -1;
    *name_end = 0;
    return count;
}

// ---- Type words and LOCAL ----

static void write_declaration(const char *word, const char *text)
{
    out_format("%s ", word);
    for (; *text != 0; text++) {
        if (*text == '\r')
            out_text("\\r");
        else
            out_char(*text);
    }
}

// Enters one variable in the store. A variable that is declared again keeps its value if its dimensions
// stay; a dimension of 0 fits any. 0, or a code of var_make if the store refuses it.
static int32_t declare(const char *name, int8_t type, int32_t count, const int32_t *dims)
{
    int32_t known = var_read(name, strlen(name), nullptr);
    if (known != count)
        return var_make(name, strlen(name), type, count, dims);
    if (cur_type != type)
        return VAR_TYPE;
    int32_t compared = type == VAR_SLIST ? 1 : count; // of a string list the items alone
    for (int32_t i = 0; i < compared; i++)
        if (dims[i] != 0 && dims[i] != cur_block->dims[i])
            return var_make(name, strlen(name), type, count, dims);
    return 0;
}

// Declares the items of a list; VAR_NONE only checks their names. first is an item that was cut off before,
// or null.
static int32_t declare_list(char *first, int first_delimiter, char *next, int8_t type)
{
    int32_t max_dims = type == VAR_NONE ? 0 : var_dims_max;
    int32_t count = 0;
    char *item = first;
    int delimiter = first_delimiter;
    if (item == nullptr)
        item = next_item(next, &next, &delimiter);
    for (; item != nullptr; item = next_item(next, &next, &delimiter)) {
        count++;
        int32_t dims[var_dims_max];
        if (delimiter == ITEM_BLANK)
            return STOP_DECL_COMMA;
        int32_t ndims = parse_var_ref(item, max_dims, dims);
        if (ndims < 0)
            return STOP_DECL_REFERENCE;
        int32_t code = type != VAR_NONE ? declare(item, type, ndims, dims) : 0;
        if (code != 0)
            return STOP_STORE - code;
    }
    if (next != nullptr)
        return STOP_DECL_ITEM;
    return count > 0 ? STATEMENT_TEXT : STOP_DECL_EMPTY;
}

// LOCAL type list, or LOCAL list: whether the first word is a type and whether a further word follows it
// have to agree.
static int32_t declare_local(char *text)
{
    char *next;
    int delimiter = ITEM_LAST;
    char *item = next_item(text, &next, &delimiter);
    if (item == nullptr)
        return next != nullptr ? STOP_DECL_ITEM : STOP_DECL_EMPTY;
    int8_t type = decl_type_find(item);
    if ((type != VAR_NONE) != (delimiter == ITEM_BLANK))
        return STOP_DECL_COMMA;
    return type != VAR_NONE ? declare_list(nullptr, 0, next, type)
                            : declare_list(item, delimiter, next, VAR_NONE);
}

int32_t decl_statement(const char *word)
{
    if (src_read_line(stmt_text, line_buf_capacity) == 0)
        return STATEMENT_END;
    if (text_is_word(word, strlen(word), "LOCAL")) {
        // Kept: the text has its own line feed, so that an empty line follows a LOCAL. Users compare a new
        // conversion with an old one: without the line every script with a LOCAL would differ.
        out_format("LOCAL %s\n", stmt_text);
        return declare_local(stmt_text);
    }
    write_declaration(word, stmt_text);
    return declare_list(nullptr, 0, stmt_text, decl_type_find(word));
}

// ---- ARRAY ----

// Reads the head of an ARRAY into line_buf, up to its line's end or the = outside of brackets. Returns what
// ended it.
static int read_array_head()
{
    int32_t used = 0;
    int64_t depth = 0;
    int c = src_getc();
    for (; c != -1 && c != '\n' && (c != '=' || depth > 0); c = src_getc()) {
        depth += (c == '(' || c == '[') - (c == ')' || c == ']');
        if (used < line_buf_capacity - 1)
            line_buf[used++] = static_cast<char>(c);
    }
    line_buf[used] = 0;
    return c;
}

// Reads one number as the C library's "%lf" does; an array's values take 5.6 times the instructions without
// the short way for common numbers. Returns false if there is none.
static bool value_read(const char *text, double *value)
{
    text = text_skip_white(text);
    const char *digits = text + (*text == '-');
    const char *c = digits;
    double number = 0;
    double scale = 1;
    for (; text_is(*c, CHAR_DIGIT); c++)
        number = number * 10 + (*c - '0');
    if (*c == '.')
        for (c++; text_is(*c, CHAR_DIGIT); c++) {
            number = number * 10 + (*c - '0');
            scale *= 10;
        }
    // Up to 15 digits both are exact, so that the division rounds as the library does.
    if (!text_is(*digits, CHAR_DIGIT) || c - digits > 15 || text_is(*c, CHAR_WORD))
        return sscanf(text, "%lf", value) == 1;
    *value = *text == '-' ? -number / scale : number / scale;
    return true;
}

// Stores the values of one line in the array that is being filled, up to the first that is no number.
static void store_values(const char *text)
{
    double value;
    while (text != nullptr && value_read(text, &value)) {
        var_fill_next(value);
        text = strchr(text, ',');
        if (text != nullptr)
            text++;
    }
}

// A # among the values has to be a #LINE. False if it isn't.
static bool value_line_directive(const char *text)
{
    size_t length = strcspn(text, " \t\n\v\f\r");
    if (!text_is_word(text, length, "#LINE"))
        return false;
    (void)line_directive_parse(text + length);
    return true;
}

// The initial values after an ARRAY's =, line by line up to the closing brace.
static int32_t read_values()
{
    bool first = true; // the opening brace has still to come
    var_fill_start();
    while (src_read_line(line_buf, value_line_length) > 0) {
        out_text(line_buf);
        char *text = text_skip_white(line_buf);
        if (*text == 0)
            continue;
        if (*text == '#') {
            if (!value_line_directive(text))
                return STOP_ARRAY_VALUES;
            continue;
        }
        if (first && *text++ != '{')
            return STOP_ARRAY_VALUES;
        first = false;
        char *close = strchr(text, '}');
        if (close != nullptr)
            *close = 0;
        store_values(text);
        if (close != nullptr)
            return STATEMENT_DONE;
    }
    return STATEMENT_END;
}

int32_t array_statement(const char *word)
{
    while (char_is(src_peek(), CHAR_WHITE))
        src.pos++;
    (void)src_lose_nul(src.pos);
    int c = read_array_head();
    out_format("%s %s", word, line_buf);
    if (c == '=')
        out_char('=');
    int32_t dims[var_dims_max];
    int32_t count = parse_var_ref(line_buf, var_dims_max, dims);
    if (count <= 0)
        return STOP_DECL_REFERENCE;
    int32_t code = var_make(line_buf, strlen(line_buf), VAR_NONE, count, dims);
    if (code != 0)
        return STOP_STORE - code;
    if (cur_type == VAR_SLIST)
        return STOP_ARRAY_VALUES;
    if (c != '=') {
        out_char('\n');
        return STATEMENT_DONE;
    }
    return read_values();
}
