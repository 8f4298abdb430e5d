#include "report/slot_use.h"

#include "rules/rule_table.h"
#include "rules/tails.h"
#include "statements/arg_slots.h"

// Slots of a menu: nine strings; GETMENU's two integers after them.
constexpr int32_t menu_span = 9;
constexpr int32_t getmenu_span = 11;

// GETCUR's comment takes its slots one after the other, and what it passes over at the end it doesn't write.
static unsigned getcur_use(int32_t slot)
{
    constexpr int32_t optional_span = 5;
    int32_t end = 4 + menu_span;
    for (int32_t i = 0; i < optional_span; i++)
        end += (arg_types[3 + i] & ARG_ABSENT) == 0 ? 1 : 0;
    return slot < end ? USE_TEXT : 0;
}

// Whether a scan format has a conversion for the variable in a slot.
static unsigned scan_use(const rule_choice &choice, int32_t slot)
{
    uint32_t size = 0;
    const char *format = slot_str(arg_slots + 1, &size);
    return slot == 1 || (slot <= choice.last && slot - 1 <= scan_format_variables(format, size)) ? USE_TEXT
                                                                                                 : 0;
}

// Whether the items from a slot on, up to the first empty one, hold another slot.
static unsigned items_use(int32_t first, int32_t slot)
{
    for (int32_t i = first; arg_slots[i].text_size > 0; i++)
        if (i == slot)
            return USE_TEXT;
    return 0;
}

// What a mark writes of a slot. at is the place of the slot counted from the mark's own.
static unsigned mark_use(const form_piece &piece, const rule_choice &choice, int32_t slot)
{
    int32_t at = slot - piece.slot;
    if (at < 0)
        return 0;
    switch (piece.kind) {
    case PUT_TEXT:
    case PUT_IF_ANY: return at == 0 ? USE_TEXT : 0;
    case PUT_LVAL:
    case PUT_IVAL:
    case PUT_DVAL:
    case PUT_NUMBER:
    case PUT_IF_SET: return at == 0 ? USE_VALUE : 0;
    case PUT_LIST: return slot <= choice.last ? USE_TEXT : 0;
    case PUT_ITEMS: return items_use(piece.slot, slot);
    case TAIL_ATTR_COMMENT: return at < attr_span - 1 ? USE_TEXT : 0;
    case TAIL_ATTR: return at > 0 && at < attr_span ? USE_TEXT : 0;
    case TAIL_TEXT_COMMENT: return at < text_span && at != 10 ? USE_TEXT : 0;
    case TAIL_TEXT: return at == 6 ? USE_VALUE : at < text_span ? USE_TEXT : 0;
    case TAIL_MENU_COMMENT: return at < menu_span ? USE_TEXT : 0;
    case TAIL_GETMENU_COMMENT: return at < getmenu_span ? USE_TEXT : 0;
    case TAIL_GETCUR_COMMENT: return getcur_use(slot);
    case TAIL_SCAN: return scan_use(choice, slot);
    default: return 0;
    }
}

static unsigned form_use(const form_code &form, const rule_choice &choice, int32_t slot)
{
    unsigned use = 0;
    for (int i = 0; i < form.pieces_used; i++)
        use |= mark_use(form.pieces[i], choice, slot);
    return use;
}

unsigned slot_use(int32_t slot)
{
    const rule_row *row = rule_last.row;
    if (row == nullptr)
        return 0;
    unsigned use = form_use(row->new_form, rule_last.choice, slot);
    return row->tip == nullptr ? use : use | form_use(*row->tip, rule_last.choice, slot);
}
