// Number: conversions between widths, each with a defined result for every value.
#pragma once

#include <stdint.h>

// The low 32 bits of a number, read as a signed 32-bit integer.
inline int32_t wrap_int32(uint64_t value)
{
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

// A float as a 32-bit integer: truncated toward zero, then the low 32 bits as signed. NaN and anything
// outside the signed 64-bit range give 0.
int32_t int_from_double(double value);

// A double as a float, rounded; what is too large for one is infinite.
float float_from_double(double value);

// A leading decimal integer after white space and one optional sign, as atoi reads it; a value outside
// the 32-bit range gives the nearer end of that range, no number gives 0.
int32_t int_from_text(const char *text);
