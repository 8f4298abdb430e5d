#include "support/number.h"

#include "support/text.h"

#include <float.h>
#include <math.h>

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

int32_t int_from_text(const char *text, size_t size)
{
    const char *end = text + size;
    while (text < end && text_is(*text, CHAR_WHITE))
        text++;
    bool minus = text < end && *text == '-';
    if (text < end && (*text == '-' || *text == '+'))
        text++;
    int64_t value = 0;
    for (; text < end && text_is(*text, CHAR_DIGIT); text++)
        if (value <= INT32_MAX)
            value = value * 10 + (*text - '0');
    if (minus)
        return value > INT32_MAX ? INT32_MIN : static_cast<int32_t>(-value);
    return value > INT32_MAX ? INT32_MAX : static_cast<int32_t>(value);
}

double powers_of_ten[2 * powers_kept + 1];

double power_of_ten_slow(int32_t n)
{
    double power = pow(10.0, n);
    if (n >= -powers_kept && n <= powers_kept)
        powers_of_ten[n + powers_kept] = power;
    return power;
}
