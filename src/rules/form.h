// Forms: the output of a rule as one literal, with a placeholder for each slot.
//
// Everything here is done by the compiler. It takes each form apart, and refuses one that is malformed, names
// a slot that its command lacks, or has a tail without its comment pass; at run time emit_form only copies.
#pragma once

#include <stdint.h>

// The placeholders of a form. A brace opens one, everything else is written as it is:
//   {W}        the command word as typed
//   {A3}       the text of slot 3
//   {L3}       the lval of slot 3 as a decimal number; {I3} its ival; {D3} its dval with six decimals
//   {N3}       a number that the row's choice computed from slot 3
//   {, A3}     the separator in front of the A and the text of slot 3; nothing if that text is empty
//   {, L3}     the same with the lval; nothing if it is 0
//   {, A3..}   the same for slot 3 and every further one up to the last of the choice, empty or not
//   {, A3..?}  the same up to the first one that is empty
//   {attr 5}   a tail (tails.h), which reads the slots from 5 on
// A form is the only text that is ever searched for placeholders; a script's text never is.
enum form_kind : uint8_t {
    PUT_LITERAL, // no placeholder
    PUT_TEXT,
    PUT_LVAL,
    PUT_IVAL,
    PUT_DVAL,
    PUT_NUMBER,
    PUT_IF_ANY,
    PUT_IF_SET,
    PUT_LIST,
    PUT_ITEMS,
    TAIL_ATTR_COMMENT,
    TAIL_ATTR,
    TAIL_TEXT_COMMENT,
    TAIL_TEXT,
    TAIL_MENU_COMMENT,
    TAIL_MENU_MODE,
    TAIL_MENU,
    TAIL_GETMENU_COMMENT,
    TAIL_GETMENU,
    TAIL_GETCUR_COMMENT,
    TAIL_GETCUR,
    TAIL_SCAN
};

// The kind of a placeholder by the text after its brace and separator.
struct form_placeholder {
    const char *name;
    form_kind kind;
    form_kind separated = PUT_LITERAL; // its kind after a separator; PUT_LITERAL: none is allowed
};
// The tails are described at their routines, in tails.h.
constexpr form_placeholder form_placeholders[] = {
    {"W", PUT_TEXT},
    {"A", PUT_TEXT, PUT_IF_ANY},
    {"L", PUT_LVAL, PUT_IF_SET},
    {"I", PUT_IVAL},
    {"D", PUT_DVAL},
    {"N", PUT_NUMBER},
    {"attr-comment ", TAIL_ATTR_COMMENT},
    {"attr ", TAIL_ATTR},
    {"text-comment ", TAIL_TEXT_COMMENT},
    {"text ", TAIL_TEXT},
    {"menu-comment ", TAIL_MENU_COMMENT},
    {"menu-mode ", TAIL_MENU_MODE},
    {"menu ", TAIL_MENU},
    {"getmenu-comment ", TAIL_GETMENU_COMMENT},
    {"getmenu ", TAIL_GETMENU},
    {"getcur-comment ", TAIL_GETCUR_COMMENT},
    {"getcur ", TAIL_GETCUR},
    {"scan ", TAIL_SCAN},
};

// A literal and the placeholder after it. The separator of a placeholder, the ", " of {, A3}, is the literal
// of its piece.
struct alignas(8) form_piece {
    char head[16];  // the literal itself, if it is no longer than this
    uint16_t start; // of the literal in the form's text
    uint16_t size;  // of the literal
    form_kind kind;
    uint8_t slot;
};

constexpr int form_pieces_max = 28;   // a few more than the widest form has, the two lines of a dimension
constexpr int form_separator_max = 2; // characters of a separator
constexpr int form_slot_max = 26;     // no form may name a slot after this one

// A form taken apart.
struct form_code {
    const char *text;
    uint8_t pieces_used;
    uint8_t highest_slot; // that a placeholder names; a list may be empty and doesn't count
    form_piece pieces[form_pieces_max];
};

// form calls them for a bad text. They have no body: the compiler refuses the call in a constant.
void form_is_malformed();
void form_has_too_many_pieces();
void form_lacks_comment_pass();

// The length of a word that text begins with, or 0.
constexpr int form_word_size(const char *text, const char *word)
{
    int size = 0;
    for (; word[size] != '\0'; size++)
        if (text[size] != word[size])
            return 0;
    return size;
}

// Reads a placeholder at text[at], after its brace and separator, into the piece; returns the index after it.
constexpr int form_read_placeholder(const char *text, int at, bool separator, form_piece *piece)
{
    bool has_slot = text[at] != 'W';
    int name_size = 0;
    for (const form_placeholder &row : form_placeholders) {
        int size = form_word_size(text + at, row.name);
        if (size == 0)
            continue;
        name_size = size;
        piece->kind = separator ? row.separated : row.kind;
    }
    at += name_size;
    int slot = 0;
    int digits = at;
    for (; text[at] >= '0' && text[at] <= '9'; at++)
        slot = slot * 10 + (text[at] - '0');
    if (piece->kind == PUT_LITERAL || (at > digits) != has_slot || slot > form_slot_max)
        form_is_malformed();
    piece->slot = static_cast<uint8_t>(slot);
    if (piece->kind == PUT_IF_ANY && text[at] == '.' && text[at + 1] == '.') {
        at += 2;
        piece->kind = text[at] == '?' ? PUT_ITEMS : PUT_LIST;
        at += text[at] == '?' ? 1 : 0;
    }
    if (text[at] != '}')
        form_is_malformed();
    return at + 1;
}

// The next piece of a form, with the literal from start up to end.
constexpr form_piece *form_add(form_code *code, int start, int end)
{
    if (code->pieces_used == form_pieces_max)
        form_has_too_many_pieces();
    form_piece *piece = &code->pieces[code->pieces_used++];
    piece->start = static_cast<uint16_t>(start);
    piece->size = static_cast<uint16_t>(end - start);
    for (int i = 0; i < static_cast<int>(sizeof piece->head) && start + i < end; i++)
        piece->head[i] = code->text[start + i];
    return piece;
}

// Refuses a form whose last piece is a tail that needs a comment pass over the same slots and has none.
constexpr void form_check_comment_pass(const form_code &code)
{
    const form_piece &last = code.pieces[code.pieces_used - 1];
    if (last.kind != TAIL_MENU && last.kind != TAIL_GETCUR)
        return;
    for (const form_piece &piece : code.pieces) {
        bool menu = piece.kind == TAIL_MENU_COMMENT || piece.kind == TAIL_GETMENU_COMMENT;
        if (piece.slot == last.slot && (last.kind == TAIL_MENU ? menu : piece.kind == TAIL_GETCUR_COMMENT))
            return;
    }
    form_lacks_comment_pass();
}

// Takes a form apart. For constants only.
constexpr form_code form(const char *text)
{
    form_code code{text, 0, 0, {}};
    for (int at = 0; text[at] != '\0';) {
        int start = at;
        while (text[at] != '{' && text[at] != '\0')
            at++;
        int separator = text[at] == '{' ? at + 1 : at;
        int letter = separator;
        while (text[letter] == ',' || text[letter] == ' ')
            letter++;
        form_piece *piece = nullptr;
        if (letter == separator || start < at)
            piece = form_add(&code, start, at);
        if (letter > separator + form_separator_max)
            form_is_malformed();
        if (letter > separator)
            piece = form_add(&code, separator, letter);
        if (text[at] == '{')
            at = form_read_placeholder(text, letter, letter > separator, piece);
        if (piece->kind != PUT_LIST && piece->kind != PUT_ITEMS && piece->slot > code.highest_slot)
            code.highest_slot = piece->slot;
        form_check_comment_pass(code);
    }
    return code;
}
