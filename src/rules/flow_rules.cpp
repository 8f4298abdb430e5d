// Flow commands and the dimension commands of that range, the ids from 500 on.
//
// Nothing of a script is ever run, so a flow command is one line, copied. A dimension's new parameters have
// another order: the old statement is quoted under a tip and the new one stands below.
#include "rules/emission.h"
#include "rules/rule_table.h"
#include "rules/rules.h"
#include "source/command_table.h"
#include "support/number.h"
#include "support/text.h"

constexpr int flow_first = 500;
constexpr int flow_last = 799; // no id behind it has a rule

// Kept: the misspelling; users search for these lines. The attributes stand in the comment alone.
static constexpr form_code cirdim_form = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The dimension commands have change significantly from the previous\n"
    "// version of MURL.  Parameter order, quantity, and array definitions\n"
    "// are all different.  As a result, we have removed the attribute\n"
    "// arrays from the original command.  This will allow the command to\n"
    "// be read by the current version of MURL.\n"
    "// Please refer to the CIRDIM entry in the provided MURL help file.\n"
    "// Original MURL command:\n"
    "// CIRDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
    "\n"
    "CIRDIM {A7}, {A4}, , {A1}, {A2}, {A3}, , {A5}, , {A6}\n"
    "\n");

static void conv_lindim(int32_t count);

// clang-format off
static constexpr rule_row flow_table[] = {
    // id, command, old form,
    //     new form, routine
    {500, "CHAIN", "CHAIN file",
        form("{W} {A1}\n"), nullptr},
    {501, "DOSUB", "DOSUB label",
        form("{W} {A1}\n"), nullptr},
    {502, "GOTO", "GOTO label",
        form("{W} {A1}\n"), nullptr},
    {503, "IF", "IF condition",
        form("{W} {A1}\n"), nullptr},
    {505, "CIRDIM", "CIRDIM x, y, z, line, number [, number], mode [, five attributes]",
        cirdim_form, nullptr},
    {506, "LINDIM", "LINDIM x, y, z, line, two numbers, mode [, five attributes]",
        no_form, conv_lindim},
};
// clang-format on

static_assert(rule_ids_ascend(flow_table, flow_first, flow_last));
static_assert(rule_slots_fit(flow_table, command_spec_count));
static constexpr rule_index flow_index = rule_index_make(flow_table, flow_first);

static constexpr form_code lindim_old = form(
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
    "// Original MURL command:\n"
    "// LINDIM {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}, {A12}\n"
    "// new MURL command syntax:\n",
    command_spec_count(506));

// Behind the chamfer's style and "hentity_chamferline".
static constexpr form_code chamfdim_rest = form(
    ", , {A5}, {A4}, , {A1}, {A2}, {A3}, , , , {A9}, {A10}, {A11}, {A12}\n"
    "\n",
    command_spec_count(506));

// The linear form up to its style, and behind that.
static constexpr form_code lindim_head = form("// LINDIM {A6}", command_spec_count(506));
static constexpr form_code lindim_rest = form(
    ", {A4}, , {A1}, {A2}, {A3}, , , {A5}, , , , {A9}, {A10}, {A11}, {A12}\n"
    "\n",
    command_spec_count(506));

// LINDIM x, y, z, line, number, number, mode, five attributes
//     -> // CHAMFDIM 0 or 1, hentity_chamferline, ...   the modes 10 and 11
//     -> // LINDIM number, style, ...                   the modes 1 to 9, style 1 to 3
//     -> // LINDIM number, ...                          any other mode
static void conv_lindim(int32_t)
{
    // The text counts, not the value: in 2+8 the mode is 2.
    int32_t mode = int_from_text(slot_ended_text(arg_slots + 7));
    emit_form(lindim_old);
    if (mode == 10 || mode == 11) {
        out_format("// CHAMFDIM %d, hentity_chamferline", mode - 10);
        emit_form(chamfdim_rest);
        return;
    }
    emit_form(lindim_head);
    // Kept: without a style its place is missing too, so that the line moves up by one.
    if (mode >= 1 && mode <= 9)
        out_format(", %d", (mode + 2) / 3);
    emit_form(lindim_rest);
}

int32_t conv_flow(int32_t id, int32_t count)
{
    rule_run(rule_find(flow_table, flow_index, id, flow_first), count, "");
    return 0;
}
