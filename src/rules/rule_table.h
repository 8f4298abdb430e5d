// Rule tables: the output of each command, a row for each of its cases.
//
// A family's file begins with its table, in order of id. The compiler makes the index from id to row and does
// the checks. The converter writes from the tables; the guide to the commands and murlreport read them too.
//
// "Kept:" in the families and tails names output that looks like a mistake and has to stay. It is seen by
// users who convert a script again when it has changed, and compare the result with the conversion that they
// have and have edited: tidied output would be a difference in every script with that command. They also
// search their scripts for lines of the tips.
#pragma once

#include "rules/emission.h"
#include "rules/form.h"
#include "statements/command_rows.h"

#include <stddef.h>
#include <stdint.h>

// How the output of a command differs from its statement.
enum rule_effect : uint8_t {
    EFFECT_COPIED,          // the same word with the same arguments
    EFFECT_REBUILT,         // the same word; arguments moved, joined, dropped or made constant
    EFFECT_RENAMED,         // another word
    EFFECT_TIP,             // a tip, and the new command below it
    EFFECT_BY_HAND,         // a tip; the new form is a comment, or there is none
    EFFECT_BY_HAND_NO_TIP,  // the new form is a comment, and no tip says so
    EFFECT_COMMENTED,       // a comment, with neither tip nor warning
    EFFECT_NOT_IMPLEMENTED, // a warning that the new dialect has no such command
    EFFECT_DROPPED,         // only line ends are written
    EFFECT_SYSTEM           // a system command: nothing is written
};

// One row: the whole output of a command.
//
// Its old form lists the arguments: the optional ones in brackets, ... for any number more like the last. An
// argument without a name is a letter and its position, which is its slot: n number, s string or print item,
// v variable, w word, a attribute. a3..a5 means a3, a4, a5.
struct rule_row {
    int16_t id;
    const char *command;  // the command word or words of the id
    const char *old_form; // the old arguments, see above
    rule_effect effect;
    const form_code *tip;                          // comment lines in front, or null
    form_code new_form;                            // the rest of the output, with its line ends; may be empty
    void (*choose)(rule_choice *choice) = nullptr; // makes the choice; null: there is none
    const char *when = nullptr; // the condition for this row, if its id has several; else null
};

// The rows of ORDDIM: BASEDIM, which declares a handle; ADDBASEDIM, which uses it; nothing.
enum : int32_t { ORDDIM_FIRST, ORDDIM_FOLLOWING, ORDDIM_OUTSIDE };

// A family: the rows of a range of ids. The rows of one id follow each other, and the first one chooses.
constexpr int family_span = 300; // ids of a family at most
struct rule_family {
    int32_t first_id;
    int32_t last_id;
    const rule_row *rows;
    int32_t row_count;
    uint8_t first_row[family_span]; // by id less first_id: index of its first row in rows, plus 1; 0: no rule
};
extern const rule_family entity_family;  // geometry, notes, labels, crosshatch and the view
extern const rule_family setting_family; // what a script sets, and the dimensions of that range
extern const rule_family input_family;   // input, query and files
extern const rule_family flow_family;    // flow, and the dimensions of that range

// Writes the output of the current statement, a command of this id, from its slots. count is what fetch_args
// returned.
void rule_run(int32_t id, int32_t count);

// ---- State ----

// The row and the choice of the last command. rule_run sets it for each command, murlreport reads it right
// after that. Nothing resets it. The row is null before the first command.
struct rule_record {
    const rule_row *row;
    rule_choice choice;
};
extern rule_record rule_last;

// The baseline dimensions of a run. The rule of SET COLLECT writes it, that of ORDDIM reads it and counts.
// Both fields are 0 when the process starts, and only SET COLLECT resets them, not the end of a file.
struct rules_run_state {
    int32_t collect_mode;  // value of the last SET COLLECT; ORDDIM is converted only while it is 1
    int32_t basedim_count; // ORDDIM statements since the last SET COLLECT with 0; 0: the next opens a group
};
extern rules_run_state rules_run;

// ---- For readers of the tables ----

// The first row of a command, or null. System commands have one row together.
const rule_row *rule_find(int32_t id);

// How many rows the command of a first row has.
int32_t rule_row_count(const rule_row *first);

// The effect in a few words.
const char *rule_effect_text(rule_effect effect);

// Whether the user has to write the new command, or to take it out of a comment.
inline bool rule_is_by_hand(const rule_row *row)
{
    return row->effect == EFFECT_BY_HAND || row->effect == EFFECT_BY_HAND_NO_TIP;
}

// ---- For the families ----

template <size_t size> constexpr rule_family rule_family_make(const rule_row (&rows)[size])
{
    constexpr int count = size;
    rule_family family{rows[0].id, rows[count - 1].id, rows, count, {}};
    for (int i = count - 1; i >= 0; i--)
        family.first_row[rows[i].id - family.first_id] = static_cast<uint8_t>(i + 1);
    return family;
}

// The slots that the form of an id may name: any number if its last position repeats.
constexpr int rule_slots(int id)
{
    return command_repeats(id) ? form_slot_max : command_spec_count(id);
}

// Whether a family's rows are in order of id with a row for every command between its first and its last, the
// effects say which rows have a tip, and no form names a slot that its command lacks.
constexpr bool rules_fit(const rule_family &family)
{
    const rule_row *rows = family.rows;
    const int last = family.row_count - 1;
    for (int i = 0; i <= last; i++) {
        const rule_row &row = rows[i];
        if (i > 0 && row.id < rows[i - 1].id)
            return false;
        bool alone = (i == 0 || rows[i - 1].id != row.id) && (i == last || rows[i + 1].id != row.id);
        bool has_tip = row.effect == EFFECT_TIP || row.effect == EFFECT_BY_HAND;
        if (alone != (row.when == nullptr) || has_tip != (row.tip != nullptr))
            return false;
        if (row.new_form.highest_slot > rule_slots(row.id) ||
            (has_tip && row.tip->highest_slot > rule_slots(row.id)))
            return false;
    }
    for (const command_source_row &command : command_rows)
        if (command.id >= family.first_id && command.id <= family.last_id &&
            family.first_row[command.id - family.first_id] == 0)
            return false;
    return family.last_id - family.first_id < family_span && last < 254;
}
