// Expression lexer: cuts an expression text into tokens.
//
// A position in the text is a pointer (pos); the text isn't changed. At the start of an operand,
// lex_is_number and lex_is_word decide how to read it; where an operator or punctuation is expected, lex_code
// is the token. lex_read reads a token of any kind.
#pragma once

#include "support/text.h"

#include <stddef.h>
#include <stdint.h>

// Token codes. Every other token is the code of its character, 1 to 255.
enum : int16_t {
    TOKEN_END = 0,
    TOKEN_NUMBER = 257,
    TOKEN_NAME = 258,
    TOKEN_ARRAY = 259,
    TOKEN_SIZEOF = 260,
    TOKEN_COPSIZE = 261,
    TOKEN_TYPEWORD = 262,
    TOKEN_EQEQ = 263
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

struct lex_token {
    int16_t code;
    const char *end; // the position after it
    lex_piece name;  // of a TOKEN_NAME and of a keyword; else empty
};

struct expr_keyword {
    char name[8];
    int16_t code;
    int8_t type_code; // of a TYPEWORD: a variable type; else VAR_NONE
};

// The lexer's state, for one text. lex_start and lex_string write it; the evaluator reads end.
struct lex_state {
    const char *end;    // of the text that is read
    bool reads_strings; // the text is the buffer strings: the last string had no terminator
    char strings[lex_text_max + lex_slack]; // the last string, decoded
};
extern lex_state lex;

// Starts to read a text of at most lex_text_max characters, none of them a NUL.
void lex_start(const char *text, size_t size);

// The first position from pos on that has no white space, at the latest lex.end.
inline const char *lex_skip(const char *pos)
{
    while (text_is(*pos, CHAR_WHITE) && pos < lex.end)
        pos++;
    return pos;
}

// Whether the token at a position without white space is a number.
inline bool lex_is_number(const char *pos)
{
    return pos < lex.end && (text_is(*pos, CHAR_DIGIT) || *pos == '.');
}

// Whether it is a name or keyword, or a $ or @ that may begin one.
inline bool lex_is_word(const char *pos)
{
    return pos < lex.end && text_is(*pos, CHAR_NAME);
}

// The token at a position without white space, if it is punctuation: of a name or a number, its first
// character.
inline int16_t lex_code(const char *pos)
{
    if (pos >= lex.end)
        return TOKEN_END;
    if (*pos == '=' && pos + 1 < lex.end && pos[1] == '=')
        return TOKEN_EQEQ;
    return static_cast<unsigned char>(*pos);
}

// The position after a token that lex_code returned.
inline const char *lex_after(const char *pos, int16_t code)
{
    return pos + (code == TOKEN_EQEQ ? 2 : 1);
}

// Reads the token at a position where lex_is_word.
lex_token lex_word(const char *pos);

// Reads the token at a position without white space.
lex_token lex_read(const char *pos);

// The keyword that a name is, in any case, or null.
const expr_keyword *lex_keyword(lex_piece name);

// Reads the raw text of a string or of COPSIZE's operand, from pos to the terminator, " or ): decodes it, and
// returns the terminator's position. The string is valid until the next one is read. Without a terminator the
// string is empty, and what was decoded is the rest of the text from then on; returns its start.
const char *lex_string(const char *pos, char terminator, lex_piece *string);
