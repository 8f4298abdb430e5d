// Number: conversions between widths, each with a defined result for every value.
#pragma once

#include <stddef.h>
#include <stdint.h>

// The low 32 bits of a number, read as a signed 32-bit integer.
inline int32_t wrap_int32(uint64_t value)
{
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

// A float as a 32-bit integer: truncated toward zero, then the low 32 bits as signed. NaN and anything
// outside the signed 64-bit range return 0.
inline int32_t int_from_double(double value)
{
    // 2^63 itself is outside; the comparison is false for NaN.
    const double limit = 9223372036854775808.0;
    if (!(value >= -limit && value < limit))
        return 0;
    return wrap_int32(static_cast<uint64_t>(static_cast<int64_t>(value)));
}

// A double as a float, rounded; what is too large for one is infinite.
float float_from_double(double value);

// The decimal integer that a text of size characters begins with, as atoi reads it. Returns the nearer end of
// the range for a value outside 32 bits, 0 for no number.
int32_t int_from_text(const char *text, size_t size);

// Scans a number of an expression, whose first character is a digit or a point: octal after a 0, hexadecimal
// after 0x, both as 32-bit signed integers, wrapping; or digits with one point at most, and perhaps an
// exponent after e or d.
struct number_piece {
    double value;
    const char *end; // after it, at the latest the text's end
};
number_piece number_scan(const char *text, const char *end);
