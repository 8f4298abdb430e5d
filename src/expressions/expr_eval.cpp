// Precedence climbing. parse_expr reads an operand, and then takes operators whose left binding power is
// above the right binding power of the operator in front of the operand. The two differ where the operators
// are no simple ladder: to its left <= binds as < does, to its right it binds looser than any other.
//
//   a = 5' 6" != 2
//     A name with = after it begins an assignment, whose right side is read at power 5. There: operand 5; the
//     foot sign (100) makes it feet, and a token that can begin an operand begins the inches: operand 6,
//     whose inch sign closes the pair. ! (100) is taken with its =, and its right side, 2, is read at
//     power 40. The end completes the comparison, then the assignment.
//
// A routine takes the position of the first token that it reads, and returns the position of the token after
// them, or null after a fault. Each production of the grammar is a comment where it is complete.
//
// The language limits how deep a text may nest: 50 grammar symbols may be unfinished at a time. A token that
// is taken is one of them, and a complete production leaves one, its left side, of those of its right side.
#include "expressions/expr_eval.h"

#include "expressions/expr_lexer.h"
#include "expressions/expr_operators.h"
#include "expressions/math_functions.h"
#include "expressions/var_store.h"
#include "support/number.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

void (*expr_error)(const char *message);

constexpr int32_t symbols_max = 50;   // unfinished at a time
constexpr int32_t list_max = 5;       // subscripts of a variable, arguments of a function
constexpr int32_t decl_list_max = 23; // items of a declaration
constexpr int32_t pool_size = 100;    // arguments and declaration items of one text

// The evaluator's state for one text.
static struct {
    const char *text_end;   // of the text as the caller passed it
    const char *last_token; // where the last token was read; the text's end, except after a stack overflow
    int32_t symbols;        // unfinished
    int32_t pool_used;      // arguments and declaration items so far
    double result;          // what eval_expr returns the address of
} eval;

// ---- Results ----

// An operand or an expression that was read.
struct expr_value {
    double number;
    const char *next; // the position of the token after it; null: there was a fault
};

constexpr expr_value no_value{0, nullptr};

// Passes a fault's message to the hook. Returns null, the position after a fault.
__attribute__((format(printf, 1, 2))) static const char *fail(const char *format, ...)
{
    if (expr_error != nullptr) {
        char expr_msg[256];
        va_list values;
        va_start(values, format);
        vsnprintf(expr_msg, sizeof expr_msg, format, values);
        va_end(values);
        expr_error(expr_msg);
    }
    return nullptr;
}

// The length of a name for a %.*s in front of its text.
static int length_of(lex_piece name)
{
    return static_cast<int>(name.size);
}

static const char *syntax_error()
{
    return fail("syntax error");
}

// ---- Tokens ----

// Adds an unfinished symbol; pos is that of the last token read. False if there are too many.
static bool add_symbol(const char *pos)
{
    if (eval.symbols < symbols_max) {
        eval.symbols++;
        return true;
    }
    if (lex.end == eval.text_end)
        eval.last_token = pos;
    (void)fail("yacc stack overflow");
    return false;
}

// Completes a production, whose right side has size symbols.
static void complete(int32_t size)
{
    eval.symbols -= size - 1;
}

// Takes the token from pos to end. Returns the position of the next one.
static const char *take(const char *pos, const char *end)
{
    return add_symbol(pos) ? lex_skip(end) : nullptr;
}

// Takes the token at pos, which has to be this character.
static const char *take_expected(const char *pos, char token)
{
    return lex_code(pos) == token ? take(pos, pos + 1) : syntax_error();
}

// Takes the token at pos, which has to be a name.
static const char *take_name(const char *pos, lex_piece *name)
{
    lex_token token = lex_read(pos);
    *name = token.name;
    return token.code == TOKEN_NAME ? take(pos, token.end) : syntax_error();
}

static inline expr_value parse_operand(const char *pos);
static expr_value parse_expr(const char *pos, uint8_t binding);

// ---- Operators ----

// noinline keeps the stack frames of rare productions out of parse_operand, which runs for every operand.

// operation: expr ? expr : expr, from the middle operand on. Both the middle and the right one are evaluated.
[[gnu::noinline]] static expr_value parse_condition(double left, const char *pos)
{
    expr_value middle = parse_expr(pos, binding_lowest);
    if (middle.next == nullptr || (pos = take_expected(middle.next, ':')) == nullptr)
        return no_value;
    expr_value right = parse_expr(pos, right_bindings[OP_CONDITION]);
    complete(5);
    if (left != 0)
        right.number = middle.number;
    return right;
}

static expr_value parse_feet(double left, const char *pos);

// Takes the operator after a complete left operand, and its right operand if it has one, and computes its
// value.
static expr_value parse_operator(expr_value left, const operator_row &row)
{
    const char *pos = take(left.next, lex_after(left.next, row.token));
    if (pos == nullptr)
        return no_value;
    switch (row.op) {
    case OP_FEET: return parse_feet(left.number, pos);
    case OP_INCHES: // expr: inches; inches: expr "
        complete(2);
        return {drawing_units(left.number * feet_per_inch), pos};
    case OP_CONDITION: return parse_condition(left.number, pos);
    default: break;
    }
    int16_t second = lex_code(pos);
    uint8_t op = second == row.token ? row.op_doubled : second == '=' ? row.op_equality : +OP_NONE;
    int32_t size = 3;
    if (op != OP_NONE) {
        pos = take(pos, pos + 1);
        size = 4;
    } else if ((op = row.op) == OP_NONE) {
        pos = syntax_error();
    }
    if (pos == nullptr)
        return no_value;
    expr_value right = parse_expr(pos, right_bindings[op]);
    complete(size);
    if (right.next != nullptr && !operator_apply(op, left.number, right.number, &right.number))
        right.next = fail("divide by zero");
    return right;
}

// Reads all operators after an operand whose left binding power is above binding.
static inline expr_value parse_operators(expr_value value, uint8_t binding)
{
    while (value.next != nullptr) {
        const operator_row &row = operator_rows.row[lex_code(value.next)];
        if (row.left_binding <= binding)
            break;
        value = parse_operator(value, row);
    }
    return value;
}

// ---- Feet and inches ----

// The inches after feet, up to the inch sign that closes the pair. Without one they are a fault.
static expr_value parse_inches(const char *pos)
{
    expr_value value = parse_operand(pos);
    while (value.next != nullptr) {
        const operator_row &row = operator_rows.row[lex_code(value.next)];
        if (row.left_binding <= binding_lowest)
            return {0, syntax_error()};
        value = parse_operator(value, row);
        if (row.op == OP_INCHES)
            break;
    }
    return value;
}

// feet: expr ', of which the foot sign was taken. A token that can begin an operand begins the inches, except
// for + and -, which are operators here.
[[gnu::noinline]] static expr_value parse_feet(double left, const char *pos)
{
    complete(2);
    double feet = drawing_units(left);
    switch (lex_read(pos).code) {
    case TOKEN_NUMBER:
    case TOKEN_NAME:
    case TOKEN_SIZEOF:
    case TOKEN_COPSIZE:
    case '(':
    case '~': break;
    default: return {feet, pos}; // expr: feet
    }
    expr_value inches = parse_inches(pos);
    inches.number += feet; // expr: feet inches
    complete(2);
    return inches;
}

// ---- Lists ----

struct expr_subscripts {
    int32_t count;
    int32_t items[list_max];
};

// Reads a list of subscripts from its first [ on.
static const char *parse_subscripts(const char *pos, expr_subscripts *list)
{
    list->count = 0;
    do {
        if ((pos = take(pos, pos + 1)) == nullptr)
            return nullptr;
        expr_value value = parse_expr(pos, binding_lowest);
        if (value.next == nullptr || (pos = take_expected(value.next, ']')) == nullptr)
            return nullptr;
        if (list->count == list_max)
            return fail("Too many dimensions");
        // subscripts: [ expr ]; subscripts: subscripts [ expr ]
        complete(list->count == 0 ? 3 : 4);
        list->items[list->count++] = int_from_double(value.number);
    } while (lex_code(pos) == '[');
    return pos;
}

// expr: NAME ( arg_list ), from the parenthesis on.
[[gnu::noinline]] static expr_value parse_call(lex_piece name, const char *pos)
{
    double arguments[list_max];
    int32_t count = 0;
    do {
        if ((pos = take(pos, pos + 1)) == nullptr)
            return no_value;
        expr_value value = parse_expr(pos, binding_lowest);
        if (value.next == nullptr)
            return no_value;
        if (count == list_max || eval.pool_used++ == pool_size)
            return {0, fail("Too many functions or arguments")};
        if (count > 0)
            complete(3);                   // arg_list: arg_list , expr
        arguments[count++] = value.number; // arg_list: expr
        pos = value.next;
    } while (lex_code(pos) == ',');
    if ((pos = take_expected(pos, ')')) == nullptr)
        return no_value;
    complete(4);
    const math_func *row = math_find(name.text, name.size);
    if (row == nullptr)
        return {0, fail("%.*s is not a function", length_of(name), name.text)};
    if (row->arguments != count)
        return {0, fail("%.*s needs %d arguments", length_of(name), name.text, row->arguments)};
    expr_value value{0, pos};
    return math_call(row, arguments, &value.number) ? value : no_value;
}

// ---- Variables ----

// Selects the scalar that is assigned to, which is made if there is none. Returns pos, or null.
static const char *select_scalar(lex_piece name, const char *pos)
{
    int32_t ndims = var_read(name.text, name.size, nullptr);
    if (ndims == VAR_UNKNOWN && var_make(name.text, name.size, VAR_NONE, 0, nullptr) != 0)
        return fail("can't make %.*s", length_of(name), name.text);
    return ndims > 0 ? syntax_error() : pos;
}

// Selects an element. Returns pos, or null; bad is the message of subscripts that don't fit.
static const char *select_element(lex_piece name, const expr_subscripts &list, const char *bad,
                                  const char *pos)
{
    switch (var_read_element(name.text, name.size, list.count, list.items)) {
    case 0: return pos;
    case VAR_UNKNOWN: return fail("%.*s not declared", length_of(name), name.text);
    default: return fail("%s", bad);
    }
}

// Reads a raw text between the " or ( at pos and its terminator, and takes both. string_text: (empty) and
// raw_text: (empty) are complete before the text is read: a symbol with no token.
static const char *parse_raw(const char *pos, char terminator, lex_piece *text)
{
    if (!add_symbol(pos) || !add_symbol(pos + 1))
        return nullptr;
    return take_expected(lex_skip(lex_string(pos + 1, terminator, text)), terminator);
}

// assignment: NAME = string; assignment: NAME subscripts = string; subscript is -1 if there is none. pos is
// that of the first quote of string: " string_text "
[[gnu::noinline]] static expr_value assign_string(lex_piece name, int32_t subscript, const char *pos)
{
    lex_piece string;
    if ((pos = parse_raw(pos, '"', &string)) == nullptr)
        return no_value;
    complete(3);
    int32_t code = var_store_string(name.text, name.size, subscript, static_cast<int32_t>(string.size) + 1);
    if (code < 0)
        return {0, syntax_error()};
    if (code > 0)
        return {0, fail("can't make %.*s (%d)", length_of(name), name.text, code)};
    memcpy(cur_ptr, string.text, string.size);
    cur_ptr[string.size] = 0;
    return {static_cast<double>(string.size), pos};
}

// Reads an assignment from its = on. subscripts is null for a plain name.
static expr_value parse_assignment(lex_piece name, const expr_subscripts *subscripts, const char *pos)
{
    if ((pos = take(pos, pos + 1)) == nullptr)
        return no_value;
    expr_value value;
    if (lex_code(pos) == '"') {
        value = assign_string(name, subscripts == nullptr ? -1 : subscripts->items[0], pos);
    } else {
        // assignment: NAME = expr; assignment: NAME subscripts = expr
        value = parse_expr(pos, binding_assignment);
        if (value.next != nullptr && name.text[0] == '@') // a system variable isn't a script's to change
            value.next = syntax_error();
        else if (value.next != nullptr)
            value.next = subscripts == nullptr
                             ? select_scalar(name, value.next)
                             : select_element(name, *subscripts, "bad subscript", value.next);
        if (value.next != nullptr)
            value.number = var_store_value(value.number);
    }
    complete(subscripts == nullptr ? 3 : 4);
    return value;
}

// Reads an element, or an assignment to one, from its first [ on.
[[gnu::noinline]] static expr_value parse_element(lex_piece name, const char *pos)
{
    expr_subscripts subscripts;
    if ((pos = parse_subscripts(pos, &subscripts)) == nullptr)
        return no_value;
    if (lex_code(pos) == '=')
        return parse_assignment(name, &subscripts, pos);
    complete(2); // expr: NAME subscripts
    pos = select_element(name, subscripts, "syntax error", pos);
    return {cur_value, pos};
}

// ---- Declarations ----

struct decl_item {
    lex_piece name;
    expr_subscripts subscripts;
};

// decl_item: NAME subscripts; decl_item: NAME
static const char *parse_decl_item(const char *pos, decl_item *item)
{
    item->subscripts.count = 0;
    if ((pos = take_name(pos, &item->name)) == nullptr || lex_code(pos) != '[')
        return pos;
    pos = parse_subscripts(pos, &item->subscripts);
    complete(2);
    return pos;
}

// Makes the variable of an item. Returns pos, or null if the store refuses it; verb is for the message.
static const char *declare(const decl_item &item, int8_t type, const char *verb, const char *pos)
{
    int32_t code =
        var_make(item.name.text, item.name.size, type, item.subscripts.count, item.subscripts.items);
    return code == 0 ? pos : fail("can't %s %.*s (%d)", verb, length_of(item.name), item.name.text, code);
}

// decl: ARRAY NAME subscripts, from NAME on.
[[gnu::noinline]] static const char *parse_array(const char *pos)
{
    decl_item item;
    if ((pos = parse_decl_item(pos, &item)) == nullptr)
        return nullptr;
    return item.subscripts.count > 0 ? declare(item, VAR_NONE, "make", pos) : syntax_error();
}

// decl: TYPEWORD decl_list, from the list on. The variables are made after the whole list was read.
[[gnu::noinline]] static const char *parse_declaration(const char *pos, int8_t type)
{
    decl_item items[decl_list_max];
    int32_t count = 0;
    for (;;) {
        decl_item item;
        if ((pos = parse_decl_item(pos, &item)) == nullptr)
            return nullptr;
        if (count == decl_list_max || eval.pool_used++ == pool_size)
            return fail("Too many functions or arguments");
        if (count > 0)
            complete(3);       // decl_list: decl_list , decl_item
        items[count++] = item; // decl_list: decl_item
        if (lex_code(pos) != ',')
            break;
        if ((pos = take(pos, pos + 1)) == nullptr)
            return nullptr;
    }
    bool made = true;
    for (int32_t i = 0; i < count; i++)
        made &= declare(items[i], type, "define", pos) != nullptr;
    return made ? pos : nullptr;
}

// ---- Operands ----

// expr: SIZEOF ( NAME ), from the parenthesis on.
[[gnu::noinline]] static expr_value parse_sizeof(const char *pos)
{
    lex_piece name;
    if ((pos = take_expected(pos, '(')) == nullptr || (pos = take_name(pos, &name)) == nullptr ||
        (pos = take_expected(pos, ')')) == nullptr)
        return no_value;
    complete(4);
    int32_t size = 0;
    (void)var_read(name.text, name.size, &size);
    return {static_cast<double>(size), pos};
}

// expr: COPSIZE ( raw_text ), from the parenthesis on.
[[gnu::noinline]] static expr_value parse_copsize(const char *pos)
{
    if (lex_code(pos) != '(')
        return {0, syntax_error()};
    lex_piece word;
    if ((pos = parse_raw(pos, ')', &word)) == nullptr)
        return no_value;
    complete(4);
    return {static_cast<double>(type_size_hash(word)), pos};
}

// operation: ( expr )
static expr_value parse_parentheses(const char *pos)
{
    if ((pos = take(pos, pos + 1)) == nullptr)
        return no_value;
    expr_value value = parse_expr(pos, binding_lowest);
    if (value.next != nullptr)
        value.next = take_expected(value.next, ')');
    complete(3);
    return value;
}

// operation: ~ expr; operation: + expr; operation: - expr
[[gnu::noinline]] static expr_value parse_signed(const char *pos)
{
    char sign = *pos;
    if ((pos = take(pos, pos + 1)) == nullptr)
        return no_value;
    expr_value value = parse_expr(pos, binding_sign);
    complete(2);
    if (sign == '-')
        value.number = -value.number;
    else if (sign == '~')
        value.number = ~int_from_double(value.number);
    return value;
}

// Reads an operand that begins with a name, from the token after the name on.
static expr_value parse_name(lex_piece name, const char *pos)
{
    switch (lex_code(pos)) {
    case '(': return parse_call(name, pos);
    case '[': return parse_element(name, pos);
    case '=': return parse_assignment(name, nullptr, pos);
    default: break;
    }
    // expr: NAME. An unknown name is no error: it has the value of the variable read last.
    (void)var_read(name.text, name.size, nullptr);
    return {cur_value, pos};
}

// Reads an operand that begins with a name or keyword, or a declaration, which can only be a whole text and
// has no value.
static expr_value parse_word(const char *pos)
{
    lex_token word = lex_word(pos);
    bool declares = word.code == TOKEN_ARRAY || word.code == TOKEN_TYPEWORD;
    if (declares ? eval.symbols > 0 : word.code < TOKEN_NAME)
        return {0, syntax_error()};
    if ((pos = take(pos, word.end)) == nullptr)
        return no_value;
    switch (word.code) {
    case TOKEN_NAME: return parse_name(word.name, pos);
    case TOKEN_SIZEOF: return parse_sizeof(pos);
    case TOKEN_COPSIZE: return parse_copsize(pos);
    case TOKEN_ARRAY: pos = parse_array(pos); break;
    default: pos = parse_declaration(pos, lex_keyword(word.name)->type_code); break;
    }
    if (pos != nullptr && lex_code(pos) != TOKEN_END)
        (void)syntax_error(); // decl: error
    return no_value;          // input: decl END
}

static inline expr_value parse_operand(const char *pos)
{
    if (lex_is_number(pos)) { // expr: NUMBER
        number_piece number = number_scan(pos, lex.end);
        return {number.value, take(pos, number.end)};
    }
    if (lex_is_word(pos))
        return parse_word(pos);
    switch (lex_code(pos)) {
    case '(': return parse_parentheses(pos);
    case '~':
    case '+':
    case '-': return parse_signed(pos);
    default: return {0, syntax_error()};
    }
}

// Reads an operand and all operators after it whose left binding power is above binding.
// expr: operation; expr: assignment
static expr_value parse_expr(const char *pos, uint8_t binding)
{
    return parse_operators(parse_operand(pos), binding);
}

// ---- The whole text ----

// input: expr END. Null if the text has no value.
static const double *evaluate(const char *text, size_t size)
{
    eval.last_token = eval.text_end = text + size;
    eval.symbols = 0;
    eval.pool_used = 0;
    if (size > lex_text_max)
        return nullptr;
    lex_start(text, size);
    const char *pos = lex_skip(text);
    if (pos == lex.end) // input: decl END; decl: (empty)
        return nullptr;
    expr_value value = parse_expr(pos, binding_lowest);
    if (value.next != nullptr && lex_code(value.next) != TOKEN_END)
        value.next = syntax_error();
    eval.result = value.number;
    return value.next != nullptr ? &eval.result : nullptr;
}

const double *eval_expr(const char *text, size_t size, const char **last_token)
{
    const double *value = evaluate(text, size);
    if (last_token != nullptr)
        *last_token = eval.last_token;
    return value;
}

size_t eval_name_end(const char *text, size_t size, const char *last_token)
{
    if (size > lex_text_max)
        return size;
    lex_start(text, size);
    const char *pos = lex_skip(text);
    while (pos <= last_token && pos < lex.end) {
        lex_token token = lex_read(pos);
        if (token.name.size > 0)
            return static_cast<size_t>(token.name.text + token.name.size - text);
        pos = lex_skip(token.end);
    }
    return size;
}
