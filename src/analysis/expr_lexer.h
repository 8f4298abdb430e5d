// Expression lexer: cuts an expression text into tokens.
//
// It works in place: the value of a name is a pointer into the text, and a NUL written behind the name ends
// it there. What the NUL replaced is saved and read next. So a caller that still needs the text evaluates a
// copy, and a text that was evaluated ends, for its readers, behind its first name.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Token codes. Every other token is the code of its character, 1 to 255.
enum : int16_t {
    TOKEN_ERROR = 256,
    TOKEN_NUMBER = 257,
    TOKEN_NAME = 258,
    TOKEN_ARRAY = 259,
    TOKEN_SIZEOF = 260,
    TOKEN_COPSIZE = 261,
    TOKEN_TYPEWORD = 262,
    TOKEN_END = 263,
    TOKEN_EQEQ = 264
};

constexpr int32_t lex_name_length = 255; // characters of a name
constexpr int32_t lex_system_length = 9; // of a name that starts with @, its @ included

struct lex_state {
    char *pos;        // the next character of the text
    char saved;       // a character that a NUL replaced, to be read before pos; 0: none
    bool name_seen;   // a name was read since lex_start, so the text ends behind it
    double number;    // value of the last TOKEN_NUMBER
    char *name;       // value of the last TOKEN_NAME, inside the text
    int8_t type_code; // value of the last TOKEN_TYPEWORD: a variable type
};
extern lex_state lex;

// Starts on a NUL-terminated text.
void lex_start(char *text);

// True if an expression may begin with a character: what can't begin a token that begins one is refused. NUL,
// the end of an empty text, counts as one.
bool lex_starts_operand(char c);

// True if a name of size characters is a keyword, in any case.
bool lex_is_keyword(const char *name, size_t size);

// True if a text is one name of letters, digits and underscores and nothing else, and no keyword.
bool lex_is_bare_name(const char *text);

// Gives the next token; its value is in lex. Not to be called again after TOKEN_END.
int16_t expr_lex();

// Reads on to the end of the text, for the one effect that can still be seen: the NUL behind the first name.
void lex_finish();

// Leaves a text as its evaluation does: cut behind its first name.
void lex_cut(char *text);

// Reads the raw text of a string or of COPSIZE's operand, which starts at pos and ends at the terminator,
// " or ): decodes it in place, ends it with a NUL, and leaves the terminator to be the next token. Without a
// terminator it gives an empty string and leaves pos where it was.
char *expr_read_string(char terminator);
