// The writer of forms. Texts are never copied: they stay valid until the next statement.
#include "rules/emission.h"

// Writes the joint of a piece and the text of a slot.
static void emit_joined(const form_code &form, const form_piece *piece, const arg_slot *slot)
{
    out_bytes(form.text + piece->start + piece->size + 1, piece->joint);
    emit_text(slot);
}

static void emit_if_set(const form_code &form, const form_piece *piece, int32_t value)
{
    if (value == 0)
        return;
    out_bytes(form.text + piece->start + piece->size + 1, piece->joint);
    out_format("%d", value);
}

// Writes the slots of a list mark: up to the last one of the choice, or of MARK_ITEMS up to the first empty
// one, which follows the last one at the latest.
static void emit_list(const form_code &form, const form_piece *piece, int32_t last)
{
    bool items = piece->mark == MARK_ITEMS;
    const arg_slot *slot = arg_slots + piece->slot;
    for (; items ? slot->text_size > 0 : slot <= arg_slots + last; slot++)
        emit_joined(form, piece, slot);
}

// Writes a tail. Those that begin a pass put the cursor on their slot, the others find it where the pass has
// left it.
static void emit_tail(const form_piece *piece, const rule_choice &choice)
{
    arg_slot *slot = arg_slots + piece->slot;
    const uint8_t *types = arg_types + piece->slot - 1;
    switch (piece->mark) {
    case TAIL_MENU_MODE: emit_menu_mode(); return;
    case TAIL_MENU: emit_menu_string(types); return;
    case TAIL_GETMENU: emit_getmenu_tail(slot); return;
    case TAIL_GETCUR: emit_getcur_tail(); return;
    default: break;
    }
    arg_cursor = slot;
    switch (piece->mark) {
    case TAIL_ATTR_COMMENT: emit_attr_comment(); break;
    case TAIL_ATTR: emit_attr_tail(); break;
    case TAIL_TEXT_COMMENT: emit_text_comment(); break;
    case TAIL_TEXT: emit_text_tail(types); break;
    case TAIL_MENU_COMMENT: emit_menu_comment(); break;
    case TAIL_GETMENU_COMMENT: emit_getmenu_comment(); break;
    case TAIL_GETCUR_COMMENT: emit_getcur_comment(); break;
    case TAIL_SCAN: emit_scan_format(choice.last); break;
    default: break;
    }
}

static void emit_mark(const form_code &form, const form_piece *piece, const rule_choice &choice)
{
    const arg_slot *slot = arg_slots + piece->slot;
    switch (piece->mark) {
    case MARK_NONE: break;
    case MARK_TEXT: emit_text(slot); break;
    case MARK_LVAL: out_format("%d", slot_lval(slot)); break;
    case MARK_IVAL: out_format("%d", slot_ival(slot)); break;
    case MARK_DVAL: out_format("%f", slot_dval(slot)); break;
    case MARK_NUMBER: out_format("%d", choice.number); break;
    case MARK_IF_ANY:
        if (slot->text_size > 0)
            emit_joined(form, piece, slot);
        break;
    case MARK_IF_SET: emit_if_set(form, piece, slot_lval(slot)); break;
    case MARK_LIST:
    case MARK_ITEMS: emit_list(form, piece, choice.last); break;
    default: emit_tail(piece, choice); break;
    }
}

void emit_form(const form_code &form, const rule_choice &choice)
{
    const form_piece *end = form.pieces + form.pieces_used;
    for (const form_piece *piece = form.pieces; piece < end; piece++) {
        if (piece->size <= sizeof piece->head)
            out_padded(piece->head, piece->size);
        else
            out_bytes(form.text + piece->start, piece->size);
        emit_mark(form, piece, choice);
    }
}

int32_t take_bounded_int(uint8_t type_byte, int32_t low, int32_t high)
{
    if ((type_byte & ARG_ABSENT) != 0)
        return 0;
    int32_t value = slot_lval(take_text());
    return value >= low && value <= high ? value : 0;
}
