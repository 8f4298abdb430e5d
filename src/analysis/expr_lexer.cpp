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

// The letters that keywords begin with, a bit for each, a the second one: most names begin with another.
static constexpr uint32_t keyword_initials_make()
{
    uint32_t initials = 0;
    for (const expr_keyword &row : expr_keyword_table)
        initials |= uint32_t{1} << (row.name[0] & 31);
    return initials;
}
static constexpr uint32_t keyword_initials = keyword_initials_make();

// The token of a name: a keyword, in any case, or TOKEN_NAME.
static int16_t token_of_name(lex_piece name)
{
    if ((keyword_initials >> (name.text[0] & 31) & 1) == 0)
        return TOKEN_NAME;
    int32_t row = word_index_find(keyword_index, name.text, name.size);
    if (row < 0)
        return TOKEN_NAME;
    lex.type_code = expr_keyword_table[row].value;
    return expr_keyword_table[row].token;
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

// The end of the letters, digits and underscores from a place on.
static const char *word_end(const char *place)
{
    return reinterpret_cast<const char *>(scan_word(reinterpret_cast<const unsigned char *>(place),
                                                    reinterpret_cast<const unsigned char *>(lex.end)));
}

// Reads the name at start, whose word characters begin at word. A name that is too long loses its surplus,
// but not at the end of the text.
static void lex_name(const char *start, const char *word, ptrdiff_t limit)
{
    const char *end = word_end(word);
    lex.pos = end;
    if (end - start > limit && end < lex.end)
        end = start + limit;
    lex.name = lex_piece{start, static_cast<size_t>(end - start)};
    if (lex.first_name_end == nullptr)
        lex.first_name_end = end;
    lex.token = token_of_name(lex.name);
}

// A $ or @ at start: begins a name, $ or $$ and a letter, or @ and a letter or a digit; or is a token.
static void lex_prefix(const char *start)
{
    const char *word = start + 1;
    bool system = *start == '@';
    if (!system && word < lex.end && *word == '$')
        word++;
    if (word < lex.end && text_is(*word, system ? CHAR_LETTER | CHAR_DIGIT : CHAR_LETTER)) {
        lex_name(start, word, system ? lex_system_length : lex_name_length);
    } else {
        lex.pos = start + 1;
        lex.token = static_cast<unsigned char>(*start);
    }
}

// What a token is, by its first character.
enum : uint8_t {
    START_OTHER,
    START_WHITE,
    START_LETTER,
    START_NUMBER,
    START_PREFIX,
    START_EQUALS,
    START_NUL
};

struct token_starts {
    uint8_t of[256];
};

static constexpr token_starts token_starts_make()
{
    token_starts starts{};
    for (int c = 0; c < 256; c++) {
        unsigned classes = char_classes.bits[c];
        starts.of[c] = (classes & CHAR_WHITE) != 0    ? START_WHITE
                       : (classes & CHAR_LETTER) != 0 ? START_LETTER
                       : (classes & CHAR_DIGIT) != 0  ? START_NUMBER
                                                      : START_OTHER;
    }
    starts.of[uint8_t{'.'}] = START_NUMBER;
    starts.of[uint8_t{'$'}] = starts.of[uint8_t{'@'}] = START_PREFIX;
    starts.of[uint8_t{'='}] = START_EQUALS;
    starts.of[0] = START_NUL;
    return starts;
}
static constexpr token_starts starts = token_starts_make();

static uint8_t start_at(const char *place)
{
    return starts.of[static_cast<unsigned char>(*place)];
}

void lex_next()
{
    const char *pos = lex.pos;
    while (start_at(pos) == START_WHITE && pos < lex.end)
        pos++;
    if (pos >= lex.end) {
        lex.pos = pos;
        lex.token = TOKEN_END;
        return;
    }
    uint8_t start = start_at(pos);
    if (start == START_LETTER) {
        lex_name(pos, pos, lex_name_length);
    } else if (start == START_NUMBER) {
        lex.pos = number_scan(pos, lex.end, &lex.number);
        lex.token = TOKEN_NUMBER;
    } else if (start == START_PREFIX) {
        lex_prefix(pos);
    } else {
        bool equal = start == START_EQUALS && pos + 1 < lex.end && pos[1] == '=';
        lex.pos = pos + (equal ? 2 : 1);
        lex.token = equal ? +TOKEN_EQEQ : start == START_NUL ? +TOKEN_END : static_cast<unsigned char>(*pos);
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

// True if the character at a place, which may be the end of the text, has one of the classes.
static bool text_has(const char *place, unsigned classes)
{
    return place < lex.end && text_is(*place, classes);
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
    return char_escaped(text[0]);
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
