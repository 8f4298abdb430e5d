// Quick evaluation: the expressions that scripts mostly consist of, straight from the source.
//
// Numbers without exponent, variables, elements of arrays, functions, parentheses, the minus sign, + - * /,
// one comparison, and comparisons joined by && or by ||: such a text is evaluated here as eval_expr would do
// it, without a token, a stack or a copy of the text. Whatever is beyond that, or would fail, is left to
// eval_expr: then nothing has happened, and the variable that was selected before is selected again.
#pragma once

// Bytes behind a text that have to be readable.
constexpr int quick_slack = 16;

// Characters of a text: eval_expr, which needs a character for each symbol of its stack, has room for so
// many.
constexpr int quick_size_max = 49;

// Evaluates the text from text to end, behind which stands a comma, a line end or a NUL. True if it did.
bool quick_expr(const char *text, const char *end, double *value);

// Carries out the assignment of a value to a variable or an element that is known. The text begins with a
// letter. True if it did.
bool quick_assignment(const char *text, const char *end);
