#include "statements/recogniser.h"

#include "expressions/expr_eval.h"
#include "platform/platform.h"
#include "source/src_stream.h"
#include "statements/arg_slots.h"
#include "statements/command_table.h"
#include "statements/declarations.h"
#include "statements/labels.h"
#include "statements/statement_text.h"
#include "support/output.h"
#include "support/scan.h"
#include "support/text.h"
#include "support/word_index.h"

#include <string.h>

constexpr int escape_key = 27;
constexpr int32_t word_short = 16; // characters of most words

// ---- The first word ----

// Reads over the white space in front of a statement, which is how indentation and empty lines reach the
// output. False at the end of the source.
static bool copy_white()
{
    do {
        size_t size = scan_white(src.pos, static_cast<size_t>(src.end - src.pos));
        out_bytes(reinterpret_cast<const char *>(src.pos), size);
        src.pos += size;
    } while (src.pos == src.end && src_more(nullptr));
    return src.pos < src.end;
}

// The end of the word that begins at src.pos: its first character that is white, or, unless it is a label's,
// no word character; or the end of the source, or the character that a word of word_size - 1 has no room for.
static const unsigned char *word_end()
{
    bool label = *src.pos == ':';
    const unsigned char *limit = src.pos + word_size - 1;
    const unsigned char *p = src.pos + 1;
    for (;;) {
        while (label && p < src.end && p < limit && (char_classes.bits[*p] & CHAR_WHITE) == 0)
            p++;
        if (!label)
            p += scan_word(p, static_cast<size_t>(src.end - p));
        if (p < src.end || p >= limit || !src_more(src.pos))
            return p < limit ? p : limit;
    }
}

// What a statement's first word tells.
enum : int {
    FIRST_NONE, // the source has ended
    FIRST_WORD, // a plain word, for the tables, or a label
    FIRST_TEXT  // the statement is text
};

// Puts a word of length characters in front of what comes next in the source.
static void put_word(const char *word, int32_t length)
{
    auto size = static_cast<size_t>(length);
    memcpy(src.pos - size, word, size);
}

// Reads over the blanks after a word, of which next is the first. What follows them stays in the source, but
// for a NUL, which can't be given back. An assignment or a subscript makes the statement text, and its word
// then has one blank. *blanks is how many there were.
static int end_of_word(int next, char *word, int32_t *length, int32_t *blanks)
{
    if (next == '\n' || next == -1)
        return FIRST_WORD;
    do {
        ++*blanks;
        src.pos++;
        next = src_peek();
    } while (next == ' ' || next == '\t');
    if (next == 0)
        src.pos++;
    if (next != '[' && next != '=')
        return FIRST_WORD;
    if (*length < word_size - 1)
        word[(*length)++] = ' ';
    word[*length] = 0;
    return FIRST_TEXT;
}

// Reads the first word of a statement into word, with a NUL after it; the white space in front of it goes to
// the output. The word of a FIRST_TEXT ends in the character that makes it text, and stands in front of
// src.pos too. *length is the length of the word up to a NUL.
static int read_first_word(char *word, int32_t *length)
{
    if (!copy_white())
        return FIRST_NONE;
    bool is_word = char_is(*src.pos, CHAR_LETTER) || *src.pos == '#' || *src.pos == ':';
    auto size = is_word ? static_cast<int32_t>(word_end() - src.pos) : 1;
    // Most words are short, and a copy of a fixed size takes less than one of the right size.
    memcpy(word, src.pos, word_short);
    if (size > word_short)
        memcpy(word, src.pos, static_cast<size_t>(size));
    const unsigned char *start = src.pos;
    src.pos += size;
    word[size] = 0;
    *length = size;
    int kind = FIRST_TEXT;
    int32_t blanks = 0;
    int next = is_word ? src_peek() : 0;
    // A word that fills its room loses the character that no longer fits, and goes on as at white space.
    if (is_word && (next == -1 || char_is(next, CHAR_WHITE) || size == word_size - 1)) {
        kind = end_of_word(next, word, length, &blanks);
        if (word[0] == ':')
            *length = static_cast<int32_t>(strlen(word));
    } else {
        if (is_word) {
            word[(*length)++] = static_cast<char>(next);
            src.pos++;
        }
        word[*length] = 0;
        *length -= word[*length - 1] == 0;
    }
    // Mostly it stands there still. A copy would hold up the search for the line's end in what it has
    // written.
    bool there = blanks <= 1 && src.pos == start + *length &&
                 src.pos[-1] == static_cast<unsigned char>(word[*length - 1]);
    if (kind == FIRST_TEXT && !there)
        put_word(word, *length);
    return kind;
}

// ---- Statements that are text ----

// Writes a text and a line feed; one that the text ends in already is the same.
static void write_rejected(const statement_span &line)
{
    size_t size = line.size;
    if (size > 0 && line.text[size - 1] == '\n')
        size--;
    out_bytes(line.text, size);
    out_char('\n');
}

// Reads a statement that is text, after its word, and evaluates it for its effects on the variables. True if
// it is an expression.
static bool read_and_evaluate(int32_t length, statement_span *line)
{
    *line = statement_read(length);
    return eval_expr(line->text, line->size) != nullptr;
}

static int32_t assignment_statement(int32_t length, statement_kind *kind)
{
    statement_span line;
    if (!read_and_evaluate(length, &line)) {
        *kind = KIND_TEXT;
        write_rejected(line);
        return STATEMENT_DONE;
    }
    *kind = KIND_EXPRESSION;
    // Kept: an accepted assignment has its own line feed and gets one more, so an empty line follows it.
    out_bytes(line.text, line.size);
    out_char('\n');
    return STATEMENT_TEXT;
}

static int32_t unknown_statement(char *word, int32_t length, statement_kind *kind)
{
    statement_span line;
    word[length++] = ' ';
    src_settle_lines(src.pos); // a line feed before the word may give its place to the blank
    put_word(word, length);
    bool accepted = read_and_evaluate(length, &line);
    *kind = accepted ? KIND_EXPRESSION : KIND_UNKNOWN;
    if (accepted)
        out_bytes(line.text, line.size);
    else
        write_rejected(line);
    return STATEMENT_TEXT;
}

// ---- Statement keywords ----

// A list of labels after an ON is copied as it stands; without a GOTO the reading of the file stops.
static int32_t on_goto(const char *word)
{
    if (src_read_line_crlf(line_buf, line_buf_capacity) == 0)
        return STATEMENT_END;
    if (find_nocase(line_buf, " GOTO") < 0 && find_nocase(line_buf, "\tGOTO") < 0)
        return STOP_ON_WITHOUT_GOTO;
    out_format("%s %s", word, line_buf);
    return STATEMENT_DONE;
}

struct stmt_keyword {
    char name[12];
    int32_t (*handler)(const char *word); // gives a statement result code
};

// Sorted by name.
static constexpr stmt_keyword stmt_keyword_table[] = {
    {"#LINE", line_directive},  {"ARRAY", array_statement}, {"CHAR", decl_statement},
    {"DOUBLE", decl_statement}, {"FLOAT", decl_statement},  {"INT", decl_statement},
    {"LOCAL", decl_statement},  {"LONG", decl_statement},   {"ON", on_goto},
    {"REM", rem_copy},          {"SHORT", decl_statement},  {"SLIST", decl_statement},
    {"STRING", decl_statement}, {"UCHAR", decl_statement},  {"UINT", decl_statement},
    {"ULONG", decl_statement},  {"USHORT", decl_statement},
};

constexpr int stmt_keyword_count = sizeof stmt_keyword_table / sizeof stmt_keyword_table[0];
static_assert(stmt_keyword_count == 17, "a row for each keyword");
static constexpr auto stmt_keyword_index = word_index_make<256>(stmt_keyword_table);

// ---- SPLINE ----

// The pairs that a backslash or a CR makes with the character after it, one character on: the line end after
// backslashes joins its lines if it did not, and the other way round.
static void pair_again()
{
    size_t run = 0;
    while (src.pos[run] == '\\' || src.pos[run] == '\r')
        if (src.pos + ++run == src.end && !src_more(nullptr))
            break;
    const unsigned char *p = src.pos;
    while (*p == '\r' && src_fold_mark_at(p + 1) == nullptr)
        p++;
    while (*p == '\\' && src_fold_mark_at(p + 1) == nullptr)
        p++;
    p += *p == '\\' || *p == '\r';
    auto size = static_cast<size_t>(p - src.pos);
    src_fold_mark *mark = src_fold_mark_at(p);
    src_settle_lines(src.pos);
    if (mark != nullptr && !mark->lost_nul) {
        mark->joins--;
        memmove(src.pos - 2, src.pos, size);
        memcpy(src.pos + size - 2, "\\\n", 2);
        src.pos -= 2;
    } else if (mark == nullptr && size > 0 && p[-1] == '\\' && *p == '\n' && p < src.end) {
        memmove(src.pos + 2, src.pos, size - 1);
        src.pos += 2;
    }
}

static bool nul_was_lost(const unsigned char *place)
{
    const src_fold_mark *mark = src_fold_mark_at(place);
    return mark != nullptr && mark->lost_nul;
}

// Kept: the look at SPLINE's argument goes back by as many bytes as characters were given back, and what
// stands there is looked at anew. So a NUL that was lost after a backslash comes in the backslash's place, a
// backslash or a CR at the source's end brings back the line feed before it, and after a CR that ended the
// word backslashes pair up another way.
static void look_again()
{
    while (src.end - src.pos < 3 && src_more(nullptr)) {
    }
    if (src.pos[-1] == 0) // after the word stood a NUL, which isn't given back
        return;
    const src_fold_mark *here = src_fold_mark_at(src.pos);
    if (src.pos[-1] == '\r' && here == nullptr) {
        pair_again();
        return;
    }
    const unsigned char *p = src.pos + (*src.pos == '\\');
    if (p > src.pos && nul_was_lost(p)) {
        *src.pos = 0;
        return;
    }
    p += *p == '\r';
    if (nul_was_lost(p)) {
        src.pos += p == src.pos + 2;
    } else if (p == src.end && p > src.pos && here != nullptr && here->joins > 0) {
        src_settle_lines(src.pos);
        *--src.pos = '\n';
    }
}

// White space in front of SPLINE's argument beyond which only the blanks are counted that raw text keeps.
constexpr size_t spline_white_max = 8192;

// True if the argument that follows tells SPLINE3's list: its second character is a 3. White space before it
// is looked through up to the line's end; where that comes first the argument is missing in either list. So
// that any amount of it can pass, what raw text drops of it is taken out once there is much.
static bool spline_is_3d()
{
    size_t blanks = 0;
    size_t at = 0; // characters of white space
    while (src.pos + at + 1 >= src.end || (char_is(src.pos[at], CHAR_WHITE) && src.pos[at] != '\n')) {
        if (src.pos + at + 1 < src.end) {
            blanks += src.pos[at++] == ' ';
            continue;
        }
        if (at > spline_white_max && at > blanks + 1) {
            src.pos += at - (blanks + 1);
            src.pos[0] = '\v';
            memset(src.pos + 1, ' ', blanks);
            at = blanks + 1;
        }
        if (blanks > line_buf_capacity || !src_more(nullptr))
            break;
    }
    bool result = src.pos + at + 1 < src.end && src.pos[at] != '\n' && src.pos[at + 1] == '3';
    look_again();
    return result;
}

// ---- Commands ----

static int32_t command_statement(const char *word, int32_t length, int32_t row)
{
    slot_set_word(word, static_cast<uint32_t>(length));
    arg_cursor++;
    return row == command_spline && spline_is_3d() ? command_spline3 : row;
}

static int32_t word_statement(char *word, int32_t length, statement_kind *kind)
{
    *kind = KIND_LABEL;
    if (word[0] == ':')
        return label_define(word);
    word_key key = word_key_make(word, static_cast<size_t>(length));
    int32_t row = command_find(key);
    *kind = KIND_COMMAND;
    if (row >= 0)
        return command_statement(word, length, row);
    int32_t keyword = word_index_find(stmt_keyword_index, key);
    *kind = KIND_KEYWORD;
    if (keyword >= 0)
        return stmt_keyword_table[keyword].handler(word);
    return unknown_statement(word, length, kind);
}

int32_t next_statement(statement_head *head)
{
    // The word stays here until the next statement: slot 0 and the handlers read it.
    static char word[word_size + 2 + slot_text_slack];
    statement_kind kind = KIND_NONE;

    src_start_statement();
    if (head != nullptr)
        *head = statement_head{KIND_NONE, src_line(), out_tell()};
    if (plat_poll_escape() == escape_key)
        return STATEMENT_END;
    int32_t length;
    int first = read_first_word(word, &length);
    if (first == FIRST_NONE)
        return STATEMENT_END;
    if (head != nullptr)
        *head = statement_head{KIND_NONE, src_line(), out_tell()};
    slots_start_statement();
    int32_t result =
        first == FIRST_TEXT ? assignment_statement(length, &kind) : word_statement(word, length, &kind);
    if (head != nullptr)
        head->kind = kind;
    return result;
}
