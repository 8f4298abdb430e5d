// Emission: how conversion rules write, and the tails that several commands share.
//
// A rule reads the slots of the statement and writes text, nothing else. What a comment pass notes of a
// statement is valid until the next one. A routine that reads the slots under arg_cursor leaves the cursor
// after them.
#pragma once

#include "rules/form.h"
#include "statements/arg_slots.h"
#include "support/output.h"

#include <stdint.h>

// What is settled of a statement before its rule writes.
struct rule_choice {
    int32_t row;    // which of the rows of its id, from 0
    int32_t last;   // the last slot of a list mark; at first the argument count
    int32_t number; // what {N} writes
};

// Writes a form.
void emit_form(const form_code &form, const rule_choice &choice);

// The slot under the cursor, whose text it is; the cursor steps to the next.
inline const arg_slot *take_text()
{
    return arg_cursor++;
}

// Reads a bounded integer: 0 with no step of the cursor if type_byte has ARG_ABSENT; otherwise the cursor
// steps over its slot, and the result is that slot's lval, or 0 if it is outside low to high.
int32_t take_bounded_int(uint8_t type_byte, int32_t low, int32_t high);

// The text of a slot.
inline void emit_text(const arg_slot *slot)
{
    out_bytes(slot->text, slot->text_size);
}

// The texts of slots, each with ", " in front; an empty text so leaves the place holder, ", " alone.
void emit_arguments(const arg_slot *first, int32_t count);

inline void emit_argument(const arg_slot *slot)
{
    emit_arguments(slot, 1);
}

// ---- Tails of the entity commands ----

constexpr int attr_span = 8;
constexpr int text_span = 15;

// Eight attributes, with the cursor on the first: on a comment line the first seven, on a new line all but
// the first, with place holders up to the last one that is there.
void emit_attr_comment();
void emit_attr_tail();

// Fifteen attributes of a text, with the cursor on the first: on a comment line those that are there, on a
// new line the fourth first and the seventh, the style, in words. types points to the arg_types byte of the
// first.
void emit_text_comment();
void emit_text_tail(const uint8_t *types);

// ---- Tails of the commands with a menu ----

// The comment pass over nine menu strings, with the cursor on the first one's slot: notes where they stand,
// counts the ones that aren't empty, and writes each with a comma in front. The cursor stops on the first
// slot that holds no argument, at the latest after the ninth.
void emit_menu_comment();

// The same menu strings as one, quoted and joined by bars. types points to the arg_types byte of the first.
// Works from what emit_menu_comment noted in this statement.
void emit_menu_string(const uint8_t *types);

// The last integer of a menu on the comment line, with the cursor on it.
void emit_menu_mode();

// GETMENU's arguments after its prompt, with the cursor on slot 2, on the comment line; and what follows the
// merged string on the new line, with the cursor on the last argument.
void emit_getmenu_comment();
void emit_getmenu_tail();

// The two passes over GETCUR's arguments after its third, with the cursor on slot 4: on the comment line, and
// on the new line.
void emit_getcur_comment();
void emit_getcur_tail();

// ---- INPUT ----

// The variables that the conversions of a scan format consume.
int32_t scan_format_variables(const char *format, uint32_t size);

// INPUT's format string, quoted again, and the variables that its conversions consume, with the cursor on
// slot 1. count is the argument count of the statement, the format itself included.
void emit_scan_format(int32_t count);
