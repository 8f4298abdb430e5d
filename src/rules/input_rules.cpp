// Input, query and file commands.
//
// The new dialect keeps most of these commands; where one changed, the old statement stands above the new one
// as a comment, and one that is missing there is reported in a comment. Arguments that may be left out
// anywhere in a list are written only if they are there.
#include "rules/rule_table.h"
#include "support/text.h"

#include <string.h>

// Kept: the misspellings; users search for these lines.
static constexpr form_code tip_getview = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// Views have changed significantly in the new version.  They have\n"
    "// broken down into two distinct objects, CPlane and DispView.  Each\n"
    "// of these has it's own function for retreiving it's matrix data\n"
    "// The two calls are GETCPLANE and GETDISPVIEW respectively.  Please\n"
    "// refer to the MURL help file for information about these to\n"
    "// determine which call is appropriate for this situation.\n"
    "// Original MURL command: \n");

static constexpr form_code tip_call = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// \"{W}\" has been removed in the new MURL language.  These\n"
    "// functions are now part of MURL directly, many of them have new\n"
    "// names in the MURL language.\n"
    "// Original MURL command:\n");

static void choose_delent(rule_choice *choice);
static void choose_call(rule_choice *choice);

// What is left of a command that the new dialect lacks.
static constexpr form_code not_implemented = form("// WARNING: {W} has NOT been implemented\n");

// clang-format off
static constexpr rule_row input_table[] = {
    // id, command, old form, effect, tip, new form; where it needs them choice, when
    {400, "WAIT", "seconds", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {401, "EXEC", "[mode], [text]", EFFECT_REBUILT, nullptr,
        form("// Original MURL command: \n"
             "// {W} {A1}, {A2}\n"
             "{W} {A2}\n")},
    // Kept: a blank after the word of EXIT and ABORT.
    {402, "EXIT", "", EFFECT_COPIED, nullptr, form("{W} \n")},
    {403, "ABORT", "", EFFECT_COPIED, nullptr, form("{W} \n")},
    // Kept: only the entity -1 survives, any other is dropped.
    {404, "DELENT", "-1", EFFECT_COPIED, nullptr, form("{W} -1\n"), choose_delent, "the entity is -1"},
    {404, "DELENT", "[entity]", EFFECT_REBUILT, nullptr, form("{W}\n"), nullptr, "the entity is another"},
    // Kept: a blank at the end, and two if there is no argument.
    {405, "GETKEY", "[number]", EFFECT_COPIED, nullptr, form("{W} {A1} \n")},
    // Kept: no line end either; the statement took its own with it.
    {406, "CODE", "text", EFFECT_DROPPED, nullptr, form("")},
    {407, "CLOSE", "file", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {408, "CLEAR", "variable, ...", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..}\n")},
    {409, "GETALL", "variable [, mode]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2}\n")},
    {410, "GETENT", "prompt, variable [, v1..v5]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2}{, A3}{, A4}{, A5}{, A6}{, A7}\n")},
    {411, "GETENTM", "number, variable", EFFECT_COPIED, nullptr, form("{W} {A1}, {A2}\n")},
    // Kept: a blank and no comma between the second argument and the third.
    {412, "GETENTXY", "x, y, variable [, mode, v1..v5, mode2]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2} {A3}{, A4}{, A5}{, A6}{, A7}{, A8}{, A9}{, A10}\n")},
    {413, "GETFLT", "prompt, value, variable [, s1..s9, mode]", EFFECT_RENAMED, nullptr,
        form("// Original MURL command: \n"
             "// {W} {A1}, {A2}, {A3}{menu-comment 4}{menu-mode 13}\n"
             "GETDBL {A1}, {A2}, {A3}{menu 4}\n")},
    // Kept: an empty line after the statement; the mode shows nowhere.
    {414, "GETINT", "prompt, value, variable [, s1..s9, mode]", EFFECT_REBUILT, nullptr,
        form("// Original MURL command: \n"
             "// {W} {A1}, {A2}, {A3}{menu-comment 4}\n"
             "GETINT {A1}, {A2}, {A3}{menu 4}\n"
             "\n")},
    // Kept: an empty line after the statement.
    {415, "GETMENU", "prompt [, s1..s9, mode, mode2]", EFFECT_REBUILT, nullptr,
        form("REM {W} {A1}{getmenu-comment 2}\n"
             "{W} {A1}{menu 2}{getmenu 12}\n"
             "\n")},
    {416, "GETNEXT", "variable [, mode, v1..v5]", EFFECT_COPIED, nullptr,
        form("{W} {A1}{, A2}{, A3}{, A4}{, A5}{, A6}{, A7}\n")},
    {417, "GETPLANE", "prompt, number [, variable]", EFFECT_REBUILT, nullptr,
        form("// {W} {A1}, {A2}{, A3}\n"
             "{W} {A1}{, A3}\n")},
    {418, "GETPOS", "prompt, number", EFFECT_COPIED, nullptr, form("{W} {A1}, {A2}\n")},
    // Kept: two commas in front of the variable, in the comment too.
    {419, "GETSTR", "prompt, text, variable [, s1..s9, mode]", EFFECT_REBUILT, nullptr,
        form("// {W} {A1}, {A2}, , {A3}{menu-comment 4}{menu-mode 13}\n"
             "{W} {A1}, {A2}, , {A3}{menu 4}\n")},
    {420, "GETVIEW", "number [, variable]", EFFECT_BY_HAND, &tip_getview, form("// {W} {L1}, {A2}\n")},
    {421, "INPUT", "format, variable, ...", EFFECT_COPIED, nullptr, form("{W}{scan 1}\n")},
    // Kept: an empty item ends the list of these, and those after it are dropped.
    {422, "PAUSE", "[text, item, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..?}\n")},
    {423, "PRINT", "text [, item, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..?}\n")},
    {424, "PROMPT", "text [, item, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..?}\n")},
    // Kept: a comma directly after the word; the number is a value, the variables are dropped.
    {425, "READ", "file, number, variable, ...", EFFECT_COMMENTED, nullptr, form("// {W}, {A1}, {L2}\n")},
    {426, "WRITE", "file, number [, variable, ...]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2}{, A3..}\n")},
    // Kept: an empty value leaves no place holder in the comment, and those after the seventh are dropped. Each
    // CALL declares its vectors anew, so that every block can be moved by itself.
    {427, "CALL", "dotprod, x1, y1, z1, x2, y2, z2, result", EFFECT_TIP, &tip_call,
        form("// {W} {A1}{, A2}{, A3}{, A4}{, A5}{, A6}{, A7}{, A8}\n"
             "// New format for \"{A1}\":\n"
             "CLEAR adVec1, adVec2\n"
             "DOUBLE adVec1[0], adVec2[0]\n"
             "ARRAY adVec1[3]\n"
             "ARRAY adVec2[3]\n"
             "adVec1[0] = {A2}\n"
             "adVec1[1] = {A3}\n"
             "adVec1[2] = {A4}\n"
             "adVec2[0] = {A5}\n"
             "adVec2[1] = {A6}\n"
             "adVec2[2] = {A7}\n"
             "DOTPROD {A8}, adVec1, adVec2\n"
             "\n"), choose_call, "the function is dotprod"},
    {427, "CALL", "function [, v1..v7, ...]", EFFECT_BY_HAND, &tip_call,
        form("// {W} {A1}{, A2}{, A3}{, A4}{, A5}{, A6}{, A7}{, A8}\n"
             "\n"), nullptr, "the function is another"},
    {428, "SPRINT", "variable, text [, item, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..?}\n")},
    {429, "GETGROUP", "number", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {430, "CLEARSEL", "[number]", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {431, "GETENV", "name, variable", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    // Kept: a lone comma and a blank in the place of what is dropped.
    {432, "GETCOLOR", "prompt, variable [, n1, n2]", EFFECT_COMMENTED, nullptr,
        form("// {W} {A1}, {A2}, \n")},
    {433, "READDEV", "v1..v4 [, v5..v7, number]", EFFECT_COMMENTED, nullptr,
        form("// {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}{, A8}\n")},
    {434, "GETCUR", "prompt, n1, n2 [, v1..v5, s1..s9, mode, mode2]", EFFECT_REBUILT, nullptr,
        form("// {W} {A1}, {A2}, {A3}{getcur-comment 4}\n"
             "{W} {A1}, {A2}, {A3}{getcur 4}\n")},
    // Kept: an empty line after the statement, here and at GETLTYPE.
    {435, "GETLWIDTH", "prompt, variable [, mode]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2}, {A3}\n"
             "\n")},
    {436, "GETLTYPE", "prompt, variable [, mode]", EFFECT_RENAMED, nullptr,
        form("// {W} {A1}, {A2}, {A3}\n"
             "GETLSTYLE {A1}, {A2}, {A3}\n"
             "\n")},
    {437, "CLEARHST", "[number]", EFFECT_COMMENTED, nullptr, form("// {W}{ A1}\n")},
    {438, "GETENTID", "number, variable [, v1..v4]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2}{, A3}{, A4}{, A5}{, A6}\n")},
    {439, "BREAD", "number, file, variable [, number2]", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    {440, "BWRITE", "number, file, variable [, number2]", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    // Kept: no line end between "implemented" and the comment after it, in all five commands that have one.
    {441, "ADDCOP", "number, number2", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1} {A2}\n")},
    {442, "ADDCTYPE", "name, variable", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n")},
    {443, "CMOVE", "file, number", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    {444, "CREAD", "file, variable [, number]", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    {445, "CWRITE", "file, variable [, number]", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    {446, "DELCOP", "[entity, number, ...]", EFFECT_REBUILT, nullptr, form("{W} {A1}\n")},
    // Kept: two comment marks, the lower-case name whatever was typed, and an empty line.
    {447, "DELCTYPE", "name", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// // {A1} WARNING: delctype has NOT been implemented\n"
             "\n")},
    // Kept: an empty number ends the list.
    {448, "GETCOP", "entity [, number, ...]", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1}{, A2..?}\n")},
    {449, "INQCTYPE", "number, variable", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n")},
    {450, "INQTCODE", "name, variable", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n")},
    {451, "MDEOPEN", "name", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {452, "MDECLOSE", "name", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {454, "SETSTRSZ", "variable, size", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
};
// clang-format on

constexpr rule_family input_family = rule_family_make(input_table);
static_assert(rules_fit(input_family));

static void choose_delent(rule_choice *choice)
{
    choice->row = slot_ival(arg_slots + 1) == -1 ? 0 : 1;
}

// Only one function of the library that a CALL may name has a mechanical rewrite.
static void choose_call(rule_choice *choice)
{
    choice->row = text_is_word(arg_slots[1].text, arg_slots[1].text_size, "dotprod") ? 0 : 1;
}
