// Precedence climbing. parse_expr reads an operand, and then takes operators as long as the token's level is
// above the level of the rule that the operand will complete. The two levels of an operator differ where the
// grammar is no simple ladder: <= has the token level of <, but as a finished rule it draws everything in.
//
//   1 + 2*3
//     At level 0: operand 1. The token + (60) is above 0: it is taken, and its right side is read at the
//     level of the rule +, 60. There: operand 2; the token * (70) is above 60: it is taken, its right side
//     is 3. The end (0) is above nothing: 2*3 is completed, then 1+6.
//   a = 5' 6" != 2
//     A name with = after it begins an assignment: its right side is read at level 5. There: operand 5; the
//     token ' (100) makes it feet, and what can begin an operand begins the inches: operand 6, whose " closes
//     the pair. The token ! (100) is taken with its =, and the right side, 2, is read at 40. The end
//     completes the comparison, then the assignment.
//
// A routine is given the place of the first token of what it reads, and gives the place of the token after
// it. Each production of the grammar stands at the code that completes it.
//
// The language bounds how deep a text may nest: 50 grammar symbols may be unfinished at a time. A token that
// is taken is one more of them, and a completed production leaves one, its left side, of those of its right
// side.
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

constexpr double inch_in_foot = 0.08333333333333333;

constexpr int32_t symbols_max = 50;   // unfinished at a time
constexpr int32_t list_max = 5;       // subscripts of a variable, arguments of a function
constexpr int32_t decl_list_max = 23; // items of a declaration
constexpr int32_t pool_size = 100;    // arguments and declaration items of one text

// Of the text that is evaluated.
static struct {
    const char *text_end;   // of the text as it was given
    const char *last_token; // the last one read of it. A fault that isn't an overflow reads on to the end.
    int32_t symbols;        // unfinished
    int32_t pool_used;      // arguments and declaration items
    double result;          // of the last text that had a value
} eval;

// ---- Outcomes ----

// What reading an operand or an expression gives.
struct expr_value {
    double number;
    const char *next; // the place of the token after it; null: there was a fault
};

constexpr expr_value no_value{0, nullptr};

// Every fault goes through here: tells the hook. Gives null, so that it can be what a routine gives.
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

// Adds an unfinished symbol. The last token read is the one at a place. False if the symbol has no room.
static inline bool add_symbol(const char *place)
{
    if (eval.symbols < symbols_max) {
        eval.symbols++;
        return true;
    }
    if (lex.end == eval.text_end)
        eval.last_token = place;
    (void)fail("yacc stack overflow");
    return false;
}

// A production is complete, whose right side has so many symbols.
static inline void complete(int32_t size)
{
    eval.symbols -= size - 1;
}

// Takes the token at a place, which ends at end. Gives the place of the next one.
static inline const char *take(const char *place, const char *end)
{
    return add_symbol(place) ? lex_skip(end) : nullptr;
}

// The same for a token of one character, which has to be this one.
static inline const char *take_expected(const char *place, char token)
{
    return lex_code(place) == token ? take(place, place + 1) : syntax_error();
}

// Takes the name at a place.
static const char *take_name(const char *place, lex_piece *name)
{
    lex_token token = lex_read(place);
    *name = token.name;
    return token.code == TOKEN_NAME ? take(place, token.end) : syntax_error();
}

static inline expr_value parse_operand(const char *place);
static expr_value parse_expr(const char *place, uint8_t level);

// ---- Operators ----

static inline const operator_row &operator_at(const char *place)
{
    return operator_rows.row[lex_code(place)];
}

// operation: expr ? expr : expr, from the middle operand on. Both sides are evaluated.
static expr_value parse_condition(double left, const char *place)
{
    expr_value middle = parse_expr(place, level_lowest);
    if (middle.next == nullptr || (place = take_expected(middle.next, ':')) == nullptr)
        return no_value;
    expr_value right = parse_expr(place, operator_levels[OP_CONDITION]);
    complete(5);
    if (left != 0)
        right.number = middle.number;
    return right;
}

static expr_value parse_feet(double left, const char *place);

// An operand is complete, and the token after it is the operator of a row: takes that, its right side if it
// has one, and completes the rule.
static expr_value parse_operator(expr_value left, const operator_row &row)
{
    const char *place = take(left.next, lex_after(left.next, row.token));
    if (place == nullptr)
        return no_value;
    switch (row.op) {
    case OP_FEET: return parse_feet(left.number, place);
    case OP_INCHES: // expr: inches; inches: expr "
        complete(2);
        return {drawing_units(left.number * inch_in_foot), place};
    case OP_CONDITION: return parse_condition(left.number, place);
    default: break;
    }
    int16_t second = lex_code(place);
    uint8_t op = second == row.token ? row.op_doubled : second == '=' ? row.op_equality : +OP_NONE;
    int32_t size = 3;
    if (op != OP_NONE) {
        place = take(place, place + 1);
        size = 4;
    } else if ((op = row.op) == OP_NONE) {
        place = syntax_error();
    }
    if (place == nullptr)
        return no_value;
    expr_value right = parse_expr(place, operator_levels[op]);
    complete(size);
    if (right.next != nullptr && !operator_apply(op, left.number, right.number, &right.number))
        right.next = fail("divide by zero");
    return right;
}

// All operators after an operand that are above the level.
static inline expr_value parse_operators(expr_value value, uint8_t level)
{
    while (value.next != nullptr) {
        const operator_row &row = operator_at(value.next);
        if (row.level <= level)
            break;
        value = parse_operator(value, row);
    }
    return value;
}

// ---- Feet and inches ----

// inches: expr ", of which the mark closes the pair. Whatever else ends the operand is a fault.
static expr_value parse_inches(const char *place)
{
    expr_value value = parse_operand(place);
    while (value.next != nullptr) {
        const operator_row &row = operator_at(value.next);
        if (row.level <= level_lowest)
            return {0, syntax_error()};
        value = parse_operator(value, row);
        if (row.op == OP_INCHES)
            break;
    }
    return value;
}

// The foot mark after an operand was taken: feet: expr '. What can begin an operand begins the inches; a + or
// - is the operator.
static expr_value parse_feet(double left, const char *place)
{
    complete(2);
    double feet = drawing_units(left);
    switch (lex_read(place).code) {
    case TOKEN_NUMBER:
    case TOKEN_NAME:
    case TOKEN_SIZEOF:
    case TOKEN_COPSIZE:
    case '(':
    case '~': break;
    default: return {feet, place}; // expr: feet
    }
    expr_value inches = parse_inches(place);
    inches.number += feet; // expr: feet inches
    complete(2);
    return inches;
}

// ---- Lists ----

// Room for one more argument or item in the text. False if there is none.
static bool pool_take()
{
    if (eval.pool_used == pool_size)
        return false;
    eval.pool_used++;
    return true;
}

struct expr_subscripts {
    int32_t count;
    int32_t items[list_max];
};

// Reads a list of subscripts from its first [ on. Gives the place after it.
static const char *parse_subscripts(const char *place, expr_subscripts *list)
{
    list->count = 0;
    do {
        if ((place = take(place, place + 1)) == nullptr)
            return nullptr;
        expr_value value = parse_expr(place, level_lowest);
        if (value.next == nullptr || (place = take_expected(value.next, ']')) == nullptr)
            return nullptr;
        if (list->count == list_max)
            return fail("Too many dimensions");
        // subscripts: [ expr ]; subscripts: subscripts [ expr ]
        complete(list->count == 0 ? 3 : 4);
        list->items[list->count++] = int_from_double(value.number);
    } while (lex_code(place) == '[');
    return place;
}

// Calls a function; next is the place after its call.
static expr_value call(lex_piece name, double *arguments, int32_t count, const char *next)
{
    const math_func *row = math_find(name.text, name.size);
    if (row == nullptr)
        return {0, fail("%.*s is not a function", length_of(name), name.text)};
    if (row->arguments != count)
        return {0, fail("%.*s needs %d arguments", length_of(name), name.text, row->arguments)};
    expr_value value{0, next};
    if (!math_call(row, arguments, &value.number))
        return no_value;
    return value;
}

// expr: NAME ( arg_list ), from the parenthesis on.
static expr_value parse_call(lex_piece name, const char *place)
{
    double arguments[list_max];
    int32_t count = 0;
    do {
        if ((place = take(place, place + 1)) == nullptr)
            return no_value;
        expr_value value = parse_expr(place, level_lowest);
        if (value.next == nullptr)
            return no_value;
        if (count == list_max || !pool_take())
            return {0, fail("Too many functions or arguments")};
        if (count > 0)
            complete(3);                   // arg_list: arg_list , expr
        arguments[count++] = value.number; // arg_list: expr
        place = value.next;
    } while (lex_code(place) == ',');
    if ((place = take_expected(place, ')')) == nullptr)
        return no_value;
    complete(4);
    return call(name, arguments, count, place);
}

// ---- Variables ----

// assignment: NAME = expr
static expr_value assign(lex_piece name, expr_value value)
{
    int32_t ndims = var_read(name.text, name.size, nullptr);
    if (ndims == VAR_UNKNOWN) {
        if (var_make(name.text, name.size, VAR_NONE, 0, nullptr) != 0)
            return {0, fail("can't make %.*s", length_of(name), name.text)};
    } else if (ndims != 0) {
        return {0, syntax_error()};
    }
    return {var_store_value(value.number), value.next};
}

// assignment: NAME subscripts = expr
static expr_value assign_element(lex_piece name, const expr_subscripts *list, expr_value value)
{
    switch (var_read_element(name.text, name.size, list->count, list->items)) {
    case 0: return {var_store_value(value.number), value.next};
    case VAR_UNKNOWN: return {0, fail("%.*s not declared", length_of(name), name.text)};
    default: return {0, fail("bad subscript")};
    }
}

// Reads a text from the quote or parenthesis before it, the token at a place, to its terminator, and takes
// both. The text between is a symbol of its own, complete before a token is read in it: string_text: (empty);
// raw_text: (empty).
static const char *parse_raw(const char *place, char terminator, lex_piece *text)
{
    if (!add_symbol(place) || !add_symbol(place))
        return nullptr;
    return take_expected(lex_skip(lex_string(place + 1, terminator, text)), terminator);
}

// assignment: NAME = string; assignment: NAME subscripts = string; subscript is -1 if there is none.
// string: " string_text ", of which place is the first quote.
static expr_value assign_string(lex_piece name, int32_t subscript, const char *place)
{
    lex_piece string;
    if ((place = parse_raw(place, '"', &string)) == nullptr)
        return no_value;
    complete(3);
    int32_t code = var_store_string(name.text, name.size, subscript, static_cast<int32_t>(string.size) + 1);
    if (code < 0)
        return {0, syntax_error()};
    if (code > 0)
        return {0, fail("can't make %.*s (%d)", length_of(name), name.text, code)};
    memcpy(cur_ptr, string.text, string.size);
    cur_ptr[string.size] = 0;
    return {static_cast<double>(string.size), place};
}

// An assignment from its = on. subscripts is null for a plain name.
static expr_value parse_assignment(lex_piece name, const expr_subscripts *subscripts, const char *place)
{
    if ((place = take(place, place + 1)) == nullptr)
        return no_value;
    expr_value value;
    if (lex_code(place) == '"') {
        value = assign_string(name, subscripts == nullptr ? -1 : subscripts->items[0], place);
    } else {
        value = parse_expr(place, level_assignment);
        if (value.next != nullptr && name.text[0] == '@') // a system variable isn't a script's to change
            value.next = syntax_error();
        else if (value.next != nullptr)
            value = subscripts == nullptr ? assign(name, value) : assign_element(name, subscripts, value);
    }
    complete(subscripts == nullptr ? 3 : 4);
    return value;
}

// A name with subscripts, from the [ on: an element, or an assignment to it.
static expr_value parse_element(lex_piece name, const char *place)
{
    expr_subscripts subscripts;
    if ((place = parse_subscripts(place, &subscripts)) == nullptr)
        return no_value;
    if (lex_code(place) == '=')
        return parse_assignment(name, &subscripts, place);
    complete(2); // expr: NAME subscripts
    int32_t code = var_read_element(name.text, name.size, subscripts.count, subscripts.items);
    if (code == VAR_UNKNOWN)
        return {0, fail("%.*s not declared", length_of(name), name.text)};
    return {cur_value, code == 0 ? place : syntax_error()};
}

// ---- Operands ----
// A name, SIZEOF and COPSIZE are read on from the token after them.

// expr: SIZEOF ( NAME )
static expr_value parse_sizeof(const char *place)
{
    lex_piece name;
    if ((place = take_expected(place, '(')) == nullptr || (place = take_name(place, &name)) == nullptr ||
        (place = take_expected(place, ')')) == nullptr)
        return no_value;
    complete(4);
    int32_t size = 0;
    (void)var_read(name.text, name.size, &size);
    return {static_cast<double>(size), place};
}

// expr: COPSIZE ( raw_text )
static expr_value parse_copsize(const char *place)
{
    if (lex_code(place) != '(')
        return {0, syntax_error()};
    lex_piece word;
    if ((place = parse_raw(place, ')', &word)) == nullptr)
        return no_value;
    complete(4);
    return {static_cast<double>(type_size_hash(word)), place};
}

// operation: ( expr )
static expr_value parse_parentheses(const char *place)
{
    if ((place = take(place, place + 1)) == nullptr)
        return no_value;
    expr_value value = parse_expr(place, level_lowest);
    if (value.next != nullptr)
        value.next = take_expected(value.next, ')');
    complete(3);
    return value;
}

// operation: ~ expr; operation: + expr; operation: - expr
static expr_value parse_signed(const char *place)
{
    char sign = *place;
    if ((place = take(place, place + 1)) == nullptr)
        return no_value;
    expr_value value = parse_expr(place, level_sign);
    complete(2);
    if (sign == '-')
        value.number = -value.number;
    else if (sign == '~')
        value.number = ~int_from_double(value.number);
    return value;
}

// SIZEOF and COPSIZE; no other keyword begins an operand.
static expr_value parse_keyword(int16_t code, const char *place, const char *end)
{
    if (code != TOKEN_SIZEOF && code != TOKEN_COPSIZE)
        return {0, syntax_error()};
    if ((place = take(place, end)) == nullptr)
        return no_value;
    return code == TOKEN_SIZEOF ? parse_sizeof(place) : parse_copsize(place);
}

static expr_value parse_word(const char *place)
{
    lex_token word = lex_word(place);
    if (word.code != TOKEN_NAME)
        return parse_keyword(word.code, place, word.end);
    if ((place = take(place, word.end)) == nullptr)
        return no_value;
    switch (lex_code(place)) {
    case '(': return parse_call(word.name, place);
    case '[': return parse_element(word.name, place);
    case '=': return parse_assignment(word.name, nullptr, place);
    default: break;
    }
    // expr: NAME. An unknown name is no error: it has the value of the variable read last.
    (void)var_read(word.name.text, word.name.size, nullptr);
    return {cur_value, place};
}

static inline expr_value parse_operand(const char *place)
{
    if (lex_is_number(place)) { // expr: NUMBER
        number_piece number = number_scan(place, lex.end);
        return {number.value, take(place, number.end)};
    }
    if (lex_is_word(place))
        return parse_word(place);
    switch (lex_code(place)) {
    case '(': return parse_parentheses(place);
    case '~':
    case '+':
    case '-': return parse_signed(place);
    default: return {0, syntax_error()};
    }
}

// An operand and all operators after it that are above the level.
// expr: operation; expr: assignment
static expr_value parse_expr(const char *place, uint8_t level)
{
    return parse_operators(parse_operand(place), level);
}

// ---- Declarations ----

struct decl_item {
    lex_piece name;
    expr_subscripts subscripts;
};

// decl: ARRAY NAME subscripts
static const char *parse_array(const lex_token &keyword)
{
    lex_piece name;
    expr_subscripts list;
    const char *place = take(keyword.name.text, keyword.end);
    if (place == nullptr || (place = take_name(place, &name)) == nullptr)
        return nullptr;
    if (lex_code(place) != '[')
        return syntax_error();
    if ((place = parse_subscripts(place, &list)) == nullptr)
        return nullptr;
    int32_t code = var_make(name.text, name.size, VAR_NONE, list.count, list.items);
    return code == 0 ? place : fail("can't make %.*s (%d)", length_of(name), name.text, code);
}

// decl_item: NAME subscripts; decl_item: NAME
static const char *parse_decl_item(const char *place, decl_item *item)
{
    item->subscripts.count = 0;
    if ((place = take_name(place, &item->name)) == nullptr || lex_code(place) != '[')
        return place;
    place = parse_subscripts(place, &item->subscripts);
    complete(2);
    return place;
}

// decl: TYPEWORD decl_list. The variables are made when the whole list was read.
static const char *parse_declaration(const lex_token &keyword)
{
    static decl_item items[decl_list_max];
    int32_t count = 0;
    const char *place = keyword.name.text;
    const char *end = keyword.end; // of the TYPEWORD or comma before an item
    do {
        decl_item item;
        if ((place = take(place, end)) == nullptr || (place = parse_decl_item(place, &item)) == nullptr)
            return nullptr;
        if (count == decl_list_max || !pool_take())
            return fail("Too many functions or arguments");
        if (count > 0)
            complete(3);       // decl_list: decl_list , decl_item
        items[count++] = item; // decl_list: decl_item
        end = place + 1;
    } while (lex_code(place) == ',');
    int8_t type = lex_keyword(keyword.name)->type_code;
    for (int32_t i = 0; i < count; i++) {
        const decl_item &item = items[i];
        int32_t code =
            var_make(item.name.text, item.name.size, type, item.subscripts.count, item.subscripts.items);
        if (code != 0)
            place = fail("can't define %.*s (%d)", length_of(item.name), item.name.text, code);
    }
    return place;
}

// ---- The whole text ----

// input: decl END. A declaration can only begin the text, and has no value. False if the text is none.
static bool parse_declares(const char *place)
{
    lex_token token = lex_read(place);
    switch (token.code) {
    case TOKEN_ARRAY: place = parse_array(token); break;
    case TOKEN_TYPEWORD: place = parse_declaration(token); break;
    case TOKEN_END: return true; // decl: (empty)
    default: return false;
    }
    if (place != nullptr && lex_code(place) != TOKEN_END)
        (void)syntax_error(); // decl: error
    return true;
}

// input: expr END. Null if there was a fault, or no expression.
static const double *parse_input(const char *text, size_t size)
{
    eval = {text + size, text + size, 0, 0, 0};
    if (size > lex_text_max)
        return nullptr;
    lex_start(text, size);
    const char *place = lex_skip(text);
    if ((place == lex.end || lex_may_begin_keyword(*place)) && parse_declares(place))
        return nullptr;
    expr_value value = parse_expr(place, level_lowest);
    if (value.next != nullptr && lex_code(value.next) != TOKEN_END)
        value.next = syntax_error();
    eval.result = value.number;
    return value.next != nullptr ? &eval.result : nullptr;
}

const double *eval_expr(const char *text, size_t size, const char **last_token)
{
    const double *value = parse_input(text, size);
    if (last_token != nullptr)
        *last_token = eval.last_token;
    return value;
}

size_t eval_name_end(const char *text, size_t size, const char *last_token)
{
    if (size > lex_text_max)
        return size;
    lex_start(text, size);
    const char *end = lex_first_name_end(text, last_token);
    return end != nullptr ? static_cast<size_t>(end - text) : size;
}
