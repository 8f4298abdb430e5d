#include "statements/arg_slots.h"

#include "support/number.h"

#include <assert.h>

arg_slot arg_slots[arg_slots_size];
uint8_t arg_types[arg_types_size];
const char slot_no_text[1 + slot_text_slack] = "";

// No slot is cleared at first.
arg_slot *slots_last = arg_slots + arg_slots_size - 1;

void slot_set_word(const char *word, uint32_t size)
{
    arg_slots[0] = arg_slot{word, 0, size, slot_unfilled, HOLDS_NOTHING};
}

double slot_number(const arg_slot *slot)
{
    if ((slot->holds & HOLDS_PLAIN) == 0)
        return slot->value;
    bool minus = slot->text[0] == '-';
    double value = number_scan(slot->text + minus, slot->text + slot->text_size).value;
    return minus ? -value : value;
}

const char *slot_str(const arg_slot *slot, uint32_t *size)
{
    // The text of an empty string has no quotes.
    uint32_t quotes = slot->holds == HOLDS_STRING && slot->text_size > 0 ? 1 : 0;
    *size = slot->text_size - 2 * quotes;
    return slot->holds == HOLDS_STRING || slot->holds == HOLDS_RAW ? slot->text + quotes : nullptr;
}

void slots_end_list(arg_slot *end)
{
    assert(end > arg_slots && end < arg_slots + arg_slots_size);
    for (arg_slot *slot = end; slot <= slots_last; slot++)
        *slot = slot_cleared;
    slots_last = end;
}
