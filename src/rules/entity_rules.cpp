// Entity commands: geometry, notes, labels, crosshatch and the view.
//
// An entity command ends in a list of attributes, which a tail writes in the comment and another in the new
// line.
// For the reason of each "Kept:" see rule_table.h.
#include "rules/rule_table.h"
#include "statements/arg_slots.h"

// Kept: two blanks after a full stop, and no full stop after the last sentence of tip_default_matrix.
static constexpr form_code tip_system_view = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// Matrix numbers less than 9 are now reserved for system views.  You\n"
    "// should change this number to avoid possible unintended behavior.\n"
    "// Original MURL command:\n");

static constexpr form_code tip_default_matrix = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The default Matrix number of 0 is being used.  You\n"
    "// may need to create a Matrix and change this number to\n"
    "// avoid possible unintended behavior Original MURL command:\n");

static constexpr form_code tip_fill_color = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The default Matrix number of 0 is being used.  You\n"
    "// may need to create a Matrix and change this number to\n"
    "// avoid possible unintended behavior.\n"
    "// FILLCOLOR is now done as RGB values so original value of {L2}\n"
    "// does not apply\n"
    "\n");

static constexpr form_code view_lines = form(
    "// {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}\n"
    "MATRIX {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}\n");

static void choose_polygon(rule_choice *choice);
static void choose_view(rule_choice *choice);

// clang-format off
static constexpr rule_row entity_table[] = {
    // id, command, old form, effect, tip, new form; where it needs them choice, when
    // An {attr} tail drops its first attribute; the constant 0 in front of the tail takes its position.
    {1, "POINT", "n1..n3 [, a4..a8]", EFFECT_REBUILT, nullptr, form("{W} {A1}, {A2}, {A3}, 0{attr 4}\n")},
    {2, "LINE", "n1..n6 [, a7..a13]", EFFECT_REBUILT, nullptr,
        form("{W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, 0{attr 7}\n")},
    {3, "ARC", "n1..n6 [, a7..a14]", EFFECT_REBUILT, nullptr,
        form("{W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, 0{attr 7}\n")},
    {4, "CONIC", "n1..n11 [, a12..a19]", EFFECT_REBUILT, nullptr,
        form("{W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, 0{attr 12}\n")},
    // The fourth argument is in the comment alone. SPLINE3's is its first attribute.
    {5, "SPLINE", "mode, v2, n3, n4 [, a5..a12]", EFFECT_TIP, &tip_default_matrix,
        form("REM {W} {A1}, {A2}, {A3}, {A4}{attr-comment 5}\n"
             "{W} {A1}, {A2}, {A3}, 0{attr 5}\n")},
    {6, "POLYGON", "mode, fill, count, points [, a5..a10]", EFFECT_TIP, &tip_fill_color,
        form("POLYLINE {L3}, {A4}, {N1}, 0, {A6}, {L2}, {A7}, {A8}, {A9}, {A10}, 1\n"),
        choose_polygon},
    // Kept: a comma directly after the word, here and in LABEL's line.
    {7, "POLYLINE", "n1, v2, n3, n4, n5 [, a6, fill, a8..a13]", EFFECT_TIP, &tip_system_view,
        form("{W}, {A1}, {A2}, {A4}, 0, {A9}, {L7}, {A10}, {A11}, {A12}, {A13}, 1\n")},
    // Kept: a blank and no comma between the two coordinates of a text, here and in FTEXT.
    {15, "TEXT, NOTE", "x, y, string [, a4..a9, style, a11..a18]", EFFECT_REBUILT, nullptr,
        form("// Original MURL command:\n"
             "// {W} {A1}, {A2}, {A3}{text-comment 4}\n"
             "{W} {A3}, {A1} {A2}, 0.0, 0, 0, 0{text 4}\n")},
    // There is no new form: the line is the old statement, written like a comment.
    {16, "LABEL", "n1..n9, s10 [, a11..a23]", EFFECT_REBUILT, nullptr,
        form("{W}, {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}{text-comment 11}\n")},
    // Kept: a comma directly after the word in the comment; a witness line has a blank.
    {17, "LEADER", "n1..n6 [, a7..a13]", EFFECT_RENAMED, nullptr,
        form("// Original MURL command:\n"
             "// {W}, {A1}, {A2}, {A3}, {A4}, {A5}, {A6}{attr-comment 7}\n"
             "LEADERWIT {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, 0{attr 7}\n")},
    {18, "WITNESS", "n1..n4 [, a5..a11]", EFFECT_RENAMED, nullptr,
        form("// Original MURL command:\n"
             "// {W} {A1}, {A2}, {A3}, {A4}{attr-comment 5}\n"
             "LEADERWIT {A1}, {A2}, {A3}, {A4}, 0{attr 5}\n")},
    {19, "XHATCH", "n1, n2, v3, a4 [, a5..a10]", EFFECT_TIP, &tip_default_matrix,
        form("{W} {L1}, {A3}, , , , 0, 0{attr 4}\n")},
    {20, "GENDIM", "n1..n4, v5, n6..n8, s9 [, a10..a15, style, a17..a21]",
        EFFECT_REBUILT, nullptr,
        form("REM {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}{text-comment 10}\n"
             "{W} {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}{text 10}\n")},
    {22, "FTEXT, FNOTE", "x, y, name [, a4..a9, style, a11..a18]", EFFECT_REBUILT, nullptr,
        form("// Original MURL command:\n"
             "// {W} {A1}, {A2}, {A3}{text-comment 4}\n"
             "{W} {A3}, {A1} {A2}, 0.0, 0, 0, 2{text 4}\n")},
    {129, "VIEW", "number, n2..n10 [, n11]", EFFECT_TIP, &tip_system_view,
        view_lines, choose_view, "the number is below 9"},
    {129, "VIEW", "number, n2..n10 [, n11]", EFFECT_RENAMED, nullptr,
        view_lines, nullptr, "the number is 9 or more"},
    {256, "CIRCLE", "n1..n4 [, a5..a12]", EFFECT_REBUILT, nullptr,
        form("{W} {A1}, {A2}, {A3}, {A4}, 0{attr 5}\n")},
    {257, "VLINE", "n1..n6 [, a7..a14]", EFFECT_REBUILT, nullptr,
        form("{W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, 0{attr 7}\n")},
    {258, "VPOINT", "n1..n3 [, a4..a9]", EFFECT_REBUILT, nullptr, form("{W} {A1}, {A2}, {A3}, 0{attr 4}\n")},
    {259, "SPLINE3", "mode, v2, n3 [, a4..a11]", EFFECT_TIP, &tip_default_matrix,
        form("REM {W} {A1}, {A2}, {A3}, {A4}{attr-comment 5}\n"
             "{W} {A1}, {A2}, {A3}, 0{attr 5}\n")},
    // Kept: the mode, third in POLYGON's line, is missing, so that each argument after it is one position early;
    // the last attribute is lost.
    {260, "VPOLYGON", "n1, fill, count, points, n5 [, a6..a12]", EFFECT_TIP, &tip_default_matrix,
        form("POLYLINE {L3}, {A4}, 0, {A7}, {L2}, {A8}, {A9}, {A10}, {A11}, 1\n")},
    {261, "NXHATCH", "n1, n2, v3, a4 [, a5..a10]", EFFECT_TIP, &tip_default_matrix,
        form("{W} {L1}, {A3}, , , , 0, 0{attr 4}\n")},
};
// clang-format on

constexpr rule_family entity_family = rule_family_make(entity_table);
static_assert(rules_fit(entity_family));

// A polygon of mode 2 is a polyline of mode 3, any other one of mode 2.
static void choose_polygon(rule_choice *choice)
{
    choice->number = slot_lval(arg_slots + 1) == 2 ? 3 : 2;
}

static void choose_view(rule_choice *choice)
{
    constexpr int32_t system_views = 9; // the numbers below are the system's own
    choice->row = slot_lval(arg_slots + 1) < system_views ? 0 : 1;
}
