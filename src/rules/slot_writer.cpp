#include "rules/slot_writer.h"

void (*emit_wrote)(const emit_write &write);

char *put_long(char *output, const char *text, size_t size)
{
    out_commit(output);
    out_bytes(text, size);
    return out_reserve(put_reserve);
}

void emit_arguments(const arg_slot *first, int32_t count)
{
    char *output = out_reserve(put_reserve);
    for (const arg_slot *slot = first; slot < first + count; slot++) {
        memcpy(output, ", ", 2);
        output = put_slot(output + 2, slot);
    }
    out_commit(output);
}
