// Emission: how conversion rules write, and the helpers that several commands share.
//
// A rule reads the slots of the statement and writes text, nothing else. What the helpers note of a statement
// is valid until the next one. The slots are read under arg_cursor where it says so, by number elsewhere.
#pragma once

#include "analysis/arg_slots.h"
#include "rules/form.h"
#include "support/output.h"

#include <stdint.h>
#include <string.h>

// Writes a form. last_slot is where a list mark ends. The slot cursor stays where it is.
void emit_form(const form_code &form, int32_t last_slot = 0);

// Room for all the short pieces that a form or a tail may have. A longer piece finds its own room and makes
// this much again for those behind it.
constexpr size_t put_room = form_pieces_max * (sizeof(form_piece::head) + slot_text_slack);

// put_text for a text that isn't short.
char *put_long_text(char *place, const char *text, size_t size);

// Puts the text of a slot at a place in the output, see out_take_place. Gives the place behind it.
inline char *put_text(char *place, const arg_slot *slot)
{
    if (slot->text_size > slot_text_slack)
        return put_long_text(place, slot->text, slot->text_size);
    memcpy(place, slot->text, slot_text_slack);
    return place + slot->text_size;
}

// Puts ", " and the text of a slot; an empty text so leaves the place holder, ", " alone.
inline char *put_argument(char *place, const arg_slot *slot)
{
    memcpy(place, ", ", 2);
    return put_text(place + 2, slot);
}

// put_argument for a text that is known to be short.
inline char *put_short_argument(char *place, const arg_slot *slot)
{
    memcpy(place, ", ", 2);
    memcpy(place + 2, slot->text, slot_text_slack);
    return place + 2 + slot->text_size;
}

// The same for a single argument.
inline void emit_argument(const arg_slot *slot)
{
    out_give_place(put_argument(out_take_place(put_room), slot));
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
