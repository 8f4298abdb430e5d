#include "support/text.h"

int text_compare_nocase(const char *left, const char *right)
{
    for (;; left++, right++) {
        int a = char_lower(static_cast<unsigned char>(*left));
        int b = char_lower(static_cast<unsigned char>(*right));
        if (a != b || a == 0)
            return a - b;
    }
}

static bool starts_nocase(const char *text, const char *pattern)
{
    for (; *pattern != 0; text++, pattern++)
        if (char_lower(static_cast<unsigned char>(*text)) != char_lower(static_cast<unsigned char>(*pattern)))
            return false;
    return true;
}

bool text_is_word(const char *text, size_t size, const char *word)
{
    return size == strlen(word) && starts_nocase(text, word);
}

int find_nocase(const char *text, const char *pattern)
{
    for (int i = 0; text[i] != 0; i++)
        if (starts_nocase(text + i, pattern))
            return i;
    return -1;
}
