// Rules: what becomes of each command. The statement loop picks the family by the command's id.
//
// Each handler is entered with arg_cursor on slot 0 and arg_type_cursor on the first arg_types byte, reads
// the slots and writes the converted statement with its line end. count is what fetch_args gave. All give
// 0: no rule stops a file.
#pragma once

#include <stdint.h>

// Entity commands, the ids below 300: geometry, notes, labels, crosshatch and the view.
int32_t conv_entity(int32_t id);

// Setting commands, the ids 300 to 399. They own collect_mode and basedim_count.
int32_t conv_setting(int32_t id, int32_t count);

// Input, query and file commands, the ids 400 to 499.
int32_t conv_input(int32_t id, int32_t count);

// Flow commands and the dimension commands of that range, the ids from 500 on.
int32_t conv_flow(int32_t id, int32_t count);

// The whole rule of CALL, run by conv_input.
void conv_call(int32_t count);

// The library function that a CALL names, as statements of the current dialect, if it has a mechanical
// rewrite. values are the texts of the CALL's first seven arguments; an absent one is empty.
void conv_call_function(const char *name, const char *const values[7]);

// Run-wide state of the baseline dimensions. Both are 0 at the start of a run and outlive a file.
struct rules_run_state {
    int32_t collect_mode;  // value of the last SET COLLECT; ORDDIM is converted only while it is 1
    int32_t basedim_count; // ORDDIM statements since the last SET COLLECT with 0; 0: the next opens a group
};
extern rules_run_state rules_run;
