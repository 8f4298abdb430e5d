// Expression operators: their tokens, how tight they bind, and what they compute.
//
// An operator has a left and a right binding power. Between two operators the operand belongs to the second
// one if its left binding power is above the right binding power of the first; if they are equal it belongs
// to the first, so that every operator associates to the left.
#pragma once

#include "expressions/expr_lexer.h"

#include <stdint.h>

enum : uint8_t {
    OP_NONE,
    OP_POWER,
    OP_TIMES,
    OP_DIVIDE,
    OP_REMAINDER,
    OP_PLUS,
    OP_MINUS,
    OP_SHIFT_RIGHT,
    OP_SHIFT_LEFT,
    OP_LESS,
    OP_GREATER,
    OP_LESS_EQUAL,
    OP_GREATER_EQUAL,
    OP_EQUAL,
    OP_UNEQUAL,
    OP_BIT_AND,
    OP_BIT_XOR,
    OP_BIT_OR,
    OP_AND,
    OP_OR,
    OP_CONDITION, // ? and :
    OP_FEET,
    OP_INCHES,
    OP_COUNT
};

// Right binding power, by operator.
inline constexpr uint8_t right_bindings[] = {
    0,  80, 70, 70, 70, 60, 60, // none  ^  *  /  %  +  -
    50, 50, 50, 50, 5,  5,      // >>  <<  <  >  <=  >=
    40, 40, 30, 30, 25, 25, 20, // ==  !=  &  #  |  &&  ||
    15, 0,  0,                  // ?:  '  "
};
static_assert(sizeof right_bindings == OP_COUNT, "a binding power for each operator");

constexpr uint8_t binding_lowest = 0; // below that of every operator
constexpr uint8_t binding_assignment = 5;
constexpr uint8_t binding_sign = 90; // ~ + - before an operand

struct operator_row {
    int16_t token;
    uint8_t left_binding; // 0: the token is no operator
    uint8_t op;           // of the token alone; OP_NONE: it needs its second character
    uint8_t op_doubled;   // with the same token after it; OP_NONE: no such pair
    uint8_t op_equality;  // with a = after it; OP_NONE: no such pair
};

inline constexpr operator_row operator_table[] = {
    {'\'', 100, OP_FEET, OP_NONE, OP_NONE},
    {'"', 100, OP_INCHES, OP_NONE, OP_NONE},
    {'!', 100, OP_NONE, OP_NONE, OP_UNEQUAL},
    {'^', 80, OP_POWER, OP_NONE, OP_NONE},
    {'*', 70, OP_TIMES, OP_NONE, OP_NONE},
    {'/', 70, OP_DIVIDE, OP_NONE, OP_NONE},
    {'%', 70, OP_REMAINDER, OP_NONE, OP_NONE},
    {'+', 60, OP_PLUS, OP_NONE, OP_NONE},
    {'-', 60, OP_MINUS, OP_NONE, OP_NONE},
    {'<', 50, OP_LESS, OP_SHIFT_LEFT, OP_LESS_EQUAL},
    {'>', 50, OP_GREATER, OP_SHIFT_RIGHT, OP_GREATER_EQUAL},
    {TOKEN_EQEQ, 40, OP_EQUAL, OP_NONE, OP_NONE},
    {'#', 30, OP_BIT_XOR, OP_NONE, OP_NONE},
    {'&', 25, OP_BIT_AND, OP_AND, OP_NONE},
    {'|', 20, OP_BIT_OR, OP_OR, OP_NONE},
    {'?', 15, OP_CONDITION, OP_NONE, OP_NONE},
};

// The rows by token.
struct operator_index {
    operator_row row[TOKEN_EQEQ + 1];
};

inline constexpr operator_index operator_rows = [] {
    operator_index index{};
    for (const operator_row &row : operator_table)
        index.row[row.token] = row;
    return index;
}();

// Computes an operation on two operands: every one but OP_CONDITION, OP_FEET and OP_INCHES. False for a
// division by zero.
bool operator_apply(uint8_t op, double a, double b, double *result);

constexpr double feet_per_inch = 1.0 / 12;

// A length in feet as drawing units. Without a drawing the scale is 0, and so is the length; NaN if the
// number of inches isn't finite.
double drawing_units(double feet);

// The value of COPSIZE: the size of a type word, found by a hash of its text. It is 0 for any other text,
// except for the few that have the hash of a type word by chance.
int type_size_hash(lex_piece word);
