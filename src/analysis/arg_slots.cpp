#include "analysis/arg_slots.h"

#include "support/text.h"

#include <string.h>

arg_slot arg_slots[arg_slots_size];
arg_slot *arg_cursor = arg_slots;
uint8_t arg_types[arg_types_size];
uint8_t *arg_type_cursor = arg_types;

char slot_texts[slot_texts_size + slot_text_slack];
uint32_t slot_texts_used;
const char slot_no_text[1 + slot_text_slack] = "";

// The first slot from which on all slots are clear: what lies there was never written or was cleared.
static arg_slot *clear_from = arg_slots;

void slots_start_statement()
{
    slot_texts_used = 0;
    arg_type_cursor = arg_types;
    arg_cursor = arg_slots;
    slot_clear();
    arg_cursor->begin_mark = slot_mark;
}

void slot_set_word(const char *word)
{
    auto size = static_cast<uint32_t>(strlen(word));
    arg_slots[0].text = static_cast<char *>(memcpy(slot_text_room(size), word, size + 1));
    arg_slots[0].text_size = size;
}

double slot_plain_number(const arg_slot *slot)
{
    const char *c = slot->text;
    bool minus = *c == '-';
    c += minus;
    double mantissa = 0;
    int32_t fraction_digits = 0;
    for (; text_is(*c, CHAR_DIGIT); c++)
        mantissa = mantissa * 10 + (*c - '0');
    if (*c == '.')
        for (c++; text_is(*c, CHAR_DIGIT); c++, fraction_digits++)
            mantissa = mantissa * 10 + (*c - '0');
    double value = mantissa * power_of_ten(-fraction_digits);
    return minus ? -value : value;
}

void slots_end_list()
{
    arg_slot *last = arg_cursor;
    // A slot that was never written has no text yet: at the first statement all of them are cleared.
    arg_slot *end = arg_slots[arg_slots_size - 1].text == nullptr ? arg_slots + arg_slots_size : clear_from;
    while (++arg_cursor < end)
        slot_clear();
    clear_from = last + 1;
    arg_cursor = last;
}

void slots_abandon_list()
{
    if (arg_cursor >= clear_from)
        clear_from = arg_cursor + 1;
}
