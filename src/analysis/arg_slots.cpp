#include "analysis/arg_slots.h"

#include <string.h>

// All texts of one statement lie here back to back, each with its NUL: the word (127 characters), the
// numeric arguments (100 of 251 characters at the most), and the others (as many characters as arg_pool
// has bytes) with a pair of quotes each. Keeping them together keeps a short statement in few cache lines.
constexpr uint32_t text_store_size = 128 + arg_types_size * (arg_text_room + 1 + 2) + 3008;

arg_slot arg_slots[arg_slots_size];
arg_slot *arg_cursor = arg_slots;
uint8_t arg_types[arg_types_size];
uint8_t *arg_type_cursor = arg_types;

static char text_store[text_store_size];
static uint32_t text_store_used; // bytes of text_store that the statement has taken

// The first slot from which on all slots are clear: what lies there was never written or was cleared.
static arg_slot *clear_from = arg_slots;

char *slot_text_room(uint32_t size)
{
    char *room = text_store + text_store_used;
    text_store_used += size + 1;
    return room;
}

void slot_clear()
{
    *arg_cursor = arg_slot{"", nullptr, nullptr, 0, 0, slot_mark, 0, 0, 0};
}

void slot_advance()
{
    arg_cursor++;
    slot_clear();
}

void slots_start_statement()
{
    text_store_used = 0;
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
