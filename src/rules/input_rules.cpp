// Input, query and file commands.
//
// The new dialect keeps most of these commands. Where one changed, the old statement is a comment above the
// new one; for one that the dialect lacks a comment says so. Optional arguments that are absent leave no
// comma.
// For the reason of each "Kept:" see rule_table.h.
#include "rules/rule_table.h"
#include "statements/arg_slots.h"
#include "support/text.h"

#include <string.h>

// Kept: the misspellings "it's" and "retreiving".
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

// For most commands that the new dialect lacks.
static constexpr form_code not_implemented = form("// WARNING: {W} has NOT been implemented\n");

// clang-format off
static constexpr rule_row input_table[] = {
    // id, command, old form, effect, tip, new form; where it needs them choice, when
    {400, "WAIT", "n1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {401, "EXEC", "[n1], [s2]", EFFECT_REBUILT, nullptr,
        form("// Original MURL command: \n"
             "// {W} {A1}, {A2}\n"
             "{W} {A2}\n")},
    // Kept: a blank after the word of EXIT and ABORT.
    {402, "EXIT", "", EFFECT_COPIED, nullptr, form("{W} \n")},
    {403, "ABORT", "", EFFECT_COPIED, nullptr, form("{W} \n")},
    // Kept: any argument but -1 is lost.
    {404, "DELENT", "-1", EFFECT_COPIED, nullptr, form("{W} {I1}\n"), choose_delent, "the value is -1"},
    {404, "DELENT", "[n1]", EFFECT_REBUILT, nullptr, form("{W}\n"), nullptr, "the value is another"},
    // Kept: a blank at the end, and two if there is no argument.
    {405, "GETKEY", "[n1]", EFFECT_COPIED, nullptr, form("{W} {A1} \n")},
    // Kept: not even the statement's line end is written.
    {406, "CODE", "s1", EFFECT_DROPPED, nullptr, form("")},
    {407, "CLOSE", "w1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {408, "CLEAR", "[v1, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..}\n")},
    {409, "GETALL", "v1 [, n2]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2}\n")},
    {410, "GETENT", "s1, v2 [, v3..v7]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2}{, A3}{, A4}{, A5}{, A6}{, A7}\n")},
    {411, "GETENTM", "n1, v2", EFFECT_COPIED, nullptr, form("{W} {A1}, {A2}\n")},
    // Kept: a blank and no comma between the second argument and the third.
    {412, "GETENTXY", "n1, n2, v3 [, n4, v5..v9, n10]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2} {A3}{, A4}{, A5}{, A6}{, A7}{, A8}{, A9}{, A10}\n")},
    {413, "GETFLT", "s1, n2, v3 [, s4..s12, n13]", EFFECT_RENAMED, nullptr,
        form("// Original MURL command: \n"
             "// {W} {A1}, {A2}, {A3}{menu-comment 4}{menu-mode 13}\n"
             "GETDBL {A1}, {A2}, {A3}{menu 4}\n")},
    // Kept: an empty line after the statement; n13 is lost.
    {414, "GETINT", "s1, n2, v3 [, s4..s12, n13]", EFFECT_REBUILT, nullptr,
        form("// Original MURL command: \n"
             "// {W} {A1}, {A2}, {A3}{menu-comment 4}\n"
             "GETINT {A1}, {A2}, {A3}{menu 4}\n"
             "\n")},
    // Kept: an empty line after the statement.
    {415, "GETMENU", "prompt [, s2..s10, n11, n12]", EFFECT_REBUILT, nullptr,
        form("REM {W} {A1}{getmenu-comment 2}\n"
             "{W} {A1}{menu 2}{getmenu 12}\n"
             "\n")},
    {416, "GETNEXT", "v1 [, n2, v3..v7]", EFFECT_COPIED, nullptr,
        form("{W} {A1}{, A2}{, A3}{, A4}{, A5}{, A6}{, A7}\n")},
    {417, "GETPLANE", "s1, n2 [, v3]", EFFECT_REBUILT, nullptr,
        form("// {W} {A1}, {A2}{, A3}\n"
             "{W} {A1}{, A3}\n")},
    {418, "GETPOS", "s1, n2", EFFECT_COPIED, nullptr, form("{W} {A1}, {A2}\n")},
    // Kept: two commas in front of the variable, in the comment too.
    {419, "GETSTR", "s1, s2, v3 [, s4..s12, n13]", EFFECT_REBUILT, nullptr,
        form("// {W} {A1}, {A2}, , {A3}{menu-comment 4}{menu-mode 13}\n"
             "{W} {A1}, {A2}, , {A3}{menu 4}\n")},
    {420, "GETVIEW", "n1 [, v2]", EFFECT_BY_HAND, &tip_getview, form("// {W} {L1}, {A2}\n")},
    {421, "INPUT", "format [, v2, ...]", EFFECT_COPIED, nullptr, form("{W}{scan 1}\n")},
    // Kept: an empty item ends the list of PAUSE, PRINT, PROMPT and SPRINT; the items after it are lost.
    {422, "PAUSE", "[s1, s2, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..?}\n")},
    {423, "PRINT", "s1 [, s2, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..?}\n")},
    {424, "PROMPT", "s1 [, s2, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..?}\n")},
    // Kept: a comma directly after the word; the variables are lost.
    {425, "READ", "w1, n2 [, v3, ...]", EFFECT_COMMENTED, nullptr, form("// {W}, {A1}, {L2}\n")},
    {426, "WRITE", "w1, n2 [, v3, ...]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2}{, A3..}\n")},
    // Kept: an empty value leaves no comma in the comment. Each CALL declares its vectors again, so that users
    // can move the block.
    {427, "CALL", "dotprod [, s2..s7, result, ...]", EFFECT_TIP, &tip_call,
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
    {427, "CALL", "name [, s2..s8, ...]", EFFECT_BY_HAND, &tip_call,
        form("// {W} {A1}{, A2}{, A3}{, A4}{, A5}{, A6}{, A7}{, A8}\n"
             "\n"), nullptr, "the function is another"},
    {428, "SPRINT", "v1, s2 [, s3, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..?}\n")},
    {429, "GETGROUP", "n1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {430, "CLEARSEL", "[n1]", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {431, "GETENV", "w1, v2", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    // Kept: a comma and a blank for the two numbers, which are lost.
    {432, "GETCOLOR", "s1, v2 [, n3, n4]", EFFECT_COMMENTED, nullptr,
        form("// {W} {A1}, {A2}, \n")},
    {433, "READDEV", "v1..v4 [, v5..v7, n8]", EFFECT_COMMENTED, nullptr,
        form("// {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}{, A8}\n")},
    {434, "GETCUR", "s1, n2, n3 [, n4..n6, w7, n8, s9..s17, n18, n19]", EFFECT_REBUILT, nullptr,
        form("// {W} {A1}, {A2}, {A3}{getcur-comment 4}\n"
             "{W} {A1}, {A2}, {A3}{getcur 4}\n")},
    // Kept: an empty line after the statement, here and at GETLTYPE.
    {435, "GETLWIDTH", "s1, v2 [, n3]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2}, {A3}\n"
             "\n")},
    {436, "GETLTYPE", "s1, v2 [, n3]", EFFECT_RENAMED, nullptr,
        form("// {W} {A1}, {A2}, {A3}\n"
             "GETLSTYLE {A1}, {A2}, {A3}\n"
             "\n")},
    {437, "CLEARHST", "[n1]", EFFECT_COMMENTED, nullptr, form("// {W}{ A1}\n")},
    {438, "GETENTID", "n1, v2 [, v3..v6]", EFFECT_COPIED, nullptr,
        form("{W} {A1}, {A2}{, A3}{, A4}{, A5}{, A6}\n")},
    {439, "BREAD", "n1, w2, v3 [, n4]", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    {440, "BWRITE", "n1, w2, v3 [, n4]", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    // Kept: no line end between "implemented" and the comment, in all five commands with a comment.
    {441, "ADDCOP", "n1, n2", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1} {A2}\n")},
    {442, "ADDCTYPE", "s1, v2", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n")},
    {443, "CMOVE", "w1, n2", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    {444, "CREAD", "w1, v2 [, n3]", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    {445, "CWRITE", "w1, v2 [, n3]", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
    {446, "DELCOP", "[n1, n2, ...]", EFFECT_REBUILT, nullptr, form("{W} {A1}\n")},
    // Kept: two comment signs, the word in lower case, and an empty line.
    {447, "DELCTYPE", "s1", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// // {A1} WARNING: delctype has NOT been implemented\n"
             "\n")},
    // Kept: an empty number ends the list; the numbers after it are lost.
    {448, "GETCOP", "n1 [, n2, ...]", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1}{, A2..?}\n")},
    {449, "INQCTYPE", "n1, v2", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n")},
    {450, "INQTCODE", "s1, v2", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("// WARNING: {W} has NOT been implemented// {W} {A1}, {A2}\n")},
    {451, "MDEOPEN", "s1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {452, "MDECLOSE", "s1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {454, "SETSTRSZ", "v1, n2", EFFECT_NOT_IMPLEMENTED, nullptr, not_implemented},
};
// clang-format on

constexpr rule_family input_family = rule_family_make(input_table);
static_assert(rules_fit(input_family));

static void choose_delent(rule_choice *choice)
{
    choice->row = slot_ival(arg_slots + 1) == -1 ? 0 : 1;
}

// dotprod is the only library function with a rewrite.
static void choose_call(rule_choice *choice)
{
    choice->row = text_is_word(arg_slots[1].text, arg_slots[1].text_size, "dotprod") ? 0 : 1;
}
