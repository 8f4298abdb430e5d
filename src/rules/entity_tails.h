// The tails of the entity commands: what follows the fixed arguments. A tail reads so many slots as its name
// says, from the cursor on, whether the command has so many arguments or not.
#pragma once

#include <stdint.h>

constexpr int attr_span = 8;
constexpr int text_span = 15;

// Eight attributes: on a comment line the first seven, on a new line all but the first, with placeholders up
// to the last one that is there.
void emit_attr_comment();
void emit_attr_tail();

// Fifteen attributes of a text: on a comment line those that are there, on a new line the fourth first and
// the seventh, the style, in words. types points to the arg_types byte of the first.
void emit_text_comment();
void emit_text_tail(const uint8_t *types);
