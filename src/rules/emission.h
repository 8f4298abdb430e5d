// Emission: the writer of forms.
#pragma once

#include "rules/form.h"

#include <stdint.h>

// What is settled of a statement before its rule writes.
struct rule_choice {
    int32_t row;    // which of the rows of its id, from 0
    int32_t last;   // the last slot of a list placeholder; at first the argument count
    int32_t number; // what {N} writes
};

// Writes a form, with the slots of the current statement for its placeholders.
void emit_form(const form_code &form, const rule_choice &choice);
