// Slot writer: the texts of slots on their way to the output.
//
// A rule reads the slots of the statement and writes text, nothing else. Texts are never copied: they stay
// valid until the next statement.
#pragma once

#include "statements/arg_slots.h"
#include "support/output.h"

#include <stdint.h>
#include <string.h>

// What was written of an argument.
struct emit_write {
    int32_t slot;
    bool value;    // a number or a word made of its value; else its text, or a part of that
    uint64_t from; // offset of its first byte in the output
    uint64_t to;   // and of the byte after its last
};

// The hook that receives each of them; null: nobody listens.
extern void (*emit_wrote)(const emit_write &write);

// Reports to the hook, if there is one, that the bytes of the output between two offsets are of a slot.
inline void emit_tell(const arg_slot *slot, bool value, uint64_t from, uint64_t to)
{
    if (emit_wrote != nullptr)
        emit_wrote({static_cast<int32_t>(slot - arg_slots), value, from, to});
}

// Bytes of the output that put_text has for texts of at most slot_text_slack characters: what a whole form
// writes of them, with a list of as many slots as there are.
constexpr size_t put_room = 4096;

// put_text for a longer text, which reserves its own bytes and then put_room again for those after it.
char *put_long(char *output, const char *text, size_t size);

// Writes a text through a pointer from out_reserve, and returns the pointer after it. slot_text_slack
// bytes of the text may be read, since that many are copied whatever its size.
inline char *put_text(char *output, const char *text, size_t size)
{
    if (size > slot_text_slack)
        return put_long(output, text, size);
    memcpy(output, text, slot_text_slack);
    return output + size;
}

// The text of a slot.
inline char *put_slot(char *output, const arg_slot *slot)
{
    uint64_t from = out_file.start + static_cast<uint64_t>(output - out_file.buffer);
    emit_tell(slot, false, from, from + slot->text_size);
    return put_text(output, slot->text, slot->text_size);
}

// The texts of slots, each after ", ": of an empty text that alone is written, as a placeholder.
void emit_arguments(const arg_slot *first, int32_t count);
