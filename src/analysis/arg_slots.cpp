#include "analysis/arg_slots.h"

#include <string.h>

arg_slot arg_slots[arg_slots_size + arg_slots_cleared];
arg_slot *arg_cursor = arg_slots;
uint8_t arg_types[arg_types_size + 8];
uint8_t *arg_type_cursor = arg_types;

char slot_texts[slot_texts_size + slot_text_slack];
uint32_t slot_texts_used;
const char slot_no_text[1 + slot_text_slack] = "";

arg_slot *slots_last = arg_slots;

void slot_set_word(const char *word, uint32_t size)
{
    arg_slots[0].text = word;
    arg_slots[0].text_size = size;
}

// ---- Texts ----

// Tells whether a text lies in slot_texts.
static bool text_is_kept(const char *text)
{
    auto place = reinterpret_cast<uintptr_t>(text);
    auto start = reinterpret_cast<uintptr_t>(slot_texts);
    return place >= start && place < start + slot_texts_size;
}

const char *slot_ended_text(arg_slot *slot)
{
    if (slot->text_size == 0)
        return slot_no_text;
    if (!text_is_kept(slot->text)) {
        char *room = slot_text_room(slot->text_size);
        memcpy(room, slot->text, slot->text_size);
        room[slot->text_size] = 0;
        slot->text = room;
    }
    return slot->text;
}

const char *slot_str(const arg_slot *slot, uint32_t *size)
{
    // The text of an empty string has no quotes.
    uint32_t quotes = slot->holds == HOLDS_STRING && slot->text_size > 0 ? 1 : 0;
    *size = slot->text_size - 2 * quotes;
    return slot->holds == HOLDS_STRING || slot->holds == HOLDS_RAW ? slot->text + quotes : nullptr;
}

void slots_start_statement()
{
    slot_texts_used = 0;
    arg_type_cursor = arg_types;
    arg_cursor = arg_slots;
    slot_clear();
}

// ---- The end of the list ----

void slots_end_list()
{
    // A slot that was never written has no text yet: at the first statement all of them are cleared.
    arg_slot *dirty =
        arg_slots[arg_slots_size - 1].text == nullptr ? arg_slots + arg_slots_size - 1 : slots_last;
    arg_slot *slot = arg_cursor + 1;
    slots_last = arg_cursor;
    // How many there are can't be foreseen; as a rule one turn clears more than enough.
    do {
        for (int i = 0; i < arg_slots_cleared; i++)
            slot[i] = arg_slot{slot_no_text, 0, 0, slot_mark, HOLDS_NOTHING};
        slot += arg_slots_cleared;
    } while (slot <= dirty);
}

void slots_abandon_list()
{
    if (arg_cursor > slots_last)
        slots_last = arg_cursor;
}
