// Tails: the ends of lines, for commands that share a way to rewrite their last arguments.
//
// A tail reads a fixed number of slots from the one it gets; those after the statement's last are cleared.
#pragma once

#include "statements/arg_slots.h"

#include <stdint.h>

// ---- Entity commands ----

constexpr int attr_count = 8;
constexpr int text_attr_count = 15;

// Eight attributes: on a comment line the first seven, on a new line all but the first, with placeholders up
// to the last one that has a text.
void emit_attr_comment(const arg_slot *first);
void emit_attr_tail(const arg_slot *first);

// Fifteen attributes of a text: on a comment line those that have a text, on a new line the fourth first and
// the seventh, the style, in words.
void emit_text_comment(const arg_slot *first);
void emit_text_tail(const arg_slot *first);

// ---- Commands with a menu: nine strings that become one ----

// The strings on the comment line, each after a comma, up to the first slot without an argument or the ninth
// string. Keeps what emit_menu_string needs for the same statement. Returns the slot after them.
const arg_slot *emit_menu_comment(const arg_slot *first);

// The same strings as one, quoted and joined by bars. first is the slot of the first string's position.
void emit_menu_string(const arg_slot *first);

// The last integer of a menu on the comment line.
void emit_menu_mode(const arg_slot *mode);

// GETMENU's arguments after its prompt, on the comment line; and its last argument, on the new line.
void emit_getmenu_comment(const arg_slot *first);
void emit_getmenu_tail(const arg_slot *last);

// GETCUR's arguments from the fourth on: on the comment line, which keeps what the new line needs.
void emit_getcur_comment(const arg_slot *first);
void emit_getcur_tail(const arg_slot *first);

// ---- INPUT ----

// The number of variables that the conversions of a format consume.
int32_t scan_format_variables(const char *format, uint32_t size);

// The format, quoted, and the variables that its conversions consume. count is the argument count of the
// statement, the format itself included.
void emit_scan_format(const arg_slot *slot, int32_t count);
