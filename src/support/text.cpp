#include "support/text.h"

#include <strings.h>

bool text_is_word(const char *text, size_t size, const char *word)
{
    return size == strlen(word) && strncasecmp(text, word, size) == 0;
}

// The control character of an escape's letter, or else the letter.
static char letter_decode(char c)
{
    switch (c) {
    case 'b': return '\b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    default: return c;
    }
}

char escape_decode(const char *text, const char *end, bool hexadecimal, size_t *size)
{
    auto have = [=](ptrdiff_t first, ptrdiff_t last, unsigned digits) {
        for (ptrdiff_t i = first; i <= last; i++)
            if (i >= end - text || !text_is(text[i], digits))
                return false;
        return true;
    };
    *size = 3;
    if (have(0, 2, CHAR_OCTAL))
        return static_cast<char>((text[0] - '0') * 64 + (text[1] - '0') * 8 + (text[2] - '0'));
    if (hexadecimal && text < end && text[0] == 'x' && have(1, 2, CHAR_HEX))
        return static_cast<char>(digit_value(text[1]) * 16 + digit_value(text[2]));
    *size = text < end ? 1 : 0;
    return text < end ? letter_decode(text[0]) : '\\';
}
