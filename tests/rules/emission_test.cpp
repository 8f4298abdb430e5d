// What the compiler refuses of a form, and the rows of the tables.
#include "rules/form.h"

#include "rules/rule_table.h"

#include <gtest/gtest.h>

#include <string.h>

#include <string>

// ---- Forms ----

// What form calls has no body in the program, so that a bad form doesn't compile. Here it notes the call.
static std::string form_fault;

void form_is_malformed()
{
    form_fault += "malformed ";
}

void form_has_too_many_pieces()
{
    form_fault += "long ";
}

void form_lacks_comment_pass()
{
    form_fault += "pass ";
}

TEST(form, refuses_a_bad_text)
{
    static const struct {
        const char *text, *fault;
    } cases[] = {
        {"", ""},
        {"{W} {A1}{, L2}{, A3..?}\n", ""},
        {"{A}", "malformed "},
        {"{W1}", "malformed "},
        {"{A27}", "malformed "},
        {"{, W}", "malformed "},
        {"{, attr 4}", "malformed "},
        {"{A1..}", "malformed "},
        {"{menu 4}", "pass "},
        {"{menu-comment 4}{menu 4}", ""},
        {"{menu-comment 3}{menu 4}", "pass "},
        {"{getmenu-comment 2}{menu 2}", ""},
        {"{menu 2}{menu-comment 2}", "pass "},
        {"{getcur 4}", "pass "},
        {"{getcur-comment 4}{getcur 4}", ""},
        {"{menu-comment 4}{getcur 4}", "pass "},
        {"{getcur-comment 4}{menu 4}", "pass "},
    };
    for (const auto &c : cases) {
        form_fault.clear();
        (void)form(c.text);
        EXPECT_EQ(form_fault, c.fault) << c.text;
    }
}

// ---- Tables ----

TEST(rule_table, has_a_row_for_each_command)
{
    for (const command_source_row &command : command_rows) {
        const rule_row *row = rule_find(command.id);
        ASSERT_NE(row, nullptr) << command.name;
        EXPECT_EQ(row->effect == EFFECT_SYSTEM, command.id >= 1000) << command.name;
        EXPECT_TRUE(command.id >= 1000 || strstr(row->command, command.name) != nullptr) << command.name;
    }
    EXPECT_EQ(rule_find(453), nullptr);
    EXPECT_EQ(rule_row_count(rule_find(319)), 3);
    EXPECT_EQ(rule_row_count(rule_find(318)), 1);
}
