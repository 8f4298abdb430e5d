// Tails one by one, where a whole statement doesn't show which of them did what.
#include "rules/form.h"

#include "common/diff.h"
#include "common/run.h"
#include "rules/rule_table.h"
#include "rules/tails.h"
#include "statements/arg_fetcher.h"
#include "statements/command_table.h"
#include "statements/recogniser.h"

#include <gtest/gtest.h>

// Fills the slots as the fetcher does for a command.
static void fetch(const char *statement)
{
    script_source source(statement);
    int32_t row = next_statement();
    EXPECT_GE(row, 0) << statement;
    const cmd_row &command = command_row_at(row);
    EXPECT_GE(fetch_args(command.spec_count, command.spec), 0) << statement;
}

// After GETCUR's first three arguments: position 3 to 7, nine menu strings, two integers.
TEST(tails, walks_the_tail_of_getcur_in_two_passes)
{
    static const struct {
        const char *arguments, *comment, *tail;
    } cases[] = {
        {"", "", ""},
        {",10,20,30,4,50", ", 10, 20, 30, 4, 50", ", 10, 20, 30, 4, 50"},
        {",10,20,30,4,50,\"a\",\"b\"", ", 10, 20, 30, 4, 50,\"a\",\"b\"", ", 10, 20, 30, 4, 50, \"a|b\""},
        {",10,20,30,4,50,,,,,,,,,,5", ", 10, 20, 30, 4, 50,,,,,,,,,", ", 10, 20, 30, 4, 50"},
        {",10,20,30,4,50,,,,,,,,,,5,6", ", 10, 20, 30, 4, 50,,,,,,,,,, 6", ", 10, 20, 30, 4, 50"},
        // A gap takes no step, so what stands after it is read one slot early, the last one as a menu string.
        {",10,,30", ", 10, ,30", ", 10, ||||||||"},
    };
    for (const auto &c : cases) {
        fetch(("GETCUR \"p\",1,2" + std::string(c.arguments) + "\n").c_str());
        output_capture comment;
        emit_getcur_comment(arg_slots + 4);
        EXPECT_EQ(comment.text(), c.comment) << c.arguments;
        output_capture tail;
        emit_getcur_tail(arg_slots + 4);
        EXPECT_EQ(tail.text(), c.tail) << c.arguments;
    }
}

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

// ---- State that outlives a file ----

TEST(rules, keep_the_baseline_state_for_the_next_file)
{
    std::filesystem::path folder = fresh_folder("rules_state");
    std::string dimension = "ORDDIM 1,2,3,,5,6,7\n";
    write_file(folder / "collect.mrl", "SET COLLECT,1\n" + dimension);
    write_file(folder / "more.mrl", dimension);
    write_file(folder / "plain.mrl", "SET COLLECT,0\n" + dimension);
    auto run = [&](const std::vector<std::string> &order) {
        reset_run();
        run_converter(folder, order);
        return read_file(folder / "more_conv.mrl");
    };
    std::string alone = run({"more.mrl"});
    std::string behind_collect = run({"collect.mrl", "more.mrl"});
    std::string behind_both = run({"collect.mrl", "plain.mrl", "more.mrl"});
    EXPECT_NE(alone, behind_collect);
    EXPECT_EQ(run({"plain.mrl", "more.mrl"}), alone);
    EXPECT_EQ(behind_both, alone);
    reset_run();
    EXPECT_EQ(rules_run.collect_mode, 0);
}
