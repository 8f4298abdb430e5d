// Declarations: the statements that declare variables.
//
// Their text is written first; then the variables enter the store. A fault stops the reading of the whole
// file after the text was written.
#pragma once

#include <stdint.h>

// The type words and LOCAL. word is the statement's word as typed. Returns STATEMENT_TEXT, or the code that
// names the fault.
int32_t decl_statement(const char *word);

// ARRAY, with initial values that may run over lines. Returns STATEMENT_DONE, or the code that names the
// fault.
int32_t array_statement(const char *word);

// What ended an item of a declaration list.
enum : int {
    ITEM_BLANK = 32, // a further word follows with no comma between
    ITEM_COMMA = ',',
    ITEM_LAST = 99 // the text has ended
};

// Cuts the next item off a list, in place, and removes the white space inside it. Returns the item, and sets
// *next to the rest of the list and *delimiter to what ended the item. Null with *next null: the list is
// finished; null with *next set: it is bad.
char *next_item(char *text, char **next, int *delimiter);

// Reads a reference name[i][j]..., white space anywhere: the text is the bare name afterwards, dims the
// values of the subscripts. Returns their number, at most max_dims, or -1 for a bad reference. A subscript
// that no 32-bit integer holds reads as -1, which no variable takes. lex_slack bytes after the text have to
// be readable.
int32_t parse_var_ref(char *text, int32_t max_dims, int32_t *dims);
