// Recogniser: reads a statement up to the point where its kind is known.
//
// A command comes back as a row of the command table. Every other statement is finished here and written:
// assignments, labels, the statement keywords, and any line that nobody knows. Such a line is evaluated for
// its effect on the variable store and goes to the output with only its white space touched.
#pragma once

#include <stdint.h>

struct plat_file;

// Reads one statement. Gives the index of a command's row, with the word in slot 0 and arg_cursor on slot 1;
// or a statement result code, and then the statement is written.
int32_t next_statement(plat_file *stream);

// Reads the first word of a statement into word; the white space in front of it goes to the output.
// -1: end of the source; 0: a plain word, for the tables or a label; 1: the statement is text.
int32_t read_first_word(plat_file *stream, char *word, int32_t size);
