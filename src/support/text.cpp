#include "support/text.h"

#include <float.h>
#include <math.h>

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
        if (char_lower(static_cast<unsigned char>(*text)) !=
            char_lower(static_cast<unsigned char>(*pattern)))
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

int32_t int_from_double(double value)
{
    // 2^63 itself is outside; the comparison is false for NaN.
    const double limit = 9223372036854775808.0;
    if (!(value >= -limit && value < limit))
        return 0;
    return wrap_int32(static_cast<uint64_t>(static_cast<int64_t>(value)));
}

float float_from_double(double value)
{
    // Up to half a step behind the largest float, that is what is nearest.
    const double half_step = 10141204801825835211973625643008.0; // 2^103
    const double limit = static_cast<double>(FLT_MAX) + half_step;
    if (value >= limit || value <= -limit)
        return value > 0 ? HUGE_VALF : -HUGE_VALF;
    if (value > FLT_MAX || value < -FLT_MAX)
        return value > 0 ? FLT_MAX : -FLT_MAX;
    return static_cast<float>(value);
}

int32_t int_from_text(const char *text)
{
    while (text_is(*text, CHAR_WHITE))
        text++;
    bool minus = *text == '-';
    if (*text == '-' || *text == '+')
        text++;
    int64_t value = 0;
    for (; text_is(*text, CHAR_DIGIT); text++)
        if (value <= INT32_MAX)
            value = value * 10 + (*text - '0');
    if (minus)
        return value > INT32_MAX ? INT32_MIN : static_cast<int32_t>(-value);
    return value > INT32_MAX ? INT32_MAX : static_cast<int32_t>(value);
}
