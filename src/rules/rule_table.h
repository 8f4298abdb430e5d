// Rule tables: one row for each command of a family, and how the row of an id is found.
//
// A family's file begins with its table, which names every id in order. The index from id to row is made by
// the compiler, as are the checks.
#pragma once

#include "rules/emission.h"

#include <stdint.h>

// One row of a family's table. Rows stand in order of id.
struct rule_row {
    int16_t id;
    const char *command;            // the command word or words of the id
    const char *old_form;           // what the script holds; optional arguments in square brackets
    form_code new_form;             // the whole output with its line ends; empty if nothing is left
    void (*routine)(int32_t count); // what writes the output instead, or null
};

// Where the row of an id stands in its family's table. Every family spans at most so many ids.
constexpr int family_span = 300;
struct rule_index {
    uint8_t place[family_span]; // of the id less the family's first: position in the table and 1, or 0
};

template <typename row, int count>
constexpr rule_index rule_index_make(const row (&rows)[count], int first_id)
{
    rule_index index{};
    for (int i = 0; i < count; i++)
        index.place[rows[i].id - first_id] = static_cast<uint8_t>(i + 1);
    return index;
}

// Tells whether the ids of a table ascend strictly and lie from first_id to last_id.
template <typename row, int count>
constexpr bool rule_ids_ascend(const row (&rows)[count], int first_id, int last_id)
{
    for (int i = 0; i < count; i++)
        if (rows[i].id < first_id || rows[i].id > last_id || (i > 0 && rows[i].id <= rows[i - 1].id))
            return false;
    return last_id - first_id < family_span && count < 255;
}

// The row of an id, or null if the family has no such row.
template <typename row, int count>
inline const row *rule_find(const row (&rows)[count], const rule_index &index, int32_t id, int32_t first_id)
{
    int32_t place = id >= first_id && id - first_id < family_span ? index.place[id - first_id] : 0;
    return place > 0 ? &rows[place - 1] : nullptr;
}

// Tells whether no form of a table names a slot that its command lacks.
template <int count> constexpr bool rule_slots_fit(const rule_row (&rows)[count], int (*spec_count)(int id))
{
    for (const rule_row &row : rows)
        if (row.new_form.top_slot > spec_count(row.id))
            return false;
    return true;
}

// Carries out a row, if there is one: its routine or its form. An id without a row leaves the given text.
inline void rule_run(const rule_row *row, int32_t count, const char *without_row)
{
    if (row == nullptr)
        out_text(without_row);
    else if (row->routine != nullptr)
        row->routine(count);
    else
        emit_form(row->new_form, count);
}
