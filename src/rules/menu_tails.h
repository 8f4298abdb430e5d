// The tails of the commands with a menu: nine strings that become one. Each has a pass over the old
// arguments, for the comment line, and one for the new line, which works from what the first pass noted in
// this statement.
#pragma once

#include <stdint.h>

// The comment pass over nine menu strings, with the cursor on the first one's slot: counts the ones that
// aren't empty, and writes each with a comma in front. The cursor stops on the first slot that holds no
// argument, at the latest after the ninth.
void emit_menu_comment();

// The same menu strings as one, quoted and joined by bars. types points to the arg_types byte of the first.
void emit_menu_string(const uint8_t *types);

// The last integer of a menu on the comment line, with the cursor on it.
void emit_menu_mode();

// GETMENU's arguments after its prompt, with the cursor on their first slot, on the comment line; and what
// follows the merged string on the new line, with the cursor on the last argument.
void emit_getmenu_comment();
void emit_getmenu_tail();

// GETCUR's arguments from the fourth on: on the comment line, with the cursor on its slot, and on the new
// line, with the cursor where the comment pass left it. types points to the arg_types byte of the fourth.
void emit_getcur_comment(const uint8_t *types);
void emit_getcur_tail(const uint8_t *types);
