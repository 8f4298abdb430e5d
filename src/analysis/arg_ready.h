// Ready arguments: those that need no change and lie in the source's buffer with what ends them. Their texts
// stay there. Whatever isn't ready is left where it is, to be gathered from its first character on.
#pragma once

#include <stdint.h>

// A list starts, or the source was read in another way.
void arg_ready_restart();

// Takes plain arguments, as long as one follows the other: at most count of them, by the positions at spec,
// as long as these are numeric. Gives how many it took, each stored and stepped behind; *last is the comma or
// line feed that ended the last of them, and *keep_absent is set if one of them is empty.
int32_t arg_take_plain(const uint8_t *spec, int32_t count, int *last, bool *keep_absent);

// Takes one argument, an empty one too. 1 if it did, 0 if it doesn't lie ready and nothing was taken, -1 if
// it did and can't be evaluated.
int arg_take_ready(uint8_t type, int *last, bool *empty);
