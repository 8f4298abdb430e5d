#include "rules/emission.h"

#include "rules/slot_writer.h"
#include "rules/tails.h"

#include <assert.h>

static_assert(put_reserve >= form_pieces_max * 2 * slot_text_slack +
                                 arg_types_size * (form_separator_max + slot_text_slack));

static inline char *put_literal(char *output, const form_code &form, const form_piece *piece)
{
    bool short_one = piece->size <= sizeof piece->head;
    return put_text(output, short_one ? piece->head : form.text + piece->start, piece->size);
}

// Writes the slots of a list: up to the last one of the choice, or for PUT_ITEMS up to the first empty one;
// the slots after the statement's are empty.
static char *put_list(char *output, const form_code &form, const form_piece *piece, int32_t last)
{
    bool items = piece->kind == PUT_ITEMS;
    const arg_slot *slot = arg_slots + piece->slot;
    for (; items ? slot->text_size > 0 : slot <= arg_slots + last; slot++)
        output = put_slot(put_literal(output, form, piece), slot);
    return output;
}

// Writes a number made of a slot.
static void emit_number(form_kind kind, const rule_choice &choice, const arg_slot *slot)
{
    uint64_t from = out_tell();
    switch (kind) {
    case PUT_IVAL: out_format("%d", slot_ival(slot)); break;
    case PUT_DVAL: out_format("%f", slot_dval(slot)); break;
    case PUT_NUMBER: out_format("%d", choice.number); break;
    default: out_format("%d", slot_lval(slot)); break;
    }
    emit_report(slot, kind == PUT_NUMBER ? EMIT_CODE : EMIT_VALUE, from, out_tell());
}

// Writes a number or a tail.
static void emit_other(form_kind kind, const rule_choice &choice, const arg_slot *slot)
{
    switch (kind) {
    case PUT_IF_SET:
    case PUT_LVAL:
    case PUT_IVAL:
    case PUT_DVAL:
    case PUT_NUMBER: emit_number(kind, choice, slot); break;
    case TAIL_ATTR_COMMENT: emit_attr_comment(slot); break;
    case TAIL_ATTR: emit_attr_tail(slot); break;
    case TAIL_TEXT_COMMENT: emit_text_comment(slot); break;
    case TAIL_TEXT: emit_text_tail(slot); break;
    case TAIL_MENU_COMMENT: emit_menu_comment(slot); break;
    case TAIL_MENU_MODE: emit_menu_mode(slot); break;
    case TAIL_MENU: emit_menu_string(slot); break;
    case TAIL_GETMENU_COMMENT: emit_getmenu_comment(slot); break;
    case TAIL_GETMENU: emit_getmenu_tail(slot); break;
    case TAIL_GETCUR_COMMENT: emit_getcur_comment(slot); break;
    case TAIL_GETCUR: emit_getcur_tail(slot); break;
    case TAIL_SCAN: emit_scan_format(slot, choice.last); break;
    default: assert(false && "emit_form writes these"); break;
    }
}

void emit_form(const form_code &form, const rule_choice &choice)
{
    char *output = out_reserve(put_reserve);
    const form_piece *end = form.pieces + form.pieces_used;
    for (const form_piece *piece = form.pieces; piece < end; piece++) {
        const arg_slot *slot = arg_slots + piece->slot;
        switch (piece->kind) {
        case PUT_LITERAL: output = put_literal(output, form, piece); break;
        case PUT_TEXT: output = put_slot(put_literal(output, form, piece), slot); break;
        case PUT_IF_ANY:
            if (slot->text_size > 0)
                output = put_slot(put_literal(output, form, piece), slot);
            break;
        case PUT_LIST:
        case PUT_ITEMS: output = put_list(output, form, piece, choice.last); break;
        default:
            if (piece->kind == PUT_IF_SET && slot_lval(slot) == 0)
                break;
            out_commit(put_literal(output, form, piece));
            emit_other(piece->kind, choice, slot);
            output = out_reserve(put_reserve);
            break;
        }
    }
    out_commit(output);
}
