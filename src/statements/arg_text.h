// Argument texts: reads the text of one argument from the source, which it stays a piece of.
//
// Characters that don't belong to a text are closed up in the source's window, escapes are decoded there, and
// a string gets its double quotes there, so a text is one piece of the window and is never copied.
#pragma once

#include <stddef.h>
#include <stdint.h>

// What fetch_args returns for a failure, by cause. The converter treats them alike.
enum : int32_t {
    FETCH_MISSING = -1,     // a required argument is empty or left out
    FETCH_AFTER_QUOTE = -2, // something follows a closing quote
    FETCH_PARENTHESES = -3, // the parentheses don't pair up
    FETCH_EXPRESSION = -4,  // the evaluator refuses the text; the hook expr_error has the reason
    FETCH_TOO_LONG = -5,    // the text of a numeric argument has more than 251 characters
    FETCH_NO_ROOM = -6,     // the argument store is full
    FETCH_TOO_MANY = -7     // one argument more than 100
};

// One argument's text.
struct arg_text {
    unsigned char *text; // of a string: after its opening quote
    uint32_t size;       // of a string: up to its first NUL
    int last;            // the character that ended the argument, which was read; -1: the end of the source
    bool quoted;         // a string in quotes; the character before it and the one after it are free to write
};

// The hook that receives an argument's text as it is in the script, quotes and escapes as typed, piece by
// piece. Null: nobody listens. arg_begins (arg_fetcher.h) says whose text it is.
extern void (*arg_typed)(const unsigned char *text, size_t size);

// Reads over blanks and tabs, and then one argument, up to a comma, a line feed, or the end of the source.
// With strings, one that begins with a quote is a string, which may run over line ends; anything else is raw
// text. With parentheses counted, a comma inside them is part of a raw text. What is before keep stays as it
// is, null for nothing. Returns 0, or FETCH_PARENTHESES or FETCH_AFTER_QUOTE; then the text is what was read
// of it, and src.pos is after the character at fault.
int32_t arg_text_read(unsigned char *keep, bool strings, bool counted, arg_text *arg);
