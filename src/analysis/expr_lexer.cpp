#include "analysis/expr_lexer.h"

#include "support/number.h"
#include "support/scan.h"
#include "support/text.h"
#include "support/word_index.h"

#include <string.h>

lex_state lex;

// Strings are decoded to here. Where one has no terminator, its decoded text is also what is read next.
static char lex_decoded[lex_text_max + lex_slack];
static bool reads_decoded; // pos and end are in lex_decoded

// ---- Keywords ----

struct expr_keyword {
    char name[8];
    int16_t token;
    int8_t value; // of a TYPEWORD: the variable type
};

// Sorted by name.
static constexpr expr_keyword expr_keyword_table[] = {
    {"ARRAY", TOKEN_ARRAY, 0},      {"CHAR", TOKEN_TYPEWORD, 1},    {"COPSIZE", TOKEN_COPSIZE, 0},
    {"DOUBLE", TOKEN_TYPEWORD, 10}, {"FLOAT", TOKEN_TYPEWORD, 9},   {"INT", TOKEN_TYPEWORD, 5},
    {"LONG", TOKEN_TYPEWORD, 7},    {"SHORT", TOKEN_TYPEWORD, 3},   {"SIZEOF", TOKEN_SIZEOF, 0},
    {"SLIST", TOKEN_TYPEWORD, 12},  {"STRING", TOKEN_TYPEWORD, 11}, {"UCHAR", TOKEN_TYPEWORD, 2},
    {"UINT", TOKEN_TYPEWORD, 6},    {"ULONG", TOKEN_TYPEWORD, 8},   {"USHORT", TOKEN_TYPEWORD, 4},
};

constexpr int keyword_count = sizeof expr_keyword_table / sizeof expr_keyword_table[0];
static_assert(keyword_count == 15, "a row for each keyword");
static constexpr auto keyword_index = word_index_make<256>(expr_keyword_table);

constexpr size_t keyword_shortest = 3;
constexpr size_t keyword_longest = 7;

// Sets the token of a name: a keyword, in any case, or TOKEN_NAME.
static void token_of_name()
{
    lex.token = TOKEN_NAME;
    if (lex.name.size < keyword_shortest || lex.name.size > keyword_longest)
        return;
    int32_t row = word_index_find(keyword_index, lex.name.text, lex.name.size);
    if (row >= 0) {
        lex.token = expr_keyword_table[row].token;
        lex.type_code = expr_keyword_table[row].value;
    }
}

// ---- Tokens ----

bool lex_starts_operand(char c)
{
    return text_is(c, CHAR_WHITE | CHAR_LETTER | CHAR_DIGIT) || strchr("$@.(~+-", c) != nullptr;
}

void lex_start(const char *text, size_t size)
{
    lex.pos = text;
    lex.end = text + size;
    lex.first_name_end = nullptr;
    reads_decoded = false;
}

// True if the character at a place, which may be the end of the text, has one of the classes.
static bool text_has(const char *place, unsigned classes)
{
    return place < lex.end && text_is(*place, classes);
}

// The end of the letters, digits and underscores from a place on.
static const char *word_end(const char *place)
{
    return reinterpret_cast<const char *>(scan_word(reinterpret_cast<const unsigned char *>(place),
                                                    reinterpret_cast<const unsigned char *>(lex.end)));
}

// Reads the name at pos, whose word characters begin at word. A name that is too long loses its surplus, but
// not at the end of the text.
static void lex_name(const char *word, ptrdiff_t limit)
{
    const char *start = lex.pos;
    const char *end = word_end(word);
    lex.pos = end;
    if (end < lex.end && end - start > limit)
        end = start + limit;
    lex.name = lex_piece{start, static_cast<size_t>(end - start)};
    if (lex.first_name_end == nullptr)
        lex.first_name_end = end;
    token_of_name();
}

// A $ or @ at pos: begins a name, $ or $$ and a letter, or @ and a letter or a digit; or is a token.
static void lex_prefix(char c)
{
    const char *word = lex.pos + 1;
    if (c == '$' && word < lex.end && *word == '$')
        word++;
    if (text_has(word, c == '$' ? CHAR_LETTER : CHAR_LETTER | CHAR_DIGIT)) {
        lex_name(word, c == '$' ? lex_name_length : lex_system_length);
    } else {
        lex.pos++;
        lex.token = static_cast<unsigned char>(c);
    }
}

void lex_next()
{
    while (text_has(lex.pos, CHAR_WHITE))
        lex.pos++;
    if (lex.pos == lex.end) {
        lex.token = TOKEN_END;
        return;
    }
    char c = *lex.pos;
    if (text_is(c, CHAR_LETTER)) {
        lex_name(lex.pos, lex_name_length);
        return;
    }
    if (text_is(c, CHAR_DIGIT) || c == '.') {
        lex.pos = number_scan(lex.pos, lex.end, &lex.number);
        lex.token = TOKEN_NUMBER;
        return;
    }
    if (c == '$' || c == '@') {
        lex_prefix(c);
        return;
    }
    lex.pos++;
    if (c == '=' && lex.pos < lex.end && *lex.pos == '=') {
        lex.pos++;
        lex.token = TOKEN_EQEQ;
    } else {
        lex.token = c == 0 ? +TOKEN_END : static_cast<unsigned char>(c);
    }
}

void lex_finish()
{
    while (lex.first_name_end == nullptr && lex.token != TOKEN_END)
        lex_next();
}

// ---- Strings ----

static int hex_digit(char c)
{
    int digit = char_lower(static_cast<unsigned char>(c));
    return digit <= '9' ? digit - '0' : digit - 'a' + 10;
}

// Decodes the escape at *from, the character after its backslash, and moves *from after it.
static char decode_escape(const char **from)
{
    const char *text = *from;
    if (text_has(text, CHAR_OCTAL) && text_has(text + 1, CHAR_OCTAL) && text_has(text + 2, CHAR_OCTAL)) {
        *from = text + 3;
        return static_cast<char>((text[0] - '0') * 64 + (text[1] - '0') * 8 + (text[2] - '0'));
    }
    if (text[0] == 'x' && text_has(text + 1, CHAR_HEX) && text_has(text + 2, CHAR_HEX)) {
        *from = text + 3;
        return static_cast<char>(hex_digit(text[1]) * 16 + hex_digit(text[2]));
    }
    *from = text + 1;
    switch (text[0]) {
    case 'b': return '\b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    default: return text[0];
    }
}

lex_piece lex_string(char terminator)
{
    // A text that was decoded already is decoded again in its place: names before it are in use.
    char *start = reads_decoded ? lex_decoded + (lex.pos - lex_decoded) : lex_decoded;
    char *to = start;
    const char *from = lex.pos;
    while (from < lex.end && *from != terminator && !(*from == '\\' && from + 1 == lex.end)) {
        char c = *from++;
        *to++ = c == '\\' ? decode_escape(&from) : c;
    }
    bool terminated = from < lex.end && *from == terminator;
    if (!terminated && from < lex.end)
        *to++ = '\\';
    // A decoded NUL ends the text.
    lex_piece string{start, strnlen(start, static_cast<size_t>(to - start))};
    if (terminated) {
        lex.pos = from;
        return string;
    }
    // Kept: what an unterminated string was decoded to is read as tokens, so that a decoded quote can close
    // it, as an empty string.
    reads_decoded = true;
    lex.pos = start;
    lex.end = start + string.size;
    return lex_piece{start, 0};
}
