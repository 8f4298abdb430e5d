// The tails of the commands with a menu.
#include "rules/menu_tails.h"

#include "rules/slot_writer.h"

// ---- Menu strings ----

constexpr int menu_strings = 9; // that one statement may have

// The menu strings of the current statement: emit_menu_comment sets both, emit_menu_string reads them.
// Nothing resets them; no form has a {menu} without the comment pass in front of it.
static const arg_slot *menu_entries; // slot of the first; the others follow it
static int32_t menu_count;           // how many of them aren't empty

// A comma and the text under the cursor. Kept: no blank after the comma.
static void emit_menu_argument()
{
    out_char(',');
    emit_text(take_text());
}

void emit_menu_comment()
{
    menu_entries = arg_cursor;
    menu_count = 0;
    for (int i = 0; i < menu_strings && arg_cursor->state != slot_mark; i++) {
        if (arg_cursor->text_size > 0)
            menu_count++;
        emit_menu_argument();
    }
}

// Whether any of the menu strings was given.
static bool menu_any(const uint8_t *types)
{
    for (int i = 0; i < menu_strings; i++)
        if ((types[i] & ARG_ABSENT) == 0)
            return true;
    return false;
}

void emit_menu_string(const uint8_t *types)
{
    // Kept: without any string there are no quotes, but GETCUR's comment pass may have counted one, and then
    // bars alone are written.
    bool quoted = menu_any(types);
    if (quoted)
        out_text(", \"");
    int32_t written = (types[0] & ARG_ABSENT) == 0 ? 1 : 0;
    bool last_empty = true; // whether the string of the last present position came out empty
    for (int i = 0; i < menu_strings; i++) {
        bool present = (types[i] & ARG_ABSENT) == 0;
        if (i > 0 && (present || menu_count > written))
            out_char('|');
        if (present) {
            // Without the character at either end: the quotes, or whatever a raw text has there.
            const arg_slot *entry = menu_entries + i;
            last_empty = entry->text_size <= 2;
            if (!last_empty) {
                emit_tell(entry, false, out_tell(), out_tell() + entry->text_size - 2);
                out_bytes(entry->text + 1, entry->text_size - 2);
            }
        }
        // Kept: a gap counts too if the string before it wasn't empty, so two gaps in a row leave one bar.
        if (i > 0 && !last_empty)
            written++;
    }
    if (quoted)
        out_char('"');
}

void emit_menu_mode()
{
    // Kept: an integer other than 0 comes out as a comma and a blank, since the slot after it is written.
    if (slot_lval(take_text()) != 0)
        emit_argument(arg_cursor);
}

// ---- GETMENU ----

void emit_getmenu_comment()
{
    emit_menu_comment();
    for (int i = 0; i < 2 && arg_cursor->state != slot_mark; i++)
        emit_menu_argument();
}

void emit_getmenu_tail()
{
    // Kept: with a last argument the new line ends in a comma and a blank, since the slot after that argument
    // is written.
    if (take_text()->text_size > 0)
        emit_argument(arg_cursor);
}

// ---- GETCUR ----

constexpr int getcur_optional = 5; // arguments that both lines have

// The optional arguments of the current GETCUR as its comment pass took them, and one text from after its
// last integer: emit_getcur_comment sets them, emit_getcur_tail reads those that it set. Nothing resets them.
static const arg_slot *getcur_texts[getcur_optional + 1];

void emit_getcur_comment(const uint8_t *types)
{
    // Kept: an absent position takes no slot even where it has one. In a list with a gap each later argument
    // is read one position early, up to the menu strings.
    for (int i = 0; i < getcur_optional; i++) {
        if ((types[i] & ARG_ABSENT) != 0)
            continue;
        getcur_texts[i] = take_text();
        emit_argument(getcur_texts[i]);
    }
    emit_menu_comment();
    (void)take_bounded_int(types[getcur_optional + menu_strings], 1, INT32_MAX);
    const arg_slot *last = take_text();
    if (slot_lval(last) != 0)
        emit_argument(last);
    getcur_texts[getcur_optional] = nullptr;
    if (slot_lval(take_text()) != 0) {
        getcur_texts[getcur_optional] = arg_cursor;
        emit_argument(arg_cursor);
    }
}

void emit_getcur_tail(const uint8_t *types)
{
    for (int i = 0; i < getcur_optional; i++)
        if ((types[i] & ARG_ABSENT) == 0)
            emit_argument(getcur_texts[i]);
    emit_menu_string(types + getcur_optional);
    if (slot_lval(take_text()) == 0)
        return;
    const arg_slot *text = getcur_texts[getcur_optional];
    if (text != nullptr)
        emit_argument(text);
    else
        out_text(", ");
}
