// Precedence climbing. parse_expr reads an operand, and then takes operators as long as the token's level is
// above the level of the rule that the operand will complete. The two levels of an operator differ where the
// grammar is no simple ladder: <= has the token level of <, but as a finished rule it draws everything in.
//
//   1 + 2*3              level 0: operand 1. The token + (60) is above 0: it is taken, and its right side
//   read
//                        at the level of the rule +, 60. There: operand 2; the token * (70) is above 60: it
//                        is taken, its right side is 3. The end (0) is above nothing: 2*3 is completed, then
//                        1+6.
//   a = 5' 6" != 2       A name with = after it begins an assignment: its right side is read at level 5.
//   There:
//                        operand 5; the token ' (100) makes it feet, and what can begin an operand begins the
//                        inches: operand 6, whose " closes the pair. The token ! (100) is taken with its =,
//                        and the right side, 2, is read at 40. The end completes !=, then the assignment.
//
// A routine is entered with the first token of what it reads in lex.token, and leaves the token after it
// there. Each production of the grammar stands at the code that completes it.
//
// The language bounds how deep a text may nest: 50 grammar symbols may be unfinished at a time. depth is the
// number of symbols below what a routine reads, and is checked whenever a token joins them. An operand, a
// list of subscripts and a list of arguments are one symbol each.
#include "analysis/expr_eval.h"

#include "analysis/expr_lexer.h"
#include "analysis/expr_operators.h"
#include "analysis/math_functions.h"
#include "analysis/var_store.h"
#include "support/number.h"
#include "support/text.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

void (*expr_error)(const char *message);
size_t eval_first_name_end;

constexpr double inch_in_foot = 0.08333333333333333;

constexpr int32_t symbols_max = 50;   // unfinished at a time
constexpr int32_t list_max = 5;       // subscripts of a variable, arguments of a function
constexpr int32_t decl_list_max = 23; // items of a declaration
constexpr int32_t pool_size = 100;    // arguments and declaration items of one text

static double expr_result;
static int32_t pool_used;

// ---- Outcomes ----

enum : int {
    STEP_ON = 0,  // what was read has a value
    STEP_RECOVER, // a fault, or a text without a value: the rest is read for its first name, and dropped
    STEP_STOP     // a fault that ends at once, with no more reading
};

// What reading an operand or an expression gives: a number, and how to go on.
struct expr_value {
    double number;
    int step;
};

static inline expr_value value_of(double number)
{
    return expr_value{number, STEP_ON};
}

static inline expr_value no_value(int step)
{
    return expr_value{0, step};
}

// Every fault goes through here: tells the hook, and gives how to go on.
__attribute__((format(printf, 2, 3))) static int fail(int step, const char *format, ...)
{
    if (expr_error != nullptr) {
        char expr_msg[256];
        va_list values;
        va_start(values, format);
        vsnprintf(expr_msg, sizeof expr_msg, format, values);
        va_end(values);
        expr_error(expr_msg);
    }
    return step;
}

// The length of a name for a %.*s in front of its text.
static int length_of(lex_piece name)
{
    return static_cast<int>(name.size);
}

static int syntax_error()
{
    return fail(STEP_RECOVER, "syntax error");
}

static int too_many()
{
    return fail(STEP_RECOVER, "Too many functions or arguments");
}

// ---- Tokens ----

// Room for one more symbol above so many.
static inline int take_symbol(int32_t depth)
{
    return depth < symbols_max ? STEP_ON : fail(STEP_STOP, "yacc stack overflow");
}

// Takes the current token, above so many symbols, and reads the next one.
static inline int take(int32_t depth)
{
    int step = take_symbol(depth);
    if (step == STEP_ON)
        lex_next();
    return step;
}

static inline int take_expected(int16_t token, int32_t depth)
{
    return lex.token == token ? take(depth) : syntax_error();
}

static expr_value parse_operand(int32_t depth);
static expr_value parse_expr(uint8_t level, int32_t depth);

// ---- Operators ----

// operation: expr ? expr : expr, from the middle operand on; depth is that of the left one. Both sides are
// evaluated.
static expr_value parse_condition(double left, int32_t depth)
{
    expr_value middle = parse_expr(level_lowest, depth + 2);
    if (middle.step == STEP_ON)
        middle.step = take_expected(':', depth + 3);
    if (middle.step != STEP_ON)
        return middle;
    expr_value right = parse_expr(operator_levels[OP_CONDITION], depth + 4);
    if (left != 0)
        right.number = middle.number;
    return right;
}

static expr_value parse_feet(double left, int32_t depth);

// An operand is complete, with so many symbols below it, and the token after it is an operator: takes that,
// its right side if it has one, and completes the rule.
static expr_value parse_operator(double left, int32_t depth)
{
    const operator_row &row = operator_rows.row[lex.token];
    int step = take(depth + 1);
    if (step != STEP_ON)
        return no_value(step);
    switch (row.op) {
    case OP_FEET: return parse_feet(left, depth);
    case OP_INCHES: return value_of(to_drawing_units(left * inch_in_foot, 2)); // expr: inches; inches: expr "
    case OP_CONDITION: return parse_condition(left, depth);
    default: break;
    }
    uint8_t op = row.op;
    int32_t right_depth = depth + 2;
    uint8_t pair = lex.token == row.token ? row.op_doubled : lex.token == '=' ? row.op_equality : +OP_NONE;
    if (pair != OP_NONE) {
        op = pair;
        step = take(right_depth++);
    } else if (op == OP_NONE) {
        step = syntax_error();
    }
    if (step != STEP_ON)
        return no_value(step);
    expr_value right = parse_expr(operator_levels[op], right_depth);
    if (right.step == STEP_ON && !operator_apply(op, left, right.number, &right.number))
        right.step = fail(STEP_RECOVER, "divide by zero");
    return right;
}

// ---- Feet and inches ----

// inches: expr ", of which the mark closes the pair. Whatever else ends the operand is a fault.
static expr_value parse_inches(int32_t depth)
{
    expr_value value = parse_operand(depth);
    while (value.step == STEP_ON && operator_rows.row[lex.token].level > level_lowest) {
        bool closes = lex.token == '"';
        value = parse_operator(value.number, depth);
        if (closes)
            return value;
    }
    return value.step == STEP_ON ? no_value(syntax_error()) : value;
}

// The foot mark after an operand was taken: feet: expr '. What can begin an operand begins the inches; a + or
// - is the operator.
static expr_value parse_feet(double left, int32_t depth)
{
    double feet = to_drawing_units(left, 2);
    switch (lex.token) {
    case TOKEN_NUMBER:
    case TOKEN_NAME:
    case TOKEN_SIZEOF:
    case TOKEN_COPSIZE:
    case '(':
    case '~': break;
    default: return value_of(feet); // expr: feet
    }
    expr_value inches = parse_inches(depth + 1);
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

// Reads a list of subscripts, with so many symbols below it, that begins with the current [.
static int parse_subscripts(expr_subscripts *list, int32_t depth)
{
    list->count = 0;
    int32_t bracket = depth; // symbols below the next [; the list so far is one of them
    do {
        int step = take(bracket);
        if (step != STEP_ON)
            return step;
        expr_value value = parse_expr(level_lowest, bracket + 1);
        if (value.step == STEP_ON)
            value.step = take_expected(']', bracket + 2);
        if (value.step != STEP_ON)
            return value.step;
        if (list->count == list_max)
            return fail(STEP_RECOVER, "Too many dimensions");
        // subscripts: [ expr ]; subscripts: subscripts [ expr ]
        list->items[list->count++] = int_from_double(value.number);
        bracket = depth + 1;
    } while (lex.token == '[');
    return STEP_ON;
}

static expr_value call(lex_piece name, double *arguments, int32_t count)
{
    const math_func *row = math_find(name.text, name.size);
    if (row == nullptr)
        return no_value(fail(STEP_RECOVER, "%.*s is not a function", length_of(name), name.text));
    int32_t wanted = static_cast<int32_t>(row->flags & MATH_ARGUMENTS);
    if (wanted != count)
        return no_value(fail(STEP_RECOVER, "%.*s needs %d arguments", length_of(name), name.text, wanted));
    expr_value value = value_of(0);
    if (!math_call(row, arguments, &value.number))
        value.step = STEP_RECOVER;
    return value;
}

// expr: NAME ( arg_list ), from the parenthesis on; depth is the name's.
static expr_value parse_call(lex_piece name, int32_t depth)
{
    double arguments[list_max];
    int32_t count = 0;
    int32_t mark = depth + 1; // symbols below the ( or the comma
    do {
        int step = take(mark);
        if (step != STEP_ON)
            return no_value(step);
        expr_value value = parse_expr(level_lowest, mark + 1);
        if (value.step != STEP_ON)
            return value;
        if (count == list_max || !pool_take())
            return no_value(too_many());
        arguments[count++] = value.number; // arg_list: expr; arg_list: arg_list , expr
        mark = depth + 3;
    } while (lex.token == ',');
    int step = take_expected(')', depth + 3);
    return step == STEP_ON ? call(name, arguments, count) : no_value(step);
}

// ---- Variables ----

static expr_value assign(lex_piece name, double number)
{
    int32_t ndims = var_read(name.text, name.size, nullptr);
    if (ndims == VAR_UNKNOWN) {
        if (var_make(name.text, name.size, VAR_NONE, 0, nullptr) != 0)
            return no_value(fail(STEP_STOP, "can't make %.*s", length_of(name), name.text));
    } else if (ndims != 0) {
        return no_value(fail(STEP_STOP, "syntax error"));
    }
    return value_of(var_store_value(number)); // assignment: NAME = expr
}

static expr_value assign_element(lex_piece name, const expr_subscripts *list, double number)
{
    if (name.text[0] == '@')
        return no_value(fail(STEP_STOP, "syntax error"));
    switch (var_read_element(name.text, name.size, list->count, list->items)) {
    case 0: return value_of(var_store_value(number)); // assignment: NAME subscripts = expr
    case VAR_UNKNOWN: return no_value(fail(STEP_STOP, "%.*s not declared", length_of(name), name.text));
    default: return no_value(fail(STEP_STOP, "bad subscript"));
    }
}

// assignment: NAME = string; assignment: NAME subscripts = string; subscript is -1 if there is none.
static expr_value assign_string(lex_piece name, int32_t subscript, lex_piece string)
{
    auto length = static_cast<int32_t>(string.size);
    int32_t code = var_store_string(name.text, name.size, subscript, length + 1);
    if (code < 0)
        return no_value(fail(STEP_STOP, "syntax error"));
    if (code > 0)
        return no_value(fail(STEP_STOP, "can't make %.*s (%d)", length_of(name), name.text, code));
    memcpy(cur_ptr, string.text, string.size);
    cur_ptr[string.size] = 0;
    return value_of(length);
}

// An assignment from its = on, with so many symbols below that. subscripts is null for a plain name.
static expr_value parse_assignment(lex_piece name, const expr_subscripts *subscripts, int32_t depth)
{
    int step = take(depth);
    if (step != STEP_ON)
        return no_value(step);
    if (lex.token != '"') {
        expr_value value = parse_expr(level_assignment, depth + 1);
        if (value.step != STEP_ON)
            return value;
        return subscripts == nullptr ? assign(name, value.number)
                                     : assign_element(name, subscripts, value.number);
    }
    // string: " string_text "; string_text: (empty), which is a symbol too. No token is read ahead of it.
    if ((step = take_symbol(depth + 1)) != STEP_ON || (step = take_symbol(depth + 2)) != STEP_ON)
        return no_value(step);
    lex_piece string = lex_string('"');
    lex_next();
    if ((step = take_expected('"', depth + 3)) != STEP_ON)
        return no_value(step);
    return assign_string(name, subscripts == nullptr ? -1 : subscripts->items[0], string);
}

// A name with subscripts, from the [ on: an element, or an assignment to it; depth is the name's.
static expr_value parse_element(lex_piece name, int32_t depth)
{
    expr_subscripts subscripts;
    int step = parse_subscripts(&subscripts, depth + 1);
    if (step != STEP_ON)
        return no_value(step);
    if (lex.token == '=')
        return parse_assignment(name, &subscripts, depth + 2);
    int32_t code = var_read_element(name.text, name.size, subscripts.count, subscripts.items);
    if (code == VAR_UNKNOWN)
        return no_value(fail(STEP_RECOVER, "%.*s not declared", length_of(name), name.text));
    return code == 0 ? value_of(cur_value) : no_value(syntax_error()); // expr: NAME subscripts
}

// ---- Operands ----

static expr_value parse_name(int32_t depth)
{
    lex_piece name = lex.name;
    int step = take(depth);
    if (step != STEP_ON)
        return no_value(step);
    switch (lex.token) {
    case '(': return parse_call(name, depth);
    case '[': return parse_element(name, depth);
    case '=': return parse_assignment(name, nullptr, depth + 1);
    default: break;
    }
    // expr: NAME. An unknown name is no error: it has the value of the variable read last.
    (void)var_read(name.text, name.size, nullptr);
    return value_of(cur_value);
}

// expr: SIZEOF ( NAME )
static expr_value parse_sizeof(int32_t depth)
{
    int step;
    if ((step = take(depth)) != STEP_ON || (step = take_expected('(', depth + 1)) != STEP_ON)
        return no_value(step);
    lex_piece name = lex.name;
    if ((step = take_expected(TOKEN_NAME, depth + 2)) != STEP_ON ||
        (step = take_expected(')', depth + 3)) != STEP_ON)
        return no_value(step);
    int32_t size = 0;
    (void)var_read(name.text, name.size, &size);
    return value_of(size);
}

// Size of a type word by a hash of its text; any other text gives 0, a few by chance excepted.
static int type_size_hash(lex_piece word)
{
    uint32_t hash = 0;
    for (size_t i = 0; i < word.size; i++)
        hash = 11 * hash + 5 * static_cast<uint32_t>(char_lower(static_cast<unsigned char>(word.text[i])));
    switch (hash & 0xFFFF) {
    case 6774:
    case 52079: return 1;
    case 4619:
    case 9660:
    case 48745:
    case 49263:
    case 62358: return 2;
    case 1184:
    case 6028:
    case 6275:
    case 49633:
    case 51333: return 4;
    case 38985: return 8;
    default: return 0;
    }
}

// expr: COPSIZE ( raw_text ); raw_text: (empty), which is a symbol too. No token is read ahead of it.
static expr_value parse_copsize(int32_t depth)
{
    int step = take(depth);
    if (step == STEP_ON && lex.token != '(')
        step = syntax_error();
    if (step != STEP_ON || (step = take_symbol(depth + 1)) != STEP_ON ||
        (step = take_symbol(depth + 2)) != STEP_ON)
        return no_value(step);
    lex_piece word = lex_string(')');
    lex_next();
    step = take_expected(')', depth + 3);
    return step == STEP_ON ? value_of(type_size_hash(word)) : no_value(step);
}

// operation: ( expr )
static expr_value parse_parentheses(int32_t depth)
{
    int step = take(depth);
    if (step != STEP_ON)
        return no_value(step);
    expr_value value = parse_expr(level_lowest, depth + 1);
    if (value.step == STEP_ON)
        value.step = take_expected(')', depth + 2);
    return value;
}

// operation: ~ expr; operation: + expr; operation: - expr
static expr_value parse_signed(int32_t depth)
{
    int16_t sign = lex.token;
    int step = take(depth);
    if (step != STEP_ON)
        return no_value(step);
    expr_value value = parse_expr(level_sign, depth + 1);
    if (sign == '-')
        value.number = -value.number;
    else if (sign == '~')
        value.number = ~int_from_double(value.number);
    return value;
}

static expr_value parse_operand(int32_t depth)
{
    switch (lex.token) {
    case TOKEN_NUMBER: {
        double number = lex.number;
        int step = take(depth);
        return step == STEP_ON ? value_of(number) : no_value(step); // expr: NUMBER
    }
    case TOKEN_NAME: return parse_name(depth);
    case TOKEN_SIZEOF: return parse_sizeof(depth);
    case TOKEN_COPSIZE: return parse_copsize(depth);
    case '(': return parse_parentheses(depth);
    case '~':
    case '+':
    case '-': return parse_signed(depth);
    default: return no_value(syntax_error());
    }
}

// An operand and all operators after it that are above the level, with so many symbols below it.
// expr: operation; expr: assignment
static expr_value parse_expr(uint8_t level, int32_t depth)
{
    expr_value value = parse_operand(depth);
    while (value.step == STEP_ON && operator_rows.row[lex.token].level > level)
        value = parse_operator(value.number, depth);
    return value;
}

// ---- Declarations ----

struct decl_item {
    lex_piece name;
    expr_subscripts subscripts;
};

// decl: ARRAY NAME subscripts
static int parse_array()
{
    int step = take(0);
    lex_piece name = lex.name;
    expr_subscripts list{};
    if (step != STEP_ON || (step = take_expected(TOKEN_NAME, 1)) != STEP_ON)
        return step;
    step = lex.token == '[' ? parse_subscripts(&list, 2) : syntax_error();
    if (step != STEP_ON)
        return step;
    int32_t code = var_make(name.text, name.size, VAR_NONE, list.count, list.items);
    if (code != 0)
        return fail(STEP_RECOVER, "can't make %.*s (%d)", length_of(name), name.text, code);
    return STEP_ON;
}

// decl_item: NAME subscripts; decl_item: NAME
static int parse_decl_item(decl_item *item, int32_t depth)
{
    item->name = lex.name;
    item->subscripts.count = 0;
    int step = take_expected(TOKEN_NAME, depth);
    if (step == STEP_ON && lex.token == '[')
        step = parse_subscripts(&item->subscripts, depth + 1);
    return step;
}

// decl: TYPEWORD decl_list. The variables are made when the whole list was read.
static int parse_declaration()
{
    static decl_item items[decl_list_max];
    int8_t type = lex.type_code;
    int32_t count = 0;
    int32_t depth = 1; // of an item; with the list before it and the comma, 3
    do {
        decl_item item;
        int step = take(depth - 1);
        if (step == STEP_ON)
            step = parse_decl_item(&item, depth);
        if (step != STEP_ON)
            return step;
        if (count == decl_list_max || !pool_take())
            return too_many();
        items[count++] = item; // decl_list: decl_item; decl_list: decl_list , decl_item
        depth = 3;
    } while (lex.token == ',');
    int step = STEP_ON;
    for (int32_t i = 0; i < count; i++) {
        const decl_item &item = items[i];
        int32_t code =
            var_make(item.name.text, item.name.size, type, item.subscripts.count, item.subscripts.items);
        if (code != 0)
            step = fail(STEP_RECOVER, "can't define %.*s (%d)", length_of(item.name), item.name.text, code);
    }
    return step;
}

// ---- The whole text ----

// input: expr END; input: decl END. A declaration can only begin the text, and has no value.
static expr_value parse_input()
{
    expr_value value = no_value(STEP_ON);
    bool declares = true;
    switch (lex.token) {
    case TOKEN_ARRAY: value.step = parse_array(); break;
    case TOKEN_TYPEWORD: value.step = parse_declaration(); break;
    case TOKEN_END: break; // decl: (empty)
    default: value = parse_expr(level_lowest, 0); declares = false;
    }
    if (value.step == STEP_ON && lex.token != TOKEN_END)
        value.step = syntax_error(); // decl: error
    if (value.step == STEP_ON && declares)
        value.step = STEP_RECOVER;
    return value;
}

const double *eval_expr(const char *text, size_t size)
{
    eval_first_name_end = size;
    if (size > lex_text_max)
        return nullptr;
    pool_used = 0;
    lex_start(text, size);
    lex_next();
    expr_value value = parse_input();
    if (value.step == STEP_RECOVER)
        lex_finish();
    if (lex.first_name_end != nullptr)
        eval_first_name_end = static_cast<size_t>(lex.first_name_end - text);
    expr_result = value.number;
    return value.step == STEP_ON ? &expr_result : nullptr;
}
