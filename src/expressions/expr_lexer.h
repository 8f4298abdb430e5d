// Expression lexer: cuts an expression text into tokens.
//
// A place in the text is a pointer, and so is all that a reader has to remember; nothing in the text is
// changed. The value of a name is a piece of the text. Where an operand may begin, lex_is_number and
// lex_is_word tell what is to be read there; where an operator may stand, its code. lex_read reads whatever
// token there is.
#pragma once

#include "support/scan.h"
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
    const char *end; // the place after it
    lex_piece name;  // of a TOKEN_NAME and of a keyword; else empty
};

struct expr_keyword {
    char name[8];
    int16_t code;
    int8_t type_code; // of a TYPEWORD: a variable type; else VAR_NONE
};

// The letters that keywords begin with, a bit for each, a the second one: most names begin with another.
extern const uint32_t lex_keyword_initials;

// False if no keyword begins with a letter.
inline bool lex_may_begin_keyword(char c)
{
    return (lex_keyword_initials >> (c & 31) & 1) != 0;
}

// The lexer's state, of one text. lex_start and lex_string write it; the evaluator reads end.
struct lex_state {
    const char *end;                        // of the text that is read
    bool reads_strings;                     // that text is in strings: the last string had no terminator
    char strings[lex_text_max + lex_slack]; // the string read last, decoded
};
extern lex_state lex;

// Starts on a text of at most lex_text_max characters, none of them a NUL.
void lex_start(const char *text, size_t size);

// The first place from one on that has no white space, at the latest lex.end.
inline const char *lex_skip(const char *place)
{
    while (static_cast<unsigned char>(*place) <= ' ' && place < lex.end && text_is(*place, CHAR_WHITE))
        place++;
    return place;
}

// Tells whether what stands at a place without white space is a number.
inline bool lex_is_number(const char *place)
{
    return place < lex.end && (text_is(*place, CHAR_DIGIT) || *place == '.');
}

// The same for a name or keyword, and for a $ or @ that may begin one.
inline bool lex_is_word(const char *place)
{
    return place < lex.end && text_is(*place, CHAR_NAME);
}

// The token at a place without white space, where it is punctuation: what begins a name or a number is given
// as its character.
inline int16_t lex_code(const char *place)
{
    if (place >= lex.end)
        return TOKEN_END;
    if (*place == '=' && place + 1 < lex.end && place[1] == '=')
        return TOKEN_EQEQ;
    return static_cast<unsigned char>(*place);
}

// The place after a token that lex_code gave.
inline const char *lex_after(const char *place, int16_t code)
{
    return place + (code == TOKEN_EQEQ ? 2 : 1);
}

// The end of the letters, digits and underscores from a place on.
inline const char *lex_letters_end(const char *place)
{
    return place + scan_word(place, static_cast<size_t>(lex.end - place));
}

const char *lex_prefixed_end(const char *place); // lex_word_end at a $ or @

// The end of the name or keyword at a place that lex_is_word, surplus included. The place itself, if a $ or
// $$ has no letter after it, an @ no letter or digit: then the token is that character.
inline const char *lex_word_end(const char *place)
{
    return text_is(*place, CHAR_LETTER) ? lex_letters_end(place) : lex_prefixed_end(place);
}

// A name that may be too long: it loses its surplus, but not at the end of the text.
lex_piece lex_long_name(const char *place, const char *end);

// The name from a place to the end of its word.
inline lex_piece lex_name(const char *place, const char *end)
{
    if (end - place > lex_system_length)
        return lex_long_name(place, end);
    return lex_piece{place, static_cast<size_t>(end - place)};
}

// The keyword that a name is, in any case, or null.
const expr_keyword *lex_keyword(lex_piece name);

// Reads the token at a place that lex_is_word.
inline lex_token lex_word(const char *place)
{
    const char *end = lex_word_end(place);
    if (end == place)
        return lex_token{static_cast<unsigned char>(*place), place + 1, {place, 0}};
    lex_piece name = lex_name(place, end);
    const expr_keyword *keyword = lex_may_begin_keyword(*place) ? lex_keyword(name) : nullptr;
    if (keyword != nullptr)
        return lex_token{keyword->code, end, name};
    return lex_token{TOKEN_NAME, end, name};
}

// Reads the token at a place without white space.
lex_token lex_read(const char *place);

// The end of the first name or keyword from a place on that begins at limit or before it; null if there is
// none. No string may come before it.
const char *lex_first_name_end(const char *place, const char *limit);

// Reads the raw text of a string or of COPSIZE's operand, which starts at a place and ends at the terminator,
// " or ): decodes it, and gives the place of the terminator. The string is valid until the next one is read.
// Without a terminator it gives an empty string and its start: what was decoded is the rest of the text then.
const char *lex_string(const char *place, char terminator, lex_piece *string);
