// Statement text: what the readers of one statement share.
//
// The buffers hold the statement that is being read; nothing of them outlives it. The recogniser, the
// fetcher, the labels and the declarations use what is here.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Statement result codes. 0 or above is the index of a row of the command table. The loop treats the three
// that go on alike; they differ in which path finished the statement. The codes that stop differ only for the
// journal, which lets the user know why.
enum : int32_t {
    STATEMENT_END = -1,      // the source has ended
    STATEMENT_TEXT = -2,     // handled and written
    STATEMENT_NO_LABEL = -3, // a label line without a name, or one met again at its own position
    STATEMENT_DONE = -4,     // handled and written

    // Reading of this source stops:
    STOP_LABEL_TWICE = -5,     // at a second label of a name
    STOP_LABELS_FULL = -6,     // at one label too many
    STOP_ON_WITHOUT_GOTO = -7, // at an ON without a GOTO
    STOP_DECL_EMPTY = -8,      // at a declaration without an item
    STOP_DECL_ITEM = -9,       // at an item that begins with no name, has a quote or unpaired brackets
    STOP_DECL_COMMA = -10,     // at two words without a comma between them, or a LOCAL with half a type
    STOP_DECL_REFERENCE = -11, // at an item that is no name with subscripts
    STOP_ARRAY_VALUES = -12,   // at initial values without their braces, or of a string list
    STOP_STORE = -20           // at a variable that the store doesn't take, less the store's code (1 to 7)
};

// True if a statement result code stops the reading of the source.
constexpr bool statement_stops(int32_t result)
{
    return result == STATEMENT_END || result <= STOP_LABEL_TWICE;
}

constexpr int32_t word_size = 128;          // the first word of a statement: 127 characters and a NUL
constexpr int32_t line_buf_capacity = 3900; // characters of a statement's text

// A line that has to be copied. The recogniser (ON) and the declarations (the head and the values of an
// ARRAY) write it and read it at once. The fetcher writes what is left of a statement whose arguments failed;
// the statement loop prints that.
extern char line_buf[line_buf_capacity + 16];

// The copy of a declaration's text, which the declarations write, and cut up when it is in the output.
extern char stmt_text[line_buf_capacity + 16];

// A text in the source's window, valid until the source is read on.
struct statement_span {
    const char *text;
    size_t size;
};

// Puts the first word of a statement, of length characters, in front of what is left of its line, and reads
// the whole, its line feed too. It has line_buf_capacity characters at most; what comes after them is left in
// the source. Returns the text up to its first NUL.
statement_span statement_read(const char *word, size_t length);

// Copies a statement's word, a blank and the rest of its line as read to the output. Returns STATEMENT_DONE,
// or STATEMENT_END if the source ended before the line did; then the output has no line end.
int32_t rem_copy(const char *word);
