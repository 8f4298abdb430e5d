// The writer of forms and the helpers that several commands share. Slots are read in order, so each routine
// says where it leaves arg_cursor. Texts are never copied: they stay valid until the next statement.
#include "rules/emission.h"

// Menu strings that one statement may have.
constexpr int menu_strings = 9;

// The menu strings of the current statement: set by emit_menu_comment, read by emit_menu_string.
static const arg_slot *menu_first; // slot of the first; the others follow it
static int32_t menu_count;         // how many of them aren't empty

// Optional arguments of GETCUR that both lines show, the positions 3 to 7.
constexpr int getcur_first = 3;
constexpr int getcur_optional = 5;

// The optional arguments of the current GETCUR as its comment pass took them, and one text from behind its
// last integer: set by emit_getcur_comment, read by emit_getcur_tail.
static const arg_slot *getcur_kept[getcur_optional];
static const arg_slot *getcur_last;
static constexpr arg_slot getcur_no_last{slot_no_text, 0, 0, slot_mark, HOLDS_NOTHING};

// INPUT looks at no more of its format than this.
constexpr uint32_t scan_format_max = 1299;

char *put_long_text(char *place, const char *text, size_t size)
{
    out_give_place(place);
    out_bytes(text, size);
    return out_take_place(put_room);
}

static inline char *put_literal(char *place, const form_code &form, const form_piece *piece)
{
    if (piece->size > sizeof piece->head)
        return put_long_text(place, form.text + piece->start, piece->size);
    memcpy(place, piece->head, sizeof piece->head);
    return place + piece->size;
}

// Puts the joint of a piece and the text of a slot.
static inline char *put_joined(char *place, const form_code &form, const form_piece *piece,
                               const arg_slot *slot)
{
    memcpy(place, form.text + piece->start + piece->size + 1, form_joint_max);
    return put_text(place + piece->joint, slot);
}

static char *put_number(char *place, int32_t value)
{
    out_give_place(place);
    out_format("%d", value);
    return out_take_place(put_room);
}

static inline char *put_mark(char *place, const form_code &form, const form_piece *piece, int32_t last_slot)
{
    const arg_slot *slot = arg_slots + piece->slot;
    if (piece->mark == MARK_TEXT)
        return put_text(place, slot);
    switch (piece->mark) {
    case MARK_LVAL: return put_number(place, slot_lval(slot));
    case MARK_IVAL: return put_number(place, slot_ival(slot));
    case MARK_IF_ANY: return slot->text_size > 0 ? put_joined(place, form, piece, slot) : place;
    case MARK_LIST:
        // A list may be longer than the room for a form's pieces.
        for (const arg_slot *last = arg_slots + last_slot; slot <= last; slot++) {
            out_give_place(place);
            place = put_joined(out_take_place(put_room), form, piece, slot);
        }
        return place;
    default: return place;
    }
}

// The word and the arguments from the first on, which many forms are.
static char *put_list(char *place, int count)
{
    place = put_text(place, arg_slots);
    *place++ = ' ';
    place = put_text(place, arg_slots + 1);
    for (const arg_slot *slot = arg_slots + 2; slot <= arg_slots + count; slot++)
        place = put_argument(place, slot);
    return place;
}

void emit_form(const form_code &form, int32_t last_slot)
{
    char *place = out_take_place(put_room);
    if (form.arguments > 0) {
        out_give_place(put_list(place, form.arguments));
        return;
    }
    const form_piece *end = form.pieces + form.pieces_used;
    for (const form_piece *piece = form.pieces; piece < end; piece++)
        place = put_mark(put_literal(place, form, piece), form, piece, last_slot);
    out_give_place(place);
}

int32_t take_bounded_int(uint8_t type_byte, int32_t low, int32_t high)
{
    if ((type_byte & ARG_ABSENT) != 0)
        return 0;
    int32_t value = slot_lval(arg_cursor++);
    return value >= low && value <= high ? value : 0;
}

void emit_menu_comment()
{
    menu_first = arg_cursor;
    menu_count = 0;
    for (int i = 0; i < menu_strings && arg_cursor->state != slot_mark; i++, arg_cursor++) {
        // Kept: no blank behind the comma, and a lone comma for an empty string. Old menus read so.
        out_char(',');
        out_bytes(arg_cursor->text, arg_cursor->text_size);
        if (arg_cursor->text_size > 0)
            menu_count++;
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
    if (!menu_any(types))
        return;
    out_text(", \"");
    int32_t written = (types[0] & ARG_ABSENT) == 0 ? 1 : 0;
    bool last_empty = true; // whether the string of the last present position came out empty
    for (int i = 0; i < menu_strings; i++) {
        bool present = (types[i] & ARG_ABSENT) == 0;
        if (i > 0 && (present || menu_count > written))
            out_char('|');
        if (present) {
            // Without the character at either end: the quotes, or whatever a raw text has there.
            const arg_slot *entry = menu_first + i;
            last_empty = entry->text_size <= 2;
            if (!last_empty)
                out_bytes(entry->text + 1, entry->text_size - 2);
        }
        // Kept: a gap counts too if the string before it wasn't empty, so two gaps in a row leave one bar.
        if (i > 0 && !last_empty)
            written++;
    }
    out_char('"');
}

// GETMENU prompt, strings, place, count -> REM GETMENU prompt,strings,place,count
//                                          GETMENU prompt, "strings"
void conv_getmenu(const uint8_t *types)
{
    static constexpr form_code old_line = form("REM {W} {A1}");
    static constexpr form_code new_line = form("\n{W} {A1}");

    arg_cursor++;
    emit_form(old_line);
    emit_menu_comment();
    bool tail = false; // whether the last argument has a text
    for (int i = 0; i < 2; i++, arg_cursor++) {
        if (arg_cursor->state == slot_mark)
            continue;
        out_char(',');
        out_bytes(arg_cursor->text, arg_cursor->text_size);
        tail = i == 1 && arg_cursor->text_size > 0;
    }
    emit_form(new_line);
    emit_menu_string(types + 1);
    // Kept: with a last argument the new line ends in a comma and a blank, for what is written is the slot
    // behind that argument.
    if (tail)
        emit_argument(arg_cursor++);
    out_char('\n');
}

void emit_getcur_comment()
{
    // Kept: an absent position takes no slot here even where it has one, so a list with gaps shifts.
    for (int i = 0; i < getcur_optional; i++) {
        if ((arg_types[getcur_first + i] & ARG_ABSENT) != 0)
            continue;
        getcur_kept[i] = arg_cursor++;
        emit_argument(getcur_kept[i]);
    }
    emit_menu_comment();
    getcur_last = &getcur_no_last;
    (void)take_bounded_int(arg_types[17], 1, INT32_MAX);
    const arg_slot *last = arg_cursor++;
    if (slot_lval(last) != 0)
        emit_argument(last);
    if (slot_lval(arg_cursor++) != 0) {
        getcur_last = arg_cursor;
        emit_argument(getcur_last);
    }
}

void emit_getcur_tail()
{
    for (int i = 0; i < getcur_optional; i++)
        if ((arg_types[getcur_first + i] & ARG_ABSENT) == 0)
            emit_argument(getcur_kept[i]);
    emit_menu_string(arg_types + getcur_first + getcur_optional);
    if (slot_lval(arg_cursor++) != 0)
        emit_argument(getcur_last);
}

// The format between quotes, its line ends spelled as escapes again and nothing else escaped.
static void emit_format_text(const char *format, int size)
{
    out_text(" \"");
    for (int i = 0; i < size; i++) {
        if (format[i] == '\n')
            out_text("\\n");
        else if (format[i] == '\r')
            out_text("\\r");
        else
            out_char(static_cast<unsigned char>(format[i]));
    }
    out_char('"');
}

// What may stand between the percent sign of a scan format and its conversion, and the conversions. The
// bracket at the end of a scan set counts as one.
static constexpr char scan_modifiers[] = "0123456789hl";
static constexpr char scan_conversions[] = "cdiouxeEfgGs]";

void emit_scan_format(int32_t count)
{
    uint32_t str_size;
    const char *format = slot_str(arg_cursor, &str_size);
    int size = static_cast<int>(str_size < scan_format_max ? str_size : scan_format_max);
    arg_cursor++;
    emit_format_text(format, size);

    bool in = false;      // behind a percent sign, before its conversion
    bool star = false;    // the conversion is suppressed
    bool bracket = false; // in a scan set
    for (int i = 0; i < size; i++) {
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
            if (--count == 0)
                return;
            emit_argument(arg_cursor++);
            in = false;
        } else if (strchr(scan_modifiers, c) == nullptr) {
            in = false;
        }
    }
}
