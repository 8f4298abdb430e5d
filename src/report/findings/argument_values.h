// Values of arguments: which are the same wherever the statement is, and which of them the output has.
#pragma once

#include "report/findings/statement.h"

#include <stdint.h>

#include <string_view>

// True if an expression has the same value wherever it is: it names no variable.
bool expression_is_constant(std::string_view text);

// True of a constant 0.
bool is_constant_zero(int32_t position);

// True of the value of a constant that is written as it is, or as the new form has it.
bool is_whole_value(int32_t position, const argument_use &use);
