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

int find_nocase(const char *text, const char *pattern)
{
    for (int i = 0; text[i] != 0; i++)
        if (starts_nocase(text + i, pattern))
            return i;
    return -1;
}

int text_table_find(const void *rows, size_t row_size, int count, const char *word)
{
    const char *names = static_cast<const char *>(rows);
    int low = 0;
    int high = count;
    while (low < high) {
        int middle = (low + high) / 2;
        int order = text_compare_nocase(word, names + static_cast<size_t>(middle) * row_size);
        if (order == 0)
            return middle;
        if (order < 0)
            high = middle;
        else
            low = middle + 1;
    }
    return -1;
}

char *text_skip_white(char *text)
{
    while (text_is(*text, CHAR_WHITE))
        text++;
    return text;
}
