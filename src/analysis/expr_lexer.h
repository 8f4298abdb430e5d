// Expression lexer: cuts an expression text into tokens.
//
// The text is a pointer and a size, and nothing in it is changed: the value of a name is a piece of the text.
// A reader of the text who is told of its evaluation sees it end after its first name, so the lexer notes
// where that is.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Token codes. Every other token is the code of its character, 1 to 255.
enum : int16_t {
    TOKEN_NUMBER = 257,
    TOKEN_NAME = 258,
    TOKEN_ARRAY = 259,
    TOKEN_SIZEOF = 260,
    TOKEN_COPSIZE = 261,
    TOKEN_TYPEWORD = 262,
    TOKEN_END = 263, // also a NUL
    TOKEN_EQEQ = 264
};

constexpr ptrdiff_t lex_name_length = 255; // characters of a name
constexpr ptrdiff_t lex_system_length = 9; // of a name that starts with @, its @ included
constexpr size_t lex_text_max = 4096;      // characters of a text
constexpr size_t lex_slack = 16;           // bytes after a text that have to be readable, whatever they are

// A piece of an expression's text.
struct lex_piece {
    const char *text;
    size_t size;
};

struct lex_state {
    const char *pos; // the next character of the text
    const char *end;
    const char *first_name_end; // where the text is cut after its first name; null: no name was read yet
    double number;              // value of the last TOKEN_NUMBER
    lex_piece name;             // value of the last TOKEN_NAME
    int16_t token;              // the current token, read by lex_next
    int8_t type_code;           // value of the last TOKEN_TYPEWORD: a variable type
};
extern lex_state lex;

// Starts on a text of at most lex_text_max characters; no token is read yet.
void lex_start(const char *text, size_t size);

// True if an expression may begin with a character: what can't begin a token that begins one is refused. NUL,
// the end of an empty text, counts as one.
bool lex_starts_operand(char c);

// Reads the next token into lex.token, and its value. Not to be called again after TOKEN_END.
void lex_next();

// Reads on to the first name, or to the end of the text.
void lex_finish();

// Reads the raw text of a string or of COPSIZE's operand, which starts at pos and ends at the terminator, "
// or
// ): decodes it, and leaves the terminator to be the next token. The string is valid until the next one is
// read. Without a terminator it gives an empty string and leaves pos at the string's start.
lex_piece lex_string(char terminator);
