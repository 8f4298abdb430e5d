#include "analysis/expr_lexer.h"

#include "support/number.h"
#include "support/text.h"
#include "support/word_index.h"

#include <string.h>

lex_state lex;

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

bool lex_starts_operand(char c)
{
    return text_is(c, CHAR_WHITE | CHAR_LETTER | CHAR_DIGIT) || strchr("$@.(~+-", c) != nullptr;
}

bool lex_is_keyword(const char *name, size_t size)
{
    return word_index_find(keyword_index, name, size) >= 0;
}

bool lex_is_bare_name(const char *text)
{
    if (!text_is(*text, CHAR_LETTER))
        return false;
    const char *end = text + 1;
    while (text_is(*end, CHAR_WORD))
        end++;
    return *end == 0 && !lex_is_keyword(text, static_cast<size_t>(end - text));
}

void lex_start(char *text)
{
    lex.pos = text;
    lex.saved = 0;
    lex.name_seen = false;
}

// A letter; $ or $$ and a letter; @ and a letter or a digit. rest is the text behind c.
static bool starts_name(char c, const char *rest)
{
    if (text_is(c, CHAR_LETTER))
        return true;
    if (c == '$')
        return text_is(rest[rest[0] == '$'], CHAR_LETTER);
    return c == '@' && text_is(rest[0], CHAR_LETTER | CHAR_DIGIT);
}

// A name whose $ or @ ended the name before it: in the text stands the NUL that ends that one, and has to
// stay. Such a name gets a place of its own; two of them in turn, as the parser looks one token ahead.
static char *name_restore(char c, const char *rest)
{
    static char restored[2][lex_name_length + 1];
    static int turn;
    char *name = restored[turn];
    turn = 1 - turn;
    name[0] = c;
    int32_t used = 1;
    while (used < lex_name_length && (text_is(*rest, CHAR_WORD) || (used == 1 && *rest == '$')))
        name[used++] = *rest++;
    name[c == '@' && used > lex_system_length ? lex_system_length : used] = 0;
    return name;
}

// Reads the name that begins with c at start, which holds a NUL if c was saved.
static int16_t lex_name(char c, char *start)
{
    lex.name_seen = true;
    lex.name = *start == c ? start : name_restore(c, start + 1);
    char *end = start + 1;
    if (c == '$')
        end++;
    while (text_is(*end, CHAR_WORD))
        end++;
    int32_t limit = c == '@' ? lex_system_length : lex_name_length;
    lex.pos = end;
    if (*end != 0 && end - start > limit) {
        start[limit] = 0;
    } else if (*end != 0) {
        if (!text_is(*end, CHAR_WHITE))
            lex.saved = *end;
        *end = 0;
        lex.pos = end + 1;
    }
    int32_t row = word_index_find(keyword_index, lex.name, strlen(lex.name));
    if (row < 0)
        return TOKEN_NAME;
    lex.type_code = expr_keyword_table[row].value;
    return expr_keyword_table[row].token;
}

// Digits of an octal or hexadecimal number: a 32-bit signed integer, wrapping.
static int16_t lex_based(unsigned digit_class, uint32_t base)
{
    uint32_t value = 0;
    for (; text_is(*lex.pos, digit_class); lex.pos++) {
        int digit = char_lower(static_cast<unsigned char>(*lex.pos));
        value = value * base + static_cast<uint32_t>(digit <= '9' ? digit - '0' : digit - 'a' + 10);
    }
    lex.number = wrap_int32(value);
    return TOKEN_NUMBER;
}

static int16_t lex_decimal(char c)
{
    double mantissa = 0;
    uint32_t fraction_digits = 0;
    char *pos = lex.pos;
    for (; text_is(c, CHAR_DIGIT); c = *pos++)
        mantissa = mantissa * 10 + (c - '0');
    if (c == '.') {
        for (c = *pos++; text_is(c, CHAR_DIGIT); c = *pos++) {
            mantissa = mantissa * 10 + (c - '0');
            fraction_digits++;
        }
    }
    uint32_t exponent = 0;
    if (c == 'd' || c == 'D' || c == 'e' || c == 'E') {
        c = *pos++;
        bool minus = c == '-';
        if (c == '-' || c == '+')
            c = *pos++;
        for (; text_is(c, CHAR_DIGIT); c = *pos++)
            exponent = exponent * 10 + static_cast<uint32_t>(c - '0');
        if (minus)
            exponent = 0 - exponent;
    }
    lex.pos = pos - 1;
    lex.number = mantissa * power_of_ten(wrap_int32(exponent - fraction_digits));
    return TOKEN_NUMBER;
}

static int16_t lex_number(char c)
{
    if (c == '0' && text_is(lex.pos[0], CHAR_OCTAL))
        return lex_based(CHAR_OCTAL, 8);
    if (c == '0' && (lex.pos[0] == 'x' || lex.pos[0] == 'X') && text_is(lex.pos[1], CHAR_HEX)) {
        lex.pos++;
        return lex_based(CHAR_HEX, 16);
    }
    return lex_decimal(c);
}

int16_t expr_lex()
{
    char c = lex.saved;
    lex.saved = 0;
    if (c == 0)
        c = *lex.pos++;
    while (text_is(c, CHAR_WHITE))
        c = *lex.pos++;
    if (starts_name(c, lex.pos))
        return lex_name(c, lex.pos - 1);
    if (text_is(c, CHAR_DIGIT) || c == '.')
        return lex_number(c);
    if (c == 0)
        return TOKEN_END;
    if (c == '=' && *lex.pos == '=') {
        lex.pos++;
        return TOKEN_EQEQ;
    }
    return static_cast<unsigned char>(c);
}

void lex_finish()
{
    while (!lex.name_seen && expr_lex() != TOKEN_END) {
    }
}

void lex_cut(char *text)
{
    lex_start(text);
    lex_finish();
}

static bool is_octal_triple(const char *text)
{
    return text_is(text[0], CHAR_OCTAL) && text_is(text[1], CHAR_OCTAL) && text_is(text[2], CHAR_OCTAL);
}

static int hex_digit(char c)
{
    int digit = char_lower(static_cast<unsigned char>(c));
    return digit <= '9' ? digit - '0' : digit - 'a' + 10;
}

// Decodes the escape whose backslash *from stands on, and moves *from behind it.
static char decode_escape(char **from)
{
    char *text = *from + 1;
    if (is_octal_triple(text)) {
        *from = text + 3;
        return static_cast<char>((text[0] - '0') * 64 + (text[1] - '0') * 8 + (text[2] - '0'));
    }
    if (text[0] == 'x' && text_is(text[1], CHAR_HEX) && text_is(text[2], CHAR_HEX)) {
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

char *expr_read_string(char terminator)
{
    static char empty[1];
    char *start = lex.pos;
    char *to = start;
    char *from = start;
    while (*from != terminator && *from != 0 && !(*from == '\\' && from[1] == 0)) {
        if (*from == '\\')
            *to++ = decode_escape(&from);
        else
            *to++ = *from++;
    }
    bool terminated = *from == terminator;
    // The escapes took more room than their bytes: the rest of the text moves down behind what was decoded.
    if (to != from)
        memmove(to, from, strlen(from) + 1);
    if (!terminated) {
        empty[0] = 0;
        return empty;
    }
    *to = 0;
    lex.pos = to + 1;
    lex.saved = terminator;
    return start;
}
