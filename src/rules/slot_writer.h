// Slot writer: writes the texts of slots to the output.
#pragma once

#include "statements/arg_slots.h"
#include "support/output.h"

#include <stdint.h>
#include <string.h>

// What a write is made of.
enum emit_source : uint8_t {
    EMIT_TEXT,  // the argument's text, or a part of it
    EMIT_VALUE, // its value as a number
    EMIT_CODE,  // what stands for its value in the new dialect; nothing if nothing does
    EMIT_OPTION // an option of a menu string, which may be empty: its text without quotes
};

// A write of an argument.
struct emit_write {
    int32_t slot;
    emit_source source;
    uint64_t from; // offset of its first byte in the output
    uint64_t to;   // and of the byte after its last
};

// The hook that receives each of them; null: none.
extern void (*emit_wrote)(const emit_write &write);

// Reports to the hook which bytes of the output were written of a slot.
inline void emit_report(const arg_slot *slot, emit_source source, uint64_t from, uint64_t to)
{
    if (emit_wrote != nullptr)
        emit_wrote({static_cast<int32_t>(slot - arg_slots), source, from, to});
}

// Bytes that a form may write through one out_reserve: all its literals and texts of at most slot_text_slack
// characters, with the longest list.
constexpr size_t put_reserve = 4096;

// put_text for a longer text. Reserves put_reserve bytes again after it.
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
    emit_report(slot, EMIT_TEXT, from, from + slot->text_size);
    return put_text(output, slot->text, slot->text_size);
}

// Writes ", " and the text for each of the slots; an empty text leaves ", " as a placeholder.
void emit_arguments(const arg_slot *first, int32_t count);
