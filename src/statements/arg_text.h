// Argument texts: reads the text of one argument in place, in the source's window.
//
// Characters that don't belong to a text are removed there, and escapes are decoded there, so that a text is
// one piece of the window and is never copied.
#pragma once

#include <stddef.h>
#include <stdint.h>

// The failures of fetch_args. The converter treats them alike.
enum : int32_t {
    FETCH_MISSING = -1,     // a required argument is empty or left out
    FETCH_AFTER_QUOTE = -2, // something follows a closing quote
    FETCH_PARENTHESES = -3, // the parentheses don't pair up
    FETCH_EXPRESSION = -4,  // the evaluator refuses the text; the hook expr_error has the reason
    FETCH_TOO_LONG = -5,    // the text of a numeric argument has more than 251 characters
    FETCH_STORE_FULL = -6,  // the argument store is full
    FETCH_TOO_MANY = -7     // one argument more than 100
};

// One argument's text.
struct arg_text {
    unsigned char *text; // of a string: after its opening quote
    uint32_t size;       // of a string: up to its first NUL
    int last;            // the character that ended the argument, which was read; -1: the end of the source
    bool quoted;         // a string in quotes; the character before it and the one after it are free to write
};

// The hook that receives an argument's text piece by piece, with quotes and escapes as typed. arg_begins
// (arg_fetcher.h) says which argument it is. Null: none.
extern void (*arg_typed)(const unsigned char *text, size_t size);

// Reads over blanks and tabs, and then one argument, up to a comma, a line feed, or the end of the source.
// With strings, one that begins with a quote is a string, which may run over line ends; anything else is raw
// text. With parentheses counted, a comma inside them is part of a raw text. The text before keep stays;
// null: none has to. Returns 0, or FETCH_PARENTHESES or FETCH_AFTER_QUOTE; then the text is what was read so
// far, and src.pos is after the character at fault.
int32_t arg_text_read(unsigned char *keep, bool strings, bool counted, arg_text *arg);
