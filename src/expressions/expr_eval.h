// Expression evaluator: parses and evaluates expressions, assignments and declarations in one pass.
//
// There is no syntax tree: each production of the grammar acts when it is complete, before the token after it
// is checked. What was done before a fault stays done. An assignment changes the variable store, and nothing
// else is executed.
#pragma once

#include <stddef.h>

// Evaluates a text of size characters, none of them a NUL, and leaves it as it is; lex_slack bytes after it
// have to be readable. Returns the value, valid until the next evaluation. Returns null for a text that is no
// expression, is longer than lex_text_max or empty, and for a declaration, even one that succeeds.
// *last_token, unless null, becomes the last position at which a token was read.
const double *eval_expr(const char *text, size_t size, const char **last_token = nullptr);

// For a text that was evaluated up to last_token: the number of characters up to the end of the first name or
// keyword that was read, or of all of them if there was none. A statement that fails is printed up to there.
size_t eval_name_end(const char *text, size_t size, const char *last_token);

// The hook that is called with a message for each fault; null: none.
extern void (*expr_error)(const char *message);
