#include "source/recogniser.h"

#include "analysis/arg_slots.h"
#include "analysis/declarations.h"
#include "analysis/expr_eval.h"
#include "analysis/expr_lexer.h"
#include "platform/platform.h"
#include "source/command_table.h"
#include "source/labels.h"
#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/char_masks.h"
#include "support/output.h"
#include "support/text.h"
#include "support/word_index.h"

#include <string.h>

constexpr int escape_key = 27;
constexpr int32_t spline_id = 5; // the one command whose row depends on its first argument

// ---- The first word ----

// Reads over the white space in front of a statement, which is how indentation and empty lines reach the
// output, and gives the character behind it.
static int copy_white(plat_file *stream)
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

// Characters behind a word that lie ready in the source: what may be read without a change, the blank, the
// tab and the line feed, and CR LF too. A NUL would be lost when it is pushed back; the other white space is
// rare.
struct ready_map {
    bool ready[256];
};

static constexpr ready_map ready_make()
{
    ready_map map{};
    for (int c = 1; c < 256; c++) {
        bool white = (char_classes.bits[c] & CHAR_WHITE) != 0;
        map.ready[c] = white ? c == ' ' || c == '\t' || c == '\n' : src_plain.plain[c];
    }
    return map;
}
static constexpr ready_map ready_characters = ready_make();

static bool is_ready(const unsigned char *c)
{
    return (c < src_raw.plain_end && ready_characters.ready[*c]) || src_is_line_end(c);
}

// A word of fewer characters may lie ready, behind as few blanks and with as few behind it.
constexpr unsigned ready_word_max = 16;

// The key of the statement's word, for the tables; of a word that is in none of them, no one's.
static word_key first_word_key;

// Writes the white space in front of a statement that lies ready.
static void write_indent(unsigned size)
{
    char *place = out_take_place(ready_word_max);
    memcpy(place, src_raw.pos, ready_word_max);
    out_give_place(place + size);
}

// Takes the one character that begins a statement which is text, if it is one; see read_ready_word.
static bool take_ready_mark(const unsigned char *start, unsigned indent, char *word, int32_t *length,
                            int32_t *kind)
{
    if (char_is(*start, CHAR_WHITE) || *start == '#' || *start == ':')
        return false;
    write_indent(indent);
    word[0] = static_cast<char>(*start);
    word[1] = 0;
    *length = 1;
    *kind = 1;
    src_raw.pos = start + 1;
    return true;
}

// Reads a first word that lies ready in the source with the character behind it, and the one behind its
// blanks. False if it doesn't, and nothing was read. *kind is what read_first_word gives.
static bool read_ready_word(char *word, int32_t *length, int32_t *kind)
{
    src_settle();
    unsigned indent = blank_run(src_raw.pos);
    const unsigned char *start = src_raw.pos + indent;
    unsigned run = word_run(start);
    const unsigned char *end = start + run;
    if (run == ready_word_max || !is_ready(start) || !is_ready(end))
        return false;
    if (!char_is(*start, CHAR_LETTER))
        return take_ready_mark(start, indent, word, length, kind);
    unsigned blanks = blank_run(end);
    const unsigned char *next = end + blanks;
    bool blank = blanks > 0;
    if (blanks == ready_word_max || !is_ready(next))
        return false;
    write_indent(indent);
    memcpy(word, start, ready_word_max);
    first_word_key = run <= word_size_max ? word_key_ready(start, run) : word_key{0, 0};
    bool assigned = *next == '=' || *next == '[';
    *kind = (blank ? assigned : *next != '\n' && *next != '\r') ? 1 : 0;
    *length = static_cast<int32_t>(run) + *kind;
    word[run] = static_cast<char>(blank ? ' ' : *end);
    word[*length] = 0;
    src_raw.pos = blank || *kind == 0 ? next : end + 1;
    return true;
}

// Reads over the blanks behind a word. 1 if an assignment or a subscript follows, for which the word then has
// one blank behind it, else 0.
static int32_t behind_word(plat_file *stream, char *word, int32_t *length, int32_t room)
{
    int c;
    do
        c = src_getc(stream);
    while (c == ' ' || c == '\t');
    if (c == -1)
        return 0;
    src_ungetc(c);
    if (c != '[' && c != '=')
        return 0;
    if (room > 1)
        word[(*length)++] = ' ';
    return 1;
}

// Reads a first word character by character.
static int32_t read_word_singly(plat_file *stream, char *word, int32_t size, int32_t *length)
{
    int c = copy_white(stream);
    if (c == -1)
        return -1;
    int32_t room = size - 1; // characters that still fit, and the NUL
    word[(*length)++] = static_cast<char>(c);
    if (!char_is(c, CHAR_LETTER) && c != '#' && c != ':')
        return 1;
    bool label = c == ':';
    c = src_getc(stream);
    // A word that fills its room loses the character that no longer fits.
    while (c != -1 && !char_is(c, CHAR_WHITE) && --room > 0) {
        word[(*length)++] = static_cast<char>(c);
        if (!label && !char_is(c, CHAR_WORD))
            return 1;
        c = src_getc(stream);
    }
    if (c == '\n')
        src_ungetc(c);
    if (c == '\n' || c == -1)
        return 0;
    return behind_word(stream, word, length, room);
}

// read_first_word, with the length of the word up to a NUL.
static int32_t read_word(plat_file *stream, char *word, int32_t size, int32_t *length)
{
    int32_t kind;
    *length = 0;
    if (static_cast<unsigned>(size) > ready_word_max && read_ready_word(word, length, &kind))
        return kind;
    kind = read_word_singly(stream, word, size, length);
    word[*length] = 0;
    *length = static_cast<int32_t>(strlen(word));
    auto read = static_cast<size_t>(*length);
    first_word_key = read <= word_size_max ? word_key_make(word, read) : word_key{0, 0};
    return kind;
}

int32_t read_first_word(plat_file *stream, char *word, int32_t size)
{
    int32_t length;
    return read_word(stream, word, size, &length);
}

// ---- Statements that are text ----

// Collects a statement's text in line_buf, the word and what follows it on the line, and evaluates a copy.
// True if the evaluator accepts it. *size is the length of the text up to a NUL.
static bool collect_and_evaluate(plat_file *stream, const char *word, int32_t length, size_t *size)
{
    memcpy(line_buf, word, static_cast<size_t>(length));
    int32_t stored = length + src_read_line(line_buf + length, line_buf_capacity - length, stream);
    line_buf[stored] = 0;
    auto used = static_cast<size_t>(stored);
    const void *end = memchr(line_buf, 0, used + 1);
    *size = static_cast<size_t>(static_cast<const char *>(end) - line_buf);
    // Most lines that nobody knows are comments: they needn't be copied to be refused.
    if (!lex_starts_operand(line_buf[0]))
        return false;
    memcpy(stmt_text, line_buf, *size + 1);
    return eval_expr(stmt_text) != nullptr;
}

// Writes line_buf and a line feed; one that the text ends in already is the same.
static void write_rejected_text(size_t size)
{
    if (size > 0 && line_buf[size - 1] == '\n')
        size--;
    out_bytes(line_buf, size);
    out_char('\n');
}

static int32_t assignment_statement(plat_file *stream, const char *word, int32_t length, statement_kind *kind)
{
    size_t size;
    *kind = KIND_TEXT;
    if (!collect_and_evaluate(stream, word, length, &size)) {
        write_rejected_text(size);
        return STATEMENT_DONE;
    }
    *kind = KIND_EXPRESSION;
    // Kept: an accepted assignment has its own line feed and gets one more, so an empty line follows it.
    out_bytes(line_buf, size);
    out_char('\n');
    return STATEMENT_TEXT;
}

static int32_t unknown_statement(plat_file *stream, char *word, int32_t length, statement_kind *kind)
{
    size_t size;
    word[length++] = ' ';
    bool accepted = collect_and_evaluate(stream, word, length, &size);
    *kind = accepted ? KIND_EXPRESSION : KIND_UNKNOWN;
    if (accepted)
        out_bytes(line_buf, size);
    else
        write_rejected_text(size);
    return STATEMENT_TEXT;
}

// ---- Statement keywords ----

static int32_t rem_statement(plat_file *stream, char *word, int32_t)
{
    return rem_copy(stream, word);
}

// A list of labels behind an ON is copied as it stands; without a GOTO the reading of the file stops.
static int32_t on_goto(plat_file *stream, char *word, int32_t)
{
    if (src_read_line_crlf(line_buf, line_buf_capacity, stream) == 0)
        return STATEMENT_END;
    if (find_nocase(line_buf, " GOTO") < 0 && find_nocase(line_buf, "\tGOTO") < 0)
        return STOP_ON_WITHOUT_GOTO;
    out_format("%s %s", word, line_buf);
    return STATEMENT_DONE;
}

struct stmt_keyword {
    char name[12];
    int32_t (*handler)(plat_file *stream, char *word, int32_t size);
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
static_assert(stmt_keyword_count == 17, "a row for each keyword");
static constexpr auto stmt_keyword_index = word_index_make<256>(stmt_keyword_table);

// ---- Commands ----

// True if the argument that follows tells SPLINE3's list. Looks at the next word and goes back.
static bool spline_is_3d(plat_file *stream)
{
    char word[word_size] = "";
    int64_t position = src_tell(stream);
    src_read_word(stream, word, word_size);
    bool result = word[1] == '3';
    (void)src_seek(stream, position);
    return result;
}

static int32_t command_statement(plat_file *stream, const char *word, int32_t length, int32_t row)
{
    slot_set_word(word, static_cast<uint32_t>(length));
    arg_cursor++;
    // SPLINE3's row is the one behind SPLINE's.
    if (command_row_at(row).id == spline_id && spline_is_3d(stream))
        row++;
    return row;
}

static int32_t word_statement(plat_file *stream, char *word, int32_t length, statement_kind *kind)
{
    *kind = KIND_LABEL;
    if (word[0] == ':')
        return label_define(stream, word, word_size);
    int32_t row = command_find(first_word_key);
    *kind = KIND_COMMAND;
    if (row >= 0)
        return command_statement(stream, word, length, row);
    int32_t keyword = word_index_find(stmt_keyword_index, first_word_key);
    *kind = KIND_KEYWORD;
    if (keyword >= 0)
        return stmt_keyword_table[keyword].handler(stream, word, word_size);
    return unknown_statement(stream, word, length, kind);
}

int32_t next_statement(plat_file *stream, statement_head *head)
{
    // The word stays here until the next statement: slot 0 and the handlers read it.
    static char word[word_size + line_step];
    statement_kind kind;

    if (head != nullptr)
        *head = statement_head{KIND_NONE, src_lines.line_physical, out_tell()};
    if (plat_poll_escape() == escape_key)
        return STATEMENT_END;
    int32_t length;
    int32_t text = read_word(stream, word, word_size, &length);
    if (text == -1)
        return STATEMENT_END;
    if (head != nullptr)
        *head = statement_head{KIND_NONE, src_lines.line_statement, out_tell()};
    slots_start_statement();
    int32_t result = text == 1 ? assignment_statement(stream, word, length, &kind)
                               : word_statement(stream, word, length, &kind);
    if (head != nullptr)
        head->kind = kind;
    return result;
}
