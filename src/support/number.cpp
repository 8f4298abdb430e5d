#include "support/number.h"

#include "support/text.h"

#include <float.h>
#include <math.h>
#include <string.h>

#include <charconv>
#include <system_error>

float float_from_double(double value)
{
    // The largest float is the nearest one up to half a step beyond it.
    const double half_step = 10141204801825835211973625643008.0; // 2^103
    const double limit = static_cast<double>(FLT_MAX) + half_step;
    if (value >= limit || value <= -limit)
        return value > 0 ? HUGE_VALF : -HUGE_VALF;
    if (value > FLT_MAX || value < -FLT_MAX)
        return value > 0 ? FLT_MAX : -FLT_MAX;
    return static_cast<float>(value);
}

int32_t int_from_text(const char *text, size_t size)
{
    const char *end = text + size;
    while (text < end && text_is(*text, CHAR_WHITE))
        text++;
    if (end - text > 1 && *text == '+' && text[1] != '-')
        text++;
    int32_t value = 0;
    if (std::from_chars(text, end, value).ec == std::errc::result_out_of_range)
        return *text == '-' ? INT32_MIN : INT32_MAX;
    return value;
}

// ---- Numbers of expressions ----

constexpr int32_t powers_kept = 24;

// The digits of an octal or hexadecimal number.
static number_piece scan_based(const char *c, const char *end, unsigned digit_class, uint32_t base)
{
    uint32_t number = 0;
    for (; c < end && text_is(*c, digit_class); c++)
        number = number * base + static_cast<uint32_t>(digit_value(*c));
    return number_piece{static_cast<double>(wrap_int32(number)), c};
}

// Continues a number by the digits at its end: each is added in a double, with its rounding.
static number_piece scan_digits(number_piece number, const char *end)
{
    for (; number.end < end && text_is(*number.end, CHAR_DIGIT); number.end++)
        number.value = number.value * 10 + (*number.end - '0');
    return number;
}

// A number times a power of ten as pow computes it. The small powers are cached.
static double scaled(double number, uint32_t exponent)
{
    static double kept[2 * powers_kept + 1]; // 0: not computed yet
    int32_t n = wrap_int32(exponent);
    if (n < -powers_kept || n > powers_kept)
        return number * pow(10.0, n);
    double &power = kept[n + powers_kept];
    if (power == 0)
        power = pow(10.0, n);
    return number * power;
}

// Scales a number by a power and by the exponent at its end: e or d, an optional sign, optional digits.
static number_piece scan_exponent(number_piece number, const char *end, uint32_t power)
{
    const char *c = number.end + 1;
    bool minus = c < end && *c == '-';
    if (c < end && (*c == '-' || *c == '+'))
        c++;
    uint32_t exponent = 0;
    for (; c < end && text_is(*c, CHAR_DIGIT); c++)
        exponent = exponent * 10 + static_cast<uint32_t>(*c - '0');
    return number_piece{scaled(number.value, minus ? power - exponent : power + exponent), c};
}

number_piece number_scan(const char *text, const char *end)
{
    if (*text == '0' && end - text > 1) {
        if (text_is(text[1], CHAR_OCTAL))
            return scan_based(text + 1, end, CHAR_OCTAL, 8);
        if ((text[1] == 'x' || text[1] == 'X') && end - text > 2 && text_is(text[2], CHAR_HEX))
            return scan_based(text + 2, end, CHAR_HEX, 16);
    }
    number_piece number = scan_digits({0, text}, end);
    const char *point = number.end;
    if (point < end && *point == '.')
        number = scan_digits({number.value, point + 1}, end);
    uint32_t power = number.end > point ? static_cast<uint32_t>(point + 1 - number.end) : 0;
    if (number.end < end && ((*number.end | 0x20) == 'd' || (*number.end | 0x20) == 'e'))
        return scan_exponent(number, end, power);
    number.value = scaled(number.value, power);
    return number;
}
