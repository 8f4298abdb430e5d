// Math functions: the functions that an expression may call. Scripts have angles in degrees; the table says
// which arguments and results are angles, and math_call converts them.
#pragma once

#include <stddef.h>
#include <stdint.h>

// What is special about a function.
enum math_kind : uint8_t {
    MATH_PLAIN,
    MATH_OF_ANGLE,    // its argument is an angle
    MATH_TO_ANGLE,    // its result is an angle
    MATH_NOT_NEGATIVE // an argument below 0 is a fault
};

struct math_func {
    char name[8];
    double (*function)(const double *arguments);
    uint8_t arguments; // their count
    math_kind kind;
};

// The row of a function's name of size characters, in any case, or null.
const math_func *math_find(const char *name, size_t size);

// Calls a function with as many arguments as its row has, and stores the result in *value. False for the
// square root of a negative number.
bool math_call(const math_func *row, double *arguments, double *value);
