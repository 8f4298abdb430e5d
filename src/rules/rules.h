// Rules: what becomes of each command. The statement loop picks the family by the command's id.
//
// Each handler reads the slots of the statement and writes what becomes of it, with its line end. count is
// what fetch_args gave.
#pragma once

#include <stdint.h>

// Entity commands, the ids below 300: geometry, notes, labels, crosshatch and the view.
void conv_entity(int32_t id);

// Setting commands, the ids 300 to 399. They own rules_run.
void conv_setting(int32_t id, int32_t count);

// Input, query and file commands, the ids 400 to 499.
void conv_input(int32_t id, int32_t count);

// Flow commands and the dimension commands of that range, the ids from 500 on.
void conv_flow(int32_t id, int32_t count);

// Run-wide state of the baseline dimensions. Both are 0 at the start of a run and outlive a file.
struct rules_run_state {
    int32_t collect_mode;  // value of the last SET COLLECT; ORDDIM is converted only while it is 1
    int32_t basedim_count; // ORDDIM statements since the last SET COLLECT with 0; 0: the next opens a group
};
extern rules_run_state rules_run;
