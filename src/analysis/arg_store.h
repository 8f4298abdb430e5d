// Storing: what becomes of an argument that was read, in whichever way.
//
// Here is also what is left of the argument store, its size: a statement's values of type 4 take room in it
// from the bottom up, its strings from the top down, and where they meet the fetch fails. The texts
// themselves stay in the source or in slot_texts, the values in the slots.
#pragma once

#include "analysis/arg_slots.h"

#include <stdint.h>

// What ends an argument, whichever line end the source has.
constexpr int arg_comma = ',';
constexpr int arg_line_feed = '\n';

constexpr int32_t arg_pool_values_max = 8 * arg_types_size; // bytes of arg_pool that values can take
extern int32_t arg_pool_top;                                // where in arg_pool the strings begin

// The slot whose text line_buf should hold after a failure and doesn't yet; null: it does.
extern const arg_slot *arg_line_owed;

inline bool arg_is_numeric(unsigned type)
{
    return type >= ARG_LONG && type <= ARG_DOUBLE;
}

// True if arg_pool has no room for another value of type 4.
bool arg_pool_lacks_value();

// Takes the room in arg_pool for a string of size characters and a NUL. False if there is none.
bool arg_pool_take_string(uint32_t size);

// Stores the text in line_buf. The text of an empty string is empty, but it has a str.
bool arg_store_text(bool quoted);

// Stores the numeric argument in line_buf, which isn't empty.
bool arg_store_number(uint8_t type);

// Evaluates the number in line_buf, whose text the slot has by now.
bool arg_evaluate(uint8_t type);
