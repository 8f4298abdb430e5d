// Flow commands and the dimension commands of their range.
//
// A flow command is copied. A dimension's new parameters have another order: a tip and the old statement come
// first, then the new one.
// For the reason of each "Kept:" see rule_table.h.
#include "rules/rule_table.h"
#include "statements/arg_slots.h"
#include "support/number.h"

// Kept: "change" instead of "changed".
static constexpr form_code tip_cirdim = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The dimension commands have change significantly from the previous\n"
    "// version of MURL.  Parameter order, quantity, and array definitions\n"
    "// are all different.  As a result, we have removed the attribute\n"
    "// arrays from the original command.  This will allow the command to\n"
    "// be read by the current version of MURL.\n"
    "// Please refer to the CIRDIM entry in the provided MURL help file.\n"
    "// Original MURL command:\n");

static constexpr form_code tip_lindim = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The dimension commands have change significantly from the previous\n"
    "// version of MURL.  Parameter order, quantity, and array definitions\n"
    "// are all different.  Chamfer dimensions are now a unique entity in\n"
    "// MURIVO, so if your command was trying to make a Chamfer style linear\n"
    "// dimension, it is changed to CHAMFDIM.\n"
    "// NOTE that the reference line now requires that the depth be\n"
    "// specified, thus increasing the array to 6 elements.\n"
    "// As a result, we have commented out the converted command.\n"
    "// Please refer to the LINDIM or CHAMFDIM entry in the provided MURL help file.\n"
    "// Original MURL command:\n");

static void choose_lindim(rule_choice *choice);

// clang-format off
static constexpr rule_row flow_table[] = {
    // id, command, old form, effect, tip, new form; where it needs them choice, when
    {500, "CHAIN", "w1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {501, "DOSUB", "w1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {502, "GOTO", "w1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {503, "IF", "condition", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    // The attributes are in the comment alone.
    {505, "CIRDIM", "n1..n3, [s4], n5, [n6], n7 [, a8..a12]", EFFECT_TIP, &tip_cirdim,
        form("// CIRDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
             "\n"
             "CIRDIM {A7}, {A4}, , {A1}, {A2}, {A3}, , {A5}, , {A6}\n"
             "\n")},
    {506, "LINDIM", "n1..n3, [s4], n5..n7 [, a8..a12]", EFFECT_BY_HAND, &tip_lindim,
        form("// LINDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
             "// new MURL command syntax:\n"
             "// LINDIM {A6}, {N7}, {A4}, , {A1}, {A2}, {A3}, , , {A5}, , , , {A9}, {A10}, {A11}, {A12}\n"
             "\n"), choose_lindim, "n7 as typed is 1 to 9: a style of 1 to 3, one for three numbers"},
    {506, "LINDIM", "n1..n3, [s4], n5..n7 [, a8..a12]", EFFECT_BY_HAND, &tip_lindim,
        form("// LINDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
             "// new MURL command syntax:\n"
             "// CHAMFDIM {N7}, hentity_chamferline, , {A5}, {A4}, , {A1}, {A2}, {A3}, , , , {A9}, {A10}, {A11}, {A12}\n"
             "\n"), nullptr, "n7 as typed is 10 or 11: a chamfer of 0 or 1"},
    // Kept: the comma of the missing style is missing too, so that each argument after it is one position early.
    {506, "LINDIM", "n1..n3, [s4], n5..n7 [, a8..a12]", EFFECT_BY_HAND, &tip_lindim,
        form("// LINDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
             "// new MURL command syntax:\n"
             "// LINDIM {A6}, {A4}, , {A1}, {A2}, {A3}, , , {A5}, , , , {A9}, {A10}, {A11}, {A12}\n"
             "\n"), nullptr, "n7 as typed is anything else"},
};
// clang-format on

constexpr rule_family flow_family = rule_family_make(flow_table);
static_assert(rules_fit(flow_family));

static void choose_lindim(rule_choice *choice)
{
    // The text counts, not the value: 2+8 is 2.
    int32_t kind = int_from_text(arg_slots[7].text, arg_slots[7].text_size);
    if (kind >= 1 && kind <= 9) {
        choice->number = (kind + 2) / 3;
    } else if (kind == 10 || kind == 11) {
        choice->row = 1;
        choice->number = kind - 10;
    } else {
        choice->row = 2;
    }
}
