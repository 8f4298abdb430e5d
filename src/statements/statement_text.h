// Statement text: the buffers, result codes and readers that the recogniser, the fetcher, the labels and the
// declarations share. The buffers are valid for one statement.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Statement result codes. 0 or above is the index of a row of the command table. The loop goes on alike after
// STATEMENT_TEXT, _NO_LABEL and _DONE, and stops alike at the others; the journal reports which it was.
enum : int32_t {
    STATEMENT_END = -1,      // the source has ended
    STATEMENT_TEXT = -2,     // handled and written
    STATEMENT_NO_LABEL = -3, // a label line without a name
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
    STOP_STORE = -20           // at a variable that the store refuses, less the store's code (1 to 7)
};

// True if a statement result code stops the reading of the source.
constexpr bool statement_stops(int32_t result)
{
    return result == STATEMENT_END || result <= STOP_LABEL_TWICE;
}

constexpr int32_t word_size = 128;          // the first word of a statement: 127 characters and a NUL
constexpr int32_t line_buf_capacity = 3900; // characters of a statement's text

// A copied line: the recogniser's for ON, the declarations' for the head and the values of an ARRAY. The
// fetcher leaves the text of a failed argument here, which the statement loop prints.
extern char line_buf[line_buf_capacity + 16];

// The declarations' copy of a declaration's text, which they cut up once it is written.
extern char stmt_text[line_buf_capacity + 16];

// A text in the source's window, valid until the source is read on.
struct statement_span {
    const char *text;
    size_t size;
};

// Puts the first word of a statement, of length characters, in front of the rest of its line, and reads both,
// the line feed too: at most line_buf_capacity characters. Returns the text up to its first NUL.
statement_span statement_read(const char *word, size_t length);

// Writes a statement's word, a blank and the rest of its line. Returns STATEMENT_DONE, or STATEMENT_END if
// the source ended before the line did; then the output has no line end.
int32_t rem_copy(const char *word);
