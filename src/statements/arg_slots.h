// Argument slots: the fetched arguments of the current statement.
//
// The fetcher fills the slots, the rules read them. They are valid until the next statement starts. Slot 0
// holds the command word, slot i+1 belongs to spec position i. The slots after the statement's last one are
// cleared, so a rule may read a fixed number of slots, more than the statement has.
#pragma once

#include "statements/command_rows.h"
#include "support/number.h"

#include <stdint.h>

// Flag of an arg_types byte: the argument was left out or empty.
constexpr uint8_t ARG_ABSENT = 16;

// The state of a slot without an argument: the end of the list.
constexpr int16_t slot_unfilled = 999;

constexpr int arg_types_size = 100;   // spec positions that one statement may walk
constexpr int numeric_text_max = 251; // characters that the text of a numeric argument may have

// Slots: the word, every argument, the end of the list, and as many after it as the widest rule reads.
constexpr int arg_slots_size = 1 + arg_types_size + 1 + 26;

// What a slot has beside its text.
enum : uint8_t {
    HOLDS_NOTHING = 0,
    HOLDS_LONG = ARG_LONG, // a value of that type
    HOLDS_INT = ARG_INT,
    HOLDS_FLOAT = ARG_FLOAT,
    HOLDS_DOUBLE = ARG_DOUBLE,
    HOLDS_RAW = 5,    // str, which is the text
    HOLDS_STRING = 6, // str, which is the text without its quotes
    HOLDS_PLAIN = 16  // beside a type: the text is a plain number, and slot_number reads the value from it
};

// One argument. slot_lval and its like read the values. Its text is a piece of the source's window,
// with no NUL after it; slot_text_slack bytes after it may be read.
struct arg_slot {
    const char *text;   // for the output: as typed, a quoted string decoded and between double quotes
    double value;       // what a numeric argument evaluated to
    uint32_t text_size; // length of text
    int16_t state;      // 0: a fetched argument, an empty one too; slot_unfilled: no argument here
    uint8_t holds;
};

extern arg_slot arg_slots[arg_slots_size];
extern arg_slot *slots_last; // the last slot of the list: all slots after it are clear

// A byte for each spec position that was walked: type code and ARG_ABSENT.
extern uint8_t arg_types[arg_types_size];

// Puts a command word of at most 127 characters into slot 0. The word isn't copied.
void slot_set_word(const char *word, uint32_t size);

constexpr uint32_t slot_text_slack = 16;             // bytes after any text that may be read
extern const char slot_no_text[1 + slot_text_slack]; // the text of a cleared slot

// A slot that holds no argument.
inline constexpr arg_slot slot_cleared{slot_no_text, 0, 0, slot_unfilled, HOLDS_NOTHING};

// ---- Values ----

// The number of a numeric slot.
double slot_number(const arg_slot *slot);

inline bool slot_holds(const arg_slot *slot, uint8_t type)
{
    return (slot->holds & ~HOLDS_PLAIN) == type;
}

// The value of a slot in the width of its type, 0 if it isn't of that type.
inline int32_t slot_lval(const arg_slot *slot)
{
    return slot_holds(slot, HOLDS_LONG) ? int_from_double(slot_number(slot)) : 0;
}

inline int32_t slot_ival(const arg_slot *slot)
{
    return slot_holds(slot, HOLDS_INT) ? int_from_double(slot_number(slot)) : 0;
}

inline float slot_fval(const arg_slot *slot)
{
    return slot_holds(slot, HOLDS_FLOAT) ? float_from_double(slot_number(slot)) : 0;
}

inline double slot_dval(const arg_slot *slot)
{
    return slot_holds(slot, HOLDS_DOUBLE) ? slot_number(slot) : 0;
}

// The text without quotes and its length; null for numeric types and for an empty argument.
const char *slot_str(const arg_slot *slot, uint32_t *size);

// ---- The end of the list ----

// Ends the list: the given slot and everything after it read as cleared.
void slots_end_list(arg_slot *end);
