// Setting commands: what a script sets, and the dimensions of that range.
// For the reason of each "Kept:" see rule_table.h.
#include "rules/rule_table.h"
#include "statements/arg_slots.h"
#include "support/number.h"
#include "support/text.h"

static constexpr form_code tip_drawent = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// MURL no longer needs to draw an individual entities.  However,\n"
    "// entities created by MURL may not show up in the display until a\n"
    "// NOTESTATE command is issued.\n"
    "// Original MURL command\n");

// Kept: "change" instead of "changed", and the empty line after the tip.
static constexpr form_code tip_angdim = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The dimension commands have change significantly from the previous\n"
    "// version of MURL.  Parameter order, quantity, and array definitions\n"
    "// are all different.  NOTE that the reference line now requires that\n"
    "// the depth be specified, thus increasing the array to 6 elements.\n"
    "// As a result, we have commented out the converted command.  This\n"
    "// will allow the command to be read by the current version of MURL.\n"
    "// Please refer to the ANGDIM entry in the provided MURL help file.\n"
    "// Original MURL command:\n"
    "\n");

// Kept: the tip is one long line, and an empty line follows it.
static constexpr form_code tip_orddim = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////"
    "// The dimension commands have change significantly from the previous"
    "// version of MURL.  Parameter order, quantity, and array definitions"
    "// are all different.  ORDDIM commands have all changed to BASEDIM and"
    "// have a very different interface than in prior versions."
    "// Please refer to the BASEDIM entry in the provided MURL help file."
    "// Original MURL command:\n"
    "\n");

static void choose_set(rule_choice *choice);
static void choose_orddim(rule_choice *choice);

// clang-format off
static constexpr rule_row setting_table[] = {
    // id, command, old form, effect, tip, new form; where it needs them choice, when
    // Kept: a dropped statement leaves an empty line.
    {300, "SETTEXT, SETNOTE", "[n1..n8]", EFFECT_DROPPED, nullptr, form("\n")},
    {301, "AUTO", "[n1]", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {302, "HALF", "[n1]", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {303, "DBLSCL", "[n1]", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {304, "REDRAW", "[n1]", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("REM **** WARNING: {W} has NOT been implemented\n"
             "REM {W}{ A1}\n")},
    // The last argument comes first, as its value: 0 if it was left out.
    {305, "SCALE", "[n1..n4]", EFFECT_REBUILT, nullptr, form("{W} {L4}, {A1}, {A2}, {A3}\n")},
    {306, "WINDOW", "n1..n4 [, n5]", EFFECT_REBUILT, nullptr,
        form("{W} {A1}, {A2}, , {A3}, {A4}, , {A5}\n")},
    {307, "LEVELS", "n1, n2 [, n3]", EFFECT_COMMENTED, nullptr, form("REM {W} {A1}, {A2}{, A3}\n")},
    {308, "MODE", "w1", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {309, "CLS", "[n1]", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("REM **** WARNING: {W} has NOT been implemented\n"
             "REM {W}{ A1}\n")},
    {310, "SET", "name [, w2, n3, ...]", EFFECT_COPIED, nullptr,
        form("{W} {A1}{, A2..}\n"), choose_set, "the name is not COLLECT"},
    {310, "SET", "COLLECT [, w2, n3, ...]", EFFECT_COMMENTED, nullptr,
        form("REM {W} {A1}{, A2..}\n"), nullptr, "the name is COLLECT"},
    {311, "GROUP", "s1, n2, n3", EFFECT_COMMENTED, nullptr, form("REM {W} {A1}, {A2}, {A3}\n")},
    {312, "PALETTE", "n1, n2, v3", EFFECT_COPIED, nullptr, form("{W} {A1}, {A2}, {A3}\n")},
    {313, "SETCUR", "n1, n2 [, n3]", EFFECT_COMMENTED, nullptr, form("REM {W} {A1}, {A2}{, L3}\n")},
    // Kept: no comma after the second number. All eight are written as values.
    {314, "PRANGE", "n1..n8", EFFECT_COMMENTED, nullptr,
        form("REM {W} {L1}, {L2} {D3}, {D4}, {D5}, {D6}, {D7}, {D8}\n")},
    {315, "DEFATTR", "[w1, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..}\n")},
    {316, "SETATTR", "[n1, n2, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..}\n")},
    // Kept: two blanks in front of the quoted command, an empty line after it.
    {317, "DRAWENT", "[n1..n3]", EFFECT_BY_HAND, &tip_drawent,
        form("//  {W} {I1}, {L2}, {L3}\n"
             "\n")},
    // Kept: two empty lines at the end.
    {318, "ANGDIM", "n1..n3, [s4], n5, n6 [, a7..a11]", EFFECT_BY_HAND, &tip_angdim,
        form("// {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}\n"
             "// new MURL command syntax:\n"
             "// {W}, 0, {A6}, {A4}, , {A1}, {A2}, {A3}, , , , {A5}, , , , , {A8}, {A9}, {A10}, {A11}\n"
             "\n"
             "\n")},
    {319, "ORDDIM", "n1..n3, [s4], n5..n7 [, a8..a12]", EFFECT_BY_HAND, &tip_orddim,
        form("// ORDDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
             "// Entity pointer for the parent Baseline dim\n"
             "HENTITY BASE_HENTITY\n"
             "// new MURL command syntax:\n"
             "// BASEDIM BASE_HENTITY {A6}, {A7}, {A4}, , {A5}, , {A1}, {A2}, {A3}, , , , {A9}, {A10}, {A11}, {A12}\n"
             "\n"), choose_orddim, "SET COLLECT is 1, and no ORDDIM came before it since SET COLLECT, 0"},
    // The first ORDDIM of a group has the tip for all. Kept: an empty fifth argument leaves no comma, so that
    // each argument after it is one position early.
    {319, "ORDDIM", "n1..n3, [s4], n5..n7 [, a8..a12]", EFFECT_BY_HAND_NO_TIP, nullptr,
        form("// new MURL command syntax:\n"
             "// ADDBASEDIM BASE_HENTITY, {, A5}, , {A1}, {A2}, {A3}, {A4}, , {A9}, {A10}, {A11}, {A12}\n"
             "\n"), nullptr, "SET COLLECT is 1, and an ORDDIM came before it since SET COLLECT, 0"},
    {319, "ORDDIM", "n1..n3, [s4], n5..n7 [, a8..a12]", EFFECT_DROPPED, nullptr,
        form("\n"
             "\n"), nullptr, "SET COLLECT is not 1"},
};
// clang-format on

constexpr rule_family setting_family = rule_family_make(setting_table);
static_assert(rules_fit(setting_family));

static void choose_set(rule_choice *choice)
{
    constexpr int32_t last_max = 26; // the name and 25 arguments; those after them are dropped

    bool collect = text_is_word(arg_slots[1].text, arg_slots[1].text_size, "collect");
    // Kept: an empty second argument ends the list; the arguments after it are lost.
    bool more = (arg_types[1] & ARG_ABSENT) == 0;
    choice->row = collect ? 1 : 0;
    choice->last = !more ? 1 : choice->last < last_max ? choice->last : last_max;
    if (!collect || !more)
        return;
    // The text counts, not the value: one that doesn't begin with a number is 0.
    rules_run.collect_mode = int_from_text(arg_slots[2].text, arg_slots[2].text_size);
    if (rules_run.collect_mode == 0)
        rules_run.basedim_count = 0;
}

static void choose_orddim(rule_choice *choice)
{
    choice->row = rules_run.basedim_count == 0 ? ORDDIM_FIRST : ORDDIM_FOLLOWING;
    if (rules_run.collect_mode != 1)
        choice->row = ORDDIM_OUTSIDE;
    // Kept: it counts outside collect mode too. A group after that begins with an ADDBASEDIM whose handle is
    // not declared.
    rules_run.basedim_count++;
}
