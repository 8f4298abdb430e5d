#include "expressions/expr_lexer.h"

#include "expressions/var_store.h"
#include "support/number.h"
#include "support/scan.h"
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

static_assert(sizeof expr_keyword_table / sizeof expr_keyword_table[0] == 15, "a row for each keyword");
static constexpr auto keyword_index = word_index_make<256>(expr_keyword_table);

// The letters that keywords begin with, a bit for each: bit 1 is a. Without this test of a name an assignment
// takes 5 % more instructions.
static constexpr uint32_t keyword_initials = [] {
    uint32_t initials = 0;
    for (const expr_keyword &row : expr_keyword_table)
        initials |= uint32_t{1} << (row.name[0] & 31);
    return initials;
}();

const expr_keyword *lex_keyword(lex_piece name)
{
    int32_t row = word_index_find(keyword_index, word_key_make(name.text, name.size));
    return row < 0 ? nullptr : expr_keyword_table + row;
}

// ---- Tokens ----

void lex_start(const char *text, size_t size)
{
    lex.end = text + size;
    lex.reads_strings = false;
}

// The end of the name or keyword at pos, surplus included. Returns pos if it has a $ or $$ without a letter
// after it, or an @ without a letter or digit: then the token is that character.
static const char *word_end(const char *pos)
{
    const char *word = pos;
    bool system = *pos == '@';
    if (system || *pos == '$')
        word++;
    if (word < lex.end && *pos == '$' && *word == '$')
        word++;
    if (word == lex.end || !text_is(*word, system ? CHAR_LETTER | CHAR_DIGIT : CHAR_LETTER))
        return pos;
    return word + scan_word(word, static_cast<size_t>(lex.end - word));
}

lex_token lex_word(const char *pos)
{
    const char *end = word_end(pos);
    if (end == pos)
        return lex_token{static_cast<unsigned char>(*pos), pos + 1, {pos, 0}};
    // A name that is too long loses its surplus, but not at the end of the text.
    ptrdiff_t limit = *pos == '@' ? lex_system_length : lex_name_length;
    ptrdiff_t size = end - pos > limit && end < lex.end ? limit : end - pos;
    lex_piece name{pos, static_cast<size_t>(size)};
    bool may_be_keyword = (keyword_initials >> (*pos & 31) & 1) != 0;
    const expr_keyword *keyword = may_be_keyword ? lex_keyword(name) : nullptr;
    return lex_token{keyword != nullptr ? keyword->code : int16_t{TOKEN_NAME}, end, name};
}

lex_token lex_read(const char *pos)
{
    if (lex_is_word(pos))
        return lex_word(pos);
    if (lex_is_number(pos))
        return lex_token{TOKEN_NUMBER, number_scan(pos, lex.end).end, {pos, 0}};
    int16_t code = lex_code(pos);
    return lex_token{code, lex_after(pos, code), {pos, 0}};
}

// ---- Strings ----

const char *lex_string(const char *pos, char terminator, lex_piece *string)
{
    // Text that was decoded is decoded again in place: names in front of it are in use.
    char *start = lex.reads_strings ? lex.strings + (pos - lex.strings) : lex.strings;
    char *to = start;
    const char *from = pos;
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
    // Kept: the decoded text of an unterminated string is read as tokens, so that a decoded quote closes it
    // as an empty string. Users see it in lines such as `$s = "\"`: they count as assignments and are
    // followed by an empty line. As syntax errors they would lose that line, and $s its new value.
    lex.reads_strings = true;
    lex.end = start + string->size;
    string->size = 0;
    return start;
}
