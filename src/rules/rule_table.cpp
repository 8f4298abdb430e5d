#include "rules/rule_table.h"

rule_record rule_last;

constexpr int32_t system_first = 1000;
constexpr int32_t system_last = 1999;
static constexpr rule_row system_row = {system_first,  "system commands", "",
                                        EFFECT_SYSTEM, nullptr,           form("")};

static const rule_family *const families[] = {&entity_family, &setting_family, &input_family, &flow_family};

// The first row of an id in its family, or null.
static const rule_row *family_find(const rule_family &family, int32_t id)
{
    if (id < family.first_id || id > family.last_id)
        return nullptr;
    uint8_t place = family.place[id - family.first_id];
    return place > 0 ? family.rows + place - 1 : nullptr;
}

void rule_run(const rule_family &family, int32_t id, int32_t count)
{
    const rule_row *row = family_find(family, id);
    if (row == nullptr)
        return;
    rule_choice *choice = &rule_last.choice;
    *choice = {0, count, 0};
    if (row->choose != nullptr) {
        row->choose(choice);
        row += choice->row;
    }
    rule_last.row = row;
    if (row->tip != nullptr)
        emit_form(*row->tip, *choice);
    emit_form(row->new_form, *choice);
}

const rule_row *rule_find(int32_t id)
{
    if (id >= system_first && id <= system_last)
        return &system_row;
    for (const rule_family *family : families)
        if (const rule_row *row = family_find(*family, id); row != nullptr)
            return row;
    return nullptr;
}

int32_t rule_row_count(const rule_row *first)
{
    int32_t count = 1;
    for (const rule_family *family : families)
        for (int32_t i = 0; i < family->row_count; i++)
            count += family->rows + i != first && family->rows[i].id == first->id;
    return count;
}

const char *rule_effect_text(rule_effect effect)
{
    static constexpr const char *texts[] = {"copied",    "rebuilt",         "renamed", "tip",   "by hand",
                                            "commented", "not implemented", "dropped", "system"};
    static_assert(sizeof texts / sizeof texts[0] == EFFECT_SYSTEM + 1);
    return texts[effect];
}
