// Expression evaluator: the grammar of expressions, assignments and declarations, parsed and evaluated in
// one pass.
//
// There is no expression tree: each rule acts when its right side is complete, in the order of the text,
// and what it did stays done if the text fails further on. A rule is completed before the token after it
// is judged. Nothing is executed: an assignment changes the variable store, and that is all. No failure
// reaches the user; the callers know it from the null.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Evaluates a text of size characters, none of them a NUL, which isn't changed; lex_slack bytes after it have
// to be readable. Gives the value, valid until the next evaluation, or null: for a text that is no
// expression, for one of more than lex_text_max characters, for an empty one and for a declaration, even a
// successful one. *last_token, unless null, becomes the last position at which a token was read.
const double *eval_expr(const char *text, size_t size, const char **last_token = nullptr);

// Of a text that was evaluated up to last_token: the characters up to the end of the first name that was
// read, keywords included, or all of them if there was none. That much of it is printed of a statement that
// failed.
size_t eval_name_end(const char *text, size_t size, const char *last_token);

// The hook that is told each failure as a message; null: nobody listens.
extern void (*expr_error)(const char *message);
