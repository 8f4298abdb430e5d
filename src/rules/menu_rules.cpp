// The rules of menus and of formats, tails of the input commands: nine menu strings that become one, the two
// lines of GETMENU and GETCUR, and the scan format of INPUT. They walk the slots with the cursor.
#include "rules/emission.h"

#include <string.h>

// ---- Menu strings ----

constexpr int menu_strings = 9; // that one statement may have

// The menu strings of the current statement: set by emit_menu_comment, read by emit_menu_string.
static const arg_slot *menu_entries; // slot of the first; the others follow it
static int32_t menu_count;           // how many of them aren't empty

// A comma and the text under the cursor. Kept: no blank after the comma, and a lone comma for an empty text.
// Old menus read so.
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

// Tells whether any of the menu strings was given.
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
    // the bars stand alone.
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
            if (!last_empty)
                out_bytes(entry->text + 1, entry->text_size - 2);
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
    // Kept: an integer other than 0 shows as a comma and a blank, for what is written is the slot after it.
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
    // Kept: with a last argument the new line ends in a comma and a blank, for what is written is the slot
    // after that argument.
    if (take_text()->text_size > 0)
        emit_argument(arg_cursor);
}

// ---- GETCUR ----

// Optional arguments that both lines show, the positions 3 to 7.
constexpr int getcur_first = 3;
constexpr int getcur_optional = 5;

// The optional arguments of the current GETCUR as its comment pass took them, and one text from after its
// last integer: set by emit_getcur_comment, read by emit_getcur_tail.
static const arg_slot *getcur_texts[getcur_optional + 1];

void emit_getcur_comment()
{
    // Kept: an absent position takes no slot here even where it has one, so a list with gaps shifts.
    for (int i = 0; i < getcur_optional; i++) {
        if ((arg_types[getcur_first + i] & ARG_ABSENT) != 0)
            continue;
        getcur_texts[i] = take_text();
        emit_argument(getcur_texts[i]);
    }
    emit_menu_comment();
    (void)take_bounded_int(arg_types[17], 1, INT32_MAX);
    const arg_slot *last = take_text();
    if (slot_lval(last) != 0)
        emit_argument(last);
    getcur_texts[getcur_optional] = nullptr;
    if (slot_lval(take_text()) != 0) {
        getcur_texts[getcur_optional] = arg_cursor;
        emit_argument(arg_cursor);
    }
}

void emit_getcur_tail()
{
    for (int i = 0; i < getcur_optional; i++)
        if ((arg_types[getcur_first + i] & ARG_ABSENT) == 0)
            emit_argument(getcur_texts[i]);
    emit_menu_string(arg_types + getcur_first + getcur_optional);
    if (slot_lval(take_text()) == 0)
        return;
    const arg_slot *text = getcur_texts[getcur_optional];
    if (text != nullptr)
        emit_argument(text);
    else
        out_text(", ");
}

// ---- INPUT ----

constexpr uint32_t scan_format_max = 1299; // no more of a format is looked at

// What may stand between the percent sign of a scan format and its conversion, and the conversions. The
// bracket at the end of a scan set counts as one.
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

// The format between quotes, its line ends spelled as escapes again and nothing else escaped.
static void emit_format_text(const char *format, uint32_t size)
{
    out_text(" \"");
    for (uint32_t i = 0; i < size && i < scan_format_max; i++) {
        if (format[i] == '\n')
            out_text("\\n");
        else if (format[i] == '\r')
            out_text("\\r");
        else
            out_char(static_cast<unsigned char>(format[i]));
    }
    out_char('"');
}

void emit_scan_format(int32_t count)
{
    uint32_t size = 0;
    const char *format = slot_str(take_text(), &size);
    emit_format_text(format, size);
    for (int32_t left = scan_format_variables(format, size); left > 0 && --count > 0; left--)
        emit_argument(take_text());
}
