// Prints the fuzzers' dictionary: every command of the table, the keywords, the functions, the operators,
// and a few pieces of scripts that are hard to guess.
#include "statements/command_table.h"

#include <stdio.h>

static const char *const words[] = {
    "ARRAY ",   "CHAR ",  "DOUBLE ", "FLOAT ", "INT ",    "LOCAL ", "LONG ",  "SHORT ",     "SLIST ",
    "STRING ",  "UCHAR ", "UINT ",   "ULONG ", "USHORT ", "ON ",    "REM ",   "#LINE ",     "SIZEOF(",
    "COPSIZE(", " GOTO ", "COLLECT", "abs(",   "acos(",   "asin(",  "atan(",  "atan2(",     "ceil(",
    "cos(",     "cosh(",  "dms(",    "exp(",   "floor(",  "fmod(",  "hypot(", "log(",       "log10(",
    "pow(",     "sin(",   "sinh(",   "sqrt(",  "tan(",    "tanh(",  "==",     "!=",         "<=",
    ">=",       "<<",     ">>",      "&&",     "||",      "?",      ":",      "$",          "$$",
    "@",        "[0]",    "[1][2]",  "= {",    "}",       ", , ",   "\\\"",   "\\n",        "\\101",
    "\\x41",    "\\\n",   "\\\r\n",  "\r\n",   "\x1A",    "`",      "'",      "%d",         "%*d",
    "%[^,]",    "%lf",    "%5s",     "0x1F",   "017",     "1.5e3",  "1d-2",   "2147483647", "2147483648",
    "-1",       "P3VN",   "%f",      "Murivo"};

// A word between quotes, as the fuzzer reads it.
static void print_word(const char *word)
{
    putchar('"');
    for (; *word != 0; word++) {
        auto c = static_cast<unsigned char>(*word);
        if (c < ' ' || c == '"' || c == '\\')
            printf("\\x%02X", c);
        else
            putchar(c);
    }
    puts("\"");
}

int main()
{
    for (int32_t i = 0; i < command_count; i++)
        print_word(command_row_at(i).name);
    for (const char *word : words)
        print_word(word);
    puts("\"Murivo\\x00\"");
    return 0;
}
