// The writer of forms. Texts are never copied: they stay valid until the next statement.
#include "rules/emission.h"

#include <string.h>

// Room for all the short pieces that a form with a list may have.
constexpr size_t put_room = 4096;
static_assert(put_room >=
              form_pieces_max * 2 * slot_text_slack + arg_types_size * (form_joint_max + slot_text_slack));

static char *put_long(char *place, const char *text, size_t size)
{
    out_give_place(place);
    out_bytes(text, size);
    return out_take_place(put_room);
}

// Puts a text at a place in the output, see out_take_place, and gives the place after it. slot_text_slack
// bytes of it may be read: most are shorter, and copying so many is quicker than looking at how many there
// are. A longer one finds its own room and makes put_room again for those after it.
static inline char *put_text(char *place, const char *text, size_t size)
{
    if (size > slot_text_slack)
        return put_long(place, text, size);
    memcpy(place, text, slot_text_slack);
    return place + size;
}

static inline char *put_slot(char *place, const arg_slot *slot)
{
    return put_text(place, slot->text, slot->text_size);
}

void emit_arguments(const arg_slot *first, int32_t count)
{
    char *place = out_take_place(put_room);
    for (const arg_slot *slot = first; slot < first + count; slot++) {
        memcpy(place, ", ", 2);
        place = put_slot(place + 2, slot);
    }
    out_give_place(place);
}

static inline char *put_literal(char *place, const form_code &form, const form_piece *piece)
{
    bool short_one = piece->size <= sizeof piece->head;
    return put_text(place, short_one ? piece->head : form.text + piece->start, piece->size);
}

// Puts the slots of a list mark: up to the last one of the choice, or of MARK_ITEMS up to the first empty
// one, which follows the last one at the latest.
static char *put_list(char *place, const form_code &form, const form_piece *piece, int32_t last)
{
    bool items = piece->mark == MARK_ITEMS;
    const arg_slot *slot = arg_slots + piece->slot;
    for (; items ? slot->text_size > 0 : slot <= arg_slots + last; slot++)
        place = put_slot(put_literal(place, form, piece), slot);
    return place;
}

// Writes a number, or a tail with the cursor on its slot; GETCUR's second pass goes on where the first has
// left it.
static void emit_other(const form_piece *piece, const rule_choice &choice)
{
    arg_slot *slot = arg_slots + piece->slot;
    const uint8_t *types = arg_types + piece->slot - 1;
    if (piece->mark != TAIL_GETCUR)
        arg_cursor = slot;
    switch (piece->mark) {
    case MARK_IF_SET:
    case MARK_LVAL: out_format("%d", slot_lval(slot)); break;
    case MARK_IVAL: out_format("%d", slot_ival(slot)); break;
    case MARK_DVAL: out_format("%f", slot_dval(slot)); break;
    case MARK_NUMBER: out_format("%d", choice.number); break;
    case TAIL_ATTR_COMMENT: emit_attr_comment(); break;
    case TAIL_ATTR: emit_attr_tail(); break;
    case TAIL_TEXT_COMMENT: emit_text_comment(); break;
    case TAIL_TEXT: emit_text_tail(types); break;
    case TAIL_MENU_COMMENT: emit_menu_comment(); break;
    case TAIL_MENU_MODE: emit_menu_mode(); break;
    case TAIL_MENU: emit_menu_string(types); break;
    case TAIL_GETMENU_COMMENT: emit_getmenu_comment(); break;
    case TAIL_GETMENU: emit_getmenu_tail(); break;
    case TAIL_GETCUR_COMMENT: emit_getcur_comment(); break;
    case TAIL_GETCUR: emit_getcur_tail(); break;
    case TAIL_SCAN: emit_scan_format(choice.last); break;
    default: break;
    }
}

void emit_form(const form_code &form, const rule_choice &choice)
{
    char *place = out_take_place(put_room);
    const form_piece *end = form.pieces + form.pieces_used;
    for (const form_piece *piece = form.pieces; piece < end; piece++) {
        const arg_slot *slot = arg_slots + piece->slot;
        switch (piece->mark) {
        case MARK_NONE: place = put_literal(place, form, piece); break;
        case MARK_TEXT: place = put_slot(put_literal(place, form, piece), slot); break;
        case MARK_IF_ANY:
            if (slot->text_size > 0)
                place = put_slot(put_literal(place, form, piece), slot);
            break;
        case MARK_LIST:
        case MARK_ITEMS: place = put_list(place, form, piece, choice.last); break;
        default:
            if (piece->mark == MARK_IF_SET && slot_lval(slot) == 0)
                break;
            out_give_place(put_literal(place, form, piece));
            emit_other(piece, choice);
            place = out_take_place(put_room);
            break;
        }
    }
    out_give_place(place);
}

int32_t take_bounded_int(uint8_t type_byte, int32_t low, int32_t high)
{
    if ((type_byte & ARG_ABSENT) != 0)
        return 0;
    int32_t value = slot_lval(take_text());
    return value >= low && value <= high ? value : 0;
}
