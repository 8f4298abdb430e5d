// A shift-reduce parser over one stack of grammar symbols. It behaves in all that can be seen as the LALR
// parser of the grammar does: in the order of effects, in completing a rule before it judges the token
// behind it, in reading a string with no token read ahead, and in how deep a text may nest.
//
// Each production stands at the code that completes it, with its number. A symbol that begins or joins a
// production carries the number of that production (rule), so that a finished operand under it knows what
// it may complete. Between an operand and the next token two tables decide: the token's level against the
// level of the rule that the operand would complete.
#include "analysis/expr_eval.h"

#include "analysis/expr_lexer.h"
#include "analysis/math_functions.h"
#include "analysis/var_store.h"
#include "support/number.h"
#include "support/text.h"

#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

void (*expr_error)(const char *message);

// ---- Symbols and tables ----

// Grammar symbols that are no tokens.
enum : int16_t {
    SYMBOL_START = 300, // below everything; no production holds it
    SYMBOL_EXPR,
    SYMBOL_FEET,
    SYMBOL_INCHES,
    SYMBOL_SUBSCRIPTS,
    SYMBOL_ARG_LIST,
    SYMBOL_DECL_LIST,
    SYMBOL_RAW_TEXT,
    SYMBOL_STRING_TEXT,
    SYMBOL_STRING
};

constexpr int16_t rule_condition = 59; // the first half of 42: an operand that needs its colon
constexpr int16_t rule_inches = 60;    // an operand behind a feet value that needs its "

constexpr int list_max = 5;       // subscripts of a variable, arguments of a function
constexpr int decl_list_max = 23; // items of a declaration
constexpr int stack_depth = 50;   // symbols above the start
constexpr int expr_pool_size = 100;

// Numbers that a symbol gathers: subscripts, or the places of arguments in expr_pool.
struct expr_list {
    int32_t count;
    int32_t items[list_max];
};

struct expr_symbol {
    int16_t symbol; // a token or one of the symbols above
    int16_t rule;   // the production that an operand directly above this symbol belongs to; 0: none
    union {
        double number;  // EXPR, FEET, INCHES, NUMBER
        char *text;     // NAME, the string symbols
        int8_t type;    // TYPEWORD
        expr_list list; // SUBSCRIPTS, ARG_LIST
        int32_t count;  // DECL_LIST: items in decl_items
    };
};

// A parked function argument or declaration item.
struct expr_parked {
    double number;
    char *name;
    expr_list subscripts;
};

// The power of a token to pull itself into the operand in front of it, by token; 0: it has none.
struct token_levels {
    uint8_t level[TOKEN_EQEQ + 1];
};

static constexpr token_levels token_levels_make()
{
    constexpr struct {
        int16_t token;
        uint8_t level;
    } rows[] = {
        {'\'', 100}, {'"', 100}, {'!', 100}, {'^', 80},        {'*', 70}, {'/', 70}, {'%', 70}, {'+', 60},
        {'-', 60},   {'<', 50},  {'>', 50},  {TOKEN_EQEQ, 40}, {'#', 30}, {'&', 25}, {'|', 20}, {'?', 15},
    };
    token_levels levels{};
    for (const auto &row : rows)
        levels.level[row.token] = row.level;
    return levels;
}
static constexpr token_levels token_table = token_levels_make();

struct grammar_row {
    uint8_t length; // symbols of the right side
    uint8_t level;  // the power of the finished rule to keep its right operand short; 0: it has none
};

// By rule number. Equal levels complete the rule: every binary operator associates to the left.
static constexpr grammar_row rule_table[] = {
    {0, 0},                                            // no rule has the number 0
    {2, 0},  {2, 0},                                   // 1 input: expr END, 2 input: decl END
    {0, 0},  {1, 0},  {3, 0},  {2, 0},                 // 3 to 6 decl
    {1, 0},  {1, 0},  {1, 0},  {2, 0}, {1, 0}, {1, 0}, // 7 to 12 expr
    {4, 0},  {0, 0},  {4, 0},  {4, 0}, {2, 0}, {1, 0}, // 13 to 18 expr, 14 raw_text
    {3, 0},                                            // 19 ( expr )
    {2, 90}, {2, 90}, {2, 90},                         // 20 ~, 21 +, 22 -
    {3, 80},                                           // 23 ^
    {3, 70}, {3, 70}, {3, 70},                         // 24 *, 25 /, 26 %
    {3, 60}, {3, 60},                                  // 27 +, 28 -
    {4, 50}, {4, 50},                                  // 29 >>, 30 <<
    {3, 50}, {3, 50},                                  // 31 <, 32 >
    {4, 5},  {4, 5},                                   // 33 <=, 34 >=
    {3, 40}, {4, 40},                                  // 35 ==, 36 !=
    {3, 30}, {3, 30}, {3, 25},                         // 37 &, 38 #, 39 |
    {4, 25}, {4, 20},                                  // 40 &&, 41 ||
    {5, 15},                                           // 42 ?:
    {4, 5},  {3, 5},  {4, 0},  {3, 0},                 // 43 to 46 assignment
    {0, 0},  {3, 0},                                   // 47 string_text, 48 string
    {2, 0},  {2, 0},                                   // 49 feet, 50 inches
    {3, 0},  {1, 0},  {2, 0},  {1, 0},                 // 51, 52 decl_list, 53, 54 decl_item
    {3, 0},  {1, 0},                                   // 55, 56 arg_list
    {4, 0},  {3, 0},                                   // 57, 58 subscripts
    {0, 0},  {0, 0},                                   // rule_condition, rule_inches
};
static_assert(sizeof rule_table / sizeof rule_table[0] == rule_inches + 1, "a row for each rule");

// ---- State of one evaluation ----

static expr_symbol expr_stack[stack_depth + 1];
static expr_symbol *top;   // the topmost symbol
static int16_t lookahead;  // the token read ahead; 0: none
static double expr_result; // what eval_expr points to

// Arguments and items wait here; the entries in use only grow during an evaluation.
static expr_parked expr_pool[expr_pool_size];
static int32_t expr_pool_used;
static int32_t decl_items[decl_list_max]; // the declaration's items, as places in expr_pool

// How a step of the parser went.
enum : int {
    STEP_ON = 0,      // on with the next step
    STEP_ACCEPT,      // the text is an expression, its value in expr_result
    STEP_DECLARATION, // the text was a declaration: no failure, but no value either
    STEP_RECOVER,     // a fault: the rest of the text is read and dropped
    STEP_STOP         // a fault that ends at once, with no more reading
};

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

static int syntax_error()
{
    return fail(STEP_RECOVER, "syntax error");
}

// ---- Stack ----

static int push(int16_t symbol, int16_t rule)
{
    if (top == expr_stack + stack_depth)
        return fail(STEP_STOP, "yacc stack overflow");
    top++;
    top->symbol = symbol;
    top->rule = rule;
    return STEP_ON;
}

static int16_t peek()
{
    if (lookahead == 0)
        lookahead = expr_lex();
    return lookahead;
}

// Moves the token read ahead onto the stack, with its value.
static int shift(int16_t rule)
{
    int step = push(lookahead, rule);
    if (step != STEP_ON)
        return step;
    if (lookahead == TOKEN_NUMBER)
        top->number = lex.number;
    else if (lookahead == TOKEN_NAME)
        top->text = lex.name;
    else if (lookahead == TOKEN_TYPEWORD)
        top->type = lex.type_code;
    lookahead = 0;
    return STEP_ON;
}

static int shift_expected(int16_t token, int16_t rule)
{
    return peek() == token ? shift(rule) : syntax_error();
}

// Completes a rule: its symbols give way to one, whose value the caller has put by and fills in.
static void reduce(int rule, int16_t symbol)
{
    top -= rule_table[rule].length;
    top++;
    top->symbol = symbol;
    top->rule = 0;
}

static int reduce_expr(int rule, double number)
{
    reduce(rule, SYMBOL_EXPR);
    top->number = number;
    return STEP_ON;
}

// ---- Operators ----

static constexpr double inch_in_foot = 0.08333333333333333;
static constexpr double unit_scale[] = {1.0, 25.4, 1.0 / 12, 2.54, 1.0 / 36, 0.0254}; // units per inch
static constexpr int current_unit = 0;                                                // unit of the drawing
static constexpr double unit_factor = 0.0;

double to_drawing_units(double value, int unit)
{
    return unit == current_unit ? value : value / unit_scale[unit] * unit_factor;
}

static int32_t shift_left(int32_t value, int32_t count)
{
    return wrap_int32(static_cast<uint32_t>(value) << (static_cast<uint32_t>(count) & 31));
}

static int32_t shift_right(int32_t value, int32_t count)
{
    int32_t bits = count & 31;
    return value >= 0 ? value >> bits : ~(~value >> bits);
}

static int reduce_binary(int rule)
{
    double a = top[1 - rule_table[rule].length].number;
    double b = top->number;
    int32_t i = int_from_double(a);
    int32_t k = int_from_double(b);
    switch (rule) {
    case 23: return reduce_expr(rule, pow(a, b)); // operation: expr ^ expr
    case 24: return reduce_expr(rule, a * b);     // operation: expr * expr
    case 25:                                      // operation: expr / expr
        return b == 0 ? fail(STEP_RECOVER, "divide by zero") : reduce_expr(rule, a / b);
    case 26: // operation: expr % expr
        if (k == 0)
            return fail(STEP_RECOVER, "divide by zero");
        return reduce_expr(rule, k == -1 ? 0 : i % k);
    case 27: return reduce_expr(rule, a + b);             // operation: expr + expr
    case 28: return reduce_expr(rule, a - b);             // operation: expr - expr
    case 29: return reduce_expr(rule, shift_right(i, k)); // operation: expr > > expr
    case 30: return reduce_expr(rule, shift_left(i, k));  // operation: expr < < expr
    case 31: return reduce_expr(rule, a < b);             // operation: expr < expr
    case 32: return reduce_expr(rule, a > b);             // operation: expr > expr
    case 33: return reduce_expr(rule, a <= b);            // operation: expr < = expr
    case 34: return reduce_expr(rule, a >= b);            // operation: expr > = expr
    case 35: return reduce_expr(rule, a == b);            // operation: expr EQEQ expr
    case 36: return reduce_expr(rule, a != b);            // operation: expr ! = expr
    case 37: return reduce_expr(rule, i & k);             // operation: expr & expr
    case 38: return reduce_expr(rule, i ^ k);             // operation: expr # expr
    case 39: return reduce_expr(rule, i | k);             // operation: expr | expr
    case 40: return reduce_expr(rule, a != 0 && b != 0);  // operation: expr & & expr
    default: return reduce_expr(rule, a != 0 || b != 0);  // 41 operation: expr | | expr
    }
}

// An operator stands behind an operand: takes it, and the second character of a pair.
static int take_operator(int16_t token)
{
    static constexpr struct {
        int16_t token;
        int16_t rule;        // of the token alone; 0: it needs its second character
        int16_t double_rule; // of the same character twice; 0: no such pair
        int16_t equal_rule;  // with an = behind; 0: no such pair
    } operator_table[] = {
        {'^', 23, 0, 0},        {'*', 24, 0, 0},
        {'/', 25, 0, 0},        {'%', 26, 0, 0},
        {'+', 27, 0, 0},        {'-', 28, 0, 0},
        {'>', 32, 29, 34},      {'<', 31, 30, 33},
        {TOKEN_EQEQ, 35, 0, 0}, {'!', 0, 0, 36},
        {'&', 37, 40, 0},       {'#', 38, 0, 0},
        {'|', 39, 41, 0},       {'?', rule_condition, 0, 0},
    };
    const auto *row = operator_table;
    while (row->token != token)
        row++;
    int step = shift(row->rule);
    if (step != STEP_ON || (row->double_rule == 0 && row->equal_rule == 0))
        return step;
    if (row->double_rule != 0 && peek() == token)
        return shift(row->double_rule);
    if (row->equal_rule != 0 && peek() == '=')
        return shift(row->equal_rule);
    return row->rule != 0 ? STEP_ON : syntax_error();
}

// ---- Feet and inches ----

// A foot mark stands behind an operand. What can start an operand begins the inches part; a + or - behind
// a feet value is the binary operator.
static int take_foot_mark()
{
    int step = shift(0);
    if (step != STEP_ON)
        return step;
    double number = to_drawing_units(top[-1].number, 2);
    reduce(49, SYMBOL_FEET); // feet: expr '
    top->number = number;
    top->rule = rule_inches;
    switch (peek()) {
    case TOKEN_NUMBER:
    case TOKEN_NAME:
    case TOKEN_SIZEOF:
    case TOKEN_COPSIZE:
    case '(':
    case '~': return STEP_ON;
    default: return reduce_expr(11, number); // expr: feet
    }
}

// An inch mark stands behind an operand. Behind a feet value it closes the pair.
static int take_inch_mark()
{
    int step = shift(0);
    if (step != STEP_ON)
        return step;
    double number = to_drawing_units(top[-1].number * inch_in_foot, 2);
    reduce(50, SYMBOL_INCHES); // inches: expr "
    top->number = number;
    if (top[-1].symbol == SYMBOL_FEET)
        return reduce_expr(10, top[-1].number + number); // expr: feet inches
    return reduce_expr(12, number);                      // expr: inches
}

// ---- Variables ----

static int reduce_read_element()
{
    int32_t code = var_read_element(top[-1].text, strlen(top[-1].text), top->list.count, top->list.items);
    if (code == VAR_UNKNOWN)
        return fail(STEP_RECOVER, "%s not declared", top[-1].text);
    if (code != 0)
        return syntax_error();
    return reduce_expr(17, var_current.value); // expr: NAME subscripts
}

// An unknown name is no error: it has the value of the last variable read.
static int reduce_read()
{
    (void)var_read(top->text, strlen(top->text), nullptr);
    return reduce_expr(18, var_current.value); // expr: NAME
}

static int reduce_assign()
{
    const char *name = top[-2].text;
    int32_t ndims = var_read(name, strlen(name), nullptr);
    if (ndims == VAR_UNKNOWN) {
        if (var_make(name, strlen(name), VAR_NONE, 0, nullptr) != 0)
            return fail(STEP_STOP, "can't make %s", name);
    } else if (ndims != 0) {
        return fail(STEP_STOP, "syntax error");
    }
    return reduce_expr(44, var_store_value(top->number)); // assignment: NAME = expr
}

static int reduce_assign_element()
{
    const char *name = top[-3].text;
    if (name[0] == '@')
        return fail(STEP_STOP, "syntax error");
    switch (var_read_element(name, strlen(name), top[-2].list.count, top[-2].list.items)) {
    case 0: return reduce_expr(43, var_store_value(top->number)); // assignment: NAME subscripts = expr
    case VAR_UNKNOWN: return fail(STEP_STOP, "%s not declared", name);
    default: return fail(STEP_STOP, "bad subscript");
    }
}

// 46 assignment: NAME = string, 45 assignment: NAME subscripts = string
static int reduce_assign_string(int rule)
{
    const char *name = top[1 - rule_table[rule].length].text;
    int32_t subscript = rule == 45 ? top[-2].list.items[0] : -1;
    const char *string = top->text;
    int32_t length = static_cast<int32_t>(strlen(string));
    int32_t code = var_store_string(name, strlen(name), subscript, length + 1);
    if (code < 0)
        return fail(STEP_STOP, "syntax error");
    if (code > 0)
        return fail(STEP_STOP, "can't make %s (%d)", name, code);
    memcpy(var_current.ptr, string, static_cast<size_t>(length) + 1);
    return reduce_expr(rule, length);
}

// Behind the = of an assignment: a string, or an operand. The string is read with no token read ahead.
static int take_assigned(int16_t rule, int string_rule)
{
    int step = shift(rule);
    if (step != STEP_ON || peek() != '"')
        return step;
    if ((step = shift(0)) != STEP_ON || (step = push(SYMBOL_STRING_TEXT, 0)) != STEP_ON)
        return step;
    top->text = expr_read_string('"'); // string_text: (empty), 47
    if ((step = shift_expected('"', 0)) != STEP_ON)
        return step;
    char *string = top[-1].text;
    reduce(48, SYMBOL_STRING); // string: " string_text "
    top->text = string;
    return reduce_assign_string(string_rule);
}

// ---- Declarations ----

// Parks a number or an item. False if the pool is full.
static bool pool_take(int32_t *place)
{
    if (expr_pool_used == expr_pool_size)
        return false;
    *place = expr_pool_used++;
    return true;
}

static int too_many()
{
    return fail(STEP_RECOVER, "Too many functions or arguments");
}

static int reduce_declaration()
{
    int8_t type = top[-1].type;
    bool failed = false;
    for (int32_t i = 0; i < top->count; i++) {
        const expr_parked *item = &expr_pool[decl_items[i]];
        int32_t code =
            var_make(item->name, strlen(item->name), type, item->subscripts.count, item->subscripts.items);
        if (code != 0) {
            failed = true;
            fail(STEP_ON, "can't define %s (%d)", item->name, code);
        }
    }
    return failed ? STEP_RECOVER : STEP_DECLARATION; // decl: TYPEWORD decl_list, 6
}

static int take_decl_item();

// 53 decl_item: NAME subscripts, 54 decl_item: NAME, and the list that it stands in.
static int reduce_decl_item(int rule)
{
    expr_parked item{};
    item.name = top[1 - rule_table[rule].length].text;
    if (rule == 53)
        item.subscripts = top->list;
    top -= rule_table[rule].length;

    // decl_list: decl_list , decl_item, 51; decl_list: decl_item, 52
    bool first = top->symbol == TOKEN_TYPEWORD;
    int32_t count = first ? 0 : top[-1].count;
    int32_t place;
    if (count == decl_list_max || !pool_take(&place))
        return too_many();
    expr_pool[place] = item;
    decl_items[count] = place;
    if (first)
        (void)push(SYMBOL_DECL_LIST, 0); // no deeper than the item was
    else
        top--;
    top->count = count + 1;
    if (peek() != ',')
        return reduce_declaration();
    int step = shift(51);
    return step != STEP_ON ? step : take_decl_item();
}

static int take_decl_item()
{
    int step = shift_expected(TOKEN_NAME, 0);
    if (step != STEP_ON)
        return step;
    return peek() == '[' ? shift(58) : reduce_decl_item(54);
}

static int reduce_array()
{
    const char *name = top[-1].text;
    int32_t code = var_make(name, strlen(name), VAR_NONE, top->list.count, top->list.items);
    if (code != 0)
        return fail(STEP_RECOVER, "can't make %s (%d)", name, code);
    return STEP_DECLARATION; // decl: ARRAY NAME subscripts, 5
}

// A declaration can only begin the text.
static int take_start()
{
    int step = STEP_ON;
    if (peek() == TOKEN_ARRAY) {
        if ((step = shift(5)) == STEP_ON && (step = shift_expected(TOKEN_NAME, 0)) == STEP_ON)
            step = shift_expected('[', 58);
    } else if (peek() == TOKEN_TYPEWORD) {
        if ((step = shift(52)) == STEP_ON)
            step = take_decl_item();
    } else if (peek() == TOKEN_END) {
        step = STEP_DECLARATION; // decl: (empty), 3
    }
    return step;
}

// ---- Subscripts and arguments ----

// A list of subscripts stands behind its name: another one, an assignment, or the end of it, by what the
// name stands in.
static int take_behind_subscripts()
{
    int16_t rule = top[-2].rule;
    bool declares = rule == 5 || rule == 51 || rule == 52;
    if (peek() == '[')
        return shift(57);
    if (peek() == '=' && !declares)
        return take_assigned(43, 45);
    if (rule == 5)
        return reduce_array();
    return declares ? reduce_decl_item(53) : reduce_read_element();
}

// 57 subscripts: subscripts [ expr ], 58 subscripts: [ expr ]
static int reduce_subscript(int rule)
{
    int32_t value = int_from_double(top[-1].number);
    expr_list list = rule == 57 ? top[-3].list : expr_list{};
    if (list.count == list_max)
        return fail(STEP_RECOVER, "Too many dimensions");
    list.items[list.count++] = value;
    reduce(rule, SYMBOL_SUBSCRIPTS);
    top->list = list;
    return take_behind_subscripts();
}

// expr: NAME ( arg_list ), 16
static int reduce_call()
{
    const char *name = top[-3].text;
    const expr_list *list = &top[-1].list;
    const math_func *row = math_find(name);
    if (row == nullptr)
        return fail(STEP_RECOVER, "%s is not a function", name);
    int32_t wanted = static_cast<int32_t>(row->flags & MATH_ARGUMENTS);
    if (wanted != list->count)
        return fail(STEP_RECOVER, "%s needs %d arguments", name, wanted);
    double arguments[list_max];
    for (int32_t i = 0; i < list->count; i++)
        arguments[i] = expr_pool[list->items[i]].number;
    double value;
    if (!math_call(row, arguments, &value))
        return STEP_RECOVER;
    return reduce_expr(16, value);
}

// 55 arg_list: arg_list , expr, 56 arg_list: expr
static int reduce_argument(int rule)
{
    double number = top->number;
    expr_list list = rule == 55 ? top[-2].list : expr_list{};
    int32_t place;
    if (list.count == list_max || !pool_take(&place))
        return too_many();
    expr_pool[place].number = number;
    list.items[list.count++] = place;
    reduce(rule, SYMBOL_ARG_LIST);
    top->list = list;
    if (peek() == ',')
        return shift(55);
    int step = shift_expected(')', 0);
    return step != STEP_ON ? step : reduce_call();
}

// ---- Operands ----

// Size of a type word by a hash of its text; any other text gives 0, a few by chance excepted.
static int type_size_hash(const char *text)
{
    uint32_t hash = 0;
    for (; *text != 0; text++)
        hash = 11 * hash + 5 * static_cast<uint32_t>(char_lower(static_cast<unsigned char>(*text)));
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

static int take_sizeof()
{
    int step;
    if ((step = shift(0)) != STEP_ON || (step = shift_expected('(', 0)) != STEP_ON ||
        (step = shift_expected(TOKEN_NAME, 0)) != STEP_ON || (step = shift_expected(')', 0)) != STEP_ON)
        return step;
    int32_t size = 0;
    (void)var_read(top[-1].text, strlen(top[-1].text), &size);
    return reduce_expr(13, size); // expr: SIZEOF ( NAME )
}

static int take_copsize()
{
    int step;
    if ((step = shift(0)) != STEP_ON || (step = shift_expected('(', 0)) != STEP_ON ||
        (step = push(SYMBOL_RAW_TEXT, 0)) != STEP_ON)
        return step;
    top->text = expr_read_string(')'); // raw_text: (empty), 14
    if ((step = shift_expected(')', 0)) != STEP_ON)
        return step;
    return reduce_expr(15, type_size_hash(top[-1].text)); // expr: COPSIZE ( raw_text )
}

static int take_name()
{
    int step = shift(0);
    if (step != STEP_ON)
        return step;
    switch (peek()) {
    case '(': return shift(56);
    case '[': return shift(58);
    case '=': return take_assigned(44, 46);
    default: return reduce_read();
    }
}

// An operand has to come: reads its first token, or a prefix of it.
static int take_operand()
{
    switch (peek()) {
    case TOKEN_NUMBER: {
        int step = shift(0);
        return step != STEP_ON ? step : reduce_expr(9, top->number); // expr: NUMBER
    }
    case TOKEN_NAME: return take_name();
    case TOKEN_SIZEOF: return take_sizeof();
    case TOKEN_COPSIZE: return take_copsize();
    case '(': return shift(19);
    case '~': return shift(20);
    case '+': return shift(21);
    case '-': return shift(22);
    default: return syntax_error();
    }
}

// The token behind an operand isn't drawn into it: completes the rule that the operand belongs to.
static int complete(int rule)
{
    double number = top->number;
    int step;
    switch (rule) {
    case 1: // input: expr END
        if ((step = shift_expected(TOKEN_END, 0)) != STEP_ON)
            return step;
        expr_result = number;
        return STEP_ACCEPT;
    case 19: // operation: ( expr )
        step = shift_expected(')', 0);
        return step != STEP_ON ? step : reduce_expr(19, number);
    case 20: return reduce_expr(20, ~int_from_double(number)); // operation: ~ expr
    case 21: return reduce_expr(21, number);                   // operation: + expr
    case 22: return reduce_expr(22, -number);                  // operation: - expr
    case rule_condition: return shift_expected(':', 42);
    case 42: return reduce_expr(42, top[-4].number != 0 ? top[-2].number : number); // expr ? expr : expr
    case 43: return reduce_assign_element();
    case 44: return reduce_assign();
    case 55:
    case 56: return reduce_argument(rule);
    case 57:
    case 58: step = shift_expected(']', 0); return step != STEP_ON ? step : reduce_subscript(rule);
    case rule_inches: return syntax_error();
    default: return reduce_binary(rule);
    }
}

// An operand is on top: draws the next token into it, or completes the rule below it.
static int take_behind_operand()
{
    int16_t rule = top[-1].rule;
    int16_t token = peek();
    if (token_table.level[token] <= rule_table[rule].level)
        return complete(rule);
    if (token == '\'')
        return take_foot_mark();
    return token == '"' ? take_inch_mark() : take_operator(token);
}

// 0 if an expression was evaluated, else 1.
static int expr_parse()
{
    top = expr_stack;
    top->symbol = SYMBOL_START;
    top->rule = 1;
    lookahead = 0;
    int step = take_start();
    while (step == STEP_ON)
        step = top->symbol == SYMBOL_EXPR ? take_behind_operand() : take_operand();
    // 2 input: decl END
    if (step == STEP_DECLARATION && peek() != TOKEN_END)
        step = syntax_error();
    if (step == STEP_DECLARATION || step == STEP_RECOVER) {
        if (lookahead != TOKEN_END)
            lex_finish();
    }
    return step == STEP_ACCEPT ? 0 : 1;
}

// The short way for a text that is a bare name, which isn't changed: gives its value, as eval_expr would.
// False if the text is anything else, and then nothing was done.
static bool eval_bare_name(const char *text, double *value)
{
    if (!lex_is_bare_name(text))
        return false;
    (void)var_read(text, strlen(text), nullptr);
    *value = var_current.value;
    return true;
}

const double *eval_expr(char *text)
{
    if (eval_bare_name(text, &expr_result))
        return &expr_result;
    expr_pool_used = 0;
    lex_start(text);
    return expr_parse() == 0 ? &expr_result : nullptr;
}
