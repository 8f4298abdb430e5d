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
// The language bounds how deep a text may nest: 50 grammar symbols may be unfinished at a time. depth is the
// number of symbols below what a routine reads, and is checked whenever a token joins them. An operand, a
// list of subscripts and a list of arguments are one symbol each.
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

static double expr_result;
static int32_t pool_used;

static const char *text_end; // of the text as it was given

// The token at this place was read, and none after it. A fault that isn't an overflow reads on to the end.
static const char *read_limit;

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

// The token at a place has no room.
static const char *overflow(const char *place)
{
    if (lex_end == text_end)
        read_limit = place;
    return fail("yacc stack overflow");
}

// Takes the token at a place, which ends at end, above so many symbols. Gives the place of the next one.
static inline const char *take(const char *place, const char *end, int32_t depth)
{
    return depth < symbols_max ? lex_skip(end) : overflow(place);
}

// The same for a token of one character, which has to be this one.
static inline const char *take_expected(const char *place, char token, int32_t depth)
{
    return lex_code(place) == token ? take(place, place + 1, depth) : syntax_error();
}

// Takes the name at a place.
static const char *take_name(const char *place, lex_piece *name, int32_t depth)
{
    lex_token token = lex_read(place);
    *name = token.name;
    return token.code == TOKEN_NAME ? take(place, token.end, depth) : syntax_error();
}

static inline expr_value parse_operand(const char *place, int32_t depth);
static expr_value parse_expr(const char *place, uint8_t level, int32_t depth);

// ---- Operators ----

static inline const operator_row &operator_at(const char *place)
{
    return operator_rows.row[lex_code(place)];
}

// operation: expr ? expr : expr, from the middle operand on; depth is that of the left one. Both sides are
// evaluated. (Rules that few texts reach are out of line: what they keep on the stack would burden all
// others.)
[[gnu::noinline]] static expr_value parse_condition(double left, const char *place, int32_t depth)
{
    expr_value middle = parse_expr(place, level_lowest, depth + 2);
    if (middle.next == nullptr || (place = take_expected(middle.next, ':', depth + 3)) == nullptr)
        return no_value;
    expr_value right = parse_expr(place, operator_levels[OP_CONDITION], depth + 4);
    if (left != 0)
        right.number = middle.number;
    return right;
}

static expr_value parse_feet(double left, const char *place, int32_t depth);

// An operand is complete, with so many symbols below it, and the token after it is the operator of a row:
// takes that, its right side if it has one, and completes the rule.
static expr_value parse_operator(expr_value left, const operator_row &row, int32_t depth)
{
    const char *place = take(left.next, lex_after(left.next, row.token), depth + 1);
    if (place == nullptr)
        return no_value;
    switch (row.op) {
    case OP_FEET: return parse_feet(left.number, place, depth);
    case OP_INCHES: // expr: inches; inches: expr "
        return {to_drawing_units(left.number * inch_in_foot, 2), place};
    case OP_CONDITION: return parse_condition(left.number, place, depth);
    default: break;
    }
    int16_t second = lex_code(place);
    uint8_t op = second == row.token ? row.op_doubled : second == '=' ? row.op_equality : +OP_NONE;
    int32_t right_depth = depth + 2;
    if (op != OP_NONE)
        place = take(place, place + 1, right_depth++);
    else if ((op = row.op) == OP_NONE)
        place = syntax_error();
    if (place == nullptr)
        return no_value;
    expr_value right = parse_expr(place, operator_levels[op], right_depth);
    if (right.next != nullptr && !operator_apply(op, left.number, right.number, &right.number))
        right.next = fail("divide by zero");
    return right;
}

// All operators after an operand that are above the level, with so many symbols below it.
static inline expr_value parse_operators(expr_value value, uint8_t level, int32_t depth)
{
    while (value.next != nullptr) {
        const operator_row &row = operator_at(value.next);
        if (row.level <= level)
            break;
        value = parse_operator(value, row, depth);
    }
    return value;
}

// ---- Feet and inches ----

// inches: expr ", of which the mark closes the pair. Whatever else ends the operand is a fault.
static expr_value parse_inches(const char *place, int32_t depth)
{
    expr_value value = parse_operand(place, depth);
    while (value.next != nullptr) {
        const operator_row &row = operator_at(value.next);
        if (row.level <= level_lowest)
            return {0, syntax_error()};
        value = parse_operator(value, row, depth);
        if (row.op == OP_INCHES)
            break;
    }
    return value;
}

// The foot mark after an operand was taken: feet: expr '. What can begin an operand begins the inches; a + or
// - is the operator.
[[gnu::noinline]] static expr_value parse_feet(double left, const char *place, int32_t depth)
{
    double feet = to_drawing_units(left, 2);
    switch (lex_read(place).code) {
    case TOKEN_NUMBER:
    case TOKEN_NAME:
    case TOKEN_SIZEOF:
    case TOKEN_COPSIZE:
    case '(':
    case '~': break;
    default: return {feet, place}; // expr: feet
    }
    expr_value inches = parse_inches(place, depth + 1);
    inches.number += feet; // expr: feet inches
    return inches;
}

// ---- Lists ----

// Room for one more argument or item in the text. False if there is none.
static bool pool_take()
{
    if (pool_used == pool_size)
        return false;
    pool_used++;
    return true;
}

struct expr_subscripts {
    int32_t count;
    int32_t items[list_max];
};

// Reads a list of subscripts, with so many symbols below it, from its first [ on. Gives the place after it.
static const char *parse_subscripts(const char *place, expr_subscripts *list, int32_t depth)
{
    list->count = 0;
    int32_t bracket = depth; // symbols below the next [; the list so far is one of them
    do {
        if ((place = take(place, place + 1, bracket)) == nullptr)
            return nullptr;
        expr_value value = parse_expr(place, level_lowest, bracket + 1);
        if (value.next == nullptr || (place = take_expected(value.next, ']', bracket + 2)) == nullptr)
            return nullptr;
        if (list->count == list_max)
            return fail("Too many dimensions");
        // subscripts: [ expr ]; subscripts: subscripts [ expr ]
        list->items[list->count++] = int_from_double(value.number);
        bracket = depth + 1;
    } while (lex_code(place) == '[');
    return place;
}

// Calls a function; next is the place after its call.
static expr_value call(lex_piece name, double *arguments, int32_t count, const char *next)
{
    const math_func *row = math_find(name.text, name.size);
    if (row == nullptr)
        return {0, fail("%.*s is not a function", length_of(name), name.text)};
    int32_t wanted = static_cast<int32_t>(row->flags & MATH_ARGUMENTS);
    if (wanted != count)
        return {0, fail("%.*s needs %d arguments", length_of(name), name.text, wanted)};
    expr_value value{0, next};
    if (!math_call(row, arguments, &value.number))
        return no_value;
    return value;
}

// expr: NAME ( arg_list ), from the parenthesis on; depth is the name's.
[[gnu::noinline]] static expr_value parse_call(lex_piece name, const char *place, int32_t depth)
{
    double arguments[list_max];
    int32_t count = 0;
    int32_t mark = depth + 1; // symbols below the ( or the comma
    do {
        if ((place = take(place, place + 1, mark)) == nullptr)
            return no_value;
        expr_value value = parse_expr(place, level_lowest, mark + 1);
        if (value.next == nullptr)
            return no_value;
        if (count == list_max || !pool_take())
            return {0, fail("Too many functions or arguments")};
        arguments[count++] = value.number; // arg_list: expr; arg_list: arg_list , expr
        place = value.next;
        mark = depth + 3;
    } while (lex_code(place) == ',');
    place = take_expected(place, ')', depth + 3);
    return place != nullptr ? call(name, arguments, count, place) : no_value;
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
    if (name.text[0] == '@')
        return {0, syntax_error()};
    switch (var_read_element(name.text, name.size, list->count, list->items)) {
    case 0: return {var_store_value(value.number), value.next};
    case VAR_UNKNOWN: return {0, fail("%.*s not declared", length_of(name), name.text)};
    default: return {0, fail("bad subscript")};
    }
}

// Reads a text up to its terminator, " or ), and takes that; so many symbols are below it. The text is a
// symbol of its own, and so is the (empty) that it begins with: string_text and raw_text: (empty). No token
// is read ahead of it.
static const char *parse_raw(const char *place, char terminator, lex_piece *text, int32_t depth)
{
    if (depth + 1 >= symbols_max) {
        (void)overflow(place);
        return nullptr;
    }
    return take_expected(lex_skip(lex_string(place, terminator, text)), terminator, depth + 2);
}

// assignment: NAME = string; assignment: NAME subscripts = string; subscript is -1 if there is none.
// string: " string_text ", of which place is the first mark, with so many symbols below it.
[[gnu::noinline]] static expr_value assign_string(lex_piece name, int32_t subscript, const char *place,
                                                  int32_t depth)
{
    lex_piece string;
    if ((place = parse_raw(place + 1, '"', &string, depth)) == nullptr)
        return no_value;
    int32_t code = var_store_string(name.text, name.size, subscript, static_cast<int32_t>(string.size) + 1);
    if (code < 0)
        return {0, syntax_error()};
    if (code > 0)
        return {0, fail("can't make %.*s (%d)", length_of(name), name.text, code)};
    memcpy(cur_ptr, string.text, string.size);
    cur_ptr[string.size] = 0;
    return {static_cast<double>(string.size), place};
}

// An assignment from its = on, with so many symbols below that. subscripts is null for a plain name.
static expr_value parse_assignment(lex_piece name, const expr_subscripts *subscripts, const char *place,
                                   int32_t depth)
{
    if ((place = take(place, place + 1, depth)) == nullptr)
        return no_value;
    if (lex_code(place) == '"')
        return assign_string(name, subscripts == nullptr ? -1 : subscripts->items[0], place, depth + 1);
    expr_value value = parse_expr(place, level_assignment, depth + 1);
    if (value.next == nullptr)
        return no_value;
    return subscripts == nullptr ? assign(name, value) : assign_element(name, subscripts, value);
}

// A name with subscripts, from the [ on: an element, or an assignment to it; depth is the name's.
[[gnu::noinline]] static expr_value parse_element(lex_piece name, const char *place, int32_t depth)
{
    expr_subscripts subscripts;
    if ((place = parse_subscripts(place, &subscripts, depth + 1)) == nullptr)
        return no_value;
    if (lex_code(place) == '=')
        return parse_assignment(name, &subscripts, place, depth + 2);
    int32_t code = var_read_element(name.text, name.size, subscripts.count, subscripts.items);
    if (code == VAR_UNKNOWN)
        return {0, fail("%.*s not declared", length_of(name), name.text)};
    return {cur_value, code == 0 ? place : syntax_error()}; // expr: NAME subscripts
}

// ---- Operands ----
// A name, SIZEOF and COPSIZE are read on from the token after them, with the symbols below them.

// expr: SIZEOF ( NAME )
[[gnu::noinline]] static expr_value parse_sizeof(const char *place, int32_t depth)
{
    lex_piece name;
    if ((place = take_expected(place, '(', depth + 1)) == nullptr ||
        (place = take_name(place, &name, depth + 2)) == nullptr ||
        (place = take_expected(place, ')', depth + 3)) == nullptr)
        return no_value;
    int32_t size = 0;
    (void)var_read(name.text, name.size, &size);
    return {static_cast<double>(size), place};
}

// expr: COPSIZE ( raw_text )
[[gnu::noinline]] static expr_value parse_copsize(const char *place, int32_t depth)
{
    if (lex_code(place) != '(')
        return {0, syntax_error()};
    lex_piece word;
    place = parse_raw(place + 1, ')', &word, depth + 1);
    return place != nullptr ? expr_value{static_cast<double>(type_size_hash(word)), place} : no_value;
}

// operation: ( expr ), and all that begin one after the other: with a call for each, the processor could no
// longer predict where the deep ones return to.
static expr_value parse_parentheses(const char *place, int32_t depth)
{
    int32_t open = depth; // symbols below what stands in the innermost of them
    do
        place = take(place, place + 1, open++);
    while (place != nullptr && lex_code(place) == '(');
    if (place == nullptr)
        return no_value;
    expr_value value = parse_expr(place, level_lowest, open);
    while (value.next != nullptr) {
        value.next = take_expected(value.next, ')', open + 1);
        if (--open == depth)
            break;
        value = parse_operators(value, level_lowest, open);
    }
    return value;
}

// operation: ~ expr; operation: + expr; operation: - expr
[[gnu::noinline]] static expr_value parse_signed(const char *place, int32_t depth)
{
    char sign = *place;
    if ((place = take(place, place + 1, depth)) == nullptr)
        return no_value;
    expr_value value = parse_expr(place, level_sign, depth + 1);
    if (sign == '-')
        value.number = -value.number;
    else if (sign == '~')
        value.number = ~int_from_double(value.number);
    return value;
}

// SIZEOF and COPSIZE; no other keyword begins an operand.
[[gnu::noinline]] static expr_value parse_keyword(int16_t code, const char *place, const char *end,
                                                  int32_t depth)
{
    if (code != TOKEN_SIZEOF && code != TOKEN_COPSIZE)
        return {0, syntax_error()};
    if ((place = take(place, end, depth)) == nullptr)
        return no_value;
    return code == TOKEN_SIZEOF ? parse_sizeof(place, depth) : parse_copsize(place, depth);
}

static expr_value parse_word(const char *place, int32_t depth)
{
    lex_token word = lex_word(place);
    if (word.code != TOKEN_NAME)
        return parse_keyword(word.code, place, word.end, depth);
    if ((place = take(place, word.end, depth)) == nullptr)
        return no_value;
    switch (lex_code(place)) {
    case '(': return parse_call(word.name, place, depth);
    case '[': return parse_element(word.name, place, depth);
    case '=': return parse_assignment(word.name, nullptr, place, depth + 1);
    default: break;
    }
    // expr: NAME. An unknown name is no error: it has the value of the variable read last.
    (void)var_read(word.name.text, word.name.size, nullptr);
    return {cur_value, place};
}

static inline expr_value parse_operand(const char *place, int32_t depth)
{
    if (lex_is_number(place)) { // expr: NUMBER
        number_piece number = number_scan(place, lex_end);
        return {number.value, take(place, number.end, depth)};
    }
    if (lex_is_word(place))
        return parse_word(place, depth);
    switch (lex_code(place)) {
    case '(': return parse_parentheses(place, depth);
    case '~':
    case '+':
    case '-': return parse_signed(place, depth);
    default: return {0, syntax_error()};
    }
}

// An operand and all operators after it that are above the level, with so many symbols below it.
// expr: operation; expr: assignment
static expr_value parse_expr(const char *place, uint8_t level, int32_t depth)
{
    return parse_operators(parse_operand(place, depth), level, depth);
}

// ---- Declarations ----

struct decl_item {
    lex_piece name;
    expr_subscripts subscripts;
};

// decl: ARRAY NAME subscripts, from the name on.
static const char *parse_array(const char *place)
{
    lex_piece name;
    expr_subscripts list;
    if ((place = take_name(place, &name, 1)) == nullptr)
        return nullptr;
    if (lex_code(place) != '[')
        return syntax_error();
    if ((place = parse_subscripts(place, &list, 2)) == nullptr)
        return nullptr;
    int32_t code = var_make(name.text, name.size, VAR_NONE, list.count, list.items);
    return code == 0 ? place : fail("can't make %.*s (%d)", length_of(name), name.text, code);
}

// decl_item: NAME subscripts; decl_item: NAME
static const char *parse_decl_item(const char *place, decl_item *item, int32_t depth)
{
    item->subscripts.count = 0;
    place = take_name(place, &item->name, depth);
    return place != nullptr && lex_code(place) == '[' ? parse_subscripts(place, &item->subscripts, depth + 1)
                                                      : place;
}

// decl: TYPEWORD decl_list, from the list on. The variables are made when the whole list was read.
static const char *parse_declaration(const char *place, int8_t type)
{
    static decl_item items[decl_list_max];
    int32_t count = 0;
    int32_t depth = 1; // of an item; with the list before it and the comma, 3
    for (;;) {
        decl_item item;
        if ((place = parse_decl_item(place, &item, depth)) == nullptr)
            return nullptr;
        if (count == decl_list_max || !pool_take())
            return fail("Too many functions or arguments");
        items[count++] = item; // decl_list: decl_item; decl_list: decl_list , decl_item
        if (lex_code(place) != ',')
            break;
        depth = 3;
        if ((place = take(place, place + 1, depth - 1)) == nullptr)
            return nullptr;
    }
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
[[gnu::noinline]] static bool parse_declares(const char *place)
{
    lex_token token = lex_read(place);
    switch (token.code) {
    case TOKEN_ARRAY: place = parse_array(lex_skip(token.end)); break;
    case TOKEN_TYPEWORD:
        place = parse_declaration(lex_skip(token.end), lex_keyword(token.name)->type_code);
        break;
    case TOKEN_END: return true; // decl: (empty)
    default: return false;
    }
    if (place != nullptr && lex_code(place) != TOKEN_END)
        (void)syntax_error(); // decl: error
    return true;
}

const double *eval_expr(const char *text, size_t size)
{
    read_limit = text_end = text + size;
    if (size > lex_text_max)
        return nullptr;
    pool_used = 0;
    lex_start(text, size);
    const char *place = lex_skip(text);
    if ((place == lex_end || lex_may_begin_keyword(*place)) && parse_declares(place))
        return nullptr;
    expr_value value = parse_expr(place, level_lowest, 0); // input: expr END
    if (value.next != nullptr && lex_code(value.next) != TOKEN_END)
        value.next = syntax_error();
    expr_result = value.number;
    return value.next != nullptr ? &expr_result : nullptr;
}

size_t eval_name_end(const char *text, size_t size)
{
    if (size > lex_text_max)
        return size;
    lex_start(text, size);
    const char *end = lex_first_name_end(text, read_limit);
    return end != nullptr ? static_cast<size_t>(end - text) : size;
}
