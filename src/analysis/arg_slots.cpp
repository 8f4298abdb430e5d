#include "analysis/arg_slots.h"

#include "analysis/var_store.h"
#include "support/char_masks.h"
#include "support/text.h"

#include <string.h>

arg_slot arg_slots[arg_slots_size + arg_slots_cleared];
arg_slot *arg_cursor = arg_slots;
uint8_t arg_types[arg_types_size + 8];
uint8_t *arg_type_cursor = arg_types;

char slot_texts[slot_texts_size + slot_text_slack];
uint32_t slot_texts_used;
const char slot_no_text[1 + slot_text_slack] = "";

waiting_names slot_names[slot_names_size];
int32_t slot_names_used;
static int32_t names_earlier; // of these stretches, so many belong to earlier statements

arg_slot *slots_last = arg_slots;
bool slots_filling;

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

// ---- Values ----

void slot_store_value(arg_slot *slot, uint8_t type, double value)
{
    slot->holds = type;
    switch (type) {
    case ARG_LONG: slot->lval = int_from_double(value); break;
    case ARG_INT: slot->ival = int_from_double(value); break;
    case ARG_FLOAT: slot->fval = float_from_double(value); break;
    default: slot->dval = value; break;
    }
}

static void store_late_value(arg_slot *slot, double value)
{
    slot_store_value(slot, slot->holds & ARG_TYPE, value);
}

// Reads the name in a stretch whose end has the given number: its dimensions, or VAR_UNKNOWN.
static int32_t read_name(const waiting_names &stretch, unsigned end)
{
    unsigned start = highest_bit(stretch.starts & bits_through(end));
    return var_read_sized(stretch.text + start, end - start, nullptr);
}

// Selects the variable that reading the names of the first stretches would leave selected.
static void select_last(int32_t stretches)
{
    while (stretches-- > 0)
        for (uint64_t names = slot_names[stretches].names; names != 0;) {
            unsigned end = highest_bit(names);
            if (read_name(slot_names[stretches], end) != VAR_UNKNOWN)
                return;
            names ^= uint64_t{1} << end;
        }
}

// The slot whose argument ends at the given bit.
static arg_slot *slot_of(const waiting_names &stretch, uint64_t bit)
{
    arg_slot *slot = stretch.slot;
    for (uint64_t before = stretch.ends & (bit - 1); before != 0; before = without_lowest_bit(before))
        slot++;
    return slot;
}

void slot_names_read()
{
    var_unread = nullptr;
    select_last(names_earlier);
    for (int32_t i = names_earlier; i < slot_names_used; i++) {
        for (uint64_t names = slot_names[i].names; names != 0; names = without_lowest_bit(names)) {
            (void)read_name(slot_names[i], lowest_bit(names));
            store_late_value(slot_of(slot_names[i], names & (0 - names)), var_current.value);
        }
    }
    slot_names_used = names_earlier = 0;
}

// A statement starts: names that nobody asked for go on waiting, unless another variable was read since.
static void keep_earlier_names()
{
    names_earlier = slot_names_used = var_unread == nullptr ? 0 : slot_names_used;
    if (names_earlier > slot_names_earlier)
        slot_names_read();
}

void slots_leave_source()
{
    if (var_unread != nullptr)
        slot_names_read();
    slot_names_used = names_earlier = 0;
    for (arg_slot *slot = arg_slots + 1; slots_filling && slot <= arg_cursor; slot++)
        slot->text = slot_ended_text(slot);
}

void slots_start_statement()
{
    slot_texts_used = 0;
    keep_earlier_names();
    arg_type_cursor = arg_types;
    arg_cursor = arg_slots;
    slot_clear();
    arg_cursor->begin_mark = slot_mark;
}

// The number that a text spells: a sign, digits, a point, digits.
static double plain_number(const char *text)
{
    const char *c = text;
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

void slot_settle(const arg_slot *slot)
{
    if (text_is(slot->text[0], CHAR_LETTER))
        slot_names_read();
    else
        store_late_value(arg_slots + (slot - arg_slots), plain_number(slot->text));
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
            slot[i] = arg_slot{slot_no_text, {0}, 0, 0, slot_mark, HOLDS_NOTHING};
        slot += arg_slots_cleared;
    } while (slot <= dirty);
}

void slots_abandon_list()
{
    if (arg_cursor > slots_last)
        slots_last = arg_cursor;
}
