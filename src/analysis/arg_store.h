// Storing: what becomes of an argument that was read, in whichever way.
//
// Here is also what is left of the argument store, its size: a statement's values of type 4 take room in it
// from the bottom up, its strings from the top down, and where they meet the fetch fails. The texts
// themselves stay in the source or in slot_texts, the values in the slots.
#pragma once

#include "analysis/arg_slots.h"

#include <stdint.h>

inline bool arg_is_numeric(unsigned type)
{
    return type >= ARG_LONG && type <= ARG_DOUBLE;
}

// Empties the argument store.
void arg_store_start();

// Stores the text in line_buf. The text of an empty string is empty, but it has a str.
bool arg_store_text(bool quoted);

// Stores the numeric argument in line_buf, which isn't empty.
bool arg_store_number(uint8_t type);
