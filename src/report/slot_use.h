// What a rule has written of each argument, read from the marks of its forms.
#pragma once

#include <stdint.h>

// What the output of the last command holds of a slot of its statement, 0 if nothing. While the slots are as
// the statement left them.
constexpr unsigned USE_TEXT = 1;  // its text
constexpr unsigned USE_VALUE = 2; // a number or a word made of its value, in place of the text
unsigned slot_use(int32_t slot);
