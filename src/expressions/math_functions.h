// Math functions: the functions that an expression may call. Angles are degrees on the outside: the table
// says which arguments and results are angles, and the caller converts.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Flag word of a function: argument count in the low three bits, and what its arguments are.
enum : uint32_t {
    MATH_ARGUMENTS = 7,
    MATH_NOT_NEGATIVE = 8, // an argument below 0 is a fault
    MATH_ANGLE_RESULT = 32,
    MATH_ANGLE_FIRST = 256, // the second and third argument have the bits three and six further up
    MATH_ANGLE_STEP = 3
};

struct math_func {
    char name[8];
    double (*function)(const double *arguments);
    uint32_t flags;
};

// The row of a function's name of size characters, in any case, or null.
const math_func *math_find(const char *name, size_t size);

// Calls a function with as many arguments as its row has; angles among them are converted in place. Gives
// the result in *value; false for the square root of a negative number.
bool math_call(const math_func *row, double *arguments, double *value);
