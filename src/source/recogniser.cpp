#include "source/recogniser.h"

#include "analysis/arg_slots.h"
#include "analysis/declarations.h"
#include "analysis/expr_eval.h"
#include "platform/platform.h"
#include "source/command_table.h"
#include "source/labels.h"
#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/output.h"
#include "support/text.h"

#include <string.h>

constexpr int escape_key = 27;
constexpr int32_t spline_id = 5; // the one command whose row depends on its first argument

// ---- The first word ----

// Reads over the white space in front of a statement, which is how indentation and empty lines reach the
// output, and gives the character behind it.
static int copy_white(FILE *stream)
{
    int c = src_getc(stream);
    while (char_is(c, CHAR_WHITE)) {
        out_char(c);
        const unsigned char *p = src_raw.pos;
        while (p < src_raw.plain_end && *p == ' ')
            p++;
        if (p > src_raw.pos) {
            out_bytes(reinterpret_cast<const char *>(src_raw.pos), static_cast<size_t>(p - src_raw.pos));
            src_raw.pos = p;
        }
        c = src_getc(stream);
    }
    return c;
}

// Takes the characters of a word that lie ready in the source, as long as there is room. Gives its length
// then.
static int32_t take_ready_word(char *word, int32_t length, int32_t *room)
{
    const unsigned char *p = src_raw.pos;
    for (; p<src_raw.plain_end && * room> 1 && char_is(*p, CHAR_WORD); p++, (*room)--)
        word[length++] = static_cast<char>(*p);
    if (p > src_raw.pos)
        src_raw.pos = p;
    return length;
}

// Reads over the blanks behind a word. 1 if an assignment or a subscript follows, for which the word then has
// one blank behind it, else 0.
static int32_t behind_word(FILE *stream, char *word, int32_t length, int32_t room)
{
    while (src_raw.pos < src_raw.plain_end && (*src_raw.pos == ' ' || *src_raw.pos == '\t'))
        src_raw.pos++;
    int c;
    if (src_raw.pos < src_raw.plain_end && src_plain.plain[*src_raw.pos] && *src_raw.pos != 0) {
        c = *src_raw.pos; // as good as read and pushed back; a NUL would be lost there
    } else {
        do
            c = src_getc(stream);
        while (c == ' ' || c == '\t');
        if (c == -1)
            return 0;
        src_ungetc(c);
    }
    if (c != '[' && c != '=')
        return 0;
    if (room > 1) {
        word[length] = ' ';
        word[length + 1] = 0;
    }
    return 1;
}

int32_t read_first_word(FILE *stream, char *word, int32_t size)
{
    int c = copy_white(stream);
    if (c == -1)
        return -1;
    int32_t length = 0;
    int32_t room = size - 1; // characters that still fit, and the NUL
    word[length++] = static_cast<char>(c);
    word[length] = 0;
    if (!char_is(c, CHAR_LETTER) && c != '#' && c != ':')
        return 1;
    bool label = c == ':';
    length = take_ready_word(word, length, &room);
    c = src_getc(stream);
    // A word that fills its room loses the character that no longer fits.
    while (c != -1 && !char_is(c, CHAR_WHITE) && --room > 0) {
        word[length++] = static_cast<char>(c);
        if (!label && !char_is(c, CHAR_WORD)) {
            word[length] = 0;
            return 1;
        }
        c = src_getc(stream);
    }
    word[length] = 0;
    if (c == '\n')
        src_ungetc(c);
    if (c == '\n' || c == -1)
        return 0;
    return behind_word(stream, word, length, room);
}

// ---- Statements that are text ----

// Collects a statement's text in line_buf, the word and what follows it on the line, and evaluates a copy.
// True if the evaluator accepts it.
static bool collect_and_evaluate(FILE *stream, const char *word, bool blank)
{
    size_t length = strlen(word);
    memcpy(line_buf, word, length);
    if (blank)
        line_buf[length++] = ' ';
    line_buf[length] = 0;
    auto used = static_cast<int32_t>(length);
    length += static_cast<size_t>(src_read_line(line_buf + used, line_buf_capacity - used, stream));
    memcpy(stmt_text, line_buf, length + 1);
    return eval_expr(stmt_text) != nullptr;
}

// Writes line_buf and a line feed; one that the text ends in already is the same.
static void write_rejected_text()
{
    size_t length = strlen(line_buf);
    if (length > 0 && line_buf[length - 1] == '\n')
        length--;
    out_bytes(line_buf, length);
    out_char('\n');
}

static int32_t assignment_statement(FILE *stream, const char *word)
{
    if (!collect_and_evaluate(stream, word, false)) {
        write_rejected_text();
        return STATEMENT_DONE;
    }
    // Kept: an accepted assignment has its own line feed and gets one more, so an empty line follows it.
    out_text(line_buf);
    out_char('\n');
    return STATEMENT_TEXT;
}

static int32_t unknown_statement(FILE *stream, const char *word)
{
    if (collect_and_evaluate(stream, word, true))
        out_text(line_buf);
    else
        write_rejected_text();
    return STATEMENT_TEXT;
}

// ---- Statement keywords ----

static int32_t rem_statement(FILE *stream, char *word, int32_t)
{
    return rem_copy(stream, word);
}

// A list of labels behind an ON is copied as it stands; without a GOTO the reading of the file stops.
static int32_t on_goto(FILE *stream, char *word, int32_t)
{
    if (src_read_line_crlf(line_buf, line_buf_capacity, stream) == 0)
        return STATEMENT_END;
    if (find_nocase(line_buf, " GOTO") < 0 && find_nocase(line_buf, "\tGOTO") < 0)
        return STATEMENT_END;
    out_format("%s %s", word, line_buf);
    return STATEMENT_DONE;
}

struct stmt_keyword {
    char name[12];
    int32_t (*handler)(FILE *stream, char *word, int32_t size);
};

// Sorted by name.
static constexpr stmt_keyword stmt_keyword_table[] = {
    {"#LINE", line_directive},  {"ARRAY", array_statement}, {"CHAR", decl_statement},
    {"DOUBLE", decl_statement}, {"FLOAT", decl_statement},  {"INT", decl_statement},
    {"LOCAL", decl_statement},  {"LONG", decl_statement},   {"ON", on_goto},
    {"REM", rem_statement},     {"SHORT", decl_statement},  {"SLIST", decl_statement},
    {"STRING", decl_statement}, {"UCHAR", decl_statement},  {"UINT", decl_statement},
    {"ULONG", decl_statement},  {"USHORT", decl_statement},
};

constexpr int stmt_keyword_count = sizeof stmt_keyword_table / sizeof stmt_keyword_table[0];
static_assert(stmt_keyword_count == 17 && text_table_sorted(stmt_keyword_table), "searched in halves");

// ---- Commands ----

// True if the argument that follows tells SPLINE3's list. Looks at the next word and goes back.
static bool spline_is_3d(FILE *stream, char *word)
{
    int64_t position = src_tell(stream);
    src_read_word(stream, word, word_size);
    bool result = word[1] == '3';
    (void)src_seek(stream, position);
    return result;
}

static int32_t command_statement(FILE *stream, char *word, int32_t row)
{
    slot_set_word(word);
    arg_cursor++;
    // SPLINE3's row is the one behind SPLINE's.
    if (command_row_at(row).id == spline_id && spline_is_3d(stream, word))
        row++;
    return row;
}

int32_t next_statement(FILE *stream)
{
    if (plat_poll_escape() == escape_key)
        return STATEMENT_END;
    char word[word_size];
    int32_t kind = read_first_word(stream, word, word_size);
    if (kind == -1)
        return STATEMENT_END;
    slots_start_statement();
    if (kind == 1)
        return assignment_statement(stream, word);
    if (word[0] == ':')
        return label_define(stream, word, word_size);
    int32_t row = command_find(word);
    if (row >= 0)
        return command_statement(stream, word, row);
    int keyword = text_table_find(stmt_keyword_table, sizeof(stmt_keyword), stmt_keyword_count, word);
    if (keyword >= 0)
        return stmt_keyword_table[keyword].handler(stream, word, word_size);
    return unknown_statement(stream, word);
}
