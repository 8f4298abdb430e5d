// Setting commands, the ids 300 to 399: what a script sets, and the dimensions of that range.
//
// A form is the whole output. Rules with a routine look at a value or at the run's state.
#include "rules/emission.h"
#include "rules/rule_table.h"
#include "rules/rules.h"
#include "source/command_table.h"
#include "support/number.h"
#include "support/text.h"

constexpr int setting_first = 300;
constexpr int setting_last = 399;

rules_run_state rules_run;

// Kept: two blanks in front of the quoted command, an empty line behind it.
static constexpr form_code drawent_form = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// MURL no longer needs to draw an individual entities.  However,\n"
    "// entities created by MURL may not show up in the display until a\n"
    "// NOTESTATE command is issued.\n"
    "// Original MURL command\n"
    "//  {W} {I1}, {L2}, {L3}\n"
    "\n");

// Kept: the misspelling, and the empty lines behind the tip and at the end. Users search for these lines.
static constexpr form_code angdim_form = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The dimension commands have change significantly from the previous\n"
    "// version of MURL.  Parameter order, quantity, and array definitions\n"
    "// are all different.  NOTE that the reference line now requires that\n"
    "// the depth be specified, thus increasing the array to 6 elements.\n"
    "// As a result, we have commented out the converted command.  This\n"
    "// will allow the command to be read by the current version of MURL.\n"
    "// Please refer to the ANGDIM entry in the provided MURL help file.\n"
    "// Original MURL command:\n"
    "\n"
    "// {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}\n"
    "// new MURL command syntax:\n"
    "// {W}, 0, {A6}, {A4}, , {A1}, {A2}, {A3}, , , , {A5}, , , , , {A8}, {A9}, {A10}, {A11}\n"
    "\n"
    "\n");

static void conv_set(int32_t count);
static void conv_setcur(int32_t count);
static void conv_prange(int32_t count);
static void conv_orddim(int32_t count);

// clang-format off
static constexpr rule_row setting_table[] = {
    // id, command, old form,
    //     new form, routine
    // Kept: a dropped statement leaves an empty line.
    {300, "SETTEXT, SETNOTE", "SETTEXT [eight numbers]",
        form("\n"), nullptr},
    {301, "AUTO", "AUTO [number]",
        form("{W} {A1}\n"), nullptr},
    {302, "HALF", "HALF [number]",
        form("{W} {A1}\n"), nullptr},
    {303, "DBLSCL", "DBLSCL [number]",
        form("{W} {A1}\n"), nullptr},
    {304, "REDRAW", "REDRAW [number]",
        form("REM **** WARNING: {W} has NOT been implemented\n"
             "REM {W}{ A1}\n"), nullptr},
    // The mode is a value, the other arguments stay as typed; without one the mode is 0.
    {305, "SCALE", "SCALE [scale, x, y, mode]",
        form("{W} {L4}, {A1}, {A2}, {A3}\n"), nullptr},
    {306, "WINDOW", "WINDOW x1, y1, x2, y2 [, mode]",
        form("{W} {A1}, {A2}, , {A3}, {A4}, , {A5}\n"), nullptr},
    {307, "LEVELS", "LEVELS first, last [, mode]",
        form("REM {W} {A1}, {A2}{, A3}\n"), nullptr},
    {308, "MODE", "MODE word",
        form("{W} {A1}\n"), nullptr},
    {309, "CLS", "CLS [number]",
        form("REM **** WARNING: {W} has NOT been implemented\n"
             "REM {W}{ A1}\n"), nullptr},
    {310, "SET", "SET word [, name, numbers]",
        no_form, conv_set},
    {311, "GROUP", "GROUP name, number, number",
        form("REM {W} {A1}, {A2}, {A3}\n"), nullptr},
    {312, "PALETTE", "PALETTE number, number, variable",
        form("{W} {A1}, {A2}, {A3}\n"), nullptr},
    {313, "SETCUR", "SETCUR x, y [, mode]",
        no_form, conv_setcur},
    {314, "PRANGE", "PRANGE number, number, six coordinates",
        no_form, conv_prange},
    {315, "DEFATTR", "DEFATTR names",
        form("{W} {A1}{, A2..}\n"), nullptr},
    {316, "SETATTR", "SETATTR [number] [, numbers]",
        form("{W} {A1}{, A2..}\n"), nullptr},
    {317, "DRAWENT", "DRAWENT [entity, mode, color]",
        drawent_form, nullptr},
    {318, "ANGDIM", "ANGDIM x, y, z, line, number, mode [, five attributes]",
        angdim_form, nullptr},
    {319, "ORDDIM", "ORDDIM x, y, z, line, two numbers, mode [, five attributes]",
        no_form, conv_orddim},
};
// clang-format on

static_assert(rule_ids_ascend(setting_table, setting_first, setting_last));
static_assert(rule_slots_fit(setting_table, command_spec_count));
static constexpr rule_index setting_index = rule_index_make(setting_table, setting_first);

// SET word, name, numbers   -> SET word, name, numbers
// SET COLLECT, mode, numbers -> REM SET COLLECT, mode, numbers
static void conv_set(int32_t count)
{
    static constexpr form_code collect_line = form("REM {W} {A1}{, A2..}\n");
    static constexpr form_code other_line = form("{W} {A1}{, A2..}\n");
    constexpr int32_t last_max = 26; // the word and 25 arguments; what stands behind them is dropped

    bool collect = text_compare_nocase(slot_ended_text(arg_slots + 1), "collect") == 0;
    // Kept: an empty second argument hides all behind it.
    bool more = count > 1 && (arg_types[1] & ARG_ABSENT) == 0;
    int32_t last = !more ? 1 : count < last_max ? count : last_max;
    if (collect && more) {
        // The text counts, not the value: a mode that isn't a plain number is 0.
        rules_run.collect_mode = int_from_text(slot_ended_text(arg_slots + 2));
        if (rules_run.collect_mode == 0)
            rules_run.basedim_count = 0;
    }
    emit_form(collect ? collect_line : other_line, last);
}

// SETCUR x, y, mode -> REM SETCUR x, y, mode
static void conv_setcur(int32_t)
{
    static constexpr form_code head = form("REM {W} {A1}, {A2}", command_spec_count(313));

    int32_t mode = slot_lval(arg_slots + 3);
    emit_form(head);
    if (mode != 0)
        out_format(", %d", mode);
    out_char('\n');
}

// PRANGE number, number, six coordinates -> REM PRANGE number, number coordinates
static void conv_prange(int32_t)
{
    static constexpr form_code head = form("REM {W} {L1}, {L2} ", command_spec_count(314));

    // Kept: no comma behind the second number. All are values here, the coordinates with six decimals.
    emit_form(head);
    const arg_slot *slot = arg_slots + 3;
    out_format("%f, %f, %f, ", slot_dval(slot), slot_dval(slot + 1), slot_dval(slot + 2));
    out_format("%f, %f, %f\n", slot_dval(slot + 3), slot_dval(slot + 4), slot_dval(slot + 5));
}

// Kept: the tip is one long line, and an empty line follows it.
static constexpr form_code orddim_first = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////"
    "// The dimension commands have change significantly from the previous"
    "// version of MURL.  Parameter order, quantity, and array definitions"
    "// are all different.  ORDDIM commands have all changed to BASEDIM and"
    "// have a very different interface than in prior versions."
    "// Please refer to the BASEDIM entry in the provided MURL help file."
    "// Original MURL command:\n"
    "\n"
    "// ORDDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
    "// Entity pointer for the parent Baseline dim\n"
    "HENTITY BASE_HENTITY\n"
    "// new MURL command syntax:\n"
    "// BASEDIM BASE_HENTITY {A6}, {A7}, {A4}, , {A5}, , {A1}, {A2}, {A3}, , , , {A9}, {A10}, {A11}, {A12}",
    command_spec_count(319));

// Kept: an empty fifth argument takes its comma with it, so that the line is a place short.
static constexpr form_code orddim_following = form(
    "// new MURL command syntax:\n"
    "// ADDBASEDIM BASE_HENTITY, {, A5}, , {A1}, {A2}, {A3}, {A4}, , {A9}, {A10}, {A11}, {A12}",
    command_spec_count(319));

// ORDDIM x, y, z, line, two numbers, mode, five attributes
//     -> // BASEDIM BASE_HENTITY ...      the first of a baseline group
//     -> // ADDBASEDIM BASE_HENTITY ...   the others
//     -> nothing                          outside collect mode
static void conv_orddim(int32_t)
{
    if (rules_run.collect_mode == 1)
        emit_form(rules_run.basedim_count == 0 ? orddim_first : orddim_following);
    // Kept: outside collect mode too the statement counts and leaves its two line ends.
    rules_run.basedim_count++;
    out_text("\n\n");
}

int32_t conv_setting(int32_t id, int32_t count)
{
    rule_run(rule_find(setting_table, setting_index, id, setting_first), count, "\n");
    return 0;
}
