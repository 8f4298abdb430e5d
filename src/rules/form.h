// Forms: the output of a rule as one literal, with the slots named in place.
//
// Everything here is done by the compiler. It takes each form apart, and refuses one that is malformed or
// names a slot that its command lacks; at run time emit_form only copies.
#pragma once

#include <stdint.h>

// The marks of a form. A brace opens a mark, everything else is written as it stands:
//   {W}       the command word as typed
//   {A3}      the text of slot 3
//   {L3}      the lval of slot 3 as a decimal number; {I3} its ival
//   {, A3}    the characters in front of the A and the text of slot 3; nothing at all if that text is empty
//   {, A3..}  the same for slot 3 and every further one up to the last slot given to emit_form, empty or not
// A form is the only text that is ever looked at for marks; a script's text never is.
enum form_mark : uint8_t { MARK_NONE, MARK_TEXT, MARK_LVAL, MARK_IVAL, MARK_IF_ANY, MARK_LIST };

// A literal and the mark behind it. The joint, the ", " of {, A3}, stands behind the mark's brace.
struct form_piece {
    char head[8];   // the literal itself if it is no longer than this
    uint16_t start; // of the literal in the form's text
    uint16_t size;  // of the literal
    uint8_t mark;   // a form_mark
    uint8_t joint;  // size of the joint
    uint8_t slot;
};

constexpr int form_pieces_max = 24; // what the widest form takes, the two lines of a dimension
constexpr int form_joint_max = 2;   // characters of a joint
constexpr int form_slot_max = 26;   // no form may name a slot behind this one

// A form taken apart.
struct form_code {
    const char *text;
    uint8_t pieces_used;
    uint8_t arguments; // the whole form is {W} {A1}, {A2} and so on, with so many arguments; 0: it is another
    uint8_t top_slot;  // the highest slot that the form counts on; a list may be empty and doesn't count
    form_piece pieces[form_pieces_max];
};

// What form calls on a bad text. They have no body: a call from a constant is what the compiler reports.
void form_is_malformed();
void form_has_too_many_pieces();
void form_names_a_slot_that_its_command_lacks();

// Reads the mark that starts at text[at], its brace, into the piece; gives the place behind it.
constexpr int form_read_mark(const char *text, int at, form_piece *piece)
{
    int joint_start = ++at;
    while (text[at] == ',' || text[at] == ' ')
        at++;
    piece->joint = static_cast<uint8_t>(at - joint_start);
    if (piece->joint > form_joint_max)
        form_is_malformed();
    char kind = text[at++];
    int slot = 0;
    int digits = 0;
    for (; text[at] >= '0' && text[at] <= '9'; at++, digits++)
        slot = slot * 10 + (text[at] - '0');
    if (slot > form_slot_max)
        form_names_a_slot_that_its_command_lacks();
    piece->slot = static_cast<uint8_t>(slot);
    piece->mark = MARK_NONE;
    if (piece->joint > 0 && kind == 'A')
        piece->mark = MARK_IF_ANY;
    else if (piece->joint == 0 && (kind == 'A' || kind == 'W'))
        piece->mark = MARK_TEXT;
    else if (piece->joint == 0 && kind == 'L')
        piece->mark = MARK_LVAL;
    else if (piece->joint == 0 && kind == 'I')
        piece->mark = MARK_IVAL;
    if (piece->mark == MARK_IF_ANY && text[at] == '.' && text[at + 1] == '.') {
        piece->mark = MARK_LIST;
        at += 2;
    }
    if (piece->mark == MARK_NONE || (digits == 0) != (kind == 'W') || text[at] != '}')
        form_is_malformed();
    return at + 1;
}

// The number of arguments if a form taken apart is the word and the arguments from the first on, else 0.
constexpr uint8_t form_list_length(const form_code &code)
{
    for (int i = 0; i < code.pieces_used; i++) {
        const form_piece &piece = code.pieces[i];
        bool between =
            i < 2 ? piece.size == i : piece.size == 2 && piece.head[0] == ',' && piece.head[1] == ' ';
        if (piece.mark != MARK_TEXT || piece.slot != i || !between || (i == 1 && piece.head[0] != ' '))
            return 0;
    }
    return code.pieces_used > 1 ? static_cast<uint8_t>(code.pieces_used - 1) : uint8_t{0};
}

// Takes a form apart; slots is the number of arguments that its command has. For constants only.
constexpr form_code form(const char *text, int slots = form_slot_max)
{
    form_code code{text, 0, 0, 0, {}};
    for (int at = 0; text[at] != '\0';) {
        if (code.pieces_used == form_pieces_max)
            form_has_too_many_pieces();
        form_piece *piece = &code.pieces[code.pieces_used++];
        piece->start = static_cast<uint16_t>(at);
        while (text[at] != '{' && text[at] != '\0')
            at++;
        piece->size = static_cast<uint16_t>(at - piece->start);
        for (int i = 0; i < 8 && i < piece->size; i++)
            piece->head[i] = text[piece->start + i];
        if (text[at] == '{')
            at = form_read_mark(text, at, piece);
        if (piece->mark != MARK_LIST && piece->slot > code.top_slot)
            code.top_slot = piece->slot;
    }
    code.arguments = form_list_length(code);
    if (code.top_slot > slots)
        form_names_a_slot_that_its_command_lacks();
    return code;
}

// Stands where a row has no form.
constexpr form_code no_form{"", 0, 0, 0, {}};
