// Input, query and file commands, the ids 400 to 499.
//
// A form is the whole output. The new dialect keeps most of these commands; where one changed, the old
// statement stands above the new one as a comment, and one that is missing there is reported in a comment.
// Arguments that may be left out anywhere in a list are written only if they are there.
#include "rules/emission.h"
#include "rules/rule_table.h"
#include "rules/rules.h"
#include "source/command_table.h"

constexpr int input_first = 400;
constexpr int input_last = 499;

// Kept: the misspellings; users search for these lines.
static constexpr form_code getview_form = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// Views have changed significantly in the new version.  They have\n"
    "// broken down into two distinct objects, CPlane and DispView.  Each\n"
    "// of these has it's own function for retreiving it's matrix data\n"
    "// The two calls are GETCPLANE and GETDISPVIEW respectively.  Please\n"
    "// refer to the MURL help file for information about these to\n"
    "// determine which call is appropriate for this situation.\n"
    "// Original MURL command: \n"
    "// {W} {L1}, {A2}\n");

// What is left of a command that the new dialect lacks.
static constexpr form_code not_implemented = form("// WARNING: {W} has NOT been implemented\n");

static void conv_delent(int32_t count);
static void conv_getflt(int32_t count);
static void conv_getint(int32_t count);
static void conv_getmenu_row(int32_t count);
static void conv_getstr(int32_t count);
static void conv_input_row(int32_t count);
static void conv_print(int32_t count);
static void conv_getcur(int32_t count);
static void conv_getcop(int32_t count);

// clang-format off
static constexpr rule_row input_table[] = {
    // id, command, old form,
    //     new form, routine
    {400, "WAIT", "WAIT seconds",
        form("{W} {A1}\n"), nullptr},
    {401, "EXEC", "EXEC [mode], [text]",
        form("// Original MURL command: \n"
             "// {W} {A1}, {A2}\n"
             "{W} {A2}\n"), nullptr},
    // Kept: a blank behind the word of EXIT and ABORT.
    {402, "EXIT", "EXIT",
        form("{W} \n"), nullptr},
    {403, "ABORT", "ABORT",
        form("{W} \n"), nullptr},
    {404, "DELENT", "DELENT [entity]",
        no_form, conv_delent},
    // Kept: a blank at the end, and two if there is no argument.
    {405, "GETKEY", "GETKEY [number]",
        form("{W} {A1} \n"), nullptr},
    // Kept: no line end either; the statement took its own with it.
    {406, "CODE", "CODE text",
        form(""), nullptr},
    {407, "CLOSE", "CLOSE file",
        form("{W} {A1}\n"), nullptr},
    {408, "CLEAR", "CLEAR variables",
        form("{W} {A1}{, A2..}\n"), nullptr},
    {409, "GETALL", "GETALL variable [, mode]",
        form("{W} {A1}{, A2}\n"), nullptr},
    {410, "GETENT", "GETENT prompt, variable [, five variables]",
        form("{W} {A1}, {A2}{, A3}{, A4}{, A5}{, A6}{, A7}\n"), nullptr},
    {411, "GETENTM", "GETENTM number, variable",
        form("{W} {A1}, {A2}\n"), nullptr},
    // Kept: a blank and no comma between the second argument and the third.
    {412, "GETENTXY", "GETENTXY x, y, variable [, mode] [, five variables] [, mode]",
        form("{W} {A1}, {A2} {A3}{, A4}{, A5}{, A6}{, A7}{, A8}{, A9}{, A10}\n"), nullptr},
    {413, "GETFLT", "GETFLT prompt, value, variable [, nine strings] [, mode]",
        no_form, conv_getflt},
    {414, "GETINT", "GETINT prompt, value, variable [, nine strings] [, mode]",
        no_form, conv_getint},
    {415, "GETMENU", "GETMENU prompt [, nine strings] [, mode, mode]",
        no_form, conv_getmenu_row},
    {416, "GETNEXT", "GETNEXT variable [, mode] [, five variables]",
        form("{W} {A1}{, A2}{, A3}{, A4}{, A5}{, A6}{, A7}\n"), nullptr},
    {417, "GETPLANE", "GETPLANE prompt, number [, variable]",
        form("// {W} {A1}, {A2}{, A3}\n"
             "{W} {A1}{, A3}\n"), nullptr},
    {418, "GETPOS", "GETPOS prompt, number",
        form("{W} {A1}, {A2}\n"), nullptr},
    {419, "GETSTR", "GETSTR prompt, text, variable [, nine strings] [, mode]",
        no_form, conv_getstr},
    {420, "GETVIEW", "GETVIEW number [, variable]",
        getview_form, nullptr},
    {421, "INPUT", "INPUT format, variables",
        no_form, conv_input_row},
    {422, "PAUSE", "PAUSE [text] [, items]",
        no_form, conv_print},
    {423, "PRINT", "PRINT text [, items]",
        no_form, conv_print},
    {424, "PROMPT", "PROMPT text [, items]",
        no_form, conv_print},
    // Kept: a comma directly behind the word; the number is a value, the variables are dropped.
    {425, "READ", "READ file, number, variables",
        form("// {W}, {A1}, {L2}\n"), nullptr},
    {426, "WRITE", "WRITE file, number [, variables]",
        form("{W} {A1}, {A2}{, A3..}\n"), nullptr},
    {427, "CALL", "CALL function [, values]",
        no_form, conv_call},
    {428, "SPRINT", "SPRINT variable, text [, items]",
        no_form, conv_print},
    {429, "GETGROUP", "GETGROUP number",
        form("{W} {A1}\n"), nullptr},
    {430, "CLEARSEL", "CLEARSEL [number]",
        form("{W} {A1}\n"), nullptr},
    {431, "GETENV", "GETENV name, variable",
        not_implemented, nullptr},
    // Kept: a lone comma and a blank in the place of what is dropped.
    {432, "GETCOLOR", "GETCOLOR prompt, variable [, two numbers]",
        form("// {W} {A1}, {A2}, \n"), nullptr},
    {433, "READDEV", "READDEV four variables [, three variables] [, number]",
        form("// {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}{, A8}\n"), nullptr},
    {434, "GETCUR", "GETCUR prompt, number, number [, five values] [, nine strings] [, mode, mode]",
        no_form, conv_getcur},
    // Kept: an empty line behind the statement, here and at GETLTYPE.
    {435, "GETLWIDTH", "GETLWIDTH prompt, variable [, mode]",
        form("{W} {A1}, {A2}, {A3}\n"
             "\n"), nullptr},
    {436, "GETLTYPE", "GETLTYPE prompt, variable [, mode]",
        form("// {W} {A1}, {A2}, {A3}\n"
             "GETLSTYLE {A1}, {A2}, {A3}\n"
             "\n"), nullptr},
    {437, "CLEARHST", "CLEARHST [number]",
        form("// {W}{ A1}\n"), nullptr},
    {438, "GETENTID", "GETENTID number, variable [, four variables]",
        form("{W} {A1}, {A2}{, A3}{, A4}{, A5}{, A6}\n"), nullptr},
    {439, "BREAD", "BREAD number, file, variable [, number]",
        not_implemented, nullptr},
    {440, "BWRITE", "BWRITE number, file, variable [, number]",
        not_implemented, nullptr},
    // Kept: no line end between "implemented" and the comment behind it, in all five commands that have one.
    {441, "ADDCOP", "ADDCOP number, number",
        form("// WARNING: {W} has NOT been implemented// {W} {A1} {A2}\n"), nullptr},
    {442, "ADDCTYPE", "ADDCTYPE name, variable",
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n"), nullptr},
    {443, "CMOVE", "CMOVE file, number",
        not_implemented, nullptr},
    {444, "CREAD", "CREAD file, variable [, number]",
        not_implemented, nullptr},
    {445, "CWRITE", "CWRITE file, variable [, number]",
        not_implemented, nullptr},
    {446, "DELCOP", "DELCOP [entity] [, numbers]",
        form("{W} {A1}\n"), nullptr},
    // Kept: two comment marks, the lower-case name whatever was typed, and an empty line.
    {447, "DELCTYPE", "DELCTYPE name",
        form("// // {A1} WARNING: delctype has NOT been implemented\n"
             "\n"), nullptr},
    {448, "GETCOP", "GETCOP entity [, numbers]",
        no_form, conv_getcop},
    {449, "INQCTYPE", "INQCTYPE number, variable",
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n"), nullptr},
    {450, "INQTCODE", "INQTCODE name, variable",
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n"), nullptr},
    {451, "MDEOPEN", "MDEOPEN name",
        form("{W} {A1}\n"), nullptr},
    {452, "MDECLOSE", "MDECLOSE name",
        form("{W} {A1}\n"), nullptr},
    {454, "SETSTRSZ", "SETSTRSZ variable, size",
        not_implemented, nullptr},
};
// clang-format on

static_assert(rule_ids_ascend(input_table, input_first, input_last));
static_assert(rule_slots_fit(input_table, command_spec_count));
static constexpr rule_index input_index = rule_index_make(input_table, input_first);

// DELENT entity -> DELENT, or DELENT -1
static void conv_delent(int32_t)
{
    static constexpr form_code word = form("{W}");

    emit_form(word);
    // Kept: only the entity -1 survives, any other is dropped.
    out_text(slot_ival(arg_slots + 1) == -1 ? " -1\n" : "\n");
}

// With the cursor on the last integer of a menu: steps over it.
static void emit_menu_integer()
{
    // Kept: an integer other than 0 shows as a comma and a blank, for what is written is the slot behind it.
    if (slot_lval(arg_cursor++) != 0)
        emit_argument(arg_cursor);
}

// Writes both lines of a command with menu strings behind its third argument: the strings stand one by one in
// the old line and as one in the new.
static void emit_menu_lines(const form_code &old_line, const form_code &new_line, bool shows_integer)
{
    emit_form(old_line);
    arg_cursor = arg_slots + 4;
    emit_menu_comment();
    if (shows_integer)
        emit_menu_integer();
    out_char('\n');
    emit_form(new_line);
    emit_menu_string(arg_types + 3);
    out_char('\n');
}

// GETFLT prompt, value, variable, strings, mode -> GETDBL prompt, value, variable, "strings"
static void conv_getflt(int32_t)
{
    static constexpr form_code old_line = form(
        "// Original MURL command: \n"
        "// {W} {A1}, {A2}, {A3}",
        command_spec_count(413));
    static constexpr form_code new_line = form("GETDBL {A1}, {A2}, {A3}", command_spec_count(413));

    emit_menu_lines(old_line, new_line, true);
}

// GETINT prompt, value, variable, strings, mode -> GETINT prompt, value, variable, "strings"
static void conv_getint(int32_t)
{
    static constexpr form_code old_line = form(
        "// Original MURL command: \n"
        "// {W} {A1}, {A2}, {A3}",
        command_spec_count(414));
    static constexpr form_code new_line = form("GETINT {A1}, {A2}, {A3}", command_spec_count(414));

    // Kept: an empty line behind the statement; the mode shows nowhere.
    emit_menu_lines(old_line, new_line, false);
    out_char('\n');
}

// GETMENU prompt, strings, mode, mode -> REM GETMENU ..., GETMENU prompt, "strings", an empty line
static void conv_getmenu_row(int32_t)
{
    arg_cursor = arg_slots + 1;
    conv_getmenu(arg_types);
    // Kept: the rule has ended its line already, so an empty one follows.
    out_char('\n');
}

// GETSTR prompt, text, variable, strings, mode -> GETSTR prompt, text, , variable, "strings"
static void conv_getstr(int32_t)
{
    // Kept: two commas in front of the variable, in the comment too.
    static constexpr form_code old_line = form("// {W} {A1}, {A2}, , {A3}", command_spec_count(419));
    static constexpr form_code new_line = form("{W} {A1}, {A2}, , {A3}", command_spec_count(419));

    emit_menu_lines(old_line, new_line, true);
}

// INPUT format, variables -> INPUT format, as many variables as the format converts
static void conv_input_row(int32_t count)
{
    static constexpr form_code word = form("{W}");

    emit_form(word);
    arg_cursor = arg_slots + 1;
    emit_scan_format(count);
    out_char('\n');
}

// Writes the head, the arguments from the second on up to the first empty text, and the line end.
static void emit_items(const form_code &head)
{
    emit_form(head);
    // Kept: an empty item ends the list, and those behind it are dropped.
    for (const arg_slot *slot = arg_slots + 2; slot->text_size > 0; slot++)
        emit_argument(slot);
    out_char('\n');
}

// PRINT text, items -> PRINT text, items
static void conv_print(int32_t)
{
    static constexpr form_code head = form("{W} {A1}");

    emit_items(head);
}

// GETCOP entity, numbers -> a warning and the old statement, on one line
static void conv_getcop(int32_t)
{
    static constexpr form_code head = form("// WARNING: {W} has NOT been implemented// {W} {A1}");

    emit_items(head);
}

// GETCUR prompt, number, number, values, strings, mode, mode
//     -> GETCUR prompt, number, number, values, "strings"
static void conv_getcur(int32_t)
{
    static constexpr form_code old_line = form("// {W} {A1}, {A2}, {A3}", command_spec_count(434));
    static constexpr form_code new_line = form("{W} {A1}, {A2}, {A3}", command_spec_count(434));

    emit_form(old_line);
    arg_cursor = arg_slots + 4;
    emit_getcur_comment();
    out_char('\n');
    emit_form(new_line);
    emit_getcur_tail();
    out_char('\n');
}

int32_t conv_input(int32_t id, int32_t count)
{
    rule_run(rule_find(input_table, input_index, id, input_first), count, "\n");
    return 0;
}
