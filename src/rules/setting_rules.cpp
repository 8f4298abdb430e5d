// Setting commands: what a script sets, and the dimensions of that range.
#include "rules/rule_table.h"
#include "support/number.h"
#include "support/text.h"

static constexpr form_code tip_drawent = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// MURL no longer needs to draw an individual entities.  However,\n"
    "// entities created by MURL may not show up in the display until a\n"
    "// NOTESTATE command is issued.\n"
    "// Original MURL command\n");

// Kept: the misspelling, and the empty line after the tip. Users search for these lines.
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
    {301, "AUTO", "[number]", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {302, "HALF", "[number]", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {303, "DBLSCL", "[number]", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {304, "REDRAW", "[number]", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("REM **** WARNING: {W} has NOT been implemented\n"
             "REM {W}{ A1}\n")},
    // The mode is a value, the other arguments stay as typed; without one the mode is 0.
    {305, "SCALE", "[scale, x, y, mode]", EFFECT_REBUILT, nullptr, form("{W} {L4}, {A1}, {A2}, {A3}\n")},
    {306, "WINDOW", "x1, y1, x2, y2 [, mode]", EFFECT_REBUILT, nullptr,
        form("{W} {A1}, {A2}, , {A3}, {A4}, , {A5}\n")},
    {307, "LEVELS", "first, last [, mode]", EFFECT_COMMENTED, nullptr, form("REM {W} {A1}, {A2}{, A3}\n")},
    {308, "MODE", "word", EFFECT_COPIED, nullptr, form("{W} {A1}\n")},
    {309, "CLS", "[number]", EFFECT_NOT_IMPLEMENTED, nullptr,
        form("REM **** WARNING: {W} has NOT been implemented\n"
             "REM {W}{ A1}\n")},
    {310, "SET", "word [, value, ...]", EFFECT_COPIED, nullptr,
        form("{W} {A1}{, A2..}\n"), choose_set, "the word is another than COLLECT"},
    {310, "SET", "COLLECT [, mode, ...]", EFFECT_COMMENTED, nullptr,
        form("REM {W} {A1}{, A2..}\n"), nullptr, "the word is COLLECT"},
    {311, "GROUP", "name, number, number2", EFFECT_COMMENTED, nullptr, form("REM {W} {A1}, {A2}, {A3}\n")},
    {312, "PALETTE", "number, number2, variable", EFFECT_COPIED, nullptr, form("{W} {A1}, {A2}, {A3}\n")},
    {313, "SETCUR", "x, y [, mode]", EFFECT_COMMENTED, nullptr, form("REM {W} {A1}, {A2}{, L3}\n")},
    // Kept: no comma after the second number. All are values here.
    {314, "PRANGE", "number, number2, x1, y1, z1, x2, y2, z2", EFFECT_COMMENTED, nullptr,
        form("REM {W} {L1}, {L2} {D3}, {D4}, {D5}, {D6}, {D7}, {D8}\n")},
    {315, "DEFATTR", "name, ...", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..}\n")},
    {316, "SETATTR", "[number, value, ...]", EFFECT_COPIED, nullptr, form("{W} {A1}{, A2..}\n")},
    // Kept: two blanks in front of the quoted command, an empty line after it.
    {317, "DRAWENT", "[entity, mode, color]", EFFECT_BY_HAND, &tip_drawent,
        form("//  {W} {I1}, {L2}, {L3}\n"
             "\n")},
    // Kept: two empty lines at the end.
    {318, "ANGDIM", "x, y, z, line, number, mode [, a1..a5]", EFFECT_BY_HAND, &tip_angdim,
        form("// {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}\n"
             "// new MURL command syntax:\n"
             "// {W}, 0, {A6}, {A4}, , {A1}, {A2}, {A3}, , , , {A5}, , , , , {A8}, {A9}, {A10}, {A11}\n"
             "\n"
             "\n")},
    {319, "ORDDIM", "x, y, z, line, n1, n2, mode [, a1..a5]", EFFECT_BY_HAND, &tip_orddim,
        form("// ORDDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
             "// Entity pointer for the parent Baseline dim\n"
             "HENTITY BASE_HENTITY\n"
             "// new MURL command syntax:\n"
             "// BASEDIM BASE_HENTITY {A6}, {A7}, {A4}, , {A5}, , {A1}, {A2}, {A3}, , , , {A9}, {A10}, {A11}, {A12}\n"
             "\n"), choose_orddim, "SET COLLECT is 1, and it is the first of its group"},
    // Kept: an empty fifth argument takes its comma with it, so that the line is a place short.
    {319, "ORDDIM", "x, y, z, line, n1, n2, mode [, a1..a5]", EFFECT_BY_HAND, nullptr,
        form("// new MURL command syntax:\n"
             "// ADDBASEDIM BASE_HENTITY, {, A5}, , {A1}, {A2}, {A3}, {A4}, , {A9}, {A10}, {A11}, {A12}\n"
             "\n"), nullptr, "SET COLLECT is 1, and it is not the first of its group"},
    {319, "ORDDIM", "x, y, z, line, n1, n2, mode [, a1..a5]", EFFECT_DROPPED, nullptr,
        form("\n"
             "\n"), nullptr, "SET COLLECT is not 1"},
};
// clang-format on

constexpr rule_family setting_family = rule_family_make(setting_table);
static_assert(rules_fit(setting_family));

static void choose_set(rule_choice *choice)
{
    constexpr int32_t last_max = 26; // the word and 25 arguments; what stands after them is dropped

    bool collect = text_is_word(arg_slots[1].text, arg_slots[1].text_size, "collect");
    // Kept: an empty second argument hides all that follow it.
    bool more = (arg_types[1] & ARG_ABSENT) == 0;
    choice->row = collect ? 1 : 0;
    choice->last = !more ? 1 : choice->last < last_max ? choice->last : last_max;
    if (!collect || !more)
        return;
    // The text counts, not the value: a mode that isn't a plain number is 0.
    rules_run.collect_mode = int_from_text(arg_slots[2].text, arg_slots[2].text_size);
    if (rules_run.collect_mode == 0)
        rules_run.basedim_count = 0;
}

static void choose_orddim(rule_choice *choice)
{
    if (rules_run.collect_mode == 1)
        choice->row = rules_run.basedim_count == 0 ? ORDDIM_FIRST : ORDDIM_FOLLOWING;
    else
        choice->row = ORDDIM_OUTSIDE;
    // Kept: outside collect mode too the statement counts.
    rules_run.basedim_count++;
}
