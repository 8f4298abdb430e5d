// Gathering: an argument character by character from the source into line_buf, from its start.
#pragma once

#include <stdint.h>

extern int32_t arg_line_used; // characters gathered in line_buf

// Reads over blanks and tabs, and gives the character behind them.
int arg_skip_blanks();

// Gathers raw text from c on, up to a comma, a line feed or the end of the source; *last is the character
// that ended it. With parentheses counted, a comma inside them is text. False if they don't pair up.
bool arg_gather_raw(int c, bool counted, int *last);

// Gathers a string behind its opening quote, line ends included, and reads on behind its closing quote to
// what ends the argument. What was gathered ends at its first NUL. False if something but blanks stands
// behind the closing quote.
bool arg_gather_string(int quote, int *last);
