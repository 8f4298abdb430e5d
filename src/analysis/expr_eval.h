// Expression evaluator: the grammar of expressions, assignments and declarations, parsed and evaluated in
// one pass.
//
// There is no expression tree: each rule acts when its right side is complete, in the order of the text,
// and what it did stays done if the text fails further on. A rule is completed before the token behind it
// is judged. Nothing is executed: an assignment changes the variable store, and that is all. No failure
// reaches the user; the callers know it from the null.
#pragma once

#include <stdint.h>

// Evaluates a NUL-terminated text, which is changed in place (see the lexer). Gives the value, valid until
// the next evaluation, or null: for a text that is no expression, for an empty one and for a declaration,
// even a successful one.
const double *eval_expr(char *text);

// The hook that is told each failure as a message; null: nobody listens.
extern void (*expr_error)(const char *message);

// A value with a foot or inch mark in drawing units. unit is a unit code: 0 inch, 1 millimetre, 2 foot,
// 3 centimetre, 4 yard, 5 metre.
double to_drawing_units(double value, int unit);
