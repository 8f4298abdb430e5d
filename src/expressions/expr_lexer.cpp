#include "expressions/expr_lexer.h"

#include "expressions/var_store.h"
#include "support/number.h"
#include "support/text.h"
#include "support/word_index.h"

#include <string.h>

lex_state lex;

// ---- Keywords ----

// Sorted by name.
static constexpr expr_keyword expr_keyword_table[] = {
    {"ARRAY", TOKEN_ARRAY, VAR_NONE},       {"CHAR", TOKEN_TYPEWORD, VAR_CHAR},
    {"COPSIZE", TOKEN_COPSIZE, VAR_NONE},   {"DOUBLE", TOKEN_TYPEWORD, VAR_DOUBLE},
    {"FLOAT", TOKEN_TYPEWORD, VAR_FLOAT},   {"INT", TOKEN_TYPEWORD, VAR_INT},
    {"LONG", TOKEN_TYPEWORD, VAR_LONG},     {"SHORT", TOKEN_TYPEWORD, VAR_SHORT},
    {"SIZEOF", TOKEN_SIZEOF, VAR_NONE},     {"SLIST", TOKEN_TYPEWORD, VAR_SLIST},
    {"STRING", TOKEN_TYPEWORD, VAR_STRING}, {"UCHAR", TOKEN_TYPEWORD, VAR_UCHAR},
    {"UINT", TOKEN_TYPEWORD, VAR_UINT},     {"ULONG", TOKEN_TYPEWORD, VAR_ULONG},
    {"USHORT", TOKEN_TYPEWORD, VAR_USHORT},
};

constexpr int keyword_count = sizeof expr_keyword_table / sizeof expr_keyword_table[0];
static_assert(keyword_count == 15, "a row for each keyword");
static constexpr auto keyword_index = word_index_make<256>(expr_keyword_table);

static constexpr uint32_t keyword_initials()
{
    uint32_t initials = 0;
    for (const expr_keyword &row : expr_keyword_table)
        initials |= uint32_t{1} << (row.name[0] & 31);
    return initials;
}
const uint32_t lex_keyword_initials = keyword_initials();

const expr_keyword *lex_keyword(lex_piece name)
{
    int32_t row = word_index_find(keyword_index, name.text, name.size);
    return row < 0 ? nullptr : expr_keyword_table + row;
}

// ---- Tokens ----

void lex_start(const char *text, size_t size)
{
    lex.end = text + size;
    lex.reads_strings = false;
}

const char *lex_prefixed_end(const char *place)
{
    bool system = *place == '@';
    const char *word = place + 1;
    if (!system && word < lex.end && *word == '$')
        word++;
    bool named = word < lex.end && text_is(*word, system ? CHAR_LETTER | CHAR_DIGIT : CHAR_LETTER);
    return named ? lex_letters_end(word) : place;
}

lex_piece lex_long_name(const char *place, const char *end)
{
    ptrdiff_t limit = *place == '@' ? lex_system_length : lex_name_length;
    bool surplus = end - place > limit && end < lex.end;
    return lex_piece{place, static_cast<size_t>(surplus ? limit : end - place)};
}

lex_token lex_read(const char *place)
{
    if (lex_is_word(place))
        return lex_word(place);
    if (lex_is_number(place))
        return lex_token{TOKEN_NUMBER, number_scan(place, lex.end).end, {place, 0}};
    int16_t code = lex_code(place);
    return lex_token{code, lex_after(place, code), {place, 0}};
}

const char *lex_first_name_end(const char *place, const char *limit)
{
    for (place = lex_skip(place); place <= limit;) {
        lex_token token = lex_read(place);
        if (token.name.size > 0)
            return token.name.text + token.name.size;
        if (token.code == TOKEN_END)
            break;
        place = lex_skip(token.end);
    }
    return nullptr;
}

// ---- Strings ----

const char *lex_string(const char *place, char terminator, lex_piece *string)
{
    // A text that was decoded already is decoded again in its place: names before it are in use.
    char *start = lex.reads_strings ? lex.strings + (place - lex.strings) : lex.strings;
    char *to = start;
    const char *from = place;
    while (from < lex.end && *from != terminator && !(*from == '\\' && from + 1 == lex.end)) {
        char c = *from++;
        size_t size = 0;
        *to++ = c == '\\' ? escape_decode(from, lex.end, true, &size) : c;
        from += size;
    }
    bool terminated = from < lex.end && *from == terminator;
    if (!terminated && from < lex.end)
        *to++ = '\\';
    // A decoded NUL ends the text.
    *string = lex_piece{start, strnlen(start, static_cast<size_t>(to - start))};
    if (terminated)
        return from;
    // Kept: what an unterminated string was decoded to is read as tokens, so that a decoded quote can close
    // it, as an empty string.
    lex.reads_strings = true;
    lex.end = start + string->size;
    string->size = 0;
    return start;
}
