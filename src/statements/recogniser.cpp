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
#include <strings.h>

#include <algorithm>

constexpr int escape_key = 27;

// ---- The first word ----

// Copies the white space in front of a statement to the output: indentation and empty lines. Returns false at
// the end of the source.
static bool copy_white_space()
{
    do {
        size_t size = scan_white(src.pos, static_cast<size_t>(src.end - src.pos));
        out_bytes(reinterpret_cast<const char *>(src.pos), size);
        src.pos += size;
    } while (src.pos == src.end && src_more(nullptr));
    return src.pos < src.end;
}

// The length of the word that begins at src.pos: up to white space if it is a label, else up to a character
// that is no word character; or to the end of the source; at most word_size - 1.
static size_t word_length()
{
    bool label = *src.pos == ':';
    size_t length = 1;
    for (;;) {
        size_t limit = std::min<size_t>(static_cast<size_t>(src.end - src.pos), word_size - 1);
        if (!label)
            length += scan_word(src.pos + length, limit - length);
        while (label && length < limit && !char_is(src.pos[length], CHAR_WHITE))
            length++;
        if (length < limit || limit == word_size - 1 || !src_more(src.pos))
            return length;
    }
}

// Reads what follows a word of length characters. Returns true if the word is to be looked up. An assignment
// or a subscript after blanks makes the statement text, with one blank after its word.
static bool read_after_word(char *word, size_t length)
{
    int next = src_peek();
    // A word ends where its buffer is full, and the character that doesn't fit is lost.
    if (next != -1 && !char_is(next, CHAR_WHITE) && length < word_size - 1) {
        word[length] = static_cast<char>(*src.pos++);
        return false;
    }
    if (next == '\n' || next == -1)
        return true;
    src.pos++;
    src_skip_blanks(nullptr);
    next = src_peek();
    (void)src_lose_nul(src.pos);
    if (next != '[' && next != '=')
        return true;
    if (length < word_size - 1)
        word[length] = ' ';
    return false;
}

// Reads the first word of a statement into word, with a NUL after it. Returns the length of a plain word or a
// label; 0 if the statement is text, because it begins with no word or an operator follows the word; word
// then includes that character.
static size_t read_first_word(char *word)
{
    bool is_word = char_is(*src.pos, CHAR_LETTER) || *src.pos == '#' || *src.pos == ':';
    size_t length = is_word ? word_length() : 1;
    memcpy(word, src.pos, length);
    memset(word + length, 0, 2);
    src.pos += length;
    return is_word && read_after_word(word, length) ? length : 0;
}

// ---- Statements that are text ----

// Writes a text, and a line feed unless it ends in one.
static void write_rejected(const statement_span &line)
{
    size_t size = line.size;
    if (size > 0 && line.text[size - 1] == '\n')
        size--;
    out_bytes(line.text, size);
    out_char('\n');
}

// Reads a statement that is text, after its word, and evaluates it for its effects on the variables. Returns
// true if it is an expression.
static bool read_and_evaluate(const char *word, statement_span *line)
{
    *line = statement_read(word, strlen(word));
    return eval_expr(line->text, line->size) != nullptr;
}

static int32_t assignment_statement(const char *word, statement_kind *kind)
{
    statement_span line;
    if (!read_and_evaluate(word, &line)) {
        *kind = KIND_TEXT;
        write_rejected(line);
        return STATEMENT_DONE;
    }
    *kind = KIND_EXPRESSION;
    // Kept: an accepted assignment has its own line feed and gets one more. Users compare a new conversion
    // with an old one: without the empty line every script with an assignment would differ.
    out_bytes(line.text, line.size);
    out_char('\n');
    return STATEMENT_TEXT;
}

static int32_t unknown_statement(char *word, statement_kind *kind)
{
    statement_span line;
    strcat(word, " ");
    bool accepted = read_and_evaluate(word, &line);
    *kind = accepted ? KIND_EXPRESSION : KIND_UNKNOWN;
    if (accepted)
        out_bytes(line.text, line.size);
    else
        write_rejected(line);
    return STATEMENT_TEXT;
}

// ---- Statement keywords ----

static bool has_goto(const char *line)
{
    for (; *line != 0; line++)
        if ((*line == ' ' || *line == '\t') && strncasecmp(line + 1, "GOTO", 4) == 0)
            return true;
    return false;
}

// A list of labels after an ON is copied as it is; without a GOTO the reading of the file stops.
static int32_t on_goto(const char *word)
{
    if (src_read_line_crlf(line_buf, line_buf_capacity) == 0)
        return STATEMENT_END;
    if (!has_goto(line_buf))
        return STOP_ON_WITHOUT_GOTO;
    out_format("%s %s", word, line_buf);
    return STATEMENT_DONE;
}

struct stmt_keyword {
    char name[12];
    int32_t (*handler)(const char *word); // returns a statement result code
};

static constexpr stmt_keyword stmt_keyword_table[] = {
    {"#LINE", line_directive},  {"ARRAY", array_statement}, {"CHAR", decl_statement},
    {"DOUBLE", decl_statement}, {"FLOAT", decl_statement},  {"INT", decl_statement},
    {"LOCAL", decl_statement},  {"LONG", decl_statement},   {"ON", on_goto},
    {"REM", rem_copy},          {"SHORT", decl_statement},  {"SLIST", decl_statement},
    {"STRING", decl_statement}, {"UCHAR", decl_statement},  {"UINT", decl_statement},
    {"ULONG", decl_statement},  {"USHORT", decl_statement},
};
static constexpr auto stmt_keyword_index = word_index_make<256>(stmt_keyword_table);

// ---- SPLINE ----

// The most white space in front of SPLINE's argument that is searched for it.
constexpr size_t spline_white_max = 65536;
static_assert(spline_white_max + 2 <= src_unread_max, "the source holds what is looked at");

// True if the argument that follows asks for SPLINE3's list: its second character is a 3. Where the line ends
// first, or the white space is longer, it doesn't. Nothing is read.
static bool spline_is_3d()
{
    for (size_t white = 0;; white++) {
        while (src.end - src.pos < static_cast<ptrdiff_t>(white + 2))
            if (!src_more(nullptr))
                return false;
        if (!char_is(src.pos[white], CHAR_WHITE))
            return src.pos[white + 1] == '3';
        if (src.pos[white] == '\n' || white == spline_white_max)
            return false;
    }
}

// ---- Words ----

static int32_t word_statement(char *word, size_t length, statement_kind *kind)
{
    *kind = KIND_LABEL;
    if (word[0] == ':')
        return label_define(word);
    word_key key = word_key_make(word, length);
    int32_t row = command_find(key);
    *kind = KIND_COMMAND;
    if (row >= 0) {
        slot_set_word(word, static_cast<uint32_t>(length));
        return row == command_spline && spline_is_3d() ? command_spline3 : row;
    }
    int32_t keyword = word_index_find(stmt_keyword_index, key);
    *kind = KIND_KEYWORD;
    if (keyword >= 0)
        return stmt_keyword_table[keyword].handler(word);
    return unknown_statement(word, kind);
}

int32_t next_statement(statement_head *head)
{
    // Slot 0 and the handlers point to it until the next statement.
    static char word[word_size + 2 + slot_text_slack];

    src_start_statement();
    if (head != nullptr)
        *head = statement_head{KIND_NONE, src_line(), out_tell()};
    if (plat_poll_escape() == escape_key || !copy_white_space())
        return STATEMENT_END;
    if (head != nullptr)
        *head = statement_head{KIND_NONE, src_line(), out_tell()};
    statement_kind kind = KIND_NONE;
    size_t length = read_first_word(word);
    int32_t result = length > 0 ? word_statement(word, length, &kind) : assignment_statement(word, &kind);
    if (head != nullptr)
        head->kind = kind;
    return result;
}
