#include "rules/rule_table.h"

rule_record rule_last;
rules_run_state rules_run;

constexpr int32_t system_first = 1000; // no command with a smaller id is a system command
static constexpr rule_row system_row = {system_first,  "system commands", "",
                                        EFFECT_SYSTEM, nullptr,           form("")};

static const rule_family *const families[] = {&entity_family, &setting_family, &input_family, &flow_family};

const rule_row *rule_find(int32_t id)
{
    if (id >= system_first)
        return &system_row;
    for (const rule_family *family : families) {
        if (id < family->first_id || id > family->last_id)
            continue;
        uint8_t row = family->first_row[id - family->first_id];
        return row > 0 ? family->rows + row - 1 : nullptr;
    }
    return nullptr;
}

void rule_run(int32_t id, int32_t count)
{
    const rule_row *row = rule_find(id);
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
    static constexpr const char *texts[] = {"copied",  "rebuilt",         "renamed",   "tip",
                                            "by hand", "by hand, no tip", "commented", "not implemented",
                                            "dropped", "system"};
    static_assert(sizeof texts / sizeof texts[0] == EFFECT_SYSTEM + 1);
    return texts[effect];
}
