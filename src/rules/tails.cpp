// For the reason of each "Kept:" see rule_table.h.
#include "rules/tails.h"

#include "rules/slot_writer.h"

#include <string.h>

#include <algorithm>

// Whether the argument of a slot was left out or is empty.
static bool slot_absent(const arg_slot *slot)
{
    return (arg_types[slot - arg_slots - 1] & ARG_ABSENT) != 0;
}

// ---- Attributes ----

// The number of attributes that a line has positions for, the first one included: up to the last one with a
// text. Kept: a statement without any attribute gets the placeholders of the first seven; one with the first
// alone gets none.
static int attr_positions(const arg_slot *first)
{
    int positions = attr_count;
    while (positions > 0 && first[positions - 1].text_size == 0)
        positions--;
    return positions > 0 ? positions : attr_count - 1;
}

void emit_attr_comment(const arg_slot *first)
{
    // Kept: comments lack the eighth attribute, though it counts for the placeholders.
    emit_arguments(first, std::min(attr_positions(first), attr_count - 1));
}

void emit_attr_tail(const arg_slot *first)
{
    emit_arguments(first + 1, attr_positions(first) - 1);
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

void emit_text_comment(const arg_slot *first)
{
    for (int i = 0; i < text_attr_count; i++) {
        // Kept: comments lack the eleventh attribute.
        if (i != 10 && first[i].text_size > 0)
            emit_arguments(first + i, 1);
    }
}

void emit_text_tail(const arg_slot *first)
{
    if (first[3].text_size > 0) {
        emit_arguments(first + 3, 1);
    } else {
        out_text(", 0");
        emit_report(first + 3, EMIT_VALUE, out_tell() - 1, out_tell());
    }
    emit_arguments(first, 3);
    emit_arguments(first + 4, 2);
    int32_t style = slot_lval(first + 6);
    if (style < text_style_low || style > text_style_high)
        style = 0;
    // Kept: a style below 0 writes nothing, not even a comma, so that all after it is one position early.
    uint64_t from = out_tell();
    if (style >= 0) {
        from += 2;
        out_text(text_styles[style]);
    }
    emit_report(first + 6, EMIT_CODE, from, out_tell());
    emit_arguments(first + 7, text_attr_count - 7);
}

// ---- Menu strings ----

constexpr int menu_strings = 9; // that one statement may have

// The menu strings of the current statement: emit_menu_comment sets both, emit_menu_string reads them. No
// form has a {menu} without the comment pass before it.
static const arg_slot *menu_entries; // slot of the first; the others follow it
static int32_t menu_count;           // how many of them aren't empty

// Writes up to count slots, as far as they have arguments, each after a comma. Kept: no blank after the
// comma. Returns the slot after them.
static const arg_slot *emit_menu_arguments(const arg_slot *slot, int count)
{
    for (const arg_slot *end = slot + count; slot < end && slot->state != slot_unfilled; slot++) {
        out_char(',');
        emit_report(slot, EMIT_TEXT, out_tell(), out_tell() + slot->text_size);
        out_bytes(slot->text, slot->text_size);
    }
    return slot;
}

const arg_slot *emit_menu_comment(const arg_slot *first)
{
    const arg_slot *end = emit_menu_arguments(first, menu_strings);
    menu_entries = first;
    menu_count = 0;
    for (const arg_slot *slot = first; slot < end; slot++)
        menu_count += slot->text_size > 0 ? 1 : 0;
    return end;
}

void emit_menu_string(const arg_slot *first)
{
    // Kept: without any string there are no quotes, but GETCUR's comment pass may have counted one, and then
    // bars alone are written.
    bool quoted = false;
    for (int i = 0; i < menu_strings && !quoted; i++)
        quoted = !slot_absent(first + i);
    if (quoted)
        out_text(", \"");
    int32_t written = slot_absent(first) ? 0 : 1;
    bool last_empty = true; // whether the string of the last present position came out empty
    for (int i = 0; i < menu_strings; i++) {
        bool present = !slot_absent(first + i);
        if (i > 0 && (present || menu_count > written))
            out_char('|');
        const arg_slot *entry = menu_entries + i;
        uint64_t from = out_tell();
        if (present) {
            // Without the character at either end: the quotes, or whatever a raw text has there.
            last_empty = entry->text_size <= 2;
            if (!last_empty)
                out_bytes(entry->text + 1, entry->text_size - 2);
        }
        emit_report(entry, EMIT_OPTION, from, out_tell());
        // Kept: a gap counts too if the string before it wasn't empty, so that two gaps in a row leave one
        // bar.
        if (i > 0 && !last_empty)
            written++;
    }
    if (quoted)
        out_char('"');
}

void emit_menu_mode(const arg_slot *mode)
{
    // Kept: an integer other than 0 comes out as a comma and a blank, since the slot after it is written.
    if (slot_lval(mode) != 0)
        emit_arguments(mode + 1, 1);
}

void emit_getmenu_comment(const arg_slot *first)
{
    (void)emit_menu_arguments(emit_menu_comment(first), 2);
}

void emit_getmenu_tail(const arg_slot *last)
{
    // Kept: with a last argument the new line ends in a comma and a blank, since the slot after that argument
    // is written.
    if (last->text_size > 0)
        emit_arguments(last + 1, 1);
}

// ---- GETCUR ----

constexpr int getcur_optional = 5; // arguments that both lines have

// The current GETCUR: emit_getcur_comment sets them, emit_getcur_tail reads those that were set.
static const arg_slot *getcur_slots[getcur_optional]; // of the optional arguments
static const arg_slot *getcur_end;                    // the slot after all arguments
static bool getcur_last;                              // the last integer isn't 0: getcur_end was written

void emit_getcur_comment(const arg_slot *first)
{
    // Kept: an absent position takes no slot even where it has one. In a list with a gap each later argument
    // is read one position early, up to the menu strings.
    const arg_slot *slot = first;
    for (int i = 0; i < getcur_optional; i++) {
        if (slot_absent(first + i))
            continue;
        getcur_slots[i] = slot;
        emit_arguments(slot++, 1);
    }
    slot = emit_menu_comment(slot);
    if (!slot_absent(first + getcur_optional + menu_strings))
        slot++;
    if (slot_lval(slot) != 0)
        emit_arguments(slot, 1);
    getcur_last = slot_lval(slot + 1) != 0;
    getcur_end = slot + 2;
    if (getcur_last)
        emit_arguments(getcur_end, 1);
}

void emit_getcur_tail(const arg_slot *first)
{
    for (int i = 0; i < getcur_optional; i++)
        if (!slot_absent(first + i))
            emit_arguments(getcur_slots[i], 1);
    emit_menu_string(first + getcur_optional);
    if (slot_lval(getcur_end) == 0)
        return;
    if (getcur_last)
        emit_arguments(getcur_end, 1);
    else
        out_text(", ");
}

// ---- The format of INPUT ----

constexpr uint32_t scan_format_max = 1299; // no more of a format is looked at

// The characters that a scan format may have between a percent sign and its conversion, and the conversions.
// The bracket at the end of a scan set counts as one.
static constexpr char scan_modifiers[] = "0123456789hl";
static constexpr char scan_conversions[] = "cdiouxeEfgGs]";

int32_t scan_format_variables(const char *format, uint32_t size)
{
    int32_t variables = 0;
    bool in = false;      // after a percent sign, before its conversion
    bool star = false;    // the conversion is suppressed
    bool bracket = false; // in a scan set
    for (uint32_t i = 0; i < size && i < scan_format_max; i++) {
        char c = format[i];
        if (!in) {
            in = c == '%';
            star = bracket = false;
        } else if (bracket && c != ']') {
            continue;
        } else if (c == '*') {
            star = true;
        } else if (c == '[') {
            bracket = true;
        } else if (strchr(scan_conversions, c) != nullptr) {
            // Kept: a suppressed conversion doesn't end its percent sign, so %*d%d consumes nothing.
            if (star)
                continue;
            variables++;
            in = false;
        } else if (strchr(scan_modifiers, c) == nullptr) {
            in = false;
        }
    }
    return variables;
}

void emit_scan_format(const arg_slot *slot, int32_t count)
{
    uint32_t size = 0;
    const char *format = slot_str(slot, &size);
    out_text(" \"");
    uint64_t from = out_tell();
    // Only line ends are escaped again.
    for (uint32_t i = 0; i < size && i < scan_format_max; i++) {
        if (format[i] == '\n')
            out_text("\\n");
        else if (format[i] == '\r')
            out_text("\\r");
        else
            out_char(static_cast<unsigned char>(format[i]));
    }
    emit_report(slot, EMIT_TEXT, from, out_tell());
    out_char('"');
    emit_arguments(slot + 1, std::min(scan_format_variables(format, size), count - 1));
}
