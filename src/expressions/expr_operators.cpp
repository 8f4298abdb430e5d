#include "expressions/expr_operators.h"

#include "support/number.h"
#include "support/text.h"

#include <math.h>

constexpr double drawing_scale = 0.0;

double drawing_units(double feet)
{
    return feet / feet_per_inch * drawing_scale;
}

static int32_t shift_left(int32_t value, int32_t count)
{
    return wrap_int32(static_cast<uint32_t>(value) << (static_cast<uint32_t>(count) & 31));
}

static int32_t shift_right(int32_t value, int32_t count)
{
    return value >= 0 ? value >> (count & 31) : ~(~value >> (count & 31));
}

static bool remainder_of(int32_t a, int32_t b, double *result)
{
    if (b == 0)
        return false;
    *result = b == -1 ? 0 : a % b;
    return true;
}

bool operator_apply(uint8_t op, double a, double b, double *result)
{
    auto integer = int_from_double;
    switch (op) {
    case OP_POWER: *result = pow(a, b); return true; // operation: expr ^ expr
    case OP_TIMES: *result = a * b; return true;     // operation: expr * expr
    case OP_DIVIDE:                                  // operation: expr / expr
        if (b == 0)
            return false;
        *result = a / b;
        return true;
    case OP_REMAINDER: return remainder_of(integer(a), integer(b), result); // operation: expr % expr
    case OP_PLUS: *result = a + b; return true;                             // operation: expr + expr
    case OP_MINUS: *result = a - b; return true;                            // operation: expr - expr
    case OP_SHIFT_RIGHT:
        *result = shift_right(integer(a), integer(b));
        return true;                                                               // operation: expr > > expr
    case OP_SHIFT_LEFT: *result = shift_left(integer(a), integer(b)); return true; // operation: expr < < expr
    case OP_LESS: *result = a < b; return true;                                    // operation: expr < expr
    case OP_GREATER: *result = a > b; return true;                                 // operation: expr > expr
    case OP_LESS_EQUAL: *result = a <= b; return true;                             // operation: expr < = expr
    case OP_GREATER_EQUAL: *result = a >= b; return true;                          // operation: expr > = expr
    case OP_EQUAL: *result = a == b; return true;                    // operation: expr EQEQ expr
    case OP_UNEQUAL: *result = a != b; return true;                  // operation: expr ! = expr
    case OP_BIT_AND: *result = integer(a) & integer(b); return true; // operation: expr & expr
    case OP_BIT_XOR: *result = integer(a) ^ integer(b); return true; // operation: expr # expr
    case OP_BIT_OR: *result = integer(a) | integer(b); return true;  // operation: expr | expr
    case OP_AND: *result = a != 0 && b != 0; return true;            // operation: expr & & expr
    default: *result = a != 0 || b != 0; return true;                // operation: expr | | expr
    }
}

int type_size_hash(lex_piece word)
{
    static constexpr struct {
        uint16_t hash;
        uint8_t size;
    } sizes[] = {
        {6774, 1}, {52079, 1}, {4619, 2}, {9660, 2},  {48745, 2}, {49263, 2}, {62358, 2},
        {1184, 4}, {6028, 4},  {6275, 4}, {49633, 4}, {51333, 4}, {38985, 8},
    };
    uint32_t hash = 0;
    for (size_t i = 0; i < word.size; i++)
        hash = 11 * hash + 5 * static_cast<uint32_t>(char_lower(static_cast<unsigned char>(word.text[i])));
    for (const auto &row : sizes)
        if (row.hash == (hash & 0xFFFF))
            return row.size;
    return 0;
}
