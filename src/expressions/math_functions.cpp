#include "expressions/math_functions.h"

#include "support/word_index.h"

#include <math.h>

// Kept: the rounding of both. Users see it in numbers that rules write as values: acos(0.5), written as an
// integer, is 59, and would be 60 with exact constants.
constexpr double deg_to_rad = 0.017453292520882225;
constexpr double rad_to_deg = 57.29577951;

static double math_dms(const double *a)
{
    return a[2] * 0.0002777777777777778 + a[1] * 0.016666666666666666 + a[0];
}

// Sorted by name.
static constexpr math_func math_func_table[] = {
    {"abs", [](const double *a) { return fabs(a[0]); }, 1, MATH_PLAIN},
    {"acos", [](const double *a) { return acos(a[0]); }, 1, MATH_TO_ANGLE},
    {"asin", [](const double *a) { return asin(a[0]); }, 1, MATH_TO_ANGLE},
    {"atan", [](const double *a) { return atan(a[0]); }, 1, MATH_TO_ANGLE},
    {"atan2", [](const double *a) { return atan2(a[0], a[1]); }, 2, MATH_TO_ANGLE},
    {"ceil", [](const double *a) { return ceil(a[0]); }, 1, MATH_PLAIN},
    {"cos", [](const double *a) { return cos(a[0]); }, 1, MATH_OF_ANGLE},
    {"cosh", [](const double *a) { return cosh(a[0]); }, 1, MATH_OF_ANGLE},
    {"dms", math_dms, 3, MATH_PLAIN},
    {"exp", [](const double *a) { return exp(a[0]); }, 1, MATH_PLAIN},
    {"floor", [](const double *a) { return floor(a[0]); }, 1, MATH_PLAIN},
    {"fmod", [](const double *a) { return fmod(a[0], a[1]); }, 2, MATH_PLAIN},
    {"hypot", [](const double *a) { return hypot(a[0], a[1]); }, 2, MATH_PLAIN},
    {"log", [](const double *a) { return log(a[0]); }, 1, MATH_PLAIN},
    {"log10", [](const double *a) { return log10(a[0]); }, 1, MATH_PLAIN},
    {"pow", [](const double *a) { return pow(a[0], a[1]); }, 2, MATH_PLAIN},
    {"sin", [](const double *a) { return sin(a[0]); }, 1, MATH_OF_ANGLE},
    {"sinh", [](const double *a) { return sinh(a[0]); }, 1, MATH_OF_ANGLE},
    {"sqrt", [](const double *a) { return sqrt(a[0]); }, 1, MATH_NOT_NEGATIVE},
    {"tan", [](const double *a) { return tan(a[0]); }, 1, MATH_OF_ANGLE},
    {"tanh", [](const double *a) { return tanh(a[0]); }, 1, MATH_OF_ANGLE},
};

static_assert(sizeof math_func_table / sizeof math_func_table[0] == 21, "a row for each function");
static constexpr auto math_func_index = word_index_make<256>(math_func_table);

const math_func *math_find(const char *name, size_t size)
{
    int row = word_index_find(math_func_index, word_key_make(name, size));
    return row < 0 ? nullptr : &math_func_table[row];
}

bool math_call(const math_func *row, double *arguments, double *value)
{
    if (row->kind == MATH_NOT_NEGATIVE && arguments[0] < 0)
        return false;
    if (row->kind == MATH_OF_ANGLE)
        arguments[0] *= deg_to_rad;
    *value = row->function(arguments);
    if (row->kind == MATH_TO_ANGLE)
        *value *= rad_to_deg;
    return true;
}
