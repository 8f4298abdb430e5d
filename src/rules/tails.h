// Tails: the ends of lines whose commands share a way to rewrite their last arguments.
//
// A tail reads as many slots from the one it gets as its kind has, whether the command has so many arguments
// or not: after the statement's list they read as empty.
#pragma once

#include "statements/arg_slots.h"

#include <stdint.h>

// ---- Entity commands ----

constexpr int attr_span = 8;
constexpr int text_span = 15;

// Eight attributes: on a comment line the first seven, on a new line all but the first, with placeholders up
// to the last one that has a text.
void emit_attr_comment(const arg_slot *first);
void emit_attr_tail(const arg_slot *first);

// Fifteen attributes of a text: on a comment line those that have a text, on a new line the fourth first and
// the seventh, the style, in words.
void emit_text_comment(const arg_slot *first);
void emit_text_tail(const arg_slot *first);

// ---- Commands with a menu: nine strings that become one ----

// The strings on the comment line, each with a comma in front. Notes what emit_menu_string works from in the
// same statement. Stops at the first slot that holds no argument, at the latest after the ninth string, and
// returns it.
const arg_slot *emit_menu_comment(const arg_slot *first);

// The same strings as one, quoted and joined by bars. first is the slot of the first string's position.
void emit_menu_string(const arg_slot *first);

// The last integer of a menu on the comment line.
void emit_menu_mode(const arg_slot *mode);

// GETMENU's arguments after its prompt, on the comment line; and its last argument, on the new line.
void emit_getmenu_comment(const arg_slot *first);
void emit_getmenu_tail(const arg_slot *last);

// GETCUR's arguments from the fourth on: on the comment line, and from what that pass noted on the new line.
void emit_getcur_comment(const arg_slot *first);
void emit_getcur_tail(const arg_slot *first);

// ---- INPUT ----

// The number of variables that the conversions of a format consume.
int32_t scan_format_variables(const char *format, uint32_t size);

// The format, quoted, and the variables that its conversions consume. count is the argument count of the
// statement, the format itself included.
void emit_scan_format(const arg_slot *slot, int32_t count);
