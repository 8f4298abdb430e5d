// Emission: the writer of forms.
#pragma once

#include "rules/form.h"

#include <stdint.h>

// What a rule decides about a statement before its form is written.
struct rule_choice {
    int32_t row;    // which of the rows of its id, from 0
    int32_t last;   // the last slot of a list placeholder; at first the argument count
    int32_t number; // for {N}
};

// Writes a form, with the slots of the current statement for its placeholders.
void emit_form(const form_code &form, const rule_choice &choice);
