// Prompt reporter: numbered messages to the user, with their texts in a file.
//
// A message is a line of mcomp.txt in the current directory, looked up by its number each time. Columns
// 0 to 3 hold the number, the text starts at column 4 and is a format for the values of the report. A code
// above 0 is only a message; any other ends the process, a few excepted.
//
// The file can be a user's own, so printf never gets its text. Each value has a kind: a conversion formats
// the next value if that is of its kind; if not, the conversion is printed as text.
#pragma once

#include <stdint.h>

enum prompt_kind : uint8_t {
    PROMPT_INT, // for %d %i %u %o %x %X %c
    PROMPT_TEXT // for %s
};

// One value for the format in a prompt's text.
struct prompt_value {
    prompt_kind kind;
    int32_t number;   // PROMPT_INT
    const char *text; // PROMPT_TEXT: NUL-terminated, the caller's
};

constexpr char prompt_file_name[] = "mcomp.txt";
constexpr int prompt_message_size = 252; // bytes of the work buffer: longer messages are cut
constexpr int prompt_prefix_size = 128;  // bytes; a longer prefix is cut

// The name that heads a report instead of "mcomp", with the line if there is one; null: none. Nothing in this
// program sets it.
extern const char *prompt_prefix_name;

// Prints prompt |code| to standard output, after a prefix with the line (0: no line; -1: no prefix). A
// prompt that can't be found is named by its number instead. Returns after a code above 0 or one of the
// recoverable codes; every other one, 0 included, ends the process with status 1.
void prompt_report(int32_t code, int32_t line, const prompt_value *values = nullptr, int count = 0);
