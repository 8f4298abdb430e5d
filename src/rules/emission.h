// Emission: how conversion rules write, and the helpers that several commands share.
//
// A rule reads the slots of the statement and writes text, nothing else. What the helpers note of a statement
// is valid until the next one. The slots are read under arg_cursor where it says so, by number elsewhere.
#pragma once

#include "analysis/arg_slots.h"
#include "rules/form.h"
#include "support/output.h"

#include <stdint.h>

// Writes a form. last_slot is where a list mark ends. The slot cursor stays where it is.
void emit_form(const form_code &form, int32_t last_slot = 0);

// Writes ", " and the text of a slot; an empty text so leaves the place holder, ", " alone.
inline void emit_argument(const arg_slot *slot)
{
    out_bytes(", ", 2);
    out_bytes(slot->text, slot->text_size);
}

// Reads a bounded integer: 0 with no step of the cursor if type_byte has ARG_ABSENT; otherwise the cursor
// steps over its slot, and the result is that slot's lval, or 0 if it lies outside low to high.
int32_t take_bounded_int(uint8_t type_byte, int32_t low, int32_t high);

// The comment pass over nine menu strings, with the cursor on the first one's slot: notes where they stand,
// counts the ones that aren't empty, and writes each with a comma in front. The cursor stops on the first
// slot that holds no argument, at the latest behind the ninth.
void emit_menu_comment();

// The same menu strings as one, quoted and joined by bars. types points to the arg_types byte of the first.
// Works from what emit_menu_comment noted in this statement.
void emit_menu_string(const uint8_t *types);

// The rule of GETMENU, with the cursor on slot 1. types points to the first arg_types byte.
void conv_getmenu(const uint8_t *types);

// The two passes over GETCUR's arguments behind its third, with the cursor on slot 4: on the comment line,
// and on the new line.
void emit_getcur_comment();
void emit_getcur_tail();

// INPUT's format string, quoted again, and the variables that its conversions consume, with the cursor on
// slot 1. count is the argument count of the statement, the format itself included.
void emit_scan_format(int32_t count);
