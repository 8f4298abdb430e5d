// The tails of the entity commands.
#include "rules/entity_tails.h"

#include "rules/slot_writer.h"

// The number of attributes that a line has positions for, the first one included: up to the last one with a
// text. Kept: a statement without any attribute gets the placeholders of the first seven, one with the first
// alone none.
static int attr_positions(const arg_slot *span)
{
    const arg_slot *last = span + attr_span - 1;
    if (last > slots_last)
        last = slots_last;
    while (last >= span && last->text_size == 0)
        last--;
    return last >= span ? static_cast<int>(last - span) + 1 : attr_span - 1;
}

void emit_attr_comment()
{
    int positions = attr_positions(arg_cursor);
    // Kept: the eighth attribute is missing from comments, though it counts for the placeholders.
    emit_arguments(arg_cursor, positions < attr_span ? positions : attr_span - 1);
}

void emit_attr_tail()
{
    int positions = attr_positions(arg_cursor);
    emit_arguments(arg_cursor + 1, positions - 1);
}

// ---- Attributes of a text ----

// The style attribute of a text in words.
static constexpr const char *text_styles[] = {
    ", DEFAULT",       // 0, and any value out of range
    ", Bold",          // 1
    ", Slant",         // 2
    ", Boldboxfill",   // 3
    ", Boldslantfill", // 4
    ", Boldbox",       // 5
    ", Boldslant"      // 6
};
constexpr int32_t text_style_low = -16; // below 0 no word is written
constexpr int32_t text_style_high = 6;
static_assert(sizeof text_styles / sizeof text_styles[0] == text_style_high + 1);

void emit_text_comment()
{
    for (int i = 0; i < text_span; i++) {
        const arg_slot *slot = take_text();
        // Kept: the eleventh is missing from comments.
        if (i != 10 && slot->text_size > 0)
            emit_argument(slot);
    }
}

void emit_text_tail(const uint8_t *types)
{
    arg_slot *first = arg_cursor;
    const arg_slot *fourth = first + 3;
    if (fourth->text_size > 0)
        emit_argument(fourth);
    else
        out_text(", 0");
    for (int i = 0; i < 6; i++) {
        const arg_slot *slot = take_text();
        if (slot != fourth)
            emit_argument(slot);
    }
    int32_t style = take_bounded_int(types[6], text_style_low, text_style_high);
    // Kept: a style below 0 writes nothing, not even a comma, so that all after it is one position early.
    if (style >= 0) {
        uint64_t from = out_tell() + 2;
        out_text(text_styles[style]);
        emit_tell(first + 6, true, from, out_tell());
    }
    emit_arguments(first + 7, text_span - 7);
}
